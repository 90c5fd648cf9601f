// The objects that a call names, checked against the board.
#pragma once

#include <string>
#include <vector>

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/line/command.h"

namespace ctl {

// The switch that a call names, checked against the board.
struct SwitchTarget {
    explicit SwitchTarget(const Call& call);

    const SwitchDeviceRecord& Record() const { return region.device[device]; }
    bool Enabled() const { return IsEnabled(Record()); }

    SwitchDeviceRegion region;
    uint8_t device;
    std::string object;
};

// The port that a call names, checked against the board.
struct PortTarget {
    explicit PortTarget(const Call& call);

    const SwitchDeviceRecord& Record() const { return region.device[id.device]; }
    bool Enabled() const { return IsEnabled(Record()); }
    uint8_t Device() const { return static_cast<uint8_t>(id.device); }
    uint8_t Port() const { return static_cast<uint8_t>(id.port); }
    bool HasPhy() const { return Record().caps.port[id.port].portHasPhy != 0; }

    // What cuts the SoC off from the switch is done only with --force.
    void RequireForceForInternal(const Call& call, const char* consequence) const;

    // Fail with "not supported".
    void RequireLanPort() const;
    void RequirePhyPort() const;
    void RequireCapability(uint8_t flag, const char* name) const;

    SwitchDeviceRegion region;
    PortId id;
    std::string object;
};

// The PHY that a call names, checked against the board.
struct PhyTarget {
    explicit PhyTarget(const Call& call);

    PhyDeviceRegion region;
    uint8_t device;
    std::string object;
};

// The switches that a command without SWITCH is about, or the one it names.
std::vector<unsigned> SwitchesOf(const Call& call, const SwitchDeviceRegion& region);

}  // namespace ctl

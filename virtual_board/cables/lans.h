// The cables of a board whose ports are TAP interfaces, and the hosts at their ends.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "virtual_board/board/board_clock.h"
#include "virtual_board/board/cables.h"
#include "virtual_board/board/journal.h"
#include "virtual_board/board/mdio_controller.h"
#include "virtual_board/cables/tap_port.h"
#include "virtual_board/cables/wire.h"
#include "virtual_board/datapath/switch_engine.h"

namespace vboard::cables {

class Lans : public Cables {
public:
    // Makes the interfaces and namespaces of every VS08 on the board. Throws std::system_error.
    Lans(const BoardDescription& spec, const std::vector<Device>& devices, const BoardClock& clock);
    ~Lans() override;
    Lans(const Lans&) = delete;
    Lans& operator=(const Lans&) = delete;

    void Watch(Poller& poller, uint32_t kind) override;
    std::optional<std::chrono::nanoseconds> Wait() const override;
    void Serve(std::span<const uint32_t> ready) override;

    std::vector<CableEnd> Ends() const override;
    int NetworkOf(const std::string& host) const override;
    bool SetWire(const std::string& device, unsigned port, const WireFaults& faults) override;
    std::optional<Captured> Capture(const std::string& device, unsigned port,
                                    std::optional<uint64_t> from) override;
    std::optional<std::vector<datapath::TraceStep>> Trace(
        const std::string& device, unsigned port, const std::vector<uint8_t>& frame) override;

private:
    using RealTime = std::chrono::steady_clock::time_point;

    // What an interface was last told of its cable; it begins with a carrier.
    struct Shown {
        bool up = true;
        uint32_t megabits = 0;
        bool fullDuplex = true;
        bool operator==(const Shown&) const = default;
    };
    struct Port {
        PortDescription spec;
        std::string name;  // "sw0:2"
        std::unique_ptr<TapPort> tap;
        Shown shown = {};
        Wire wire{1};
        unsigned burst = 1;   // packets that are read in a row
        uint64_t readIn = 0;  // which turn
    };
    struct Lan;
    struct Host {
        std::string name;
        UniqueFd network;
    };

    Lan* FindLan(const std::string& device, unsigned port) const;
    void Arrive(Lan& lan, unsigned port);
    Lan& MakeLan(const SwitchDescription& spec, const Device& device, VswitchChip& chip);
    void MakeHosts(Lan& lan);
    void ReadPackets(Lan& lan, unsigned port, RealTime end);
    bool ReadPacket(Lan& lan, unsigned port);
    void Unplug(Lan& lan, unsigned port);
    void FollowInterface(Lan& lan, unsigned port);
    void ShowLinks(Lan& lan);

    const BoardClock& clock_;
    Poller* poller_ = nullptr;
    uint32_t served_ = 0;  // the port that was the last in a turn
    uint64_t turn_ = 1;    // counts on by 1 only where there was no rest before it
    RealTime rested_;
    std::vector<std::unique_ptr<Lan>> lans_;
    std::vector<Host> hosts_;
};

}  // namespace vboard::cables

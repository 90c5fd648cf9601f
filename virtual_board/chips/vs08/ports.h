// The ports of the VS08 model: their registers, and the links that follow from them.
#pragma once

#include <cstdint>
#include <vector>

#include "virtual_board/chips/vs08/registers.h"

namespace vboard::vswitch {

inline constexpr unsigned kPorts = 8;
inline constexpr unsigned kRgmiiPort = 7;
inline constexpr uint16_t kMaxVid = 4094;

// Offsets of a port's registers.
enum PortRegister : uint16_t {
    kPortInfo = 0x00,
    kPortCtrl = 0x01,
    kPortStatus = 0x02,
    kPortVid = 0x03,
    kPortPcp = 0x04,
    kPortTag = 0x05,
    kPortGroup = 0x06,
    kPortMirror = 0x07,
    kPortXoff = 0x08,
    kPortXon = 0x09,
    kPhyCtrl = 0x10,
    kPhyEee = 0x11,
    kPhyTest = 0x12,
    kPhyDvt = 0x13,
    kRgmiiCtrl = 0x18,
    kSerdesCtrl = 0x1C,
};

enum SpeedCode : unsigned {
    kSpeedNone = 0,
    kSpeedAutoneg = 1,
    kSpeed10 = 2,
    kSpeed100 = 3,
    kSpeed1000 = 4,
    kSpeed2500 = 5,
};

inline constexpr uint16_t kGroupValid = 0x8000;
inline constexpr uint16_t kMirrorEnable = 0x8000;

struct Link {
    bool up = false;
    unsigned speed = kSpeedNone;
    bool fullDuplex = false;
};

class Port {
public:
    enum class Kind { kSerdes, kPhy, kRgmii };

    Port(unsigned index, bool internal);

    void Reset() { registers_.Reset(); }
    Refusal Read(uint16_t offset, uint16_t& value) const;
    Refusal Write(uint16_t offset, uint16_t value);

    // The far end of the port's link; it knows no reset. False: a speed the port does not have.
    bool SetPartner(bool up, unsigned speedCode, bool fullDuplex);
    // Whether the device at the far end is switched on; it is unless somebody says otherwise.
    void SetPartnerPower(bool on) { partnerPower_ = on; }

    Link CurrentLink() const;
    bool InTest() const { return kind_ == Kind::kPhy && registers_[kPhyDvt] != 0; }
    bool EeeActive() const;
    Kind PortKind() const { return kind_; }
    bool Internal() const { return internal_; }
    // A register of this port's kind.
    uint16_t Get(PortRegister offset) const { return registers_[offset]; }

private:
    Link SerdesLink() const;
    uint16_t Status() const;
    Refusal CheckFields(uint16_t offset, uint16_t value) const;

    unsigned index_;
    bool internal_;
    Kind kind_;
    RegisterBank registers_;
    Link partner_;
    bool partnerPower_ = true;
};

// All ports of a chip; throws std::invalid_argument when there is no such internal port.
std::vector<Port> MakePorts(unsigned internalPort);

}  // namespace vboard::vswitch

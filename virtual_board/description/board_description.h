// A board: what is on it, how it is wired and what it starts with.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "virtual_board/description/fault_kinds.h"
#include "virtual_board/description/link_partner.h"
#include "virtual_board/description/mac_address.h"

namespace vboard {

inline constexpr uint32_t kNoPin = 0xFFFFFFFF;
inline constexpr uint8_t kNoMdio = 0xFF;
inline constexpr unsigned kMaxDevices = 2;

enum class Family { kSwitch, kPhy };
inline constexpr std::string_view kFamilyNames[] = {"switch", "phy"};

// The part of the wiring that a switch and a PHY have alike.
struct Wiring {
    std::string halLibName;
    std::string chip;  // "vswitch", "ieee8023" or "none"
    uint32_t serdesId = 0;
    uint32_t enableGpioPin = kNoPin;
    uint32_t resetGpioPin = kNoPin;
    uint8_t mdioBus = kNoMdio;
    uint8_t mdioAddr = kNoMdio;
    uint32_t speed = 4;
    uint32_t mode = 5;
};

// The cable of a switch port when the ports are TAP interfaces.
struct PortDescription {
    std::string interface;
    std::string host;     // whose network namespace it is in; empty: that of the board itself
    std::string address;  // with its prefix length; empty: none
    std::optional<MacAddress> mac;
};

struct SwitchDescription {
    Wiring wiring;
    uint32_t internalPort = 0;
    uint32_t preResetArg = 0;
    uint32_t reservedWord = 0;
    std::vector<uint32_t> linksUp;
    std::array<PortDescription, 8> ports;
};

struct PhyDescription {
    Wiring wiring;
    uint32_t identifier = 0x0A5A8023;
    bool clause45 = true;  // answers clause-45 frames
    bool laneGood = true;  // what it says of its SerDes lane
    uint32_t negotiationMs = 1500;
    LinkPartner abilities = {.eee = true, .half1000 = true, .full2500 = true};
    LinkPartner partner;
};

struct BoardDescription {
    std::string name;
    std::vector<SwitchDescription> switches;
    std::vector<PhyDescription> phys;
    std::array<MacAddress, 5> macAddresses{};
    bool isolation = false;
    bool ulp = false;
    uint32_t battery = 0;
    bool resetHeldAtPowerOn = false;
    uint32_t mdioBuses = 2;
    bool tapPorts = false;
    std::vector<Family> order;  // in which the application CPU sends
    std::vector<Fault> faults;
};

}  // namespace vboard

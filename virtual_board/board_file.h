// A board as its TOML file describes it.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "virtual_board/faults.h"
#include "virtual_board/link_partner.h"
#include "virtual_board/mdio_device.h"

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
struct PortSpec {
    std::string interface;
    std::string host;     // whose network namespace it is in; empty: that of the board itself
    std::string address;  // with its prefix length; empty: none
    std::optional<MacAddress> mac;
};

struct SwitchSpec {
    Wiring wiring;
    uint32_t internalPort = 0;
    uint32_t preResetArg = 0;
    uint32_t reservedWord = 0;
    std::vector<uint32_t> linksUp;
    std::array<PortSpec, 8> ports;
};

struct PhySpec {
    Wiring wiring;
    uint32_t identifier = 0x0A5A8023;
    bool clause45 = true;  // answers clause-45 frames
    bool laneGood = true;  // what it says of its SerDes lane
    uint32_t negotiationMs = 1500;
    LinkPartner abilities = {.eee = true, .half1000 = true, .full2500 = true};
    LinkPartner partner;
};

struct BoardSpec {
    std::string name;
    std::vector<SwitchSpec> switches;
    std::vector<PhySpec> phys;
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

// All complaints about the file, each "FILE:LINE:COLUMN: what was expected".
using BoardFileErrors = std::vector<std::string>;

std::variant<BoardSpec, BoardFileErrors> LoadBoardFile(const std::string& path);
std::variant<BoardSpec, BoardFileErrors> ParseBoard(std::string_view text, std::string_view path);

// "02:00:00:00:00:01"; false when it is not one.
bool ParseMac(std::string_view text, MacAddress& mac);
std::string FormatMac(const MacAddress& mac);

}  // namespace vboard

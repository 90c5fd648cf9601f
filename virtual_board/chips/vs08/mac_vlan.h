// The source-MAC-to-VLAN table of the VS08 model.
#pragma once

#include <cstdint>
#include <vector>

#include "virtual_board/chips/vs08/registers.h"
#include "virtual_board/description/mac_address.h"

namespace vboard::vswitch {

inline constexpr unsigned kMacVlanEntries = 32;
inline constexpr uint16_t kMacVlanFirst = 0x0400;
inline constexpr uint16_t kMacVlanLast = kMacVlanFirst + 8 * kMacVlanEntries - 1;

class MacVlanTable {
public:
    struct Entry {
        bool valid;
        unsigned port;
        uint16_t vid;
        uint16_t mask;
        MacAddress mac;
    };

    explicit MacVlanTable(unsigned internalPort);

    void Reset();
    Refusal Read(uint16_t address, uint16_t& value) const;
    Refusal Write(uint16_t address, uint16_t value);
    Entry At(unsigned index) const;

private:
    unsigned internalPort_;
    std::vector<RegisterBank> entries_;
};

}  // namespace vboard::vswitch

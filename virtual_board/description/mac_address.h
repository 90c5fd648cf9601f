// The address of a station on an Ethernet.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace vboard {

using MacAddress = std::array<uint8_t, 6>;

// "02:00:00:00:00:01"; false when it is not one.
bool ParseMac(std::string_view text, MacAddress& mac);
std::string FormatMac(const MacAddress& mac);

// An address that one station can have: neither a group address nor 0.
constexpr bool IsStation(const MacAddress& mac)
{
    return (mac[0] & 1) == 0 && mac != MacAddress{};
}

}  // namespace vboard

// Of the Internet protocols what the switch looks at.
#pragma once

#include "virtual_board/datapath/frame.h"

namespace vboard::datapath {

inline constexpr uint16_t kTypeIpv4 = 0x0800;
inline constexpr uint16_t kTypeIpv6 = 0x86DD;
inline constexpr size_t kIpv4Header = 20;  // without options
inline constexpr size_t kIpv6Header = 40;
inline constexpr uint8_t kIcmp6 = 58;

// The sum that makes up an Internet checksum; with that in its place it is 0xFFFF.
inline uint16_t Sum(Bytes bytes, uint32_t start)
{
    uint64_t sum = start;
    for (size_t at = 0; at + 1 < bytes.size(); at += 2)
        sum += Word(bytes.data() + at);
    if (bytes.size() % 2 != 0)
        sum += static_cast<uint64_t>(bytes.back()) << 8;
    while (sum >> 16 != 0)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return static_cast<uint16_t>(sum);
}

}  // namespace vboard::datapath

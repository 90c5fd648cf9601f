// Frames of IGMP, MLD and PIM, and the data that snooping restricts.
#pragma once

#include "tests/virtual_board/datapath/lan_bench.h"

namespace lan {

using Group = std::array<uint8_t, 4>;
inline constexpr Group kGroup1 = {239, 1, 1, 1};
inline constexpr Group kGroup2 = {239, 2, 2, 2};
inline constexpr Group kAllRouters = {224, 0, 0, 2};

inline MacAddress GroupMac(const Group& group)
{
    return {0x01, 0x00, 0x5E, static_cast<uint8_t>(group[1] & 0x7F), group[2], group[3]};
}

// With its Internet checksum at an offset; start is the sum of what is before the message.
inline Octets Summed(Octets message, size_t at = 2, uint32_t start = 0)
{
    uint32_t sum = start;
    for (size_t i = 0; i < message.size(); ++i)
        sum += i % 2 == 0 ? message[i] << 8 : message[i];
    while (sum >> 16 != 0)
        sum = (sum & 0xFFFF) + (sum >> 16);
    message[at] = static_cast<uint8_t>(~sum >> 8);
    message[at + 1] = static_cast<uint8_t>(~sum);
    return message;
}

inline Octets Ipv4(const MacAddress& source, const Group& to, uint8_t protocol, const Octets& data,
                   const Group& from = {10, 0, 0, 1})
{
    const auto total = static_cast<unsigned>(24 + data.size());
    return From(source, GroupMac(to),
                Words({0x0800, 0x4600, total, 0, 0}) + Octets{1, protocol, 0, 0} +
                    Octets(from.begin(), from.end()) + Octets(to.begin(), to.end()) +
                    Octets{0x94, 4, 0, 0} + data);
}

inline Octets Data(const Group& group)
{
    return Ipv4(kC, group, 17, Octets(20));
}

inline Octets Igmp(uint8_t type, const Group& group, const Group& to,
                   const Group& from = {10, 0, 0, 1})
{
    return Ipv4(kA, to, 2, Summed(Octets{type, 0, 0, 0} + Octets(group.begin(), group.end())),
                from);
}

inline Octets Report(const Group& group)
{
    return Igmp(0x16, group, group);
}

inline Octets Leave(const Group& group)
{
    return Igmp(0x17, group, kAllRouters);
}

inline Octets Query(const Group& from = {10, 0, 0, 1})
{
    return Igmp(0x11, {}, {224, 0, 0, 1}, from);
}

inline Octets Hello(const Octets& options)
{
    return Ipv4(kA, {224, 0, 0, 13}, 103, Summed(Octets{0x20, 0, 0, 0} + options));
}

inline Octets RecordV3(uint8_t type, const Group& group, unsigned sources)
{
    return Octets{type, 0, 0, static_cast<uint8_t>(sources)} + Octets(group.begin(), group.end()) +
           Octets(size_t{4} * sources);
}

inline Octets ReportV3(unsigned count, const Octets& records)
{
    return Ipv4(kA, {224, 0, 0, 22}, 2,
                Summed(Octets{0x22, 0, 0, 0, 0, 0} + Words({count}) + records));
}

inline const Octets kGroup6 = {0xFF, 0x15, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x12, 0x34};
inline const Octets kAllNodes = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
inline const Octets kAllMldRouters = {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0x16};

inline Octets Ipv6(const Octets& to, uint8_t next, const Octets& data)
{
    const MacAddress mac = {0x33, 0x33, to[12], to[13], to[14], to[15]};
    return From(kA, mac,
                Words({0x86DD, 0x6000, 0, static_cast<unsigned>(data.size())}) + Octets{next, 1} +
                    Octets(16, 0xFE) + to + data);
}

inline Octets Data6(const Octets& to)
{
    return Ipv6(to, 17, Octets(20));
}

// From fefe:...: an even number of octets.
inline uint32_t PseudoHeader(const Octets& to, uint8_t next, size_t size)
{
    uint32_t sum = 8 * 0xFEFE + next + static_cast<uint32_t>(size);
    for (size_t i = 0; i < to.size(); i += 2)
        sum += to[i] << 8 | to[i + 1];
    return sum;
}

inline Octets Mld(const Octets& to, const Octets& message)
{
    return Ipv6(
        to, 0,
        Octets{58, 0, 5, 2, 0, 0, 1, 0} + Summed(message, 2, PseudoHeader(to, 58, message.size())));
}

inline Octets Mld1(uint8_t type, const Octets& group, const Octets& to)
{
    return Mld(to, Octets{type, 0, 0, 0, 0, 0, 0, 0} + group);
}

inline Octets Mld2(uint8_t record, const Octets& group)
{
    return Mld(kAllMldRouters, Octets{143, 0, 0, 0, 0, 0, 0, 1, record, 0, 0, 0} + group);
}

inline constexpr const char* kAll = "0 1 2 4 5 6 7";  // from port 3

}  // namespace lan

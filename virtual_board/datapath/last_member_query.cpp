#include "virtual_board/datapath/last_member_query.h"

#include <algorithm>

#include "virtual_board/datapath/ip.h"

namespace vboard::datapath {
namespace {

// From 02:56:53:30:38:00 to the group, of which the address is filled in.
constexpr uint8_t
    kIgmpFrame[] = {0x01, 0x00, 0x5E, 0,    0, 0,  0x02, 0x56, 0x53, 0x30, 0x38, 0x00,
                    0x08, 0x00, 0x46, 0xC0, 0, 36, 0,    0,    0x40, 0,    1,    2,
                    0,    0,    0,    0,    0, 0,  0,    0,    0,    0,  // from 0.0.0.0
                    0x94, 4,    0,    0,                                 // router alert
                    0x11, 10,   0,    0,    0, 0,  0,    0,    2,    125,  0,    0};
constexpr size_t kIgmpIp = 14;
constexpr size_t kIgmpMessage = kIgmpIp + 24;

constexpr uint8_t kMldFrame[] = {
    0x33, 0x33, 0, 0,    0,         0,           0x02, 0x56, 0x53, 0x30, 0x38, 0x00, 0x86, 0xDD,
    0x60, 0,    0, 0,    0,         36,          0,    1,    0xFE, 0x80, 0,    0,    0,    0,
    0,    0,    0, 0x56, 0x53,      0xFF,        0xFE, 0x30, 0x38, 0,    0,    0,    0,    0,
    0,    0,    0, 0,    0,         0,           0,    0,    0,    0,    0,    0,    58,   0,
    5,    2,    0, 0,    1,         0,  // router alert
    130,  0,    0, 0,    1000 >> 8, 1000 & 0xFF, 0,    0,    0,    0,    0,    0,    0,    0,
    0,    0,    0, 0,    0,         0,           0,    0,    0,    0,    2,    125,  0,    0};
constexpr size_t kMldIp = 14;
constexpr size_t kMldMessage = kMldIp + 40 + 8;
constexpr size_t kMldSize = 28;

static_assert(sizeof kMldFrame == kLastMemberQuery && sizeof kIgmpFrame < kLastMemberQuery);

void PutCheck(uint8_t* at, uint16_t sum)
{
    PutWord(at, static_cast<uint16_t>(~sum));
}

Bytes ComposeIgmp(const GroupAddress& group, uint8_t* room)
{
    std::ranges::copy(kIgmpFrame, room);
    std::copy_n(group.begin(), 4, room + kIgmpIp + 16);
    std::copy_n(group.begin(), 4, room + kIgmpMessage + 4);
    std::copy_n(group.begin() + 1, 3, room + 3);
    room[3] &= 0x7F;
    PutCheck(room + kIgmpIp + 10, Sum({room + kIgmpIp, 24}, 0));
    PutCheck(room + kIgmpMessage + 2, Sum({room + kIgmpMessage, 12}, 0));
    return {room, sizeof kIgmpFrame};
}

Bytes ComposeMld(const GroupAddress& group, uint8_t* room)
{
    std::ranges::copy(kMldFrame, room);
    std::ranges::copy(group, room + kMldIp + 24);
    std::ranges::copy(group, room + kMldMessage + 8);
    std::copy_n(group.begin() + 12, 4, room + 2);
    const uint32_t pseudoHeader = Sum({room + kMldIp + 8, 32}, kIcmp6 + kMldSize);
    PutCheck(room + kMldMessage + 2, Sum({room + kMldMessage, kMldSize}, pseudoHeader));
    return {room, sizeof kMldFrame};
}

}  // namespace

Bytes ComposeLastMemberQuery(Protocol protocol, const GroupAddress& group, uint8_t* room)
{
    return protocol == Protocol::kIgmp ? ComposeIgmp(group, room) : ComposeMld(group, room);
}

}  // namespace vboard::datapath

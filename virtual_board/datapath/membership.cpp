#include "virtual_board/datapath/membership.h"

#include <algorithm>
#include <cstring>

namespace vboard::datapath {
namespace {

constexpr uint16_t kTypeIpv4 = 0x0800;
constexpr uint16_t kTypeIpv6 = 0x86DD;
constexpr uint8_t kProtocolIgmp = 2;
constexpr uint8_t kHopByHop = 0;
constexpr uint8_t kIcmp6 = 58;
constexpr size_t kIpv4Header = 20;
constexpr size_t kIpv6Header = 40;

enum IgmpType : uint8_t { kIgmpQuery = 0x11, kReportV1 = 0x12, kReportV2 = 0x16, kLeave = 0x17 };
constexpr uint8_t kReportV3 = 0x22;
enum MldType : uint8_t { kMldQuery = 130, kMldReport = 131, kMldDone = 132 };
constexpr uint8_t kMldReportV2 = 143;

constexpr uint8_t kAllNodes[16] = {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};

}  // namespace

MulticastPacket::MulticastPacket(const Frame& frame)
{
    if (!frame.ToGroup())
        return;
    if (frame.Type() == kTypeIpv4)
        ReadIpv4(frame.Payload());
    else if (frame.Type() == kTypeIpv6)
        ReadIpv6(frame.Payload());
}

void MulticastPacket::ReadIpv4(Bytes packet)
{
    if (packet.size() < kIpv4Header || packet[0] >> 4 != 4 || packet[16] >> 4 != 0xE)
        return;
    protocol = Protocol::kIgmp;
    destination = packet.data() + 16;
    kind = Kind::kData;
    const size_t header = 4u * (packet[0] & 15);
    const size_t total = std::min<size_t>(Word(packet.data() + 2), packet.size());
    const bool laterFragment = (Word(packet.data() + 6) & 0x1FFF) != 0;
    if (packet[9] != kProtocolIgmp || laterFragment || header < kIpv4Header || header + 8 > total)
        return;
    message = packet.subspan(header, total - header);
    const uint8_t type = message[0];
    if (type == kIgmpQuery)
        kind = Kind::kQuery;
    else if (type == kReportV1 || type == kReportV2 || type == kLeave || type == kReportV3)
        kind = Kind::kReport;
}

void MulticastPacket::ReadIpv6(Bytes packet)
{
    if (packet.size() < kIpv6Header || packet[0] >> 4 != 6 || packet[24] != 0xFF)
        return;
    protocol = Protocol::kMld;
    destination = packet.data() + 24;
    kind = Kind::kData;
    const size_t total = std::min<size_t>(kIpv6Header + Word(packet.data() + 4), packet.size());
    if (packet[6] != kHopByHop || total < kIpv6Header + 8 || packet[kIpv6Header] != kIcmp6)
        return;
    const size_t at = kIpv6Header + 8u * (packet[kIpv6Header + 1] + 1u);
    if (at + 8 > total)
        return;
    message = packet.subspan(at, total - at);
    const uint8_t type = message[0];
    const bool single = message.size() >= 8 + GroupSize();
    if (type == kMldQuery && single)
        kind = Kind::kQuery;
    else if (type == kMldReportV2 || ((type == kMldReport || type == kMldDone) && single))
        kind = Kind::kReport;
}

bool MulticastPacket::Unrestricted() const
{
    if (protocol == Protocol::kMld)
        return std::equal(std::begin(kAllNodes), std::end(kAllNodes), destination);
    return destination[0] == 224 && destination[1] == 0 && destination[2] == 0;
}

bool MulticastPacket::ManyRecords() const
{
    return message[0] == (protocol == Protocol::kIgmp ? kReportV3 : kMldReportV2);
}

bool MulticastPacket::Leaves() const
{
    return message[0] == (protocol == Protocol::kIgmp ? uint8_t{kLeave} : uint8_t{kMldDone});
}

GroupAddress MulticastPacket::GroupAt(const uint8_t* address) const
{
    GroupAddress group{};
    memcpy(group.data(), address, GroupSize());
    return group;
}

MulticastPacket::Record MulticastPacket::RecordAt(size_t at) const
{
    const size_t fixed = 4 + GroupSize();
    if (at + fixed > message.size())
        return {};
    const uint8_t* start = message.data() + at;
    const unsigned sources = Word(start + 2);
    const size_t size = fixed + sources * GroupSize() + 4u * start[1];
    if (at + size > message.size())
        return {};
    return {start[0], sources, start + 4, size};
}

}  // namespace vboard::datapath

#include "virtual_board/datapath/membership.h"

#include <algorithm>
#include <cstring>

#include "virtual_board/datapath/ip.h"

namespace vboard::datapath {
namespace {

constexpr uint8_t kProtocolIgmp = 2;
constexpr uint8_t kHopByHop = 0;

enum IgmpType : uint8_t { kIgmpQuery = 0x11, kReportV1 = 0x12, kReportV2 = 0x16, kLeave = 0x17 };
constexpr uint8_t kReportV3 = 0x22;
enum MldType : uint8_t { kMldQuery = 130, kMldReport = 131, kMldDone = 132 };
constexpr uint8_t kMldReportV2 = 143;

constexpr uint8_t kAllNodes[16] = {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1};
constexpr uint8_t kSolicitedNode[13] = {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1, 0xFF};

constexpr uint8_t kPim = 103;
constexpr uint8_t kPimHello = 0x20;  // of version 2
constexpr size_t kPimHeader = 4;
constexpr uint8_t kPimRouters[4] = {224, 0, 0, 13};
constexpr uint8_t kPimRouters6[16] = {0xFF, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 13};

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
    protocol_ = Protocol::kIgmp;
    source_ = packet.data() + 12;
    destination_ = packet.data() + 16;
    kind_ = Kind::kData;
    const size_t header = size_t{4} * (packet[0] & 15);
    const size_t total = std::min<size_t>(Word(packet.data() + 2), packet.size());
    const bool laterFragment = (Word(packet.data() + 6) & 0x1FFF) != 0;
    if (laterFragment || header < kIpv4Header || header > total)
        return;
    if (packet[9] == kProtocolIgmp)
        ReadIgmp(packet.subspan(header, total - header));
    else if (packet[9] == kPim && memcmp(destination_, kPimRouters, sizeof kPimRouters) == 0)
        ReadHello(packet.subspan(header, total - header));
}

void MulticastPacket::ReadIgmp(Bytes packet)
{
    if (packet.size() < 8 || Sum(packet, 0) != 0xFFFF)
        return;
    message_ = packet;
    const uint8_t type = message_[0];
    if (type == kIgmpQuery)
        kind_ = Kind::kQuery;
    else if (type == kReportV1 || type == kReportV2 || type == kLeave || type == kReportV3)
        kind_ = Kind::kReport;
}

void MulticastPacket::ReadIpv6(Bytes packet)
{
    if (packet.size() < kIpv6Header || packet[0] >> 4 != 6 || packet[24] != 0xFF)
        return;
    protocol_ = Protocol::kMld;
    source_ = packet.data() + 8;
    destination_ = packet.data() + 24;
    kind_ = Kind::kData;
    const size_t total = std::min<size_t>(kIpv6Header + Word(packet.data() + 4), packet.size());
    const Bytes rest = packet.subspan(kIpv6Header, total - kIpv6Header);
    if (packet[6] == kPim && memcmp(destination_, kPimRouters6, sizeof kPimRouters6) == 0)
        return ReadHello(rest);
    if (packet[6] != kHopByHop || rest.size() < 8 || rest[0] != kIcmp6)
        return;
    const size_t options = size_t{8} * (rest[1] + 1u);
    if (options + 8 <= rest.size())
        ReadMld(rest.subspan(options));
}

void MulticastPacket::ReadMld(Bytes packet)
{
    if (Sum(packet, PseudoHeader(kIcmp6) + static_cast<uint32_t>(packet.size())) != 0xFFFF)
        return;
    message_ = packet;
    const uint8_t type = message_[0];
    const bool single = message_.size() >= 8 + GroupSize();
    if (type == kMldQuery && single)
        kind_ = Kind::kQuery;
    else if (type == kMldReportV2 || ((type == kMldReport || type == kMldDone) && single))
        kind_ = Kind::kReport;
}

void MulticastPacket::ReadHello(Bytes packet)
{
    const uint32_t start =
        protocol_ == Protocol::kMld ? PseudoHeader(kPim) + static_cast<uint32_t>(packet.size()) : 0;
    if (packet.size() < kPimHeader || packet[0] != kPimHello || Sum(packet, start) != 0xFFFF)
        return;
    message_ = packet;
    kind_ = Kind::kHello;
}

uint32_t MulticastPacket::PseudoHeader(uint8_t next) const
{
    uint32_t sum = next;
    for (size_t at = 0; at < 16; at += 2)
        sum += Word(source_ + at) + Word(destination_ + at);
    return sum;
}

bool MulticastPacket::Elects() const
{
    return std::any_of(source_, source_ + GroupSize(), [](uint8_t octet) { return octet != 0; });
}

std::chrono::seconds MulticastPacket::HoldTime() const
{
    constexpr uint16_t kHoldTime = 1;
    for (size_t at = kPimHeader; at + 4 <= message_.size();) {
        const size_t length = Word(message_.data() + at + 2);
        if (Word(message_.data() + at) == kHoldTime && length == 2 && at + 6 <= message_.size())
            return std::chrono::seconds(Word(message_.data() + at + 4));
        at += 4 + length;
    }
    return std::chrono::seconds(105);
}

// On IPv6 the groups of neighbour discovery as well: a host that is not heard there is not found.
bool MulticastPacket::Unrestricted() const
{
    if (protocol_ == Protocol::kMld)
        return std::equal(std::begin(kAllNodes), std::end(kAllNodes), destination_) ||
               std::equal(std::begin(kSolicitedNode), std::end(kSolicitedNode), destination_);
    return destination_[0] == 224 && destination_[1] == 0 && destination_[2] == 0;
}

bool MulticastPacket::ManyRecords() const
{
    return message_[0] == (protocol_ == Protocol::kIgmp ? kReportV3 : kMldReportV2);
}

bool MulticastPacket::Leaves() const
{
    return message_[0] == (protocol_ == Protocol::kIgmp ? uint8_t{kLeave} : uint8_t{kMldDone});
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
    if (at + fixed > message_.size())
        return {};
    const uint8_t* start = message_.data() + at;
    const unsigned sources = Word(start + 2);
    const size_t size = fixed + sources * GroupSize() + size_t{4} * start[1];
    if (at + size > message_.size())
        return {};
    return {start[0], sources, start + 4, size};
}

}  // namespace vboard::datapath

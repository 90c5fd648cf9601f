#include "virtual_board/datapath/offload.h"

#include <cstring>

#include "virtual_board/datapath/ip.h"

namespace vboard::datapath {
namespace {

constexpr uint16_t kTypeVlan = 0x8100;
constexpr uint16_t kTypeServiceVlan = 0x88A8;
constexpr size_t kTcpHeader = 20;
constexpr size_t kTcpSum = 16;
constexpr uint8_t kTcp = 6;
constexpr uint8_t kFinOrPush = 0x09;
constexpr uint8_t kWindowReduced = 0x80;
constexpr size_t kMostHeaders = 256;
// Smaller ones no host sends, and they would make thousands of frames.
constexpr size_t kLeastPerFrame = 48;

uint32_t LongWord(const uint8_t* at)
{
    return static_cast<uint32_t>(Word(at)) << 16 | Word(at + 2);
}

void PutLongWord(uint8_t* at, uint32_t value)
{
    PutWord(at, static_cast<uint16_t>(value >> 16));
    PutWord(at + 2, static_cast<uint16_t>(value));
}

void PutSum(uint8_t* at, uint16_t sum)
{
    const auto checksum = static_cast<uint16_t>(~sum);
    PutWord(at, checksum != 0 ? checksum : 0xFFFF);
}

bool IsTcp(Bytes packet, size_t ip, size_t tcp)
{
    const uint8_t* header = packet.data() + ip;
    if (packet[ip] >> 4 == 6)
        return tcp >= ip + kIpv6Header;
    return packet[ip] >> 4 == 4 && tcp == ip + size_t{4} * (packet[ip] & 15) &&
           tcp >= ip + kIpv4Header && header[9] == kTcp;
}

// Where the data of a long packet begin, and where its IP header is.
bool FindHeaders(Bytes packet, Offload& offload)
{
    size_t at = kAddresses;
    uint16_t type = Word(packet.data() + at);
    while ((type == kTypeVlan || type == kTypeServiceVlan) && at + kTag + 2 <= packet.size()) {
        at += kTag;
        type = Word(packet.data() + at);
    }
    const size_t ip = at + 2;
    const size_t tcp = offload.sumFrom;
    if ((type != kTypeIpv4 && type != kTypeIpv6) || ip + kIpv4Header > tcp ||
        tcp + kTcpHeader > packet.size() || offload.sumAt != tcp + kTcpSum ||
        !IsTcp(packet, ip, tcp))
        return false;
    const size_t data = tcp + size_t{4} * (packet[tcp + 12] >> 4);
    offload.ip = static_cast<uint16_t>(ip);
    offload.data = static_cast<uint16_t>(data);
    return data >= tcp + kTcpHeader && data < packet.size() && data <= kMostHeaders &&
           packet.size() - ip <= 65535;
}

}  // namespace

std::optional<Offload> Understand(Bytes packet, size_t sumFrom, size_t sumOffset, size_t perFrame)
{
    if (sumFrom < kHeader || sumFrom + sumOffset + 2 > packet.size() ||
        packet.size() > kLongestPacket - kTag)
        return std::nullopt;
    Offload offload;
    offload.sumFrom = static_cast<uint16_t>(sumFrom);
    offload.sumAt = static_cast<uint16_t>(sumFrom + sumOffset);
    if (perFrame == 0)
        return offload;
    if (perFrame < kLeastPerFrame || !FindHeaders(packet, offload))
        return std::nullopt;
    // What fits into one frame is one.
    if (packet.size() - offload.data > perFrame)
        offload.perFrame = static_cast<uint16_t>(perFrame);
    return offload;
}

Shape ShapeOf(size_t size, const Offload& offload)
{
    if (!offload.IsLong())
        return {1, 0, std::max(size, kShortest)};
    const size_t data = size - offload.data;
    const size_t frames = (data + offload.perFrame - 1) / offload.perFrame;
    const size_t each = std::max<size_t>(offload.data + offload.perFrame, kShortest);
    const size_t last = offload.data + data - (frames - 1) * offload.perFrame;
    return {static_cast<unsigned>(frames), each, std::max(last, kShortest)};
}

bool IsIpv6(const uint8_t* packet, const Offload& offload)
{
    return packet[offload.ip] >> 4 == 6;
}

Bytes Cutter::Next()
{
    if (offload_.data + done_ >= packet_.size())
        return {};
    const size_t left = packet_.size() - offload_.data - done_;
    const size_t part = offload_.IsLong() ? std::min<size_t>(left, offload_.perFrame) : left;
    const size_t size = Place(done_, part);
    if (offload_.IsLong()) {
        AdjustIp(size);
        AdjustTcp(done_, size);
    }
    if (offload_.sumFrom != 0)
        PutSum(room_ + offload_.sumAt, Sum({room_ + offload_.sumFrom, size - offload_.sumFrom}, 0));
    done_ += part;
    ++number_;
    if (size < kShortest)
        memset(room_ + size, 0, kShortest - size);
    return {room_, std::max(size, kShortest)};
}

size_t Cutter::Place(size_t at, size_t size)
{
    memcpy(room_, packet_.data(), offload_.data);
    memcpy(room_ + offload_.data, packet_.data() + offload_.data + at, size);
    return offload_.data + size;
}

void Cutter::AdjustIp(size_t size) const
{
    uint8_t* ip = room_ + offload_.ip;
    if (ip[0] >> 4 == 6) {
        PutWord(ip + 4, static_cast<uint16_t>(size - offload_.ip - kIpv6Header));
        return;
    }
    PutWord(ip + 2, static_cast<uint16_t>(size - offload_.ip));
    PutWord(ip + 4, static_cast<uint16_t>(Word(ip + 4) + number_));
    PutWord(ip + 10, 0);
    PutWord(ip + 10, static_cast<uint16_t>(~Sum({ip, size_t{4} * (ip[0] & 15)}, 0)));
}

// The checksum's place holds the sum of the pseudo header, of which the length changes.
void Cutter::AdjustTcp(size_t at, size_t size) const
{
    uint8_t* tcp = room_ + offload_.sumFrom;
    PutLongWord(tcp + 4, LongWord(tcp + 4) + static_cast<uint32_t>(at));
    if (offload_.data + at + offload_.perFrame < packet_.size())
        tcp[13] &= static_cast<uint8_t>(~kFinOrPush);
    if (number_ != 0)
        tcp[13] &= static_cast<uint8_t>(~kWindowReduced);
    const auto before = static_cast<uint16_t>(packet_.size() - offload_.sumFrom);
    const auto now = static_cast<uint16_t>(size - offload_.sumFrom);
    const uint32_t change = static_cast<uint16_t>(~before) + uint32_t{now};
    PutWord(tcp + kTcpSum, Sum({tcp + kTcpSum, 2}, change));
}

}  // namespace vboard::datapath

#include "virtual_board/datapath/frame.h"

#include <algorithm>
#include <cstring>

namespace vboard::datapath {
namespace {

constexpr uint8_t kReservedPrefix[] = {0x01, 0x80, 0xC2, 0x00, 0x00};

Tag DecodeTag(uint16_t word)
{
    return {static_cast<uint16_t>(word & 0x0FFF), static_cast<uint8_t>(word >> 13),
            (word & 0x1000) != 0};
}

uint16_t EncodeTag(const Tag& tag)
{
    return static_cast<uint16_t>(tag.pcp << 13 | (tag.dei ? 0x1000 : 0) | tag.vid);
}

}  // namespace

Offload Offload::MovedBy(int octets) const
{
    const auto moved = [octets](uint16_t at) {
        return at == 0 ? at : static_cast<uint16_t>(at + octets);
    };
    return {moved(sumFrom), moved(sumAt), perFrame, moved(ip), moved(data)};
}

Frame Parse(unsigned port, Bytes bytes, uint16_t tpid)
{
    Frame frame{bytes, port, false, {}, kAddresses, {}};
    if (tpid == 0 || frame.Type() != tpid)
        return frame;
    frame.tagged = true;
    frame.tag = DecodeTag(Word(bytes.data() + kAddresses + 2));
    frame.typeAt += kTag;
    return frame;
}

Bytes Compose(const Frame& frame, bool tagged, uint16_t tpid, uint8_t* room)
{
    const Bytes rest = frame.bytes.subspan(frame.typeAt);
    size_t size = kAddresses;
    memcpy(room, frame.bytes.data(), kAddresses);
    if (tagged) {
        PutWord(room + size, tpid);
        PutWord(room + size + 2, EncodeTag(frame.tag));
        size += kTag;
    }
    memcpy(room + size, rest.data(), rest.size());
    size += rest.size();
    if (size < kShortest)
        memset(room + size, 0, kShortest - size);
    return {room, std::max(size, kShortest)};
}

bool IsBroadcast(const uint8_t* mac)
{
    return std::all_of(mac, mac + 6, [](uint8_t octet) { return octet == 0xFF; });
}

bool IsReserved(const uint8_t* mac)
{
    return memcmp(mac, kReservedPrefix, sizeof kReservedPrefix) == 0 && mac[5] <= 0x0F;
}

bool IsReservedOfProvider(const uint8_t* mac)
{
    return IsReserved(mac) && mac[5] >= 0x01 && mac[5] <= 0x0A;
}

bool IsPause(const uint8_t* mac)
{
    return IsReserved(mac) && mac[5] == 1;
}

MacAddress AddressAt(const uint8_t* mac)
{
    MacAddress address;
    memcpy(address.data(), mac, address.size());
    return address;
}

}  // namespace vboard::datapath

// An Ethernet frame without its frame check sequence, and its outer tag.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "virtual_board/description/mac_address.h"

namespace vboard::datapath {

using Bytes = std::span<const uint8_t>;

inline constexpr size_t kAddresses = 12;
inline constexpr size_t kTag = 4;
inline constexpr size_t kHeader = kAddresses + 2;
inline constexpr size_t kShortest = 60;
inline constexpr size_t kLongest = 10240;
inline constexpr size_t kCheckSequence = 4;

constexpr uint16_t Word(const uint8_t* at)
{
    return static_cast<uint16_t>(at[0] << 8 | at[1]);
}

constexpr void PutWord(uint8_t* at, uint16_t value)
{
    at[0] = static_cast<uint8_t>(value >> 8);
    at[1] = static_cast<uint8_t>(value);
}

struct Tag {
    uint16_t vid = 0;
    uint8_t pcp = 0;
    bool dei = false;
};

// What is still to be done with a packet before it is on a wire (offload.h). Places count from the
// packet's first octet.
struct Offload {
    uint16_t sumFrom = 0;   // where the octets begin of which a checksum is missing; 0: none is
    uint16_t sumAt = 0;     // where it goes
    uint16_t perFrame = 0;  // octets of TCP data that a frame takes; 0: the packet is one frame
    uint16_t ip = 0;        // where the IP header of a long packet is
    uint16_t data = 0;      // and where its data begin

    bool IsLong() const { return perFrame != 0; }
    bool IsDone() const { return sumFrom == 0 && perFrame == 0; }
    // Of the packet with so many octets more, or fewer, in front of the IP header.
    Offload MovedBy(int octets) const;
};

struct Frame {
    Bytes bytes;    // as it came in, at least kShortest of them
    unsigned port;  // on which it came in
    bool tagged;    // with a tag that the port recognises
    Tag tag;        // VLAN id, priority and DEI, wherever they come from
    size_t typeAt;  // of the type after that tag
    Offload offload = {};

    const uint8_t* Destination() const { return bytes.data(); }
    const uint8_t* Source() const { return bytes.data() + 6; }
    bool ToGroup() const { return (bytes[0] & 1) != 0; }
    uint16_t Type() const { return Word(bytes.data() + typeAt); }
    Bytes Payload() const { return bytes.subspan(typeAt + 2); }
};

// With the tag of this identifier taken off; 0: no tag is recognised.
Frame Parse(unsigned port, Bytes bytes, uint16_t tpid);

// Writes the frame without a tag, or with that of `frame.tag`; the result lies in `room`, which
// has kTag bytes more than the longest frame.
Bytes Compose(const Frame& frame, bool tagged, uint16_t tpid, uint8_t* room);

// Of the whole frame on the wire, the frame check sequence included.
constexpr size_t LengthOf(Bytes bytes)
{
    return bytes.size() + kCheckSequence;
}

bool IsBroadcast(const uint8_t* mac);
// 01:80:C2:00:00:00 to 01:80:C2:00:00:0F
bool IsReserved(const uint8_t* mac);
// Those of them that an S-VLAN component of a provider bridge keeps for itself: 01 to 0A.
bool IsReservedOfProvider(const uint8_t* mac);
bool IsPause(const uint8_t* mac);
MacAddress AddressAt(const uint8_t* mac);

}  // namespace vboard::datapath

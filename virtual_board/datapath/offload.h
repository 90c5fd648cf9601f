// What a host leaves to its interface: the checksum of a packet, and to cut a long TCP packet into
// frames. Such a packet goes through the switch whole where it can, and counts as its frames.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "virtual_board/datapath/frame.h"

namespace vboard::datapath {

// The longest that a host hands over at once: an IP packet with its Ethernet header and tags.
inline constexpr size_t kLongestPacket = 65535 + kHeader + 3 * kTag;

// Of a packet, wherever it is on its way, the frames that it becomes on a wire. All but the last
// are of the same size; no length has the frame check sequence.
struct Shape {
    unsigned frames;
    size_t each;
    size_t last;

    size_t Longest() const { return frames > 1 ? each : last; }
    size_t Octets() const { return (frames - 1) * each + last; }
};

// Finds what is left to do with a packet, of which its host says where a checksum is to be summed
// and put, and how many octets of TCP data a frame takes (0: it is one frame). Nothing: these
// numbers do not fit the packet.
std::optional<Offload> Understand(Bytes packet, size_t sumFrom, size_t sumOffset, size_t perFrame);

Shape ShapeOf(size_t size, const Offload& offload);
bool IsIpv6(const uint8_t* packet, const Offload& offload);

// Makes the frames of a packet, with their checksums.
class Cutter {
public:
    // The room has kLongestPacket octets.
    Cutter(Bytes whole, const Offload& left, uint8_t* place)
        : packet_(whole), offload_(left), room_(place)
    {
    }

    // The next frame, which goes with the one after it; empty: there are no more.
    Bytes Next();

private:
    size_t Place(size_t at, size_t size);
    void AdjustIp(size_t size) const;
    void AdjustTcp(size_t at, size_t size) const;

    Bytes packet_;
    Offload offload_;
    uint8_t* room_;
    size_t done_ = 0;  // octets of data; of a packet that is one frame, of all
    uint16_t number_ = 0;
};

}  // namespace vboard::datapath

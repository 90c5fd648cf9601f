// The switch's packet memory: frames in chains of buffers.
#pragma once

#include <sys/uio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "virtual_board/datapath/offload.h"

namespace vboard::datapath {

class PacketMemory {
public:
    static constexpr unsigned kBuffers = 4096;
    static constexpr size_t kBufferSize = 256;
    static constexpr size_t kMaxPieces = kLongestPacket / kBufferSize + 1;
    using Pieces = std::array<iovec, kMaxPieces>;

    PacketMemory();
    void Clear();
    unsigned Free() const { return freeBuffers_; }

    // How many buffers the frames of a packet take on their way; never fewer than its octets do.
    static unsigned BuffersOf(const Shape& shape)
    {
        const auto of = [](size_t size) {
            return static_cast<unsigned>((size + kCheckSequence + kBufferSize - 1) / kBufferSize);
        };
        return (shape.frames - 1) * of(shape.each) + of(shape.last);
    }

    // There must be that many free. The chain's first buffer.
    uint16_t Store(Bytes packet, unsigned count);
    void Release(uint16_t first, unsigned buffers);
    // Where the packet of that many bytes lies.
    std::span<const iovec> Show(uint16_t first, size_t bytes, Pieces& pieces);

private:
    std::vector<std::array<uint8_t, kBufferSize>> buffers_;
    std::array<uint16_t, kBuffers> next_;
    uint16_t firstFree_;
    unsigned freeBuffers_;
};

// A packet in one piece, in the room.
Bytes Gather(std::span<const iovec> pieces, uint8_t* room);

}  // namespace vboard::datapath

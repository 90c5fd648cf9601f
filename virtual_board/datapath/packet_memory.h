// The switch's packet memory: frames in chains of buffers.
#pragma once

#include <sys/uio.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "virtual_board/datapath/frame.h"

namespace vboard::datapath {

class PacketMemory {
public:
    static constexpr unsigned kBuffers = 4096;
    static constexpr size_t kBufferSize = 256;
    static constexpr size_t kMaxPieces = (kLongest + kTag) / kBufferSize + 1;
    using Pieces = std::array<iovec, kMaxPieces>;

    PacketMemory();
    void Clear();
    unsigned Free() const { return freeBuffers; }

    // How many buffers a frame takes on its way.
    static unsigned BuffersOf(Bytes frame)
    {
        return static_cast<unsigned>((LengthOf(frame) + kBufferSize - 1) / kBufferSize);
    }

    // There must be that many free. The chain's first buffer.
    uint16_t Store(Bytes frame);
    void Release(uint16_t first, unsigned buffers);
    // Where the frame of that many bytes lies.
    std::span<const iovec> Show(uint16_t first, size_t bytes, Pieces& pieces);

private:
    std::vector<std::array<uint8_t, kBufferSize>> buffers;
    std::array<uint16_t, kBuffers> next;
    uint16_t firstFree;
    unsigned freeBuffers;
};

}  // namespace vboard::datapath

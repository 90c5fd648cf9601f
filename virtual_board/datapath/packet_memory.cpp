#include "virtual_board/datapath/packet_memory.h"

#include <algorithm>
#include <cstring>

namespace vboard::datapath {

PacketMemory::PacketMemory() : buffers(kBuffers)
{
    Clear();
}

void PacketMemory::Clear()
{
    for (unsigned i = 0; i < kBuffers; ++i)
        next[i] = static_cast<uint16_t>(i + 1);
    firstFree = 0;
    freeBuffers = kBuffers;
}

uint16_t PacketMemory::Store(Bytes frame)
{
    const uint16_t first = firstFree;
    for (unsigned left = BuffersOf(frame); left > 0; --left) {
        const size_t part = std::min(frame.size(), kBufferSize);
        memcpy(buffers[firstFree].data(), frame.data(), part);
        frame = frame.subspan(part);
        firstFree = next[firstFree];
        --freeBuffers;
    }
    return first;
}

void PacketMemory::Release(uint16_t first, unsigned count)
{
    uint16_t last = first;
    for (unsigned i = 1; i < count; ++i)
        last = next[last];
    next[last] = firstFree;
    firstFree = first;
    freeBuffers += count;
}

std::span<const iovec> PacketMemory::Show(uint16_t first, size_t bytes, Pieces& pieces)
{
    size_t used = 0;
    for (uint16_t at = first; bytes > 0; at = next[at]) {
        const size_t part = std::min(bytes, kBufferSize);
        pieces[used++] = {buffers[at].data(), part};
        bytes -= part;
    }
    return {pieces.data(), used};
}

}  // namespace vboard::datapath

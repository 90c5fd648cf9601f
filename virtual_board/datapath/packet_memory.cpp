#include "virtual_board/datapath/packet_memory.h"

#include <algorithm>
#include <cstring>

namespace vboard::datapath {

PacketMemory::PacketMemory() : buffers_(kBuffers)
{
    Clear();
}

void PacketMemory::Clear()
{
    for (unsigned i = 0; i < kBuffers; ++i)
        next_[i] = static_cast<uint16_t>(i + 1);
    firstFree_ = 0;
    freeBuffers_ = kBuffers;
}

uint16_t PacketMemory::Store(Bytes packet, unsigned count)
{
    const uint16_t first = firstFree_;
    for (unsigned left = count; left > 0; --left) {
        const size_t part = std::min(packet.size(), kBufferSize);
        memcpy(buffers_[firstFree_].data(), packet.data(), part);
        packet = packet.subspan(part);
        firstFree_ = next_[firstFree_];
    }
    freeBuffers_ -= count;
    return first;
}

void PacketMemory::Release(uint16_t first, unsigned count)
{
    uint16_t last = first;
    for (unsigned i = 1; i < count; ++i)
        last = next_[last];
    next_[last] = firstFree_;
    firstFree_ = first;
    freeBuffers_ += count;
}

std::span<const iovec> PacketMemory::Show(uint16_t first, size_t bytes, Pieces& pieces)
{
    size_t used = 0;
    for (uint16_t at = first; bytes > 0; at = next_[at]) {
        const size_t part = std::min(bytes, kBufferSize);
        uint8_t* start = buffers_[at].data();
        // Buffers that lie one behind the other are one piece: the kernel is quicker with few.
        if (used > 0 &&
            start == static_cast<uint8_t*>(pieces[used - 1].iov_base) + pieces[used - 1].iov_len)
            pieces[used - 1].iov_len += part;
        else
            pieces[used++] = {start, part};
        bytes -= part;
    }
    return {pieces.data(), used};
}

Bytes Gather(std::span<const iovec> pieces, uint8_t* room)
{
    size_t size = 0;
    for (const iovec& piece : pieces) {
        memcpy(room + size, piece.iov_base, piece.iov_len);
        size += piece.iov_len;
    }
    return {room, size};
}

}  // namespace vboard::datapath

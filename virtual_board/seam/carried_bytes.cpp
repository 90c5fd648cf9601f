#include "virtual_board/seam/carried_bytes.h"

#include <algorithm>
#include <cerrno>

namespace vboard::seam {
namespace {

struct Part {
    uint64_t address;
    uint64_t size;
};

constexpr uint64_t kMostParts = 1024;

std::vector<Part> PartsOfVector(const Target& target, uint64_t vector, uint64_t count)
{
    if (count > kMostParts)
        throw CallFails{EINVAL};
    std::vector<Part> parts;
    const uint64_t word = target.PointerSize();
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = vector + i * 2 * word;
        parts.push_back({target.ReadPointer(entry), target.ReadPointer(entry + word)});
    }
    return parts;
}

std::vector<Part> PartsOf(const Target& target)
{
    switch (*target.Call()) {
        case Call::kReadVector:
        case Call::kWriteVector:
            return PartsOfVector(target, target.Argument(1), target.Argument(2));
        case Call::kSendMessage:
        case Call::kReceiveMessage: {
            // msghdr: name, its length (padded to a word), vector, count
            const uint64_t vector = target.Argument(1) + 2 * target.PointerSize();
            return PartsOfVector(target, target.ReadPointer(vector),
                                 target.ReadPointer(vector + target.PointerSize()));
        }
        default:
            return {{target.Argument(1), target.Argument(2)}};
    }
}

}  // namespace

std::vector<uint8_t> CarriedBytes(const Target& target, size_t limit)
{
    std::vector<uint8_t> bytes;
    for (const Part& part : PartsOf(target)) {
        if (part.size > limit - bytes.size())
            throw CallFails{EMSGSIZE};
        const size_t before = bytes.size();
        const auto size = static_cast<size_t>(part.size);
        bytes.resize(before + size);
        if (size > 0)
            target.Read(part.address, bytes.data() + before, size);
    }
    return bytes;
}

size_t PutBytes(const Target& target, std::span<const uint8_t> bytes)
{
    size_t put = 0;
    for (const Part& part : PartsOf(target)) {
        const auto size = static_cast<size_t>(std::min<uint64_t>(part.size, bytes.size() - put));
        if (size > 0)
            target.Write(part.address, bytes.data() + put, size);
        put += size;
    }
    return put;
}

}  // namespace vboard::seam

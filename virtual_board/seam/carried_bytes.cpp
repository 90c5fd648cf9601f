#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "virtual_board/seam/mailbox_calls.h"

namespace vboard::seam {
namespace {

struct Part {
    uint64_t address;
    uint64_t size;
};

constexpr uint64_t kMostParts = 1024;

void Append(const Target& target, const Part& part, size_t limit, std::vector<uint8_t>& bytes)
{
    if (part.size > limit - bytes.size())
        throw CallFails{EMSGSIZE};
    const size_t before = bytes.size();
    const auto size = static_cast<size_t>(part.size);
    bytes.resize(before + size);
    if (size > 0)
        target.Read(part.address, bytes.data() + before, size);
}

std::vector<uint8_t> Gather(const Target& target, uint64_t vector, uint64_t count, size_t limit)
{
    if (count > kMostParts)
        throw CallFails{EINVAL};
    std::vector<uint8_t> bytes;
    const uint64_t word = target.PointerSize();
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t entry = vector + i * 2 * word;
        Append(target, {target.ReadPointer(entry), target.ReadPointer(entry + word)}, limit, bytes);
    }
    return bytes;
}

}  // namespace

std::vector<uint8_t> CarriedBytes(const Target& target, size_t limit)
{
    if (target.Call() == Call::kWriteVector)
        return Gather(target, target.Argument(1), target.Argument(2), limit);
    if (target.Call() == Call::kSendMessage) {
        // msghdr: name, its length (padded to a word), vector, count
        const uint64_t vector = target.Argument(1) + 2 * target.PointerSize();
        return Gather(target, target.ReadPointer(vector),
                      target.ReadPointer(vector + target.PointerSize()), limit);
    }
    std::vector<uint8_t> bytes;
    Append(target, {target.Argument(1), target.Argument(2)}, limit, bytes);
    return bytes;
}

}  // namespace vboard::seam

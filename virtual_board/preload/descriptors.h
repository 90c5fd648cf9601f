// Which descriptors of this process belong to the board.
#pragma once

#include <cstdint>

namespace vboard::preload {

enum class DescriptorKind : uint8_t { kNone, kMailbox, kLane, kAttribute };

struct Descriptor {
    DescriptorKind kind;
    bool answerDue;  // a receive was cut short after it had been asked for
    unsigned long long cookie;
};

// Takes note of a descriptor and returns it; -1 passes through, and a number too large for the
// table is closed: -1 with EMFILE.
int Remember(int fd, DescriptorKind kind);

// The entry of a descriptor of this kind, else null. A number that meanwhile names another file,
// because something but close() closed it, is no longer ours.
Descriptor* Find(int fd, DescriptorKind kind);

void Forget(int fd);

}  // namespace vboard::preload

// The descriptor through which the kernel asks about the calls that the filter names.
#pragma once

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "virtual_board/board/unique_fd.h"

namespace vboard::seam {

// A descriptor for the caller's table.
struct HandedIn {
    int fd;
    bool closeOnExec;
    std::optional<uint32_t> number;  // else the lowest that is free
};

class Listener {
public:
    explicit Listener(UniqueFd fd);

    int Fd() const { return fd_.Get(); }

    // Whether a call waits: Receive does not block then.
    bool Pending() const;
    // nullopt: the caller is gone, or nobody is under the filter any more.
    std::optional<seccomp_notif> Receive();

    // Whether the caller still waits for the answer: what was read from its memory is its own.
    bool IsWaiting(uint64_t id) const;

    void Continue(uint64_t id);
    void Answer(uint64_t id, int64_t value, int error);
    // The caller's call returns the number of its new descriptor; an errno, else 0.
    int HandIn(uint64_t id, const HandedIn& descriptor);

    // Whether the kernel can hand descriptors in through this listener.
    static bool CanHandIn(int listener);

private:
    void Respond(uint64_t id, int64_t value, int error, uint32_t flags);

    UniqueFd fd_;
    std::vector<uint64_t> buffer_;
};

// Puts the calling process under the filter. What is left to do until exec must not be one of the
// calls that the filter names. -1 with errno.
int InstallFilter(const std::vector<sock_filter>& filter);

// Why InstallFilter failed, for whoever started the program.
std::string ExplainRefusal(int error);

}  // namespace vboard::seam

// Waits for descriptors that stay the same from one round to the next: one system call a round,
// however many they are.
#pragma once

#include <sys/epoll.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <span>

#include "virtual_board/board/unique_fd.h"

namespace vboard {

class Poller {
public:
    using Limit = std::optional<std::chrono::nanoseconds>;

    // What a descriptor is to whoever waits for it.
    struct Mark {
        uint32_t kind;
        uint32_t number;
    };
    struct Ready {
        Mark mark;
        uint32_t events;
    };

    // Throws std::system_error, as Watch does.
    Poller();

    // The descriptor must stay open until it is forgotten.
    void Watch(int fd, Mark mark, uint32_t events = EPOLLIN);
    void WatchFor(int fd, Mark mark, uint32_t events);  // from now on
    void Forget(int fd);

    // Until something is ready or the time is over; nullopt: however long that takes. For the eager
    // time it looks again and again instead of sleeping: to be woken takes longer than that.
    std::span<const Ready> Wait(Limit limit, std::chrono::nanoseconds eager = {});

    // Waits for one of the descriptors at itself, or for any; true: this one is readable. Who makes
    // it readable may have the waiting thread woken on his own processor, which is lost on the way
    // through Wait.
    bool WaitAt(int fd, Limit limit) const;

private:
    static constexpr size_t kAtOnce = 64;

    using Events = std::array<epoll_event, kAtOnce>;

    // How many are ready, or below 0.
    int LookFor(std::chrono::nanoseconds time, Events& events) const;
    int SleepFor(Limit limit, Events& events) const;

    UniqueFd epoll_;
    std::array<Ready, kAtOnce> ready_;
};

}  // namespace vboard

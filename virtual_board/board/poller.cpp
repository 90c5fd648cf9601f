#include "virtual_board/board/poller.h"

#include <poll.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>

#include "virtual_board/board/system_failure.h"

namespace vboard {
namespace {

epoll_event EventOf(Poller::Mark mark, uint32_t events)
{
    epoll_event event{};
    event.events = events;
    event.data.u64 = uint64_t{mark.kind} << 32 | mark.number;
    return event;
}

// A limit as system calls take it.
class Timeout {
public:
    explicit Timeout(Poller::Limit limit) : limited_(limit.has_value())
    {
        if (!limit)
            return;
        time_.tv_sec = static_cast<time_t>(limit->count() / 1'000'000'000);
        time_.tv_nsec = static_cast<long>(limit->count() % 1'000'000'000);
    }
    const timespec* Get() const { return limited_ ? &time_ : nullptr; }

private:
    bool limited_;
    timespec time_{};
};

}  // namespace

Poller::Poller() : epoll_{epoll_create1(EPOLL_CLOEXEC)}
{
    if (!epoll_)
        Fail("cannot wait for descriptors");
}

void Poller::Watch(int fd, Mark mark, uint32_t events)
{
    epoll_event event = EventOf(mark, events);
    if (epoll_ctl(epoll_.Get(), EPOLL_CTL_ADD, fd, &event) != 0)
        Fail("cannot wait for descriptors");
}

void Poller::WatchFor(int fd, Mark mark, uint32_t events)
{
    epoll_event event = EventOf(mark, events);
    // Result dropped: it is watched.
    static_cast<void>(epoll_ctl(epoll_.Get(), EPOLL_CTL_MOD, fd, &event));
}

void Poller::Forget(int fd)
{
    // Result dropped: it may be out already.
    static_cast<void>(epoll_ctl(epoll_.Get(), EPOLL_CTL_DEL, fd, nullptr));
}

int Poller::LookFor(std::chrono::nanoseconds time, Events& events) const
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + time;
    do {
        const int count = epoll_wait(epoll_.Get(), events.data(), kAtOnce, 0);
        if (count != 0)
            return count;
        sched_yield();  // to whoever has something to send
    } while (Clock::now() < end);
    return 0;
}

int Poller::SleepFor(Limit limit, Events& events) const
{
    const Timeout timeout{limit};
    const int count = epoll_pwait2(epoll_.Get(), events.data(), kAtOnce, timeout.Get(), nullptr);
    if (count >= 0 || errno == EINTR)
        return count;
    // Kernels before 5.11, and sandboxes of their time, take two calls.
    pollfd any{epoll_.Get(), POLLIN, 0};
    ppoll(&any, 1, timeout.Get(), nullptr);
    return epoll_wait(epoll_.Get(), events.data(), kAtOnce, 0);
}

std::span<const Poller::Ready> Poller::Wait(Limit limit, std::chrono::nanoseconds eager)
{
    Events events;
    int count = 0;
    if (limit)
        eager = std::min(eager, *limit);
    if (eager.count() > 0) {
        count = LookFor(eager, events);
        if (limit)
            *limit -= eager;
    }
    if (count == 0)
        count = SleepFor(limit, events);
    for (int i = 0; i < count; ++i) {
        const uint64_t mark = events[i].data.u64;
        ready_[i] = {{static_cast<uint32_t>(mark >> 32), static_cast<uint32_t>(mark)},
                     events[i].events};
    }
    return {ready_.data(), static_cast<size_t>(count > 0 ? count : 0)};
}

bool Poller::WaitAt(int fd, Limit limit) const
{
    pollfd either[] = {{fd, POLLIN, 0}, {epoll_.Get(), POLLIN, 0}};
    const Timeout timeout{limit};
    return ppoll(either, std::size(either), timeout.Get(), nullptr) > 0 &&
           (either[0].revents & POLLIN) != 0;
}

}  // namespace vboard

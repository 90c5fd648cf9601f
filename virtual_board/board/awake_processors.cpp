#include "virtual_board/board/awake_processors.h"

#include <fcntl.h>
#include <sys/timerfd.h>

#include <algorithm>
#include <cstdint>
#include <utility>

#include "virtual_board/board/system_failure.h"

namespace vboard {

AwakeProcessors::AwakeProcessors(std::string file, std::chrono::milliseconds after)
    : path_{std::move(file)},
      last_{after},
      timer_{timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK)}
{
    if (!timer_)
        Fail("cannot wait for the end of traffic");
    if (!Request())
        Fail("cannot keep processors awake: " + path_);
    request_ = {};
}

// The wanted latency in microseconds, as a number in the machine's own form.
bool AwakeProcessors::Request()
{
    constexpr int32_t kNone = 0;
    request_ = UniqueFd{open(path_.c_str(), O_WRONLY | O_CLOEXEC)};
    if (request_ && write(request_.Get(), &kNone, sizeof kNone) != ssize_t{sizeof kNone})
        request_ = {};
    return static_cast<bool>(request_);
}

void AwakeProcessors::LookAgainAfter(std::chrono::nanoseconds time)
{
    itimerspec once{};
    once.it_value.tv_sec = static_cast<time_t>(time.count() / 1'000'000'000);
    once.it_value.tv_nsec = static_cast<long>(time.count() % 1'000'000'000);
    // Result dropped: the timer is there, and the time is one.
    static_cast<void>(timerfd_settime(timer_.Get(), 0, &once, nullptr));
}

void AwakeProcessors::FramesPass()
{
    lastFrame_ = Clock::now();
    if (!request_ && Request())
        LookAgainAfter(last_);
}

std::chrono::nanoseconds AwakeProcessors::Left() const
{
    constexpr std::chrono::nanoseconds kNone{0};
    return request_ ? std::max(kNone, lastFrame_ + last_ - Clock::now()) : kNone;
}

void AwakeProcessors::Serve()
{
    uint64_t expirations = 0;
    if (read(timer_.Get(), &expirations, sizeof expirations) != ssize_t{sizeof expirations})
        return;
    if (const auto left = Left(); left.count() > 0)
        LookAgainAfter(left);
    else
        request_ = {};
}

}  // namespace vboard

// The board's own time: real time since power-on, stretched by the time scale, so that a wait that
// was shortened to a thousandth still counts in full.
#pragma once

#include <chrono>

namespace vboard {

class BoardClock {
public:
    explicit BoardClock(double timeScale) : scale_{timeScale} {}

    double Scale() const { return scale_; }
    std::chrono::nanoseconds Now() const
    {
        std::chrono::duration<double, std::nano> real = std::chrono::steady_clock::now() - start_;
        return std::chrono::nanoseconds{
            static_cast<std::chrono::nanoseconds::rep>(real.count() / scale_)};
    }

private:
    double scale_;
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace vboard

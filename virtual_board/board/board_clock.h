// The board's own time: real time since power-on, stretched by the time scale, so that a wait that
// was shortened to a thousandth still counts in full.
#pragma once

#include <chrono>

namespace vboard {

class BoardClock {
public:
    explicit BoardClock(double timeScale) : scale{timeScale} {}

    double Scale() const { return scale; }
    std::chrono::nanoseconds Now() const
    {
        std::chrono::duration<double, std::nano> real = std::chrono::steady_clock::now() - start;
        return std::chrono::nanoseconds{
            static_cast<std::chrono::nanoseconds::rep>(real.count() / scale)};
    }

private:
    double scale;
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

}  // namespace vboard

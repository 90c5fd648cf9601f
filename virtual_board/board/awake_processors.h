// While frames pass, the machine's processors wait for work awake: where a sleeping one takes longer
// to wake than a frame to switch, that is most of a round trip. They ask for power all the time, so
// only who wants it has it.
#pragma once

#include <chrono>
#include <string>

#include "virtual_board/board/background.h"
#include "virtual_board/board/unique_fd.h"

namespace vboard {

class AwakeProcessors : public Background {
public:
    // The kernel's file for requests of a latency, which hold for as long as it is open; for how long
    // after the last frame. Throws std::system_error where such requests are refused.
    explicit AwakeProcessors(std::string file = "/dev/cpu_dma_latency",
                             std::chrono::milliseconds after = std::chrono::milliseconds{20});

    void FramesPass();
    // How much longer, unless another frame comes; zero: they may sleep.
    std::chrono::nanoseconds Left() const;

    int Fd() const override { return timer_.Get(); }
    std::optional<std::chrono::nanoseconds> Wait() const override { return std::nullopt; }
    void Serve() override;

private:
    using Clock = std::chrono::steady_clock;

    bool Request();
    void LookAgainAfter(std::chrono::nanoseconds time);

    std::string path_;
    std::chrono::milliseconds last_;
    UniqueFd timer_;
    UniqueFd request_;
    Clock::time_point lastFrame_;
};

}  // namespace vboard

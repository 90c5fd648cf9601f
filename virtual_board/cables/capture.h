// Frames of one switch, kept for who looks at its ports.
#pragma once

#include <array>
#include <chrono>
#include <deque>
#include <optional>

#include "virtual_board/board/board_clock.h"
#include "virtual_board/board/cables.h"
#include "virtual_board/datapath/switch_engine.h"

namespace vboard::cables {

class Capture : public datapath::Watcher {
public:
    Capture(datapath::SwitchEngine& watched, const BoardClock& boardClock)
        : engine_(watched), clock_(boardClock)
    {
    }

    // Frames of a port from this number on, which the answer before gave; nothing: from now. So few
    // at once that others who ask the board hardly wait.
    // Who has not asked for kPatience does not look any more.
    Captured Take(unsigned port, std::optional<uint64_t> from);

    void Received(const datapath::Frame& frame, const char* lost) override;
    void Sent(const datapath::EgressQueues::Admission& admission,
              std::span<const iovec> frame) override;
    void Discarded(const datapath::EgressQueues::Admission& admission, datapath::Bytes frame,
                   const char* why) override;

private:
    using RealTime = std::chrono::steady_clock::time_point;
    static constexpr std::chrono::seconds kPatience{5};
    static constexpr size_t kMaxFrames = 4096;
    static constexpr uint64_t kAtOnce = 64;

    // One port. Numbers go on from look to look.
    struct Look {
        bool watched = false;
        RealTime asked;
        std::deque<CapturedFrame> frames;
        uint64_t next = 0;  // the number of the next frame
    };

    bool Watches(unsigned port);
    void Keep(unsigned port, CapturedFrame frame);
    void FollowWatching();

    datapath::SwitchEngine& engine_;
    const BoardClock& clock_;
    std::array<Look, vswitch::kPorts> looks_;
};

}  // namespace vboard::cables

// What a cable does to the frames on it, both ways, when it is not a good one.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <queue>
#include <span>
#include <vector>

#include "virtual_board/board/cables.h"
#include "virtual_board/datapath/frame_counters.h"

namespace vboard::cables {

class Wire {
public:
    using Time = std::chrono::nanoseconds;

    // A frame that comes out at an end.
    struct Arrival {
        bool atSwitch;
        std::optional<datapath::Damage> damage;
        std::vector<uint8_t> frame;
    };

    explicit Wire(uint32_t seed) : random_(seed) {}

    void Set(const WireFaults& given) { faults_ = given; }
    const WireFaults& Faults() const { return faults_; }
    // It hands on at once, as it is, what goes in.
    bool IsGood() const { return faults_ == WireFaults{} && travelling_.empty(); }

    // How often the frame has collided before it was sent.
    unsigned Send(bool toSwitch, std::span<const uint8_t> frame, Time now, bool halfDuplex = false);
    // What has come out by now, in order.
    std::optional<Arrival> Receive(Time now);
    // When the next frame comes out.
    std::optional<Time> NextArrival() const;

private:
    struct Travelling {
        Time due;
        uint64_t number;  // of those that come out at the same time the one that went in first
        Arrival arrival;
        bool operator<(const Travelling& other) const;
    };

    bool Draw(uint32_t partsPerMillion);
    std::optional<datapath::Damage> DrawDamage();
    uint32_t Random();
    void Put(bool toSwitch, std::span<const uint8_t> frame, Time now);

    WireFaults faults_;
    std::priority_queue<Travelling> travelling_;
    uint64_t sent_ = 0;
    uint32_t random_;
};

}  // namespace vboard::cables

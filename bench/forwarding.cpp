// What a frame costs the switch engine on this machine, by frame size and by number of ports.
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <stdexcept>
#include <vector>

#include "virtual_board/datapath/switch_engine.h"

namespace {

using std::chrono::nanoseconds;
using vboard::MacAddress;
using vboard::VswitchChip;
using vboard::datapath::SwitchEngine;

constexpr unsigned kFrames = 400'000;
constexpr MacAddress kBroadcast = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

class Sink : public vboard::datapath::Wires {
public:
    void Send(unsigned, std::span<const iovec> frame) override
    {
        ++frames;
        octets += frame[0].iov_len;
    }
    uint64_t frames = 0;
    uint64_t octets = 0;
};

std::vector<uint8_t> FrameOf(size_t length, const MacAddress& to, const MacAddress& from)
{
    std::vector<uint8_t> frame(to.begin(), to.end());
    frame.insert(frame.end(), from.begin(), from.end());
    frame.resize(length - vboard::datapath::kCheckSequence, 0x42);
    return frame;
}

// Nanoseconds of the processor per frame that comes in.
double Cost(unsigned linkedPorts, size_t length, bool flood)
{
    auto chip = std::make_unique<VswitchChip>(0);
    for (unsigned p = 0; p < linkedPorts; ++p) {
        if (!chip->SetLink(p, true, 1, true))
            throw std::runtime_error("no link");
    }
    Sink sink;
    auto engine = std::make_unique<SwitchEngine>(*chip, sink);
    nanoseconds now = std::chrono::seconds(1);
    const MacAddress a = {2, 0, 0, 0, 0, 1}, b = {2, 0, 0, 0, 0, 2};
    const auto there = FrameOf(length, flood ? kBroadcast : b, a);
    const auto back = FrameOf(length, flood ? kBroadcast : a, b);
    const clock_t start = clock();
    for (unsigned i = 0; i < kFrames; ++i) {
        now += std::chrono::microseconds(20);
        chip->Advance(now);
        engine->Receive(i & 1, i & 1 ? back : there, now);
    }
    const double time = 1e9 * static_cast<double>(clock() - start) / CLOCKS_PER_SEC;
    const uint64_t copies = flood ? linkedPorts - 1 : 1;
    if (sink.frames < (kFrames - 1) * copies)
        throw std::runtime_error("frames were lost");
    return time / kFrames;
}

}  // namespace

int main()
{
    printf("%-10s %7s %6s %10s %12s\n", "traffic", "octets", "ports", "ns/frame", "frames/s");
    for (const bool flood : {false, true}) {
        for (const size_t length : {64, 512, 1518}) {
            for (unsigned ports = 2; ports <= 8; ports += flood ? 1 : 3) {
                const double cost = Cost(ports, length, flood);
                printf("%-10s %7zu %6u %10.0f %12.0f\n", flood ? "flooded" : "unicast", length,
                       ports, cost, 1e9 / cost);
            }
        }
    }
}

// How long a client of the virtual board waits for an answer. Milliseconds: the median of the
// calls, 99 % of them, and the worst. Run on a board; control_latency.sh does, with and without
// traffic.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "virtual_board/program/control_client.h"

namespace {

constexpr size_t kCalls = 300;
constexpr std::chrono::milliseconds kPause{5};  // so that calls meet the traffic as it comes

}  // namespace

int main(int argc, char** argv)
{
    using Clock = std::chrono::steady_clock;
    const char* const board = getenv("ORBLINK_VBOARD");
    if (board == nullptr || argc != 2) {
        fprintf(stderr, "control_latency NAME, on a virtual board\n");
        return 2;
    }
    std::vector<double> milliseconds;
    for (size_t i = 0; i < kCalls; ++i) {
        const auto start = Clock::now();
        if (!vboard::AskBoard(board, {{"verb", "battery"}, {"value", i}}).value("ok", false))
            return 1;
        milliseconds.push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - start).count());
        std::this_thread::sleep_for(kPause);
    }
    std::ranges::sort(milliseconds);
    printf("%-20s %8.2f %8.2f %8.2f\n", argv[1], milliseconds[kCalls / 2],
           milliseconds[kCalls / 100 * 99], milliseconds.back());
}

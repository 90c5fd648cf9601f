// All operations in several threads of one process. Built with a race detector (preset tsan) this
// finds what the families' locks do not order; the scripted semaphore tells it what they do.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "tests/robustness/effort.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

constexpr int kThreads = 4;

std::chrono::seconds Duration()
{
    return std::chrono::seconds(Seconds(1));
}

// What a HAL does in a slot: all the services of its family.
void ServeFromSlots()
{
    Platform().slots["PrintMachineState"] = [](const SlotArgs&) {
        for (const ExportedCall& call : CallsOf(Family::kNone))
            if (std::string(call.name).rfind("OBHAL_", 0) == 0)
                call.run();
        return 0;
    };
    Platform().slots["Poll"] = [](const SlotArgs&) {
        for (const ExportedCall& call : CallsOf(Family::kNone))
            if (std::string(call.name).rfind("EPHAL_", 0) == 0)
                call.run();
        return 0;
    };
}

class Threads : public testing::Test {
protected:
    Threads()
    {
        InitialiseElsewhere();
        ServeFromSlots();
        Platform().transcript.quiet = true;
    }

    // Each thread begins elsewhere in the list, and none before the process has attached.
    static void RunCalls(int first, std::chrono::steady_clock::time_point end,
                         std::atomic<int>& made)
    {
        static const std::vector<ExportedCall> calls = [] {
            std::vector<ExportedCall> all = CallsOf(Family::kSwitch);
            for (const ExportedCall& call : CallsOf(Family::kPhy))
                all.push_back(call);
            return all;
        }();
        for (size_t i = static_cast<size_t>(first) * 7; std::chrono::steady_clock::now() < end;
             ++i) {
            calls[i % calls.size()].run();
            ++made;
        }
    }
};

TEST_F(Threads, ShareBothFamilies)
{
    std::atomic<int> made = 0;
    std::vector<std::thread> threads;
    const auto end = std::chrono::steady_clock::now() + Duration();
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] { RunCalls(i, end, made); });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_GT(made, 100);
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
    EXPECT_EQ(LockValue(Family::kPhy), 1);
    printf("| threads | %d threads, %d calls |\n", kThreads, made.load());
}

}  // namespace

// The platform below the library, played from a fuzzer's input: system calls succeed or fail as the
// input says, and the shared regions hold what it holds. Linked with --wrap, so that a call of the
// library comes here and one of the fuzzer's own goes to the C library.
#pragma once

#include <fuzzer/FuzzedDataProvider.h>
#include <pthread.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace fuzz {

enum class Family { kSwitch, kPhy };

struct Platform {
    FuzzedDataProvider* input = nullptr;  // null: nothing runs, the calls are real
    pthread_t thread = {};                // that runs; the fuzzer has others, which sleep
    bool faults = false;                  // system calls may fail
    bool releaseFailed = false;           // a semaphore operation did
    int held[2] = {0, 0};                 // semaphores, by family
    bool forget = false;                  // the semaphores are gone
    std::vector<uint8_t> message = {};    // what the mailbox receives; empty: drawn
};
extern Platform platform;

// The shared region of a family, of exactly its size.
uint8_t* Region(Family family);
size_t RegionSize(Family family);
// One of the states that a region may be in, and then bytes of it as the input says.
void SpoilRegion(Family family);
// A few bytes more, as another process may write them at any time.
void WriteSomewhere(Family family);

// Plays the platform for one input; nothing of the process state of an earlier one is left.
class Scene {
public:
    explicit Scene(FuzzedDataProvider& input, bool faults);
    ~Scene();
    Scene(const Scene&) = delete;
    Scene& operator=(const Scene&) = delete;
};

// Ends the program when a call has returned with a semaphore held.
void CheckReleased();

// Of the input; 0 where it has ended.
template <typename T>
T Any()
{
    return platform.input->ConsumeIntegral<T>();
}

}  // namespace fuzz

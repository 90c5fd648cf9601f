// An id that a process keeps between calls.
#pragma once

#include <atomic>

namespace orblink {

// -1, none, until one is set. All zero bits then: what a process keeps begins as zeroed memory, which
// takes nothing of the library's file and no page before it is used. Threads may look at it at any
// time; it orders nothing else.
class KeptId {
public:
    int Get() const { return idPlusOne_.load(std::memory_order_relaxed) - 1; }
    void Set(int id) { idPlusOne_.store(id + 1, std::memory_order_relaxed); }

    // Back to none, unless another thread has put another one here.
    void Forget(int id)
    {
        int expected = id + 1;
        idPlusOne_.compare_exchange_strong(expected, 0, std::memory_order_release,
                                           std::memory_order_relaxed);
    }

private:
    std::atomic<int> idPlusOne_ = 0;
};

// What a process keeps of one family lies in a page of its own: who uses one family touches no page
// of the other's.
constexpr unsigned kPageSize = 4096;

}  // namespace orblink

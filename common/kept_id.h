// An id that a process keeps between calls.
#pragma once

namespace orblink {

// -1, none, until one is set. All zero bits then: what a process keeps begins as zeroed memory, which
// takes nothing of the library's file and no page before it is used. Threads may look at it at any
// time; it orders nothing else.
class KeptId {
public:
    int Get() const { return __atomic_load_n(&idPlusOne_, __ATOMIC_RELAXED) - 1; }
    void Set(int id) { __atomic_store_n(&idPlusOne_, id + 1, __ATOMIC_RELAXED); }

    // Back to none, unless another thread has put another one here.
    void Forget(int id)
    {
        int expected = id + 1;
        __atomic_compare_exchange_n(&idPlusOne_, &expected, 0, false, __ATOMIC_RELEASE,
                                    __ATOMIC_RELAXED);
    }

private:
    int idPlusOne_ = 0;
};

// What a process keeps of one family lies in a page of its own: who uses one family touches no page
// of the other's.
constexpr unsigned kPageSize = 4096;

}  // namespace orblink

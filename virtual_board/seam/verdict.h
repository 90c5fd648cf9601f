// How a call of a program goes on.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <utility>

#include "virtual_board/board/unique_fd.h"

namespace vboard::seam {

struct Verdict {
    enum class Kind { kContinue, kReturn, kFail, kHandIn, kSleep };

    Kind kind = Kind::kContinue;
    int64_t value = 0;
    int error = 0;
    UniqueFd descriptor = {};
    bool closeOnExec = false;
    std::optional<uint32_t> number = {};
    std::chrono::nanoseconds sleep = {};
};

// It is none of the board's business: the kernel does what it always does.
inline Verdict Continue()
{
    return {};
}

inline Verdict Return(int64_t value)
{
    Verdict verdict;
    verdict.kind = Verdict::Kind::kReturn;
    verdict.value = value;
    return verdict;
}

inline Verdict Fail(int error)
{
    Verdict verdict;
    verdict.kind = Verdict::Kind::kFail;
    verdict.error = error;
    return verdict;
}

// 0, or the error that is not 0.
inline Verdict Outcome(int error)
{
    return error != 0 ? Fail(error) : Return(0);
}

// Returns a new descriptor of the caller.
inline Verdict HandIn(UniqueFd descriptor, bool closeOnExec,
                      std::optional<uint32_t> number = std::nullopt)
{
    Verdict verdict;
    verdict.kind = Verdict::Kind::kHandIn;
    verdict.descriptor = std::move(descriptor);
    verdict.closeOnExec = closeOnExec;
    verdict.number = number;
    return verdict;
}

// Returns 0 after this real time.
inline Verdict Sleep(std::chrono::nanoseconds time)
{
    Verdict verdict;
    verdict.kind = Verdict::Kind::kSleep;
    verdict.sleep = time;
    return verdict;
}

}  // namespace vboard::seam

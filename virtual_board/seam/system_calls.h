// The system calls that may concern the board, under their numbers of both ABIs.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vboard::seam {

enum class Call : uint8_t {
    kSocket,
    kBind,
    kGetSocketName,
    kGetSocketOption,
    kSendTo,
    kSendMessage,
    kReceiveFrom,
    kReceiveMessage,
    kRead,
    kReadVector,
    kWrite,
    kWriteVector,
    kWriteAt,
    kIoctl,
    kOpen,
    kCreate,
    kOpenAt,
    kOpenAt2,
    kStat,
    kLinkStat,
    kStat32,  // i386 only: the stat() and lstat() without 64-bit sizes
    kLinkStat32,
    kStatAt,
    kStatX,
    kAccess,
    kAccessAt,
    kAccessAt2,
    kUnlink,
    kUnlinkAt,
    kChangeMode,
    kChangeModeAt,
    kSemaphoreGet,
    kSleep,
    kClockSleep,
    kClockSleep64,  // i386 only: with 64-bit time
    kIoRing,
};

inline constexpr int kNoCall = -1;

// A call concerns the board only while the argument lies in the range.
struct ArgumentRange {
    unsigned argument;
    uint32_t first;
    uint32_t last;
};

// Why a call is looked at.
enum class Reason : uint8_t { kAlways, kPrivateNames, kScaledTime, kForbidden };

struct CallRule {
    Call call;
    int x86_64;
    int i386;
    Reason reason;
    std::array<ArgumentRange, 2> ranges;  // one of them must hold
    size_t rangeCount;                    // 0: whatever the arguments are
};

// Where the board puts descriptors whose every transfer it has to see: of rtnetlink, and of a mailbox
// while a fault is set.
inline constexpr uint32_t kFirstWatched = 960;
inline constexpr uint32_t kLastWatched = 1007;

// Longest text of write() that is looked at: an attribute may be behind the descriptor. A longer
// one is no value of an attribute, and its file refuses it.
inline constexpr uint32_t kMaxShortText = 64;
inline constexpr uint32_t kMaxShortVector = 8;

inline constexpr int kSocketCall = 102;  // of i386: many calls behind one number
inline constexpr int kIpcCall = 117;
inline constexpr uint32_t kIpcSemaphoreGet = 2;

std::span<const CallRule> CallRules();

// What socketcall() with this first argument does, and how many words its arguments are. send() and
// recv() are kSendTo and kReceiveFrom, without an address.
struct SocketCall {
    uint32_t number;
    Call call;
    size_t words;
};
const SocketCall* FindSocketCall(uint32_t number);  // nullptr: it does not concern the board
std::span<const uint32_t> SocketCallNumbers();

std::optional<Call> FindCall(bool i386, int number);

}  // namespace vboard::seam

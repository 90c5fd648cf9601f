#include "virtual_board/seam/system_calls.h"

#include <linux/sockios.h>
#include <sys/socket.h>

#include <algorithm>

#include "virtual_board/board/wire.h"

namespace vboard::seam {
namespace {

constexpr ArgumentRange kMailboxFamily{0, wire::kMailboxFamily, wire::kMailboxFamily};
constexpr ArgumentRange kNetlinkFamily{0, AF_NETLINK, AF_NETLINK};
constexpr ArgumentRange kWatched{0, kFirstWatched, kLastWatched};
constexpr ArgumentRange kShortText{2, 0, kMaxShortText};
constexpr ArgumentRange kShortVector{2, 0, kMaxShortVector};
constexpr ArgumentRange kOfSocket{1, SOL_SOCKET, SOL_SOCKET};
constexpr ArgumentRange kOfInterface{1, SIOCGIFNAME, SIOCDEVPRIVATE + 15};
constexpr ArgumentRange kOfLane{1, wire::kModphyResetLane, wire::kModphyResetLane};

constexpr CallRule kRules[] = {
    {Call::kSocket, 41, 359, Reason::kAlways, {kMailboxFamily, kNetlinkFamily}, 2},
    {Call::kBind, 49, 361, Reason::kAlways, {}, 0},
    {Call::kGetSocketName, 51, 367, Reason::kAlways, {}, 0},
    {Call::kGetSocketOption, 55, 365, Reason::kAlways, {kOfSocket}, 1},
    {Call::kSendTo, 44, 369, Reason::kAlways, {kWatched}, 1},
    {Call::kSendMessage, 46, 370, Reason::kAlways, {kWatched}, 1},
    {Call::kReceiveFrom, 45, 371, Reason::kAlways, {kWatched}, 1},
    {Call::kReceiveMessage, 47, 372, Reason::kAlways, {kWatched}, 1},
    {Call::kRead, 0, 3, Reason::kAlways, {kWatched}, 1},
    {Call::kReadVector, 19, 145, Reason::kAlways, {kWatched}, 1},
    {Call::kWrite, 1, 4, Reason::kAlways, {kShortText, kWatched}, 2},
    {Call::kWriteVector, 20, 146, Reason::kAlways, {kShortVector, kWatched}, 2},
    {Call::kWriteAt, 18, 181, Reason::kAlways, {kShortText}, 1},
    {Call::kIoctl, 16, 54, Reason::kAlways, {kOfInterface, kOfLane}, 2},
    {Call::kOpen, 2, 5, Reason::kAlways, {}, 0},
    {Call::kCreate, 85, 8, Reason::kAlways, {}, 0},
    {Call::kOpenAt, 257, 295, Reason::kAlways, {}, 0},
    {Call::kOpenAt2, 437, 437, Reason::kAlways, {}, 0},
    {Call::kStat, 4, 195, Reason::kAlways, {}, 0},
    {Call::kLinkStat, 6, 196, Reason::kAlways, {}, 0},
    {Call::kStat32, kNoCall, 106, Reason::kAlways, {}, 0},
    {Call::kLinkStat32, kNoCall, 107, Reason::kAlways, {}, 0},
    {Call::kStatAt, 262, 300, Reason::kAlways, {}, 0},
    {Call::kStatX, 332, 383, Reason::kAlways, {}, 0},
    {Call::kAccess, 21, 33, Reason::kAlways, {}, 0},
    {Call::kAccessAt, 269, 307, Reason::kAlways, {}, 0},
    {Call::kAccessAt2, 439, 439, Reason::kAlways, {}, 0},
    {Call::kUnlink, 87, 10, Reason::kPrivateNames, {}, 0},
    {Call::kUnlinkAt, 263, 301, Reason::kPrivateNames, {}, 0},
    {Call::kChangeMode, 90, 15, Reason::kPrivateNames, {}, 0},
    {Call::kChangeModeAt, 268, 306, Reason::kPrivateNames, {}, 0},
    {Call::kSemaphoreGet, 64, 393, Reason::kPrivateNames, {}, 0},
    {Call::kSleep, 35, 162, Reason::kScaledTime, {}, 0},
    {Call::kClockSleep, 230, 267, Reason::kScaledTime, {}, 0},
    {Call::kClockSleep64, kNoCall, 407, Reason::kScaledTime, {}, 0},
    // What goes through a ring of requests passes every filter.
    {Call::kIoRing, 425, 425, Reason::kForbidden, {}, 0},
};

constexpr SocketCall kSocketCalls[] = {
    {1, Call::kSocket, 3},          {2, Call::kBind, 3},         {6, Call::kGetSocketName, 3},
    {9, Call::kSendTo, 4},          {10, Call::kReceiveFrom, 4}, {11, Call::kSendTo, 6},
    {12, Call::kReceiveFrom, 6},    {16, Call::kSendMessage, 3}, {17, Call::kReceiveMessage, 3},
    {15, Call::kGetSocketOption, 5}};

constexpr auto kSocketCallNumbers = [] {
    std::array<uint32_t, std::size(kSocketCalls)> numbers{};
    std::ranges::transform(kSocketCalls, numbers.begin(), &SocketCall::number);
    return numbers;
}();

}  // namespace

std::span<const CallRule> CallRules()
{
    return kRules;
}

const SocketCall* FindSocketCall(uint32_t number)
{
    const auto* found = std::ranges::find(kSocketCalls, number, &SocketCall::number);
    return found != std::end(kSocketCalls) ? found : nullptr;
}

std::span<const uint32_t> SocketCallNumbers()
{
    return kSocketCallNumbers;
}

std::optional<Call> FindCall(bool i386, int number)
{
    const auto* found =
        std::ranges::find(kRules, number, i386 ? &CallRule::i386 : &CallRule::x86_64);
    return found != std::end(kRules) ? std::optional{found->call} : std::nullopt;
}

}  // namespace vboard::seam

#include "virtual_board/seam/supervisor.h"

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

#include "virtual_board/seam/interface_calls.h"
#include "virtual_board/seam/sleep_calls.h"

namespace vboard::seam {
namespace {

constexpr int kCallsInARow = 64;  // then the rest of the board has its turn

std::string NameOf(pid_t thread)
{
    std::ifstream file{"/proc/" + std::to_string(thread) + "/comm"};
    std::string name;
    std::getline(file, name);
    return name;
}

}  // namespace

Supervisor::Supervisor(BoardSide& board, UniqueFd listener, double timeScale, bool privateNames)
    : listener_{std::move(listener)},
      board_{board},
      timeScale_{timeScale},
      mailboxes_{board},
      netlink_{board},
      files_{board, privateNames}
{
}

std::optional<std::chrono::nanoseconds> Supervisor::Wait() const
{
    if (sleepers_.empty())
        return std::nullopt;
    return std::max<std::chrono::nanoseconds>(sleepers_.begin()->first - Clock::now(), {});
}

void Supervisor::EndSleeps()
{
    const auto now = Clock::now();
    while (!sleepers_.empty() && sleepers_.begin()->first <= now) {
        listener_.Answer(sleepers_.begin()->second, 0, 0);
        sleepers_.erase(sleepers_.begin());
    }
}

void Supervisor::Serve()
{
    EndSleeps();
    for (int served = 0; served < kCallsInARow && listener_.Pending(); ++served)
        ServeOne();
}

void Supervisor::ServeOne()
{
    if (const auto notification = listener_.Receive())
        Handle(*notification);
}

// Only a watched socket hears of its transfers; other writes may be to an attribute.
Verdict Supervisor::DecideOnTransfer(const Target& target)
{
    const Call call = *target.Call();
    const bool receives = call == Call::kReceiveFrom || call == Call::kReceiveMessage ||
                          call == Call::kRead || call == Call::kReadVector;
    const uint64_t descriptor = target.Argument(0);
    if (descriptor >= kFirstWatched && descriptor <= kLastWatched) {
        if (auto verdict = receives ? mailboxes_.Receive(target) : mailboxes_.Send(target))
            return std::move(*verdict);
        if (auto verdict = receives ? netlink_.Receive(target) : netlink_.Send(target))
            return std::move(*verdict);
    }
    const bool sends = call == Call::kSendTo || call == Call::kSendMessage;
    return receives || sends ? Continue() : files_.Write(target);
}

Verdict Supervisor::DecideOnFiles(const Target& target)
{
    switch (*target.Call()) {
        case Call::kOpen:
        case Call::kCreate:
        case Call::kOpenAt:
        case Call::kOpenAt2:
            return files_.Open(target);
        case Call::kStat:
        case Call::kLinkStat:
        case Call::kStat32:
        case Call::kLinkStat32:
        case Call::kStatAt:
        case Call::kStatX:
            return files_.Stat(target);
        case Call::kAccess:
        case Call::kAccessAt:
        case Call::kAccessAt2:
            return files_.Access(target);
        case Call::kUnlink:
        case Call::kUnlinkAt:
            return files_.Unlink(target);
        case Call::kChangeMode:
        case Call::kChangeModeAt:
            return files_.ChangeMode(target);
        case Call::kSemaphoreGet:
            return files_.GetSemaphore(target);
        default:
            return Continue();
    }
}

Verdict Supervisor::Decide(const Target& target)
{
    switch (*target.Call()) {
        case Call::kSocket:
            return target.IntArgument(0) == AF_NETLINK ? netlink_.Open(target)
                                                       : mailboxes_.Open(target);
        case Call::kBind:
            return mailboxes_.Bind(target);
        case Call::kGetSocketName:
            return mailboxes_.GetName(target);
        case Call::kGetSocketOption:
            return mailboxes_.GetOption(target);
        case Call::kSendTo:
        case Call::kSendMessage:
        case Call::kReceiveFrom:
        case Call::kReceiveMessage:
        case Call::kRead:
        case Call::kReadVector:
        case Call::kWrite:
        case Call::kWriteVector:
        case Call::kWriteAt:
            return DecideOnTransfer(target);
        case Call::kIoctl:
            return IsInterfaceRequest(static_cast<uint32_t>(target.Argument(1)))
                       ? RequestOfInterface(target, board_)
                       : files_.LaneRequest(target);
        case Call::kSleep:
        case Call::kClockSleep:
        case Call::kClockSleep64:
            return ScaledSleep(target, timeScale_);
        default:
            return DecideOnFiles(target);
    }
}

// What an unreadable program does may concern the machine alone; a request to an interface may not
// reach the machine's own.
Verdict Supervisor::DecideUnread(const Target& target)
{
    if (!complained_)
        fprintf(stderr,
                "orblink-vboard: the memory of process %d (%s) cannot be read: it is undumpable, "
                "and cannot use the board\n",
                static_cast<int>(target.Thread()), NameOf(target.Thread()).c_str());
    complained_ = true;
    return target.Call() == Call::kIoctl ? Fail(EPERM) : Continue();
}

void Supervisor::CarryOut(uint64_t id, const Verdict& verdict)
{
    switch (verdict.kind) {
        case Verdict::Kind::kContinue:
            return listener_.Continue(id);
        case Verdict::Kind::kReturn:
            return listener_.Answer(id, verdict.value, 0);
        case Verdict::Kind::kFail:
            return listener_.Answer(id, 0, verdict.error);
        case Verdict::Kind::kSleep:
            sleepers_.emplace(Clock::now() + verdict.sleep, id);
            return;
        case Verdict::Kind::kHandIn:
            break;
    }
    const HandedIn descriptor{verdict.descriptor.Get(), verdict.closeOnExec, verdict.number};
    if (const int error = listener_.HandIn(id, descriptor); error != 0)
        listener_.Answer(id, 0, error);
}

void Supervisor::Handle(const seccomp_notif& notification)
{
    try {
        const Target target{listener_, processes_, notification};
        try {
            CarryOut(target.Id(), target.Call() ? Decide(target) : Continue());
        } catch (const Unreadable&) {
            CarryOut(target.Id(), DecideUnread(target));
        }
    } catch (const CallFails& refused) {
        listener_.Answer(notification.id, 0, refused.error);
    } catch (const Unreadable&) {
        listener_.Continue(notification.id);
    }
}

}  // namespace vboard::seam

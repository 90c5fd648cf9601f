// Answers the system calls that programs make under the filter.
#pragma once

#include <chrono>
#include <map>
#include <optional>
#include <vector>

#include "virtual_board/board/background.h"
#include "virtual_board/seam/file_calls.h"
#include "virtual_board/seam/filter.h"
#include "virtual_board/seam/listener.h"
#include "virtual_board/seam/mailbox_calls.h"
#include "virtual_board/seam/netlink_calls.h"

namespace vboard::seam {

class Supervisor : public Background {
public:
    // Throws std::system_error.
    Supervisor(BoardSide& board, UniqueFd listener, double timeScale, bool privateNames);

    int Fd() const override { return listener_.Fd(); }
    std::optional<std::chrono::nanoseconds> Wait() const override;
    void Serve() override;
    void ServeOne() override;

private:
    using Clock = std::chrono::steady_clock;

    void Handle(const seccomp_notif& notification);
    Verdict Decide(const Target& target);
    Verdict DecideOnTransfer(const Target& target);
    Verdict DecideOnFiles(const Target& target);
    Verdict DecideUnread(const Target& target);
    void CarryOut(uint64_t id, const Verdict& verdict);
    void EndSleeps();

    Listener listener_;
    BoardSide& board_;
    double timeScale_;
    MailboxCalls mailboxes_;
    NetlinkCalls netlink_;
    FileCalls files_;
    std::multimap<Clock::time_point, uint64_t> sleepers_;
    ProcessTable processes_;
    bool complained_ = false;
};

}  // namespace vboard::seam

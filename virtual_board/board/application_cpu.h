// The application CPU behind the mailbox: it sends each family's board data once, to whoever
// receives, and expects the acknowledgement for it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "virtual_board/board/faults.h"
#include "virtual_board/board/journal.h"
#include "virtual_board/description/board_description.h"

namespace vboard {

// What one mailbox socket stands at.
struct MailboxEnd {
    bool bound = false;
    bool waiting = false;              // a receive has not been answered yet
    std::optional<Family> unanswered;  // received, and its acknowledgement not sent yet
};

// How a receive ended.
struct Received {
    int error = 0;
    std::vector<uint8_t> message = {};
};

class ApplicationCpu {
public:
    ApplicationCpu(const BoardDescription& board, Faults& activeFaults, Journal& boardJournal);

    // The calls of one mailbox socket, each 0 or errno. Send: `taken` is the number of bytes that
    // count as sent.
    int Open(int type);
    int Bind(MailboxEnd& end, std::span<const uint8_t> address);
    int Send(MailboxEnd& end, std::span<const uint8_t> message, size_t& taken);
    void Close(MailboxEnd& end);

    // nullopt: nothing to receive yet.
    std::optional<Received> Receive(MailboxEnd& end);

    // Sends one family's data, or all in order, as if nothing had been sent before.
    void SendAgain(std::optional<Family> family);

    Json State() const;

private:
    enum class Progress { kDue, kSent, kAcknowledged };
    struct Letter {
        Family family;
        Progress progress;
    };

    Letter* FindLetter(Family family);
    Letter* NextLetter();
    std::vector<uint8_t> Compose(Family family);
    Received Deliver(MailboxEnd& end, Letter& letter);
    int Acknowledge(MailboxEnd& end, std::span<const uint8_t> message);

    const BoardDescription& spec;
    Faults& faults;
    Journal& journal;
    std::vector<Letter> letters;
};

}  // namespace vboard

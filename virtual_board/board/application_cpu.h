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
    std::optional<Family> offered;     // sent, and not read yet
    std::vector<uint8_t> message;      // what was offered
    std::optional<Family> unanswered;  // read, and its acknowledgement not sent yet
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

    // A receive of which the board hears before it begins.
    int StartReceive(const MailboxEnd& end);

    // What is to be sent to this end now; null: nothing. From then on it is on its way.
    const std::vector<uint8_t>* Offer(MailboxEnd& end);
    // It has been read.
    void Taken(MailboxEnd& end);

    // Sends one family's data, or all in order, as if nothing had been sent before.
    void SendAgain(std::optional<Family> family);

    Json State() const;

private:
    enum class Progress { kDue, kOffered, kSent, kAcknowledged };
    struct Letter {
        Family family;
        Progress progress;
        std::optional<std::vector<uint8_t>> unread = {};  // came back; with the faults it had
    };

    Letter* FindLetter(Family family);
    Letter* NextLetter();
    std::vector<uint8_t> Compose(Family family);
    void TakeBack(MailboxEnd& end);
    int Acknowledge(MailboxEnd& end, std::span<const uint8_t> message);

    const BoardDescription& spec_;
    Faults& faults_;
    Journal& journal_;
    std::vector<Letter> letters_;
};

}  // namespace vboard

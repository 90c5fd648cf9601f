// Sockets of the mailbox family. A program gets a real descriptor, one end of a Unix sequenced-
// packet connection whose other end the board holds: receiving, polling, time-outs, duplicating and
// inheriting are the kernel's own. Only what such a socket cannot show by itself is answered here.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <list>
#include <optional>
#include <vector>

#include "virtual_board/board/board_side.h"
#include "virtual_board/seam/target.h"
#include "virtual_board/seam/verdict.h"

namespace vboard::seam {

class MailboxCalls {
public:
    // Throws std::system_error.
    explicit MailboxCalls(BoardSide& board);

    Verdict Open(const Target& target);
    Verdict Bind(const Target& target);
    Verdict GetName(const Target& target) const;
    Verdict GetOption(const Target& target) const;

    // Calls on a watched descriptor; nullopt: it is no mailbox.
    std::optional<Verdict> Receive(const Target& target) const;
    std::optional<Verdict> Send(const Target& target) const;

private:
    struct Mailbox {
        ino_t inode;
        int type;
        UniqueFd end;  // the program's, until it is bound
        std::optional<uint32_t> id = {};
        std::vector<uint8_t> address = {};
    };

    Mailbox* Find(const Target& target);
    const Mailbox* Find(const Target& target) const;
    UniqueFd Connect(const Mailbox& mailbox) const;
    void Remember(Mailbox mailbox);

    BoardSide& board_;
    UniqueFd meeting_;  // where the two ends of a connection find each other
    std::list<Mailbox> mailboxes_;
};

}  // namespace vboard::seam

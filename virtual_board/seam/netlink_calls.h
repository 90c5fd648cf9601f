// Sockets of rtnetlink, by which programs such as ip see the SoC's internal interfaces among those
// of the machine. A program gets a socket of the kernel's own, at a number at which the board sees
// what is sent and received; only what concerns the board's interfaces is answered here.
#pragma once

#include <sys/types.h>

#include <list>
#include <optional>

#include "virtual_board/board/board_side.h"
#include "virtual_board/seam/link_messages.h"
#include "virtual_board/seam/target.h"
#include "virtual_board/seam/verdict.h"

namespace vboard::seam {

class NetlinkCalls {
public:
    explicit NetlinkCalls(BoardSide& boardSide) : board_{boardSide} {}

    Verdict Open(const Target& target);

    // Calls on a watched descriptor; nullopt: it is none of these sockets.
    std::optional<Verdict> Receive(const Target& target);
    std::optional<Verdict> Send(const Target& target);

private:
    // Goes to the program when the kernel's own answer to the same request is next in line.
    struct Answer {
        uint32_t sequence;
        bool replaces;  // the kernel's answer; else it comes before that
        Message messages;
    };
    struct Socket {
        ino_t inode;
        std::list<Answer> answers = {};
    };

    Socket* Find(const Target& target);
    Verdict AnswerRequest(const Target& target, Socket& socket, const LinkRequest& request,
                          size_t size);
    Message AllLinks(const Target& target, const LinkRequest& request) const;
    Message Carry(const Target& target, const LinkRequest& request, uint32_t interface) const;
    int SetFlags(const Target& target, const LinkRequest& request, uint32_t interface) const;

    BoardSide& board_;
    std::list<Socket> sockets_;
};

}  // namespace vboard::seam

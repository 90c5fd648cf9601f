// The application CPU's ends of the mailbox sockets that programs have bound. What it sends lies
// ready in the program's socket; the kernel tells here when the program has read it.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <span>

#include "virtual_board/board/application_cpu.h"
#include "virtual_board/board/background.h"
#include "virtual_board/board/unique_fd.h"

namespace vboard {

class MailboxSockets : public Background {
public:
    // Throws std::system_error.
    MailboxSockets(ApplicationCpu& applicationCpu, Journal& boardJournal);

    // Each 0 or errno. Bind gives the number by which the other calls know the socket.
    int Bind(pid_t process, std::span<const uint8_t> address, uint32_t& id);
    int Adopt(uint32_t id, UniqueFd end);
    int StartReceive(uint32_t id);
    int Send(uint32_t id, std::span<const uint8_t> message, size_t& taken);

    int Fd() const override { return epoll_.Get(); }
    std::optional<std::chrono::nanoseconds> Wait() const override { return std::nullopt; }
    // Takes what the programs have done, and sends what is due.
    void Serve() override;

private:
    struct Line {
        pid_t process;
        MailboxEnd end;
        UniqueFd fd = {};
        bool leftUnread = false;  // the program closed its end with the message in it
    };

    Line* Find(uint32_t id);
    void Follow(uint32_t id);
    void NoticeReading(Line& line);
    bool ReadAll(Line& line);
    void SendDue();

    ApplicationCpu& cpu_;
    Journal& journal_;
    UniqueFd epoll_;
    std::map<uint32_t, Line> lines_;  // in the order in which they were bound
    uint32_t lastId_ = 0;
};

}  // namespace vboard

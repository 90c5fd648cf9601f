#include "virtual_board/board/mailbox_sockets.h"

#include <linux/sockios.h>
#include <sys/epoll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <cerrno>
#include <system_error>

namespace vboard {
namespace {

constexpr size_t kMostTaken = 16384;
constexpr int kEventsAtOnce = 16;

// Whether something that was sent has not been read yet.
bool LiesUnread(int fd)
{
    int octets = 0;
    return ioctl(fd, SIOCOUTQ, &octets) == 0 && octets > 0;
}

}  // namespace

MailboxSockets::MailboxSockets(ApplicationCpu& applicationCpu, Journal& boardJournal)
    : cpu_{applicationCpu}, journal_{boardJournal}, epoll_{epoll_create1(EPOLL_CLOEXEC)}
{
    if (!epoll_)
        throw std::system_error(errno, std::generic_category(), "cannot wait for mailboxes");
}

MailboxSockets::Line* MailboxSockets::Find(uint32_t id)
{
    auto found = lines_.find(id);
    return found != lines_.end() ? &found->second : nullptr;
}

int MailboxSockets::Bind(pid_t process, std::span<const uint8_t> address, uint32_t& id)
{
    Line line{process, {}};
    if (const int error = cpu_.Bind(line.end, address); error != 0)
        return error;
    id = ++lastId_;
    lines_.emplace(id, std::move(line));
    return 0;
}

int MailboxSockets::Adopt(uint32_t id, UniqueFd end)
{
    Line* line = Find(id);
    if (line == nullptr || line->fd)
        return EBADF;
    // Edges: the reader making room is one, as is each packet.
    epoll_event event{};
    event.events = EPOLLIN | EPOLLOUT | EPOLLRDHUP | EPOLLET;
    event.data.u32 = id;
    if (epoll_ctl(epoll_.Get(), EPOLL_CTL_ADD, end.Get(), &event) != 0)
        return errno;
    line->fd = std::move(end);
    SendDue();
    return 0;
}

int MailboxSockets::StartReceive(uint32_t id)
{
    Line* line = Find(id);
    return line != nullptr ? cpu_.StartReceive(line->end) : EBADF;
}

int MailboxSockets::Send(uint32_t id, std::span<const uint8_t> message, size_t& taken)
{
    Line* line = Find(id);
    if (line == nullptr)
        return EBADF;
    NoticeReading(*line);
    return cpu_.Send(line->end, message, taken);
}

void MailboxSockets::NoticeReading(Line& line)
{
    if (line.end.offered && !line.leftUnread && !LiesUnread(line.fd.Get()))
        cpu_.Taken(line.end);
}

// False once the program has closed its end.
bool MailboxSockets::ReadAll(Line& line)
{
    static uint8_t packet[kMostTaken];
    for (;;) {
        const ssize_t size = recv(line.fd.Get(), packet, sizeof packet, MSG_DONTWAIT);
        if (size == 0)
            return false;
        if (size > 0) {
            NoticeReading(line);
            size_t taken = 0;
            cpu_.Send(line.end, {packet, static_cast<size_t>(size)}, taken);
        } else if (errno == ECONNRESET) {
            line.leftUnread = true;
        } else if (errno != EINTR) {
            return errno == EAGAIN || errno == EWOULDBLOCK;
        }
    }
}

void MailboxSockets::Follow(uint32_t id)
{
    Line* line = Find(id);
    if (line == nullptr)
        return;
    journal_.SetCaller(line->process);
    const bool open = ReadAll(*line);
    NoticeReading(*line);
    if (open)
        return;
    cpu_.Close(line->end);
    lines_.erase(id);
}

// At most one message lies in a socket. Whoever has bound first is served first; an empty packet
// cannot be told from a closed socket, and is sent all the same when a fault asks for it.
void MailboxSockets::SendDue()
{
    for (auto& [id, line] : lines_) {
        const auto* message = line.fd ? cpu_.Offer(line.end) : nullptr;
        if (message != nullptr)  // result dropped: the other end does not wait, or is gone
            send(line.fd.Get(), message->data(), message->size(), MSG_DONTWAIT | MSG_NOSIGNAL);
    }
}

void MailboxSockets::Serve()
{
    if (lines_.empty())
        return;
    epoll_event events[kEventsAtOnce];
    int count = 0;
    do {
        count = epoll_wait(epoll_.Get(), events, kEventsAtOnce, 0);
        for (int i = 0; i < count; ++i)
            Follow(events[i].data.u32);
    } while (count == kEventsAtOnce);
    SendDue();
}

}  // namespace vboard

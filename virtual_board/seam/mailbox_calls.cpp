#include "virtual_board/seam/mailbox_calls.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <system_error>

#include "virtual_board/seam/carried_bytes.h"

namespace vboard::seam {
namespace {

constexpr size_t kAddressSize = 16;
constexpr size_t kMostRemembered = 256;
constexpr int kTypeFlags = SOCK_NONBLOCK | SOCK_CLOEXEC;

UniqueFd NewSocket(int flags)
{
    return UniqueFd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | flags, 0)};
}

// Listens at a name of the kernel's choice.
UniqueFd Meeting()
{
    UniqueFd fd = NewSocket(SOCK_NONBLOCK);
    sockaddr_un any{};
    any.sun_family = AF_UNIX;
    const auto* address = reinterpret_cast<const sockaddr*>(&any);
    if (!fd || bind(fd.Get(), address, sizeof any.sun_family) != 0 || listen(fd.Get(), 1) != 0)
        throw std::system_error(errno, std::generic_category(), "cannot make a mailbox");
    return fd;
}

// Anybody may connect to the name; only who connects from here is meant.
bool IsOwn(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.pid == getpid();
}

ino_t InodeOf(int fd)
{
    struct stat facts {};
    return fstat(fd, &facts) == 0 ? facts.st_ino : 0;
}

// A null pointer: the call is not on a mailbox.
auto* FindIn(auto& mailboxes, const Target& target)
{
    if (mailboxes.empty())
        return static_cast<decltype(&mailboxes.front())>(nullptr);
    const std::string link = target.DescriptorLink(target.IntArgument(0));
    auto is = [&](const auto& mailbox) {
        return link == "socket:[" + std::to_string(mailbox.inode) + "]";
    };
    auto found = std::ranges::find_if(mailboxes, is);
    return found != mailboxes.end() ? &*found : nullptr;
}

}  // namespace

MailboxCalls::MailboxCalls(BoardSide& board) : board_{board}, meeting_{Meeting()} {}

const MailboxCalls::Mailbox* MailboxCalls::Find(const Target& target) const
{
    return FindIn(mailboxes_, target);
}

MailboxCalls::Mailbox* MailboxCalls::Find(const Target& target)
{
    return FindIn(mailboxes_, target);
}

// Nobody says when the last program has closed its end.
void MailboxCalls::Remember(Mailbox mailbox)
{
    mailboxes_.push_front(std::move(mailbox));
    if (mailboxes_.size() > kMostRemembered)
        mailboxes_.pop_back();
}

Verdict MailboxCalls::Open(const Target& target)
{
    if (target.IntArgument(0) != wire::kMailboxFamily)
        return Continue();
    const int type = target.IntArgument(1) & ~kTypeFlags;
    const Reply reply =
        board_.Ask({target.Process(), wire::Op::kSocket, static_cast<uint32_t>(type)});
    if (reply.error != 0)
        return Fail(reply.error);
    UniqueFd end = NewSocket(target.IntArgument(1) & SOCK_NONBLOCK);
    UniqueFd theirs{fcntl(end.Get(), F_DUPFD_CLOEXEC, 0)};
    if (!end || !theirs)
        return Fail(ENFILE);
    Remember({InodeOf(end.Get()), type, std::move(end)});
    // Faults of single transfers are set: the board has to see each.
    const auto number = reply.result != 0 ? target.FreeWatchedNumber() : std::nullopt;
    return HandIn(std::move(theirs), (target.IntArgument(1) & SOCK_CLOEXEC) != 0, number);
}

UniqueFd MailboxCalls::Connect(const Mailbox& mailbox) const
{
    sockaddr_un address{};
    socklen_t size = sizeof address;
    auto* name = reinterpret_cast<sockaddr*>(&address);
    if (getsockname(meeting_.Get(), name, &size) != 0 ||
        connect(mailbox.end.Get(), name, size) != 0)
        return {};
    for (;;) {
        UniqueFd end{accept4(meeting_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!end || IsOwn(end.Get()))
            return end;
    }
}

Verdict MailboxCalls::Bind(const Target& target)
{
    Mailbox* mailbox = Find(target);
    if (mailbox == nullptr)
        return Continue();
    const auto size = static_cast<size_t>(target.Argument(2));
    if (mailbox->id || size > sizeof(sockaddr_storage))
        return Fail(EINVAL);
    std::vector<uint8_t> address(size);
    target.Read(target.Argument(1), address.data(), size);
    const Reply bound = board_.Ask({target.Process(), wire::Op::kBind, 0, address});
    if (bound.error != 0)
        return Fail(bound.error);
    const auto id = static_cast<uint32_t>(bound.result);
    const UniqueFd end = Connect(*mailbox);
    if (!end)
        return Fail(ENETDOWN);
    mailbox->end = UniqueFd{};
    mailbox->id = id;
    mailbox->address = address;
    return Fail(board_.Ask({target.Process(), wire::Op::kMailboxEnd, id, {}, end.Get()}).error);
}

Verdict MailboxCalls::GetName(const Target& target) const
{
    const Mailbox* mailbox = Find(target);
    if (mailbox == nullptr)
        return Continue();
    uint8_t address[kAddressSize] = {static_cast<uint8_t>(wire::kMailboxFamily)};
    std::ranges::copy(mailbox->address, address);
    const auto room = target.ReadAs<uint32_t>(target.Argument(2));
    if (room > INT32_MAX)
        return Fail(EINVAL);
    target.Write(target.Argument(1), address, std::min<size_t>(room, sizeof address));
    const uint32_t size = sizeof address;
    target.Write(target.Argument(2), &size, sizeof size);
    return Return(0);
}

Verdict MailboxCalls::GetOption(const Target& target) const
{
    const int option = target.IntArgument(2);
    if (target.IntArgument(1) != SOL_SOCKET || (option != SO_DOMAIN && option != SO_TYPE))
        return Continue();
    const Mailbox* mailbox = Find(target);
    if (mailbox == nullptr)
        return Continue();
    const int value = option == SO_DOMAIN ? wire::kMailboxFamily : mailbox->type;
    const auto room = target.ReadAs<uint32_t>(target.Argument(4));
    if (room > INT32_MAX)
        return Fail(EINVAL);
    const auto size = std::min(room, static_cast<uint32_t>(sizeof value));
    target.Write(target.Argument(3), &value, size);
    target.Write(target.Argument(4), &size, sizeof size);
    return Return(0);
}

std::optional<Verdict> MailboxCalls::Receive(const Target& target) const
{
    const Mailbox* mailbox = Find(target);
    if (mailbox == nullptr)
        return std::nullopt;
    if (!mailbox->id)
        return Continue();
    const Reply reply = board_.Ask({target.Process(), wire::Op::kStartReceive, *mailbox->id});
    return reply.error != 0 ? Fail(reply.error) : Continue();
}

std::optional<Verdict> MailboxCalls::Send(const Target& target) const
{
    const Mailbox* mailbox = Find(target);
    if (mailbox == nullptr)
        return std::nullopt;
    if (!mailbox->id)
        return Continue();
    const std::vector<uint8_t> message = CarriedBytes(target, wire::kMaxData);
    const Reply reply = board_.Ask({target.Process(), wire::Op::kSend, *mailbox->id, message});
    return reply.error != 0 ? Fail(reply.error) : Return(reply.result);
}

}  // namespace vboard::seam

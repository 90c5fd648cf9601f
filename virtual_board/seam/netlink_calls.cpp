#include "virtual_board/seam/netlink_calls.h"

#include <linux/if.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "virtual_board/seam/carried_bytes.h"
#include "virtual_board/seam/interfaces.h"

namespace vboard::seam {
namespace {

constexpr size_t kMostSockets = 256;
constexpr size_t kMostAnswers = 16;
constexpr size_t kLongestRequest = 4096;

bool IsInOwnNetwork(const Target& target)
{
    char own[PATH_MAX];
    const ssize_t size = readlink("/proc/self/ns/net", own, sizeof own);
    return size > 0 && target.Network() == std::string_view(own, static_cast<size_t>(size));
}

std::optional<uint32_t> Meant(const LinkRequest& request)
{
    return request.index != 0 ? FindInterface(request.index) : FindInterface(request.name);
}

bool IsDump(const nlmsghdr& header)
{
    return (header.nlmsg_flags & NLM_F_DUMP) == NLM_F_DUMP;
}

// The kernel answers it at once: there is no such interface.
bool AskKernelInstead(int fd, uint32_t sequence)
{
    struct {
        nlmsghdr header;
        ifinfomsg link;
    } request{};
    request.header = {sizeof request, RTM_GETLINK, NLM_F_REQUEST, sequence, 0};
    request.link.ifi_index = kFirstInterface;
    return send(fd, &request, sizeof request, MSG_DONTWAIT) == sizeof request;
}

std::optional<nlmsghdr> NextOf(int fd)
{
    nlmsghdr header{};
    const ssize_t size = recv(fd, &header, sizeof header, MSG_PEEK | MSG_DONTWAIT);
    return size == sizeof header ? std::optional{header} : std::nullopt;
}

int FlagsOf(const Target& target)
{
    switch (*target.Call()) {
        case Call::kReceiveMessage:
            return target.IntArgument(2);
        case Call::kReceiveFrom:
            return target.IntArgument(3);
        default:
            return 0;
    }
}

void PutName(const Target& target, uint64_t name, uint64_t length)
{
    const sockaddr_nl kernel{AF_NETLINK, 0, 0, 0};
    const auto room = target.ReadAs<uint32_t>(length);
    if (name != 0)
        target.Write(name, &kernel, std::min<size_t>(room, sizeof kernel));
    const uint32_t size = name != 0 ? sizeof kernel : 0;
    target.Write(length, &size, sizeof size);
}

// The sender's name, and what recvmsg() says beside the bytes.
void PutCircumstances(const Target& target, bool cut)
{
    const size_t word = target.PointerSize();
    if (target.Call() == Call::kReceiveFrom && target.Argument(5) != 0)
        PutName(target, target.Argument(4), target.Argument(5));
    if (target.Call() != Call::kReceiveMessage)
        return;
    const uint64_t header = target.Argument(1);
    PutName(target, target.ReadPointer(header), header + word);
    const uint64_t nothing = 0;
    target.Write(header + 5 * word, &nothing, word);
    const int32_t flags = cut ? MSG_TRUNC : 0;
    target.Write(header + 6 * word, &flags, sizeof flags);
}

Verdict Deliver(const Target& target, const Message& messages)
{
    const size_t put = PutBytes(target, messages);
    PutCircumstances(target, put < messages.size());
    const bool whole = (FlagsOf(target) & MSG_TRUNC) != 0;
    return Return(static_cast<int64_t>(whole ? messages.size() : put));
}

}  // namespace

Verdict NetlinkCalls::Open(const Target& target)
{
    if (target.IntArgument(2) != NETLINK_ROUTE || !IsInOwnNetwork(target))
        return Continue();
    const auto number = target.FreeWatchedNumber();
    const int type = target.IntArgument(1);
    UniqueFd fd{socket(AF_NETLINK, type | SOCK_CLOEXEC, NETLINK_ROUTE)};
    struct stat facts {};
    if (!number || !fd || fstat(fd.Get(), &facts) != 0)
        return Continue();
    sockets_.push_front({facts.st_ino});
    if (sockets_.size() > kMostSockets)
        sockets_.pop_back();
    return HandIn(std::move(fd), (type & SOCK_CLOEXEC) != 0, number);
}

NetlinkCalls::Socket* NetlinkCalls::Find(const Target& target)
{
    if (sockets_.empty())
        return nullptr;
    const std::string link = target.DescriptorLink(target.IntArgument(0));
    const auto found = std::ranges::find_if(sockets_, [&](const Socket& socket) {
        return link == "socket:[" + std::to_string(socket.inode) + "]";
    });
    return found != sockets_.end() ? &*found : nullptr;
}

Message NetlinkCalls::AllLinks(const Target& target, const LinkRequest& request) const
{
    Message all;
    for (uint32_t interface = 0; interface < std::size(wire::kInterfaceNames); ++interface) {
        const Reply flags = InterfaceFlags(board_, target.Process(), interface);
        const Message link =
            LinkMessage(request.header, interface, static_cast<uint32_t>(flags.result));
        all.insert(all.end(), link.begin(), link.end());
    }
    return all;
}

int NetlinkCalls::SetFlags(const Target& target, const LinkRequest& request,
                           uint32_t interface) const
{
    const bool makes =
        (request.header.nlmsg_flags & (NLM_F_CREATE | NLM_F_EXCL)) == (NLM_F_CREATE | NLM_F_EXCL);
    if (makes)
        return EEXIST;
    const uint32_t change = request.change != 0 ? request.change : request.flags;
    if (request.sets || (change & ~uint32_t{IFF_UP}) != 0)
        return EOPNOTSUPP;
    if ((change & IFF_UP) == 0)
        return 0;
    const uint32_t arg = wire::InterfaceArg(interface, (request.flags & IFF_UP) != 0);
    return board_.Ask({target.Process(), wire::Op::kInterface, arg}).error;
}

// Does what a request about an interface of the board asks for; the answer.
Message NetlinkCalls::Carry(const Target& target, const LinkRequest& request,
                            uint32_t interface) const
{
    const nlmsghdr& header = request.header;
    switch (header.nlmsg_type) {
        case RTM_GETLINK: {
            const Reply flags = InterfaceFlags(board_, target.Process(), interface);
            return LinkMessage(header, interface, static_cast<uint32_t>(flags.result));
        }
        case RTM_NEWLINK:
        case RTM_SETLINK:
            return OutcomeMessage(header, SetFlags(target, request, interface));
        case RTM_GETADDR:
            if (IsDump(header))
                return DoneMessage(header);
            [[fallthrough]];
        default:
            return OutcomeMessage(header, EOPNOTSUPP);
    }
}

Verdict NetlinkCalls::AnswerRequest(const Target& target, Socket& socket,
                                    const LinkRequest& request, size_t size)
{
    const auto interface = Meant(request);
    const bool dumpOfAll = request.header.nlmsg_type == RTM_GETLINK && IsDump(request.header) &&
                           !request.selects && !interface;
    if (!interface && !dumpOfAll)
        return Continue();
    if (socket.answers.size() >= kMostAnswers)
        socket.answers.pop_front();
    const uint32_t sequence = request.header.nlmsg_seq;
    if (dumpOfAll) {
        socket.answers.push_back({sequence, false, AllLinks(target, request)});
        return Continue();
    }
    const UniqueFd fd = target.TakeDescriptor(target.IntArgument(0));
    if (!fd || !AskKernelInstead(fd.Get(), sequence))
        return Fail(ENOBUFS);
    socket.answers.push_back({sequence, true, Carry(target, request, *interface)});
    return Return(static_cast<int64_t>(size));
}

// One request at a time, as everybody sends them.
std::optional<Verdict> NetlinkCalls::Send(const Target& target)
{
    Socket* socket = Find(target);
    if (socket == nullptr)
        return std::nullopt;
    std::vector<uint8_t> packet;
    try {
        packet = CarriedBytes(target, kLongestRequest);
    } catch (const CallFails&) {
        return Continue();
    }
    const auto request = ReadLinkRequest(packet);
    return request ? AnswerRequest(target, *socket, *request, packet.size()) : Continue();
}

std::optional<Verdict> NetlinkCalls::Receive(const Target& target)
{
    Socket* socket = Find(target);
    if (socket == nullptr)
        return std::nullopt;
    if (socket->answers.empty())
        return Continue();
    const UniqueFd fd = target.TakeDescriptor(target.IntArgument(0));
    const auto next = NextOf(fd.Get());
    if (!next)
        return Continue();
    const auto answer =
        std::ranges::find(socket->answers, next->nlmsg_seq, &NetlinkCalls::Answer::sequence);
    if (answer == socket->answers.end())
        return Continue();
    SetReceiver(answer->messages, next->nlmsg_pid);
    Verdict verdict = Deliver(target, answer->messages);
    if ((FlagsOf(target) & MSG_PEEK) != 0)
        return verdict;
    if (answer->replaces)
        // cppcheck-suppress nullPointer ; no byte of it is wanted
        recv(fd.Get(), nullptr, 0, MSG_DONTWAIT);
    socket->answers.erase(answer);
    return verdict;
}

}  // namespace vboard::seam

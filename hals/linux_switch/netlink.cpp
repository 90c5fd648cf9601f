#include "hals/linux_switch/netlink.h"

#include <errno.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace linux_switch {
namespace {

// One message of a list is as large as the largest buffer that was offered, within limits.
constexpr size_t kBuffer = 16'384;
constexpr suseconds_t kWait = 80'000;
// A list of more parts than this does not end.
constexpr int kMostParts = 100'000;

constexpr size_t Aligned(size_t size)
{
    return (size + NLA_ALIGNTO - 1) & ~size_t{NLA_ALIGNTO - 1};
}

}  // namespace

bool Attributes::Next(Attribute& attribute)
{
    nlattr header;
    if (left_ < sizeof header)
        return false;
    memcpy(&header, next_, sizeof header);
    if (header.nla_len < sizeof header || header.nla_len > left_)
        return false;
    attribute = {static_cast<uint16_t>(header.nla_type & NLA_TYPE_MASK), next_ + sizeof header,
                 header.nla_len - sizeof header};
    const size_t step = Aligned(header.nla_len);
    next_ += step < left_ ? step : left_;
    left_ -= step < left_ ? step : left_;
    return true;
}

Attribute Attributes::Find(uint16_t type) const
{
    Attributes rest = *this;
    Attribute attribute;
    while (rest.Next(attribute)) {
        if (attribute.type == type)
            return attribute;
    }
    return {};
}

Attributes Reply::Behind(size_t header) const
{
    const size_t before = NLMSG_HDRLEN + Aligned(header);
    return length_ > before ? Attributes(Payload() + Aligned(header), length_ - before)
                            : Attributes();
}

Request::Request(uint16_t type, uint16_t flags)
{
    nlmsghdr& header = *Message();
    header.nlmsg_type = type;
    header.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | flags);
    header.nlmsg_len = NLMSG_HDRLEN;
}

void Request::Append(const void* value, size_t size)
{
    if (used_ + Aligned(size) > sizeof bytes_) {
        valid_ = false;
        return;
    }
    if (size != 0)
        memcpy(bytes_ + used_, value, size);
    used_ += Aligned(size);
    Message()->nlmsg_len = static_cast<uint32_t>(used_);
}

void Request::Put(uint16_t type, const void* value, size_t size)
{
    const nlattr header = {static_cast<uint16_t>(sizeof header + size), type};
    Append(&header, sizeof header);
    Append(value, size);
}

size_t Request::Open(uint16_t type)
{
    const size_t opened = used_;
    const nlattr header = {sizeof header, type};
    Append(&header, sizeof header);
    return opened;
}

void Request::Close(size_t opened)
{
    nlattr header;
    if (!valid_)
        return;
    memcpy(&header, bytes_ + opened, sizeof header);
    header.nla_len = static_cast<uint16_t>(used_ - opened);
    memcpy(bytes_ + opened, &header, sizeof header);
}

Netlink::Netlink(int protocol) : fd_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol))
{
    const int on = 1;
    const timeval wait = {0, kWait};
    if (fd_ < 0)
        return;
    setsockopt(fd_, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    setsockopt(fd_, SOL_SOCKET, SO_SNDTIMEO, &wait, sizeof wait);
    // Without these the kernel says less, or filters less; what it sends is looked at all the same.
    setsockopt(fd_, SOL_NETLINK, NETLINK_EXT_ACK, &on, sizeof on);
    setsockopt(fd_, SOL_NETLINK, NETLINK_CAP_ACK, &on, sizeof on);
    setsockopt(fd_, SOL_NETLINK, NETLINK_GET_STRICT_CHK, &on, sizeof on);
}

Netlink::~Netlink()
{
    if (fd_ >= 0)
        close(fd_);
}

int Netlink::Exchange(Request& request, Taker take, void* taker)
{
    reason_[0] = '\0';
    if (fd_ < 0)
        return EBADF;
    if (silent_)
        return ETIMEDOUT;
    if (!request.Valid())
        return EMSGSIZE;
    nlmsghdr& header = *request.Message();
    // The end of a list is its last part, of anything else the acknowledgement.
    if ((header.nlmsg_flags & NLM_F_DUMP) != NLM_F_DUMP)
        header.nlmsg_flags |= NLM_F_ACK;
    header.nlmsg_seq = ++lastSequence_;
    const ssize_t sent = send(fd_, &header, header.nlmsg_len, MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(header.nlmsg_len))
        return sent < 0 ? errno : EMSGSIZE;
    return Receive(header.nlmsg_seq, take, taker);
}

int Netlink::Receive(uint32_t sequence, Taker take, void* taker)
{
    alignas(nlmsghdr) uint8_t buffer[kBuffer];
    bool changed = false;
    for (int part = 0; part < kMostParts; ++part) {
        const ssize_t got = recv(fd_, buffer, sizeof buffer, MSG_TRUNC);
        if (got < 0 && errno == EINTR)
            continue;
        silent_ = got < 0 && errno == EAGAIN;
        if (got < 0)
            return silent_ ? ETIMEDOUT : errno;
        if (static_cast<size_t>(got) > sizeof buffer)
            return EMSGSIZE;
        size_t left = static_cast<size_t>(got);
        for (size_t at = 0; left >= sizeof(nlmsghdr);) {
            const auto* message = reinterpret_cast<const nlmsghdr*>(buffer + at);
            const size_t size = message->nlmsg_len;
            if (size < NLMSG_HDRLEN || size > left)
                return EBADMSG;
            changed = changed || (message->nlmsg_flags & NLM_F_DUMP_INTR) != 0;
            if (message->nlmsg_seq == sequence) {
                if (message->nlmsg_type == NLMSG_ERROR || message->nlmsg_type == NLMSG_DONE) {
                    const int error = Outcome(*message, size);
                    return error == 0 && changed ? kChangedMeanwhile : error;
                }
                if (take)
                    take(taker, Reply(message, size));
            }
            const size_t step = Aligned(size) < left ? Aligned(size) : left;
            at += step;
            left -= step;
        }
    }
    return EOVERFLOW;
}

int Netlink::Outcome(const nlmsghdr& message, size_t size)
{
    int32_t error = 0;
    if (size >= NLMSG_HDRLEN + sizeof error)
        memcpy(&error, reinterpret_cast<const uint8_t*>(&message) + NLMSG_HDRLEN, sizeof error);
    if (error != 0)
        KeepReason(message, size);
    return error < 0 ? -error : error;
}

void Netlink::KeepReason(const nlmsghdr& message, size_t size)
{
    if ((message.nlmsg_flags & NLM_F_ACK_TLVS) == 0 || message.nlmsg_type != NLMSG_ERROR)
        return;
    nlmsgerr error;
    if (size < NLMSG_HDRLEN + sizeof error)
        return;
    memcpy(&error, reinterpret_cast<const uint8_t*>(&message) + NLMSG_HDRLEN, sizeof error);
    // The request comes back whole unless the kernel was told to leave it out.
    size_t before = sizeof error;
    if ((message.nlmsg_flags & NLM_F_CAPPED) == 0)
        before += Aligned(error.msg.nlmsg_len) - sizeof error.msg;
    const Attribute text = Reply(&message, size).Behind(before).Find(NLMSGERR_ATTR_MSG);
    const size_t length = text.size < sizeof reason_ ? text.size : sizeof reason_ - 1;
    if (text)
        memcpy(reason_, text.data, length);
    reason_[length] = '\0';
}

}  // namespace linux_switch

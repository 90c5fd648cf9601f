#include "virtual_board/seam/link_messages.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/rtnetlink.h>

#include <cstring>

#include "virtual_board/seam/interfaces.h"

namespace vboard::seam {
namespace {

constexpr uint8_t kOperationallyUp = 6;
constexpr uint8_t kOperationallyDown = 2;

template <typename Value>
std::optional<Value> ReadAt(std::span<const uint8_t> bytes, size_t at)
{
    Value value{};
    if (bytes.size() < sizeof value || at > bytes.size() - sizeof value)
        return std::nullopt;
    memcpy(&value, bytes.data() + at, sizeof value);
    return value;
}

void AppendBytes(Message& message, const void* data, size_t size)
{
    const size_t at = message.size();
    message.resize(at + size);
    memcpy(message.data() + at, data, size);
}

template <typename Value>
void Append(Message& message, const Value& value)
{
    AppendBytes(message, &value, sizeof value);
}

void AppendAttribute(Message& message, uint16_t type, const void* data, size_t size)
{
    Append(message, rtattr{static_cast<uint16_t>(RTA_LENGTH(size)), type});
    AppendBytes(message, data, size);
    message.resize(RTA_ALIGN(message.size()));
}

template <typename Value>
void AppendValue(Message& message, uint16_t type, const Value& value)
{
    AppendAttribute(message, type, &value, sizeof value);
}

void AppendText(Message& message, uint16_t type, const char* text)
{
    AppendAttribute(message, type, text, strlen(text) + 1);
}

Message Begin(const nlmsghdr& request, uint16_t type, uint16_t flags)
{
    Message message;
    Append(message, nlmsghdr{0, type, flags, request.nlmsg_seq, 0});
    return message;
}

Message& End(Message& message)
{
    const auto length = static_cast<uint32_t>(message.size());
    memcpy(message.data(), &length, sizeof length);
    return message;
}

void TakeAttribute(LinkRequest& request, uint16_t type, std::span<const uint8_t> data)
{
    switch (type & NLA_TYPE_MASK) {
        case IFLA_IFNAME:
        case IFLA_ALT_IFNAME: {
            const auto* text = reinterpret_cast<const char*>(data.data());
            request.name.assign(text, strnlen(text, data.size()));
            break;
        }
        case IFLA_EXT_MASK:
            break;
        case IFLA_MASTER:
        case IFLA_LINKINFO:
            request.selects = true;
            [[fallthrough]];
        default:
            request.sets = true;
    }
}

void TakeAttributes(LinkRequest& request, std::span<const uint8_t> bytes)
{
    for (size_t at = 0;;) {
        const auto attribute = ReadAt<rtattr>(bytes, at);
        if (!attribute || attribute->rta_len < sizeof(rtattr) ||
            attribute->rta_len > bytes.size() - at)
            return;
        TakeAttribute(request, attribute->rta_type,
                      bytes.subspan(at + sizeof(rtattr), attribute->rta_len - sizeof(rtattr)));
        at += RTA_ALIGN(attribute->rta_len);
    }
}

bool IsOfLinks(uint16_t type)
{
    return type >= RTM_NEWLINK && type <= RTM_SETLINK;
}

bool IsOfAddresses(uint16_t type)
{
    return type >= RTM_NEWADDR && type <= RTM_GETADDR;
}

}  // namespace

std::optional<LinkRequest> ReadLinkRequest(std::span<const uint8_t> packet)
{
    const auto header = ReadAt<nlmsghdr>(packet, 0);
    if (!header || header->nlmsg_len < sizeof *header || header->nlmsg_len > packet.size())
        return std::nullopt;
    LinkRequest request{*header};
    const auto body = packet.subspan(sizeof *header, header->nlmsg_len - sizeof *header);
    if (IsOfAddresses(header->nlmsg_type)) {
        if (const auto address = ReadAt<ifaddrmsg>(body, 0))
            request.index = static_cast<int32_t>(address->ifa_index);
        return request;
    }
    if (!IsOfLinks(header->nlmsg_type))
        return std::nullopt;
    // A dump may be asked for with a shorter header.
    const auto link = ReadAt<ifinfomsg>(body, 0);
    const uint8_t family = body.empty() ? uint8_t{AF_UNSPEC} : body[0];
    request.selects = family != AF_UNSPEC && family != AF_PACKET;
    if (!link)
        return request;
    request.index = link->ifi_index;
    request.flags = link->ifi_flags;
    request.change = link->ifi_change;
    TakeAttributes(request, body.subspan(sizeof *link));
    return request;
}

Message LinkMessage(const nlmsghdr& request, uint32_t interface, uint32_t flags)
{
    const bool up = (flags & IFF_UP) != 0;
    const bool inDump = (request.nlmsg_flags & NLM_F_DUMP) == NLM_F_DUMP;
    Message message = Begin(request, RTM_NEWLINK, inDump ? NLM_F_MULTI : 0);
    ifinfomsg link{};
    link.ifi_type = ARPHRD_ETHER;
    link.ifi_index = kFirstInterface + static_cast<int32_t>(interface);
    link.ifi_flags = flags | (up ? IFF_LOWER_UP : 0);
    Append(message, link);
    AppendText(message, IFLA_IFNAME, wire::kInterfaceNames[interface]);
    AppendValue(message, IFLA_TXQLEN, kInterfaceQueueLength);
    AppendValue(message, IFLA_OPERSTATE, up ? kOperationallyUp : kOperationallyDown);
    AppendValue(message, IFLA_LINKMODE, uint8_t{0});
    AppendValue(message, IFLA_MTU, kInterfaceMtu);
    AppendValue(message, IFLA_GROUP, uint32_t{0});
    AppendValue(message, IFLA_CARRIER, uint8_t{up});
    AppendText(message, IFLA_QDISC, up ? "pfifo_fast" : "noop");
    AppendValue(message, IFLA_ADDRESS, HardwareAddress(interface));
    AppendValue(message, IFLA_BROADCAST,
                std::array<uint8_t, kHardwareAddressSize>{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
    return End(message);
}

Message OutcomeMessage(const nlmsghdr& request, int error)
{
    Message message = Begin(request, NLMSG_ERROR, NLM_F_CAPPED);
    Append(message, nlmsgerr{-error, request});
    return End(message);
}

Message DoneMessage(const nlmsghdr& request)
{
    Message message = Begin(request, NLMSG_DONE, NLM_F_MULTI);
    Append(message, int32_t{0});
    return End(message);
}

void SetReceiver(Message& messages, uint32_t port)
{
    for (size_t at = 0;;) {
        auto header = ReadAt<nlmsghdr>(messages, at);
        if (!header || header->nlmsg_len < sizeof *header)
            return;
        header->nlmsg_pid = port;
        memcpy(messages.data() + at, &*header, sizeof *header);
        at += NLMSG_ALIGN(header->nlmsg_len);
    }
}

}  // namespace vboard::seam

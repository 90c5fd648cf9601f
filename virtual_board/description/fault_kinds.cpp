#include "virtual_board/description/fault_kinds.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>

namespace vboard {
namespace {

constexpr uint32_t kMaxErrno = 133;
constexpr uint32_t kMaxMessage = 8192;
constexpr uint32_t kAnyWord = UINT32_MAX;

constexpr FaultKind kKinds[] = {
    {FaultId::kMailboxDown, "mailbox-down", "", ENETDOWN, 0, 1,
     "socket() fails with ENETDOWN: the mailbox is not up yet"},
    {FaultId::kSocketError, "socket-error", "ERRNO", EACCES, kMaxErrno, 1,
     "socket() of the mailbox family fails"},
    {FaultId::kAppCpuDown, "app-cpu-down", "", EHOSTDOWN, 0, 1,
     "bind() fails with EHOSTDOWN: the application CPU is not up yet"},
    {FaultId::kBindError, "bind-error", "ERRNO", EADDRINUSE, kMaxErrno, 1,
     "bind() of a mailbox socket fails"},
    {FaultId::kReceiveError, "receive-error", "ERRNO", ECONNREFUSED, kMaxErrno, 1,
     "recv() on a mailbox socket fails (ECONNREFUSED: refused, ETIMEDOUT: timed out)"},
    {FaultId::kSilent, "silent", "", 0, 0, 0,
     "the application CPU sends nothing: recv() blocks until the fault is cleared"},
    {FaultId::kSendError, "send-error", "ERRNO", ECONNREFUSED, kMaxErrno, 1,
     "send() on a mailbox socket fails"},
    {FaultId::kSendShort, "send-short", "BYTES", 4, kMaxMessage, 1,
     "send() on a mailbox socket takes no more than so many bytes"},
    {FaultId::kMessageType, "message-type", "TYPE", 99, kAnyWord, 1,
     "the next message says that it is of this type"},
    {FaultId::kPayloadLength, "payload-length", "BYTES", 0, kAnyWord, 1,
     "the next message's header says that its payload has this length"},
    {FaultId::kMessageSize, "message-size", "BYTES", 8, kMaxMessage, 1,
     "the next message is cut, or filled up with zeros, to this size"},
    {FaultId::kDeviceCount, "device-count", "COUNT", 3, 255, 1,
     "the next message says that the board has so many devices"},
    {FaultId::kMdioError, "mdio-error", "ERRNO", EIO, kMaxErrno, 1, "an MDIO access fails"},
    {FaultId::kLaneOpen, "lane-open", "ERRNO", ENOENT, kMaxErrno, 1,
     "the lane driver cannot be opened"},
    {FaultId::kLaneError, "lane-error", "ERRNO", EIO, kMaxErrno, 1, "a lane reset fails"},
    {FaultId::kAttrOpen, "attr-open", "ERRNO", ENOENT, kMaxErrno, 1,
     "an attribute (reset line or system state) cannot be opened"},
    {FaultId::kAttrError, "attr-error", "ERRNO", EIO, kMaxErrno, 1,
     "a write to a reset attribute fails"},
    {FaultId::kStateText, "state-text", "", 0, 0, 1,
     "the system-state attribute holds a word instead of a number"},
    {FaultId::kGmacError, "gmac-error", "ERRNO", EOPNOTSUPP, kMaxErrno, 1,
     "a GMAC reconfiguration request fails"},
    {FaultId::kGmacResult, "gmac-result", "", 0, 0, 1,
     "a GMAC reconfiguration is skipped: its result word is -1"},
    {FaultId::kInterfaceError, "interface-error", "ERRNO", EAGAIN, kMaxErrno, 1,
     "SIOCSIFFLAGS fails, and so does ifconfig"},
};

std::optional<uint32_t> ParseErrno(std::string_view text)
{
    for (int error = 1; error <= static_cast<int>(kMaxErrno); ++error) {
        const char* name = strerrorname_np(error);
        if (name != nullptr && text == name)
            return static_cast<uint32_t>(error);
    }
    return std::nullopt;
}

}  // namespace

std::span<const FaultKind> FaultKinds()
{
    return kKinds;
}

const FaultKind* FindFault(std::string_view name)
{
    const auto* found = std::ranges::find(kKinds, name, &FaultKind::name);
    return found != std::end(kKinds) ? found : nullptr;
}

std::string FaultNames()
{
    std::string names;
    for (const FaultKind& kind : kKinds)
        names.append(names.empty() ? "" : ", ").append(kind.name);
    return names;
}

std::optional<uint32_t> ParseFaultValue(const FaultKind& kind, std::string_view text)
{
    if (kind.valueName == "ERRNO" && !text.empty() && text[0] == 'E')
        return ParseErrno(text);
    uint32_t value = 0;
    auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    bool whole = error == std::errc{} && end == text.data() + text.size();
    bool isErrno = kind.valueName == "ERRNO";
    if (!whole || value > kind.maxValue || (isErrno && value == 0))
        return std::nullopt;
    return value;
}

std::string DescribeFaultValue(const FaultKind& kind)
{
    if (kind.valueName.empty())
        return "no value";
    if (kind.valueName == "ERRNO")
        return "the name or number of an errno";
    return "a number from 0 to " + std::to_string(kind.maxValue);
}

}  // namespace vboard

#include "virtual_board/board/application_cpu.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "virtual_board/board/board_data.h"
#include "virtual_board/board/wire.h"

namespace vboard {
namespace {

constexpr uint8_t kModuleId = 0;
constexpr uint16_t kApplicationId = 12;
constexpr size_t kAddressSize = 16;
constexpr size_t kMaxMessage = 4096;

constexpr size_t kShownBytes = 40;

std::string Hex(std::span<const uint8_t> bytes)
{
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (uint8_t byte : bytes.first(std::min(bytes.size(), kShownBytes)))
        text.append({kDigits[byte >> 4], kDigits[byte & 15]});
    return bytes.size() > kShownBytes ? text + "..." : text;
}

std::string_view NameOf(Family family)
{
    return kFamilyNames[static_cast<size_t>(family)];
}

struct MailboxAddress {
    uint16_t family;
    uint8_t mid;
    uint16_t appid;
};

MailboxAddress DecodeAddress(std::span<const uint8_t> bytes)
{
    MailboxAddress address{};
    if (bytes.size() < kAddressSize)
        return address;
    memcpy(&address.family, bytes.data(), sizeof address.family);
    address.mid = bytes[2];
    memcpy(&address.appid, bytes.data() + 3, sizeof address.appid);
    return address;
}

int CheckAddress(const MailboxAddress& address, size_t size)
{
    if (size != kAddressSize)
        return EINVAL;
    if (address.family != wire::kMailboxFamily)
        return EAFNOSUPPORT;
    return address.mid == kModuleId && address.appid == kApplicationId ? 0 : EADDRNOTAVAIL;
}

}  // namespace

ApplicationCpu::ApplicationCpu(const BoardDescription& board, Faults& activeFaults,
                               Journal& boardJournal)
    : spec_{board}, faults_{activeFaults}, journal_{boardJournal}
{
    SendAgain(std::nullopt);
}

int ApplicationCpu::Open(int type)
{
    JournalEntry entry{JournalKind::kMailbox, "socket", {{"type", type}}};
    if (faults_.Strike(FaultId::kMailboxDown))
        entry.error = ENETDOWN;
    else if (auto error = faults_.Strike(FaultId::kSocketError))
        entry.error = static_cast<int>(*error);
    return journal_.Note(std::move(entry));
}

int ApplicationCpu::Bind(MailboxEnd& end, std::span<const uint8_t> bytes)
{
    MailboxAddress address = DecodeAddress(bytes);
    JournalEntry entry{JournalKind::kMailbox,
                       "bind",
                       {{"family", address.family}, {"mid", address.mid}, {"appid", address.appid}},
                       CheckAddress(address, bytes.size())};
    if (faults_.Strike(FaultId::kAppCpuDown))
        entry.error = EHOSTDOWN;
    else if (auto error = faults_.Strike(FaultId::kBindError))
        entry.error = static_cast<int>(*error);
    else if (end.bound)
        entry.error = EINVAL;
    end.bound = end.bound || entry.error == 0;
    return journal_.Note(std::move(entry));
}

ApplicationCpu::Letter* ApplicationCpu::FindLetter(Family family)
{
    auto found = std::ranges::find(letters_, family, &Letter::family);
    return found != letters_.end() ? &*found : nullptr;
}

ApplicationCpu::Letter* ApplicationCpu::NextLetter()
{
    auto found = std::ranges::find(letters_, Progress::kDue, &Letter::progress);
    return found != letters_.end() ? &*found : nullptr;
}

std::vector<uint8_t> ApplicationCpu::Compose(Family family)
{
    std::vector<uint8_t> message = BoardDataMessage(spec_, family);
    if (auto count = faults_.Strike(FaultId::kDeviceCount))
        message[DeviceCountOffset(family)] = static_cast<uint8_t>(*count);
    if (auto type = faults_.Strike(FaultId::kMessageType))
        PutWord(message, 0, *type);
    if (auto length = faults_.Strike(FaultId::kPayloadLength))
        PutWord(message, 4, *length);
    if (auto size = faults_.Strike(FaultId::kMessageSize))
        message.resize(*size);
    return message;
}

int ApplicationCpu::StartReceive(const MailboxEnd& end)
{
    int refusal = end.bound ? 0 : EINVAL;
    if (auto error = faults_.Strike(FaultId::kReceiveError))
        refusal = static_cast<int>(*error);
    if (refusal == 0)
        return 0;
    return journal_.Note({JournalKind::kMailbox, "receive", Json::object(), refusal});
}

const std::vector<uint8_t>* ApplicationCpu::Offer(MailboxEnd& end)
{
    Letter* letter = NextLetter();
    const bool busy = !end.bound || end.offered || end.unanswered;
    if (busy || letter == nullptr || faults_.IsSet(FaultId::kSilent))
        return nullptr;
    letter->progress = Progress::kOffered;
    end.offered = letter->family;
    end.message = letter->unread ? *std::exchange(letter->unread, {}) : Compose(letter->family);
    return &end.message;
}

void ApplicationCpu::Taken(MailboxEnd& end)
{
    if (Letter* letter = FindLetter(*end.offered))
        letter->progress = Progress::kSent;
    end.unanswered = std::exchange(end.offered, {});
    journal_.Note({JournalKind::kMailbox,
                   "receive",
                   {{"family", NameOf(*end.unanswered)},
                    {"size", end.message.size()},
                    {"bytes", Hex(end.message)}}});
}

// Nobody has seen it: it is as if it had never been sent.
void ApplicationCpu::TakeBack(MailboxEnd& end)
{
    Letter* letter = FindLetter(*end.offered);
    if (letter == nullptr || letter->progress != Progress::kOffered)
        return;
    letter->progress = Progress::kDue;
    letter->unread = std::move(end.message);
}

int ApplicationCpu::Acknowledge(MailboxEnd& end, std::span<const uint8_t> message)
{
    JournalEntry entry{
        JournalKind::kMailbox, "send", {{"size", message.size()}, {"bytes", Hex(message)}}};
    bool right = std::ranges::equal(message, kAcknowledgement);
    if (!end.unanswered) {
        entry.note = "nothing was to be acknowledged";
        return journal_.Note(std::move(entry));
    }
    entry.facts["family"] = NameOf(*end.unanswered);
    if (Letter* letter = FindLetter(*end.unanswered))
        letter->progress = right ? Progress::kAcknowledged : Progress::kDue;
    if (!right)
        entry.note = "not an acknowledgement: the board data will be sent again";
    end.unanswered.reset();
    return journal_.Note(std::move(entry));
}

int ApplicationCpu::Send(MailboxEnd& end, std::span<const uint8_t> message, size_t& taken)
{
    taken = message.size();
    JournalEntry refused{JournalKind::kMailbox, "send", {{"size", message.size()}}};
    if (!end.bound)
        refused.error = ENOTCONN;
    else if (auto error = faults_.Strike(FaultId::kSendError))
        refused.error = static_cast<int>(*error);
    else if (message.size() > kMaxMessage)
        refused.error = EMSGSIZE;
    if (refused.error != 0)
        return journal_.Note(std::move(refused));
    if (auto limit = faults_.Strike(FaultId::kSendShort))
        taken = std::min<size_t>(taken, *limit);
    return Acknowledge(end, message.first(taken));
}

void ApplicationCpu::Close(MailboxEnd& end)
{
    JournalEntry entry{JournalKind::kMailbox, "close"};
    if (end.unanswered) {
        entry.note = "no acknowledgement: the board data will be sent again";
        if (Letter* letter = FindLetter(*end.unanswered))
            letter->progress = Progress::kDue;
    }
    if (end.offered)
        TakeBack(end);
    journal_.Note(std::move(entry));
    end = {};
}

void ApplicationCpu::SendAgain(std::optional<Family> family)
{
    if (!family) {
        letters_.clear();
        for (Family each : spec_.order)
            letters_.push_back({each, Progress::kDue});
        return;
    }
    std::erase_if(letters_, [&](const Letter& letter) { return letter.family == *family; });
    letters_.insert(letters_.begin(), {*family, Progress::kDue});
}

Json ApplicationCpu::State() const
{
    static constexpr std::string_view kProgress[] = {"due", "due", "sent", "acknowledged"};
    Json state = Json::object();
    for (const Letter& letter : letters_)
        state[NameOf(letter.family)] = kProgress[static_cast<size_t>(letter.progress)];
    return state;
}

}  // namespace vboard

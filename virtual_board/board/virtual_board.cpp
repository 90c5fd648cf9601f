#include "virtual_board/board/virtual_board.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "virtual_board/board/chip_factory.h"

namespace vboard {
namespace {

Reply Outcome(int error, int32_t result = 0)
{
    return error == 0 ? Reply{result, 0} : Reply{-1, error};
}

template <typename Value>
std::vector<uint8_t> Bytes(const Value& value)
{
    std::vector<uint8_t> bytes(sizeof value);
    memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// False when the data are not exactly one.
template <typename Value>
bool Read(std::span<const uint8_t> data, Value& value)
{
    if (data.size() != sizeof value)
        return false;
    memcpy(&value, data.data(), sizeof value);
    return true;
}

constexpr uint8_t kHighestMdioAddress = 31;

bool IsAttribute(uint32_t arg)
{
    return arg < std::size(wire::kAttributePaths);
}

}  // namespace

VirtualBoard::VirtualBoard(BoardDescription description, double timeScale)
    : spec_{std::move(description)},
      clock_{timeScale},
      devices_{MakeDevices(spec_)},
      applicationCpu_{spec_, faults_, journal_},
      mailboxes_{applicationCpu_, journal_},
      mdio_{devices_, spec_.mdioBuses, faults_, journal_, clock_},
      soc_{spec_, devices_, faults_, journal_, clock_}
{
    for (const Fault& fault : spec_.faults)
        faults_.Add(fault);
}

void VirtualBoard::UsePrivateNames(std::string directory)
{
    names_ = std::make_unique<PrivateNames>(std::move(directory));
}

Reply VirtualBoard::Ask(const Question& question)
{
    // What a program has sent comes before what it asks.
    mailboxes_.Serve();
    journal_.SetCaller(question.process);
    switch (question.op) {
        case wire::Op::kMii:
            return AskMii(question.data);
        case wire::Op::kSocket:
        case wire::Op::kBind:
        case wire::Op::kMailboxEnd:
        case wire::Op::kStartReceive:
        case wire::Op::kSend:
            return AskMailbox(question);
        case wire::Op::kAttributeOpen:
        case wire::Op::kAttributeRead:
        case wire::Op::kAttributeWrite:
            return AskAttribute(question);
        case wire::Op::kPrivateOpen:
        case wire::Op::kPrivateStat:
        case wire::Op::kPrivateUnlink:
        case wire::Op::kPrivateMode:
            return AskNames(question);
        case wire::Op::kSemaphoreGet:
            return GetSemaphore(question.data);
        case wire::Op::kLaneOpen:
            return Outcome(soc_.OpenLaneDriver());
        case wire::Op::kLaneReset:
            return Outcome(soc_.ResetLane(question.arg));
        case wire::Op::kHello:
            return SayHello();
        default:
            return AskInterface(question);
    }
}

Reply VirtualBoard::AskMailbox(const Question& question)
{
    switch (question.op) {
        case wire::Op::kSocket: {
            const bool watched = faults_.IsSet(FaultId::kReceiveError) ||
                                 faults_.IsSet(FaultId::kSendError) ||
                                 faults_.IsSet(FaultId::kSendShort);
            return Outcome(applicationCpu_.Open(static_cast<int>(question.arg)), watched);
        }
        case wire::Op::kBind: {
            uint32_t id = 0;
            const int error = mailboxes_.Bind(question.process, question.data, id);
            return Outcome(error, static_cast<int32_t>(id));
        }
        case wire::Op::kMailboxEnd:
            return Outcome(mailboxes_.Adopt(
                question.arg, UniqueFd{fcntl(question.descriptor, F_DUPFD_CLOEXEC, 0)}));
        case wire::Op::kStartReceive:
            return Outcome(mailboxes_.StartReceive(question.arg));
        default: {
            size_t taken = 0;
            const int error = mailboxes_.Send(question.arg, question.data, taken);
            return Outcome(error, static_cast<int32_t>(taken));
        }
    }
}

Reply VirtualBoard::AskInterface(const Question& question)
{
    switch (question.op) {
        case wire::Op::kGmac:
            return AskGmac(question.data);
        case wire::Op::kMiiAddress:
            return FindMiiAddress(question.arg);
        case wire::Op::kInterface:
            return Outcome(soc_.SetInterface(wire::InterfaceIndex(question.arg),
                                             wire::InterfaceUp(question.arg)));
        case wire::Op::kInterfaceState:
            return Outcome(0, soc_.IsUp(question.arg));
        default:
            return Outcome(EPROTO);
    }
}

Reply VirtualBoard::AskMii(std::span<const uint8_t> data)
{
    wire::MiiAccess access{};
    if (!Read(data, access))
        return Outcome(EPROTO);
    Reply reply = Outcome(mdio_.Access(access));
    reply.data = Bytes(access.valueOut);
    return reply;
}

Reply VirtualBoard::FindMiiAddress(uint32_t interface) const
{
    for (const Device& device : devices_)
        if (device.wiring->serdesId == interface && device.wiring->mdioAddr <= kHighestMdioAddress)
            return Outcome(0, device.wiring->mdioAddr);
    return Outcome(EOPNOTSUPP);
}

Reply VirtualBoard::AskGmac(std::span<const uint8_t> data)
{
    wire::GmacRequest request{};
    if (!Read(data, request))
        return Outcome(EPROTO);
    int32_t result = 0;
    Reply reply = Outcome(soc_.ReconfigureGmac(request, result));
    reply.data = Bytes(result);
    return reply;
}

Reply VirtualBoard::AskAttribute(const Question& question)
{
    if (!IsAttribute(question.arg))
        return Outcome(ENOENT);
    const auto attribute = static_cast<wire::Attribute>(question.arg);
    if (question.op == wire::Op::kAttributeOpen)
        return Outcome(soc_.OpenAttributeForWriting(attribute));
    if (question.op == wire::Op::kAttributeWrite) {
        const std::string_view text{reinterpret_cast<const char*>(question.data.data()),
                                    question.data.size()};
        return Outcome(soc_.WriteAttribute(attribute, text), static_cast<int32_t>(text.size()));
    }
    std::string text;
    const int error = soc_.ReadAttribute(attribute, text);
    Reply reply = Outcome(error, static_cast<int32_t>(text.size()));
    reply.data.assign(text.begin(), text.end());
    return reply;
}

Reply VirtualBoard::AskNames(const Question& question)
{
    if (names_ == nullptr || question.arg >= std::size(wire::kPrivatePaths))
        return Outcome(ENOENT);
    wire::PrivateOpen open{};
    uint32_t mode = 0;
    Reply reply;
    if (question.op == wire::Op::kPrivateOpen && Read(question.data, open)) {
        reply.error = names_->Open(question.arg, open, reply.descriptor);
    } else if (question.op == wire::Op::kPrivateStat) {
        struct statx facts {};
        reply.error = names_->Stat(question.arg, facts);
        reply.data = Bytes(facts);
    } else if (question.op == wire::Op::kPrivateUnlink) {
        reply.error = names_->Unlink(question.arg);
    } else if (question.op == wire::Op::kPrivateMode && Read(question.data, mode)) {
        reply.error = names_->ChangeMode(question.arg, mode);
    } else {
        reply.error = EPROTO;
    }
    return reply;
}

Reply VirtualBoard::GetSemaphore(std::span<const uint8_t> data)
{
    wire::SemaphoreGet get{};
    if (!Read(data, get))
        return Outcome(EPROTO);
    if (names_ == nullptr || !names_->IsPrivate(get.key))
        return Outcome(0, wire::kNotPrivate);
    int id = -1;
    const int error = names_->GetSemaphore(get, id);
    return Outcome(error, id);
}

Reply VirtualBoard::SayHello() const
{
    Reply reply;
    reply.data = Bytes(wire::Hello{clock_.Scale(), names_ != nullptr, 0});
    return reply;
}

}  // namespace vboard

#include "virtual_board/board/virtual_board.h"

#include <sys/socket.h>
#include <cerrno>

#include <cstring>

#include "virtual_board/board/chip_factory.h"

namespace vboard {
namespace {

Answer Outcome(int error, int32_t result = 0)
{
    return error == 0 ? Answer{result, 0} : Answer{-1, error};
}

template <typename Value>
std::vector<uint8_t> Bytes(const Value& value)
{
    std::vector<uint8_t> bytes(sizeof value);
    memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

// False when the packet does not hold exactly one.
template <typename Value>
bool Read(std::span<const uint8_t> data, Value& value)
{
    if (data.size() != sizeof value)
        return false;
    memcpy(&value, data.data(), sizeof value);
    return true;
}

bool IsAttribute(uint32_t arg)
{
    return arg < std::size(wire::kAttributePaths);
}

}  // namespace

VirtualBoard::VirtualBoard(BoardDescription description, double timeScale)
    : spec{std::move(description)},
      clock{timeScale},
      devices{MakeDevices(spec)},
      applicationCpu{spec, faults, journal},
      mdio{devices, spec.mdioBuses, faults, journal, clock},
      soc{spec, devices, faults, journal, clock}
{
    for (const Fault& fault : spec.faults)
        faults.Add(fault);
}

std::optional<Answer> VirtualBoard::Handle(Client& client, std::span<const uint8_t> packet)
{
    journal.SetCaller(client.pid);
    if (client.role == Client::Role::kAttribute)
        return WriteAttribute(client, packet);
    wire::Request request{};
    if (packet.size() < sizeof request)
        return Outcome(EPROTO);
    memcpy(&request, packet.data(), sizeof request);
    auto data = packet.subspan(sizeof request);
    if (request.magic != wire::kMagic || request.dataSize != data.size())
        return Outcome(EPROTO);
    return Call(client, request, data);
}

std::optional<Answer> VirtualBoard::Call(Client& client, const wire::Request& request,
                                         std::span<const uint8_t> data)
{
    switch (request.op) {
        case wire::Op::kSocket:
        case wire::Op::kBind:
        case wire::Op::kReceive:
        case wire::Op::kSend:
            return CallMailbox(client, request, data);
        case wire::Op::kMii:
            return CallMii(data);
        case wire::Op::kGmac:
            return CallGmac(data);
        case wire::Op::kInterface:
            return Outcome(soc.SetInterface(wire::InterfaceIndex(request.arg),
                                            wire::InterfaceUp(request.arg)));
        case wire::Op::kLaneOpen:
        case wire::Op::kAttributeWrite:
            return OpenFile(client, request);
        case wire::Op::kLaneReset:
            return Outcome(client.role == Client::Role::kLane ? soc.ResetLane(request.arg) : EBADF);
        case wire::Op::kAttributeRead:
            return CallAttributeRead(request.arg);
        default:
            return Outcome(EPROTO);
    }
}

std::optional<Answer> VirtualBoard::CallMailbox(Client& client, const wire::Request& request,
                                                std::span<const uint8_t> data)
{
    if (request.op == wire::Op::kSocket) {
        int error = applicationCpu.Open(static_cast<int>(request.arg));
        if (error == 0)
            client.role = Client::Role::kMailbox;
        return Outcome(error);
    }
    if (client.role != Client::Role::kMailbox)
        return Outcome(EBADF);
    if (request.op == wire::Op::kBind)
        return Outcome(applicationCpu.Bind(client.mailbox, data));
    if (request.op == wire::Op::kSend) {
        size_t taken = 0;
        int error = applicationCpu.Send(client.mailbox, data, taken);
        return Outcome(error, static_cast<int32_t>(taken));
    }
    auto answer = Retry(client);
    if (!answer && (request.arg & MSG_DONTWAIT) != 0) {
        client.mailbox.waiting = false;
        return Outcome(EAGAIN);
    }
    return answer;
}

std::optional<Answer> VirtualBoard::Retry(Client& client)
{
    journal.SetCaller(client.pid);
    auto received = applicationCpu.Receive(client.mailbox);
    if (!received)
        return std::nullopt;
    Answer answer = Outcome(received->error, static_cast<int32_t>(received->message.size()));
    answer.data = std::move(received->message);
    return answer;
}

Answer VirtualBoard::CallMii(std::span<const uint8_t> data)
{
    wire::MiiAccess access{};
    if (!Read(data, access))
        return Outcome(EPROTO);
    Answer answer = Outcome(mdio.Access(access));
    answer.data = Bytes(access.valueOut);
    return answer;
}

Answer VirtualBoard::CallGmac(std::span<const uint8_t> data)
{
    wire::GmacRequest request{};
    if (!Read(data, request))
        return Outcome(EPROTO);
    int32_t result = 0;
    Answer answer = Outcome(soc.ReconfigureGmac(request, result));
    answer.data = Bytes(result);
    return answer;
}

Answer VirtualBoard::CallAttributeRead(uint32_t arg)
{
    if (!IsAttribute(arg))
        return Outcome(ENOENT);
    std::string text;
    int error = soc.ReadAttribute(static_cast<wire::Attribute>(arg), text);
    Answer answer = Outcome(error, static_cast<int32_t>(text.size()));
    answer.data.assign(text.begin(), text.end());
    return answer;
}

Answer VirtualBoard::OpenFile(Client& client, const wire::Request& request)
{
    if (request.op == wire::Op::kLaneOpen) {
        int error = soc.OpenLaneDriver();
        if (error == 0)
            client.role = Client::Role::kLane;
        return Outcome(error);
    }
    if (!IsAttribute(request.arg))
        return Outcome(ENOENT);
    client.attribute = static_cast<wire::Attribute>(request.arg);
    int error = soc.OpenAttributeForWriting(client.attribute);
    if (error == 0)
        client.role = Client::Role::kAttribute;
    return Outcome(error);
}

Answer VirtualBoard::WriteAttribute(Client& client, std::span<const uint8_t> text)
{
    std::string_view written{reinterpret_cast<const char*>(text.data()), text.size()};
    int error = soc.WriteAttribute(client.attribute, written);
    return Outcome(error, static_cast<int32_t>(text.size()));
}

void VirtualBoard::Closed(Client& client)
{
    journal.SetCaller(client.pid);
    if (client.role == Client::Role::kMailbox)
        applicationCpu.Close(client.mailbox);
}

}  // namespace vboard

#include "virtual_board/program/remote_board.h"

#include <cerrno>

#include "virtual_board/board/descriptor_passing.h"
#include "virtual_board/program/control_client.h"

namespace vboard {

RemoteBoard::RemoteBoard(const std::string& path) : socket_{ConnectToBoard(path)} {}

Reply RemoteBoard::Ask(const Question& question)
{
    const wire::Request request{wire::kMagic, question.op, question.arg,
                                static_cast<uint32_t>(question.data.size()), question.process};
    std::vector<uint8_t> packet(sizeof request);
    memcpy(packet.data(), &request, sizeof request);
    packet.insert(packet.end(), question.data.begin(), question.data.end());
    if (!SendWithDescriptor(socket_.Get(), packet.data(), packet.size(), question.descriptor))
        return {-1, ENODEV};
    packet.resize(sizeof(wire::Reply) + wire::kMaxData);
    Received received = ReceiveWithDescriptor(socket_.Get(), packet.data(), packet.size());
    wire::Reply head{};
    if (received.size < static_cast<ssize_t>(sizeof head))
        return {-1, ENODEV};
    memcpy(&head, packet.data(), sizeof head);
    const auto end = packet.begin() + received.size;
    return {head.result,
            head.error,
            {packet.begin() + sizeof head, end},
            std::move(received.descriptor)};
}

}  // namespace vboard

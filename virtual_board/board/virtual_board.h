// The board: all its state, and what happens to a request from a client.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "virtual_board/board/application_cpu.h"
#include "virtual_board/board/mdio_controller.h"
#include "virtual_board/board/soc.h"
#include "virtual_board/board/wire.h"
#include "virtual_board/cables/lans.h"

namespace vboard {

// What one connection stands for; it may be a mailbox socket, an open file, or a single question.
struct Client {
    enum class Role { kNone, kMailbox, kLane, kAttribute };

    pid_t pid = 0;
    Role role = Role::kNone;
    MailboxEnd mailbox = {};
    wire::Attribute attribute = {};
};

struct Answer {
    int32_t result = 0;
    int32_t error = 0;
    std::vector<uint8_t> data = {};
};

class VirtualBoard {
public:
    VirtualBoard(BoardDescription spec, double timeScale);

    // One packet of a client. nullopt: the answer comes later, from Retry.
    std::optional<Answer> Handle(Client& client, std::span<const uint8_t> packet);
    // For a client whose receive waits.
    std::optional<Answer> Retry(Client& client);
    void Closed(Client& client);

    // The traffic between the ports of the switches; null: the ports have no interfaces.
    Background* Traffic() { return lans_.get(); }

    // A command of `orblink-vboard control` and its answer, both JSON; see board_control.cpp.
    Json Control(const Json& command);

private:
    friend class BoardControl;

    std::optional<Answer> Call(Client& client, const wire::Request& request,
                               std::span<const uint8_t> data);
    std::optional<Answer> CallMailbox(Client& client, const wire::Request& request,
                                      std::span<const uint8_t> data);
    Answer CallMii(std::span<const uint8_t> data);
    Answer CallGmac(std::span<const uint8_t> data);
    Answer CallAttributeRead(uint32_t arg);
    Answer OpenFile(Client& client, const wire::Request& request);
    Answer WriteAttribute(Client& client, std::span<const uint8_t> text);

    BoardDescription spec_;
    BoardClock clock_;
    Journal journal_{clock_};
    Faults faults_;
    std::vector<Device> devices_;
    ApplicationCpu applicationCpu_;
    MdioController mdio_;
    Soc soc_;
    std::unique_ptr<cables::Lans> lans_;
};

}  // namespace vboard

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
#include "virtual_board/board/cables.h"
#include "virtual_board/board/mdio_controller.h"
#include "virtual_board/board/soc.h"
#include "virtual_board/board/wire.h"

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
    VirtualBoard(BoardDescription description, double timeScale);

    // One packet of a client. nullopt: the answer comes later, from Retry.
    std::optional<Answer> Handle(Client& client, std::span<const uint8_t> packet);
    // For a client whose receive waits.
    std::optional<Answer> Retry(Client& client);
    void Closed(Client& client);

    // Plugs the cables in, which must stay as long as the board is served.
    void Plug(Cables& plugged) { cables = &plugged; }
    // Null: the ports have no interfaces.
    Cables* Plugged() const { return cables; }

    const BoardDescription& Description() const { return spec; }
    const BoardClock& Clock() const { return clock; }
    const std::vector<Device>& Devices() const { return devices; }
    Journal& Log() { return journal; }
    Faults& ActiveFaults() { return faults; }
    ApplicationCpu& Cpu() { return applicationCpu; }
    Soc& SystemOnChip() { return soc; }

private:
    std::optional<Answer> Call(Client& client, const wire::Request& request,
                               std::span<const uint8_t> data);
    std::optional<Answer> CallMailbox(Client& client, const wire::Request& request,
                                      std::span<const uint8_t> data);
    Answer CallMii(std::span<const uint8_t> data);
    Answer CallGmac(std::span<const uint8_t> data);
    Answer CallAttributeRead(uint32_t arg);
    Answer OpenFile(Client& client, const wire::Request& request);
    Answer WriteAttribute(Client& client, std::span<const uint8_t> text);

    BoardDescription spec;
    BoardClock clock;
    Journal journal{clock};
    Faults faults;
    std::vector<Device> devices;
    ApplicationCpu applicationCpu;
    MdioController mdio;
    Soc soc;
    Cables* cables = nullptr;
};

}  // namespace vboard

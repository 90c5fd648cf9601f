// The board: all its state, and what it answers.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "virtual_board/board/application_cpu.h"
#include "virtual_board/board/board_side.h"
#include "virtual_board/board/cables.h"
#include "virtual_board/board/mailbox_sockets.h"
#include "virtual_board/board/mdio_controller.h"
#include "virtual_board/board/private_names.h"
#include "virtual_board/board/soc.h"
#include "virtual_board/board/wire.h"

namespace vboard {

class VirtualBoard : public BoardSide {
public:
    VirtualBoard(BoardDescription description, double timeScale);

    Reply Ask(const Question& question) override;

    // From now on shared memory and semaphores have names of the board's own.
    void UsePrivateNames(std::string directory);
    bool HasPrivateNames() const { return names != nullptr; }

    // The application CPU's side of the mailbox sockets.
    MailboxSockets& Mailboxes() { return mailboxes; }

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
    Reply AskMailbox(const Question& question);
    Reply AskAttribute(const Question& question);
    Reply AskInterface(const Question& question);
    Reply AskNames(const Question& question);
    Reply AskMii(std::span<const uint8_t> data);
    Reply AskGmac(std::span<const uint8_t> data);
    Reply FindMiiAddress(uint32_t interface) const;
    Reply GetSemaphore(std::span<const uint8_t> data);
    Reply SayHello() const;

    BoardDescription spec;
    BoardClock clock;
    Journal journal{clock};
    Faults faults;
    std::vector<Device> devices;
    ApplicationCpu applicationCpu;
    MailboxSockets mailboxes;
    MdioController mdio;
    Soc soc;
    std::unique_ptr<PrivateNames> names;
    Cables* cables = nullptr;
};

}  // namespace vboard

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
    bool HasPrivateNames() const { return names_ != nullptr; }

    // The application CPU's side of the mailbox sockets.
    MailboxSockets& Mailboxes() { return mailboxes_; }

    // Plugs the cables in, which must stay as long as the board is served.
    void Plug(Cables& plugged) { cables_ = &plugged; }
    // Null: the ports have no interfaces.
    Cables* Plugged() const { return cables_; }

    const BoardDescription& Description() const { return spec_; }
    const BoardClock& Clock() const { return clock_; }
    const std::vector<Device>& Devices() const { return devices_; }
    Journal& Log() { return journal_; }
    Faults& ActiveFaults() { return faults_; }
    ApplicationCpu& Cpu() { return applicationCpu_; }
    Soc& SystemOnChip() { return soc_; }

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

    BoardDescription spec_;
    BoardClock clock_;
    Journal journal_{clock_};
    Faults faults_;
    std::vector<Device> devices_;
    ApplicationCpu applicationCpu_;
    MailboxSockets mailboxes_;
    MdioController mdio_;
    Soc soc_;
    std::unique_ptr<PrivateNames> names_;
    Cables* cables_ = nullptr;
};

}  // namespace vboard

#include "virtual_board/seam/interfaces.h"

#include <linux/if.h>

#include <iterator>

namespace vboard::seam {

std::optional<uint32_t> FindInterface(std::string_view name)
{
    for (uint32_t interface = 0; interface < std::size(wire::kInterfaceNames); ++interface)
        if (name == wire::kInterfaceNames[interface])
            return interface;
    return std::nullopt;
}

std::optional<uint32_t> FindInterface(int32_t index)
{
    const int64_t interface = int64_t{index} - kFirstInterface;
    if (interface < 0 || interface >= static_cast<int64_t>(std::size(wire::kInterfaceNames)))
        return std::nullopt;
    return static_cast<uint32_t>(interface);
}

std::array<uint8_t, kHardwareAddressSize> HardwareAddress(uint32_t interface)
{
    return {0x02, 0, 0x5E, 0x43, 0, static_cast<uint8_t>(interface)};
}

Reply InterfaceFlags(BoardSide& board, pid_t process, uint32_t interface)
{
    Reply reply = board.Ask({process, wire::Op::kInterfaceState, interface});
    if (reply.error == 0)
        reply.result =
            IFF_BROADCAST | IFF_MULTICAST | (reply.result != 0 ? IFF_UP | IFF_RUNNING : 0);
    return reply;
}

}  // namespace vboard::seam

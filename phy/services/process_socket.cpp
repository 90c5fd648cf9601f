#include "phy/services/process_socket.h"

#include <sys/socket.h>
#include <unistd.h>
#include <cerrno>
#include <iterator>

namespace orblink::phy {

int OpenProcessSocket(LogCaller caller)
{
    if (process.socket >= 0)
        return RC_OK;
    process.socket = socket(AF_INET, SOCK_DGRAM, 0);
    return process.socket < 0 ? EP_ERROR_AT_AS(caller, "socket failed, errno=%d", errno) : RC_OK;
}

void CloseProcessSocket()
{
    close(process.socket);
    process.socket = -1;
}

int StoreInterfaceName(LogCaller caller, char (&to)[IFNAMSIZ], const char* name)
{
    if (strncpy_s(to, sizeof(to), name, sizeof(to)) != 0)
        return EP_ERROR_AS(caller,
                           "%s:%d: Runtime-constraint violation error in function kova_strncpy_s",
                           caller.func, caller.Line());
    return RC_OK;
}

const char* InterfaceName(LogCaller caller, uint8_t devIdx, const PhyDeviceRecord& record)
{
    static constexpr const char* kNames[] = {"nsgmii0", "nsgmii1", "UNKNOWN"};
    const auto lane = static_cast<uint8_t>(record.board.serdesId);
    if (lane < std::size(kNames))
        return kNames[lane];
    EP_ERROR_AT_AS(caller, "Invalid serdesId=%d, DevIndex=%d", lane, devIdx);
    return nullptr;
}

}  // namespace orblink::phy

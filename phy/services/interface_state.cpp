#include <net/if.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "common/log.h"
#include "phy/call/region.h"
#include "phy/services/process_socket.h"

using namespace orblink;
using namespace orblink::phy;

int EPHAL_SetInterfaceState(uint8_t DevIdx, int Up)
{
    const PhyDeviceRecord* const record = FindRecord(DevIdx);
    if (record == nullptr)
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    const auto lane = static_cast<uint8_t>(ReadOnce(record->board.serdesId));
    const char* const name = InterfaceName(lane);
    if (name == nullptr)
        return EP_ERROR_AT("%s:%d Invalid serdesId=%d, DevIndex=%d", lane, DevIdx);
    char command[sizeof("ifconfig  down") + IFNAMSIZ];
    // Result dropped: the longest name fits.
    static_cast<void>(
        snprintf(command, sizeof(command), "ifconfig %s %s", name, Up != 0 ? "up" : "down"));
    if (system(command) < 0)  // NOLINT(cert-env33-c): no word of it comes from outside
        return EP_ERROR("system(%s) failed, errno=%d", command, errno);
    return RC_OK;
}

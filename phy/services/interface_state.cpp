#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "phy/services/process_socket.h"

using namespace orblink;
using namespace orblink::phy;

int EPHAL_SetInterfaceState(uint8_t DevIdx, int Up)
{
    const PhyDeviceRecord* const record = RecordOrError(EP_CALLER, DevIdx);
    const char* const name =
        record == nullptr ? nullptr : InterfaceName(EP_CALLER, DevIdx, *record);
    if (name == nullptr)
        return RC_ERROR;
    char command[sizeof("ifconfig  down") + IFNAMSIZ];
    snprintf(command, sizeof(command), "ifconfig %s %s", name, Up != 0 ? "up" : "down");
    if (system(command) < 0)
        return EP_ERROR("system(%s) failed, errno=%d", command, errno);
    return RC_OK;
}

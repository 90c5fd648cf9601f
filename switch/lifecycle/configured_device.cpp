#include <cstring>

#include "common/log.h"
#include "switch/lifecycle/default_hal.h"
#include "switch/orblink_api.h"

int OBOS_GetConfiguredDevice(int Which, struct SwitchBoardEntry* Entry, uint32_t* Found)
{
    if (Found == nullptr || (Which == 1 && Entry == nullptr))
        return OB_ERROR("Illegal params");
    if (Which != 1) {
        *Found = 0;
        return orblink::RC_OK;
    }
    if (strncpy_s(Entry->halLibName, sizeof(Entry->halLibName), orblink::sw::kDefaultHalLibrary,
                  sizeof(Entry->halLibName)) != 0)
        return OB_ERROR_TWICE(
            "%s:%d ERROR: %s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    Entry->serdesId = 1;
    Entry->enableGpioPin = 17;
    Entry->resetGpioPin = 19;
    Entry->internalPortPidx = 4;
    Entry->mdioAddr = 31;
    Entry->mdioBus = 1;
    Entry->internalPortIfaceSpeed = OB_SPEED_2G5;
    Entry->internalPortIfaceMode = OB_IFACE_HSGMII;
    *Found = 1;
    return orblink::RC_OK;
}

#include "common/log.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_ResetEnable(uint8_t DevIdx)
{
    EntryExitLines lines{OB_CALLER};
    OB_TRACE("DevIdx = %d", DevIdx);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    SwitchDeviceRecord& record = call.Record();
    if (!call.Device().IsEnabled())
        OB_NOTICE("Switch is not enabled, state=%d, DevIdx=%d", record.config.state, DevIdx);
    const uint32_t pin = record.board.resetGpioPin;
    if (pin == OB_NO_GPIO_PIN) {
        OB_NOTICE("No 'Reset GPIO' pin defined for device %d!", DevIdx);
        return RC_OK;
    }
    if (OBOS_SetGpioValue(pin, 0) != RC_OK)
        return OB_ERROR("OBOS_SetGpioValue failed, DevIdx %d, pin=%d, val=0", DevIdx, pin);
    OB_INFO("OBOS_SetGpioValue done, DevIdx %d, pin=%d, val=0", DevIdx, pin);
    record.dvtPorts = 0;
    record.config.state = OB_STATE_RESET;
    return RC_OK;
}

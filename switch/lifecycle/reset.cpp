#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_ResetEnable(uint8_t DevIdx)
{
    EntryExitLines lines{OB_TRACE_CALLER};
    OB_TRACE("DevIdx = %d", DevIdx);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    const uint32_t state = ReadOnce(call.Config().state);
    if (state != OB_STATE_ENABLED)
        OB_NOTICE("Switch is not enabled, state=%d, DevIdx=%d", state, DevIdx);
    const uint32_t pin = ReadOnce(call.Record().board.resetGpioPin);
    if (pin == OB_NO_GPIO_PIN) {
        OB_NOTICE("No 'Reset GPIO' pin defined for device %d!", DevIdx);
        return RC_OK;
    }
    if (OBOS_SetGpioValue(pin, 0) != RC_OK)
        return OB_ERROR("OBOS_SetGpioValue failed, DevIdx %d, pin=%d, val=0", DevIdx, pin);
    OB_INFO("OBOS_SetGpioValue done, DevIdx %d, pin=%d, val=0", DevIdx, pin);
    call.Record().dvtPorts = 0;
    call.Config().state = OB_STATE_RESET;
    return RC_OK;
}

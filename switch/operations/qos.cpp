#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

// The values have no meaning here: they go to the HAL in the caller's order.

int ORBLINK_SetQWred(uint8_t DevIdx, uint8_t A, uint16_t B, uint16_t C, uint16_t D, uint16_t E,
                     uint16_t F, uint16_t G)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SetQWred, A, B, C, D, E, F, G) != RC_OK)
        return OB_ERROR("SetQWred failed, DevIdx=%d", DevIdx);
    return RC_OK;
}

int ORBLINK_SetGlobWred(uint8_t DevIdx, uint8_t A, uint8_t B, uint8_t C, uint16_t D, uint16_t E,
                        uint16_t F, uint16_t G, uint16_t H, uint16_t I)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SetGlobWred, A, B, C, D, E, F, G, H, I) != RC_OK)
        return OB_ERROR("SetGlobWred failed, DevIdx=%d", DevIdx);
    return RC_OK;
}

int ORBLINK_SetQRsrv(uint8_t DevIdx, uint8_t A, uint16_t B)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SetQRsrv, A, B) != RC_OK)
        return OB_ERROR("SetQRsrv failed, DevIdx=%d", DevIdx);
    return RC_OK;
}

int ORBLINK_SetPortFc(uint8_t DevIdx, uint8_t Port, uint16_t A, uint16_t B)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::SetPortFc, Port, A, B) != RC_OK)
        return OB_ERROR("SetPortFc failed, DevIdx=%d", DevIdx);
    return RC_OK;
}

#include "switch/operations/pass_through.h"

// The values have no meaning here: they go to the HAL in the caller's order.
using namespace orblink;
using namespace orblink::sw;

int ORBLINK_SetQWred(uint8_t DevIdx, uint8_t A, uint16_t B, uint16_t C, uint16_t D, uint16_t E,
                     uint16_t F, uint16_t G)
{
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SetQWred failed, DevIdx=%d", DevIdx);
        },
        &HalTable::SetQWred, A, B, C, D, E, F, G);
}

int ORBLINK_SetGlobWred(uint8_t DevIdx, uint8_t A, uint8_t B, uint8_t C, uint16_t D, uint16_t E,
                        uint16_t F, uint16_t G, uint16_t H, uint16_t I)
{
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SetGlobWred failed, DevIdx=%d", DevIdx);
        },
        &HalTable::SetGlobWred, A, B, C, D, E, F, G, H, I);
}

int ORBLINK_SetQRsrv(uint8_t DevIdx, uint8_t A, uint16_t B)
{
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SetQRsrv failed, DevIdx=%d", DevIdx);
        },
        &HalTable::SetQRsrv, A, B);
}

int ORBLINK_SetPortFc(uint8_t DevIdx, uint8_t Port, uint16_t A, uint16_t B)
{
    return PassThrough(
        OB_CALLER, DevIdx,
        [&, caller = OB_CALLER] {
            return OB_ERROR_AS(caller, "SetPortFc failed, DevIdx=%d", DevIdx);
        },
        &HalTable::SetPortFc, Port, A, B);
}

#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_SetMacAging(uint8_t DevIdx, int Aging)
{
    constexpr int kFirstStep = 1;
    constexpr int kLastStep = 5;

    OB_TRACE("DevIdx=%d, Aging=%d", DevIdx, Aging);
    if (Aging < kFirstStep || Aging > kLastStep)
        return OB_ERROR("Wrong Aging %d", Aging);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Enabled() && call.Hal(&HalTable::SetMacAging, Aging) != RC_OK)
        return OB_ERROR("Set MAC aging failed, DevIdx=%d", DevIdx);
    call.Config().macAging = static_cast<uint32_t>(Aging);
    return RC_OK;
}

#include "board/hal_name.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_GetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, void* Mode)
{
    OB_TRACE("GetPortIEEETestMode dev=%d, port=%d", DevIdx, PortIdx);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (call.Device().PortHasPhy(PortIdx) == 0)
        return OB_ERROR("PortIdx=%d does not have PHY, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return finished.Ok();
    if (!call.Device().HasSlot(&HalTable::GetPortTestMode))
        return OB_ERROR("GetPortTestMode HAL does not exist for switch impl %s, DevIdx=%d",
                        HalName(call.Record().board.halLibName).Text(), DevIdx);
    if (call.Hal(&HalTable::GetPortTestMode, PortIdx, Mode) != RC_OK)
        return OB_ERROR("GetPortTestMode failed, DevIdx=%d", DevIdx);
    return finished.Ok();
}

int ORBLINK_SetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, uint8_t Mode)
{
    OB_TRACE("SetPortIEEETestMode dev=%d, port=%d, mode=%d", DevIdx, PortIdx, Mode);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (call.Device().PortHasPhy(PortIdx) == 0)
        return OB_ERROR("PortIdx=%d does not have PHY, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return finished.Ok();
    if (!call.Device().HasSlot(&HalTable::SetPortTestMode))
        return OB_ERROR("SetPortTestMode HAL does not exist for switch impl %s, DevIdx=%d",
                        HalName(call.Record().board.halLibName).Text(), DevIdx);
    if (call.Hal(&HalTable::SetPortTestMode, PortIdx, Mode) != RC_OK)
        return OB_ERROR("SetPortTestMode failed, DevIdx=%d", DevIdx);
    return finished.Ok();
}

#include "board/hal_name.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

int ReadFromChip(LogCaller caller, const SwitchDevice& device, uint8_t* mode)
{
    if (!device.HasSlot(&HalTable::GetLEDConfig))
        return OB_ERROR_AS(caller, "GetLEDConfig HAL does not exist for switch impl %s, DevIdx=%d",
                           HalName(device.Record().board.halLibName).Text(), device.Idx());
    if (device.Hal(&HalTable::GetLEDConfig, mode) != RC_OK)
        return OB_ERROR_AS(caller, "GetLEDConfig failed, DevIdx=%d", device.Idx());
    return RC_OK;
}

int WriteToChip(LogCaller caller, const SwitchDevice& device, uint8_t mode)
{
    if (!device.HasSlot(&HalTable::SetLEDConfig))
        return OB_ERROR_AS(caller, "SetLEDConfig HAL does not exist for switch impl %s, DevIdx=%d",
                           HalName(device.Record().board.halLibName).Text(), device.Idx());
    if (device.Hal(&HalTable::SetLEDConfig, mode) != RC_OK)
        return OB_ERROR_AS(caller, "SetLEDConfig failed, DevIdx=%d", device.Idx());
    return RC_OK;
}

}  // namespace

int ORBLINK_GetLEDConfig(uint8_t DevIdx, uint8_t* Mode)
{
    OB_TRACE("GetLEDConfig dev=%d", DevIdx);
    if (Mode == nullptr)
        return OB_ERROR("Bad input - Mode is NULL");
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (call.Enabled() && ReadFromChip(OB_CALLER, call.Device(), Mode) != RC_OK)
        return RC_ERROR;
    const uint8_t provisioned = ReadOnce(call.Config().ledMode);
    if (*Mode != provisioned)
        OB_NOTICE("LED config provisioned mode is %u but actual mode is %u", provisioned, *Mode);
    return finished.Ok();
}

int ORBLINK_SetLEDConfig(uint8_t DevIdx, uint8_t Mode)
{
    OB_TRACE("SetLEDConfig dev=%d, mode=%d", DevIdx, Mode);
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (call.Enabled() && WriteToChip(OB_CALLER, call.Device(), Mode) != RC_OK)
        return RC_ERROR;
    call.Config().ledMode = Mode;
    return finished.Ok();
}

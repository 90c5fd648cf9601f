#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_EnableProviderBridgedMode(uint8_t DevIdx, uint16_t STagTpid)
{
    OB_TRACE("STagTpid=%d", STagTpid);
    if (STagTpid == 0)
        return OB_ERROR("STagTpid is zero");
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    SwitchProvConfig& config = call.Config();
    if (config.InProviderBridgedMode == 1 && config.STagTpid == STagTpid) {
        OB_NOTICE("Switch is already in Provider Bridge Mode with STagTpid=0x%x, DevIdx=%d",
                  STagTpid, DevIdx);
        return RC_OK;
    }
    if (call.Enabled() && call.Hal(&HalTable::EnableProviderBridgedMode, STagTpid) != RC_OK)
        return OB_ERROR("ORBLINK_EnableProviderBridgedMode failed, STagTpid=0x%x, DevIdx=%d",
                        STagTpid, DevIdx);
    config.STagTpid = STagTpid;
    config.InProviderBridgedMode = 1;
    return RC_OK;
}

int ORBLINK_DisableProviderBridgedMode(uint8_t DevIdx)
{
    OB_TRACE("");
    if (ORBLINK_isBatteryMode() != 0) {
        OB_NOTICE("Modem in battery mode - skipping VendorSpecificIoctl %d", DevIdx);
        return RC_ERROR;
    }
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (call.Config().InProviderBridgedMode == 0) {
        OB_NOTICE("Provider Bridge Mode is already disabled, DevIdx=%d", DevIdx);
        return RC_OK;
    }
    if (call.Enabled() && call.Hal(&HalTable::DisableProviderBridgedMode) != RC_OK)
        return OB_ERROR("DisableProviderBridgedMode failed, DevIdx=%d", DevIdx);
    call.Config().InProviderBridgedMode = 0;
    return RC_OK;
}

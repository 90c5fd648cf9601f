#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

// The one capability bit whose being set means that the feature is missing.

int ORBLINK_EnableIgmpSnooping(uint8_t DevIdx)
{
    OB_TRACE("");
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (call.Device().HasCapability(OB_CAPS_NO_SNOOPING))
        return OB_ERROR("Switch does not support IGMP/MLD snooping, DevIdx=%d", DevIdx);
    if (call.Config().igmpSnooping == 1) {
        OB_NOTICE("IGMP/MLD Snooping is already enabled, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Enabled() && call.Hal(&HalTable::EnableIgmpSnooping) != RC_OK)
        return OB_ERROR("EnableIgmpSnooping failed, DevIdx=%d", DevIdx);
    call.Config().igmpSnooping = 1;
    return finished.Ok();
}

int ORBLINK_DisableIgmpSnooping(uint8_t DevIdx)
{
    OB_TRACE("");
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (call.Device().HasCapability(OB_CAPS_NO_SNOOPING))
        return OB_ERROR("Switch does not support IGMP/MLD snooping, DevIdx=%d", DevIdx);
    if (call.Config().igmpSnooping != 1) {
        OB_NOTICE("IGMP/MLD Snooping is already disabled, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Enabled() && call.Hal(&HalTable::DisableIgmpSnooping) != RC_OK)
        return OB_ERROR("DisableIgmpSnooping failed, DevIdx");
    // 0 is the value for which a restore sends nothing: the chip comes out of reset without.
    call.Config().igmpSnooping = 0;
    return finished.Ok();
}

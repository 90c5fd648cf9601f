#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

// The one capability bit whose being set means that the feature is missing.
bool HasSnooping(LogCaller caller, const SwitchCall& call)
{
    if (!call)
        return false;
    if ((call.Record().caps.capsFlags & OB_CAPS_NO_SNOOPING) == 0)
        return true;
    OB_ERROR_AS(caller, "Switch does not support IGMP/MLD snooping, DevIdx=%d",
                call.Device().Idx());
    return false;
}

}  // namespace

int ORBLINK_EnableIgmpSnooping(uint8_t DevIdx)
{
    OB_TRACE("");
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!HasSnooping(OB_CALLER, call))
        return RC_ERROR;
    if (call.Config().igmpSnooping == 1) {
        OB_NOTICE("IGMP/MLD Snooping is already enabled, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Device().IsEnabled() && call.Device().Hal(&HalTable::EnableIgmpSnooping) != RC_OK)
        return OB_ERROR("EnableIgmpSnooping failed, DevIdx=%d", DevIdx);
    call.Config().igmpSnooping = 1;
    return finished.Ok();
}

int ORBLINK_DisableIgmpSnooping(uint8_t DevIdx)
{
    OB_TRACE("");
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!HasSnooping(OB_CALLER, call))
        return RC_ERROR;
    if (call.Config().igmpSnooping != 1) {
        OB_NOTICE("IGMP/MLD Snooping is already disabled, DevIdx=%d", DevIdx);
        return finished.Ok();
    }
    if (call.Device().IsEnabled() && call.Device().Hal(&HalTable::DisableIgmpSnooping) != RC_OK)
        return OB_ERROR("DisableIgmpSnooping failed, DevIdx");
    // 0 is the value for which a restore sends nothing: the chip comes out of reset without.
    call.Config().igmpSnooping = 0;
    return finished.Ok();
}

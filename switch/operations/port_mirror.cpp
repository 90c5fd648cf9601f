#include "switch/call/bitmap.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

bool AreMirrorPorts(LogCaller caller, const SwitchCall& call, uint8_t source, uint8_t destination)
{
    if (!call)
        return false;
    const SwitchDevice& device = call.Device();
    if (source >= device.NumOfPorts()) {
        OB_ERROR_AS(caller, "Invalid SrcPortIdx=%d DevIdx=%d", source, device.Idx());
        return false;
    }
    if (destination >= device.NumOfPorts() && destination != OB_NO_MIRROR) {
        OB_ERROR_AS(caller, "Invalid DstPortIdx=%d, DevIdx=%d", destination, device.Idx());
        return false;
    }
    if ((device.Record().caps.capsFlags & OB_CAPS_MIRRORING) == 0) {
        OB_ERROR_AS(caller, "Switch does not support mirroring, DevIdx=%d", device.Idx());
        return false;
    }
    return true;
}

}  // namespace

int ORBLINK_SetPortMirror(uint8_t DevIdx, uint8_t SrcPortIdx, uint8_t DstPortIdx)
{
    OB_TRACE("SrcPortIdx=%d, DstPortIdx=%d", SrcPortIdx, DstPortIdx);
    if (SrcPortIdx >= OB_MAX_PORTS)
        return OB_ERROR("Illigal  SrcPortIdx ");
    if (DstPortIdx == SrcPortIdx)
        return OB_ERROR("Cannot mirror port to itself, DevIdx");
    FinishedLine finished{OB_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!AreMirrorPorts(OB_CALLER, call, SrcPortIdx, DstPortIdx))
        return RC_ERROR;
    if (HasPort(call.Record().dvtPorts, DstPortIdx))
        OB_NOTICE("DevIdx=%d DstPortIdx=%d is in DVT mode", DevIdx, DstPortIdx);
    if (HasPort(call.Record().dvtPorts, SrcPortIdx))
        OB_NOTICE("DevIdx=%d SrcPortIdx=%d is in DVT mode", DevIdx, SrcPortIdx);
    uint8_t& destination = call.Config().mirrorDst[SrcPortIdx];
    if (destination == DstPortIdx) {
        OB_TRACE("Mirroring of PortIdx=%d is already set to port PortIdx=%d, DevIdx=%d", SrcPortIdx,
                 DstPortIdx, DevIdx);
        return finished.Ok();
    }
    if (call.Device().IsEnabled() &&
        call.Device().Hal(&HalTable::SetPortMirror, SrcPortIdx, DstPortIdx) != RC_OK)
        return OB_ERROR("SetPortMirror failed, SrcPortIdx=%d, DstPortIdx=%d, DevIdx=%d", SrcPortIdx,
                        DstPortIdx, DevIdx);
    destination = DstPortIdx;
    return finished.Ok();
}

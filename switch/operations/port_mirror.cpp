#include "switch/call/frame.h"
#include "switch/call/port_bits.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_SetPortMirror(uint8_t DevIdx, uint8_t SrcPortIdx, uint8_t DstPortIdx)
{
    OB_TRACE("SrcPortIdx=%d, DstPortIdx=%d", SrcPortIdx, DstPortIdx);
    if (SrcPortIdx >= OB_MAX_PORTS)
        return OB_ERROR("Illigal  SrcPortIdx ");
    if (DstPortIdx == SrcPortIdx)
        return OB_ERROR("Cannot mirror port to itself, DevIdx");
    FinishedLine finished{OB_TRACE_CALLER};
    SwitchCall call{OB_CALLER, DevIdx, &finished};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(SrcPortIdx))
        return OB_ERROR("Invalid SrcPortIdx=%d DevIdx=%d", SrcPortIdx, DevIdx);
    if (!call.Device().IsPort(DstPortIdx) && DstPortIdx != OB_NO_MIRROR)
        return OB_ERROR("Invalid DstPortIdx=%d, DevIdx=%d", DstPortIdx, DevIdx);
    if (!call.Device().HasCapability(OB_CAPS_MIRRORING))
        return OB_ERROR("Switch does not support mirroring, DevIdx=%d", DevIdx);
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
    if (call.Enabled() && call.Hal(&HalTable::SetPortMirror, SrcPortIdx, DstPortIdx) != RC_OK)
        return OB_ERROR("SetPortMirror failed, SrcPortIdx=%d, DstPortIdx=%d, DevIdx=%d", SrcPortIdx,
                        DstPortIdx, DevIdx);
    destination = DstPortIdx;
    return finished.Ok();
}

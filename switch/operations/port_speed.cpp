#include "switch/call/frame.h"
#include "switch/call/port_bits.h"

using namespace orblink;
using namespace orblink::sw;

int ORBLINK_SetPhyPortSpeedDuplex(uint8_t DevIdx, uint8_t PhyPortIdx, uint32_t Speed,
                                  uint32_t FullDuplex)
{
    OB_TRACE("PhyPortIdx=%d, PhySpeed=%d, LinkSpeed=%d, FullDp=%d", PhyPortIdx, Speed, FullDuplex,
             FullDuplex);
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PhyPortIdx))
        return OB_ERROR("Invalid PhyPortIdx=%d, DevIdx=%d", PhyPortIdx, DevIdx);
    if (call.Device().PortHasPhy(PhyPortIdx) == 0)
        return OB_ERROR("PhyPortIdx=%d does not have PHY attached, DevIdx=%d", PhyPortIdx, DevIdx);
    if (HasPort(call.Record().dvtPorts, PhyPortIdx))
        OB_NOTICE("DevIdx=%d PhyPortIdx=%d is in DVT mode", DevIdx, PhyPortIdx);
    auto& link = call.Config().link[PhyPortIdx];
    if (link.linkSpeed == Speed && link.linkFullDuplex == FullDuplex) {
        OB_NOTICE(
            "PhyPortIdx=%d link is already in desired speed=%d and duplex=%d modes, DevIdx=%d",
            PhyPortIdx, Speed, FullDuplex, DevIdx);
        return RC_OK;
    }
    if (!HasPort(call.Config().enabledPorts, PhyPortIdx)) {
        OB_NOTICE("Invalid operation, DevIdx=%d,PhyPortIdx=%d had been disable", DevIdx,
                  PhyPortIdx);
        return RC_ERROR;
    }
    if (call.Enabled() &&
        call.Hal(&HalTable::SetPhyPortSpeedDuplex, PhyPortIdx, Speed, FullDuplex) != RC_OK)
        return OB_ERROR(
            "SetPhyPortSpeedDuplex failed PhyPortIdx=%d, PhySpeed=%d, FullDp=%d, DevIdx=%d",
            PhyPortIdx, Speed, FullDuplex, DevIdx);
    link.linkSpeed = Speed;
    link.linkFullDuplex = FullDuplex;
    return RC_OK;
}

#include "common/log.h"
#include "switch/lifecycle/restore.h"

namespace orblink::sw {

int _RestorePortConfig(const SwitchDevice& device, uint8_t port)
{
    if (device.PortHasPhy(port) == 0)
        return RC_OK;
    const auto link = device.Record().config.link[port];
    if (device.Hal(&HalTable::SetPhyPortSpeedDuplex, port, link.linkSpeed, link.linkFullDuplex) !=
        RC_OK)
        return OB_ERROR(
            "SetPhyPortSpeedDuplex failed PhyPortIdx=%d, PhySpeed=%d, FullDp=%d, DevIdx=%d", port,
            link.linkSpeed, link.linkFullDuplex, device.Idx());
    if (((device.Record().config.eeePorts >> port) & 1) != 0) {
        if (device.Hal(&HalTable::EnablePhyPortEee, port) != RC_OK)
            return OB_ERROR("EnablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", port,
                            device.Idx());
    } else if (device.Hal(&HalTable::DisablePhyPortEee, port) != RC_OK) {
        return OB_ERROR("DisablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", port, device.Idx());
    }
    return RC_OK;
}

}  // namespace orblink::sw

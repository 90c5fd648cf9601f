#include "common/log.h"
#include "switch/call/port_bits.h"
#include "switch/lifecycle/restore.h"

namespace orblink::sw {

int _RestorePortConfig(const SwitchDevice& device, uint8_t port)
{
    if (device.PortHasPhy(port) == 0)
        return RC_OK;
    const uint32_t speed = ReadOnce(device.Config().link[port].linkSpeed);
    const uint32_t duplex = ReadOnce(device.Config().link[port].linkFullDuplex);
    if (device.Hal(&HalTable::SetPhyPortSpeedDuplex, port, speed, duplex) != RC_OK)
        return OB_ERROR(
            "SetPhyPortSpeedDuplex failed PhyPortIdx=%d, PhySpeed=%d, FullDp=%d, DevIdx=%d", port,
            speed, duplex, device.Idx());
    if (HasPort(device.Config().eeePorts, port)) {
        if (device.Hal(&HalTable::EnablePhyPortEee, port) != RC_OK)
            return OB_ERROR("EnablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", port,
                            device.Idx());
    } else if (device.Hal(&HalTable::DisablePhyPortEee, port) != RC_OK) {
        return OB_ERROR("DisablePhyPortEee failed, PhyPortIdx = %d, DevIdx=%d", port, device.Idx());
    }
    return RC_OK;
}

}  // namespace orblink::sw

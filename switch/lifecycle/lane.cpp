#include "switch/lifecycle/lane.h"

#include "common/wait.h"

namespace orblink::sw {

constexpr unsigned kLaneSettleMicroseconds = 2000;

int ResetInternalLane(LogCaller caller, const SwitchDevice& device)
{
    const SwitchDeviceRecord& record = device.Record();
    const int speed2_5 = record.board.internalPortIfaceMode == OB_IFACE_HSGMII ? 1 : 0;
    if (OBOS_ResetSerDes(record.board.serdesId, speed2_5) != RC_OK)
        return OB_ERROR_AS(caller, "OBOS_ResetSerDes failed");
    if (record.rxResetAfterSerdes != 1)
        return RC_OK;
    WaitMicroseconds(kLaneSettleMicroseconds);
    if (device.Hal(&HalTable::VendorSpecificIoctl, OBHAL_IOCTL_RX_RESET, nullptr) != RC_OK)
        return OB_ERROR_AS(caller, "switch RX reset failed");
    return RC_OK;
}

}  // namespace orblink::sw

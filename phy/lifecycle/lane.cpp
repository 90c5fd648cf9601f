#include "phy/lifecycle/lane.h"

#include <fcntl.h>

#include <cerrno>
#include <cstring>

#include "board/lane_driver.h"
#include "common/descriptor.h"
#include "phy/call/frame.h"

namespace orblink::phy {
namespace {

// The one HAL library whose PHY tells the state of the lane.
constexpr const char kLaneAwareHal[] = "libphyk20.so";
constexpr uint8_t kLaneMmd = 31;
constexpr uint16_t kLaneStatusReg = 0x0E23;
constexpr uint16_t kLaneInOrder = 0x0001;

}  // namespace

int _ResetSgmii(uint32_t serdesId, uint32_t speed)
{
    if (serdesId >= kLanes)
        return RC_ERROR;
    uint32_t client = LaneClient(serdesId, speed == OB_SPEED_2G5);
    const Descriptor driver{open(kLaneDriver, O_RDONLY)};
    if (!driver)
        return EP_ERROR("open failed, errno=%d", errno);
    if (ioctl(driver.Get(), kResetLane, &client) < 0)
        return EP_ERROR("ioctl failed, errno=%d", errno);
    return RC_OK;
}

bool _IsResetSgmiiRequired(uint8_t devIdx, const PhyDeviceRecord& record)
{
    if (record.bsdValid == 0 ||
        strncmp(record.board.halLibName, kLaneAwareHal, sizeof(kLaneAwareHal)) != 0)
        return true;
    uint32_t link = 0;
    if (CallSlot(devIdx, &HalTable::GetLink, &link, nullptr, nullptr) != RC_OK) {
        EP_ERROR_AT("%s.%d External phy %d is not accessible", devIdx);
        return false;
    }
    if (link == 0)
        return false;
    uint16_t status = 0;
    if (EPHAL_ReadMmd(devIdx, kLaneMmd, kLaneStatusReg, &status) != 0) {
        EP_ERROR_AT("%s:%d ETHPHY_ReadMmd() failed");
        return true;
    }
    return (status & kLaneInOrder) == 0;
}

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_ResetSgmii(uint8_t DevIdx)
{
    const PhyFrame frame{EP_CALLER};
    if (!frame.Entered())
        return RC_ERROR;
    if (DevIdx >= EP_MAX_PHYS)
        return RC_OK;
    const PhyBoardEntry& board = frame.Region().phy[DevIdx].board;
    _ResetSgmii(ReadOnce(board.serdesId), board.portIfaceSpeed);  // result dropped: it is logged
    return RC_OK;
}

#include <errno.h>
#include <fcntl.h>

#include "board/board_services.h"
#include "board/lane_driver.h"
#include "common/descriptor.h"
#include "common/log.h"

namespace orblink {
namespace {

int _ResetModphy(uint32_t ClientId)
{
    const Descriptor driver{open(kLaneDriver, O_RDONLY)};
    if (!driver)
        return OB_ERROR("open error, errno=%d", errno);
    OB_TRACE("open %s done", kLaneDriver);
    if (ioctl(driver.Get(), kResetLane, &ClientId) < 0)
        return OB_ERROR("ioctl error, errno=%d", errno);
    OB_TRACE("ioctl(MODPHY_RESET_LANE,  ClientId = %d) done", ClientId);
    return RC_OK;
}

}  // namespace
}  // namespace orblink

using namespace orblink;

int OBOS_ResetSerDes(uint32_t GmacIdx, int Speed2_5)
{
    OB_TRACE("GmacIdx %d Speed2_5 %s", GmacIdx, Speed2_5 != 0 ? "True" : "False");
    if (GmacIdx >= kLanes)
        return RC_ERROR;
    return _ResetModphy(LaneClient(GmacIdx, Speed2_5 != 0));
}

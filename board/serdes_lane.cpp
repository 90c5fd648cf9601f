#include <errno.h>
#include <fcntl.h>
#include <unistd.h>

#include "board/board_services.h"
#include "board/lane_driver.h"
#include "common/log.h"

namespace orblink {
namespace {

int _ResetModphy(uint32_t ClientId)
{
    const int driver = open(kLaneDriver, O_RDONLY);
    if (driver < 0)
        return OB_ERROR("open error, errno=%d", errno);
    OB_TRACE("open %s done", kLaneDriver);
    const bool done = ioctl(driver, kResetLane, &ClientId) >= 0;
    if (done)
        OB_TRACE("ioctl(MODPHY_RESET_LANE,  ClientId = %d) done", ClientId);
    else
        OB_ERROR("ioctl error, errno=%d", errno);
    close(driver);
    return done ? RC_OK : RC_ERROR;
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

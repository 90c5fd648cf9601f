#include <errno.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include "board/board_services.h"
#include "common/log.h"

namespace orblink {
namespace {

constexpr const char* kLaneDriver = "/dev/modphy_drv";
constexpr unsigned long kModphyResetLane = 0x4004BE05;
static_assert(kModphyResetLane == _IOW(0xBE, 5, uint32_t));

// The lane driver's client numbers: [GmacIdx][0 = up to 1 Gb/s, 1 = 2.5 Gb/s].
constexpr uint32_t kClientIds[2][2] = {{3, 5}, {4, 6}};

int _ResetModphy(uint32_t ClientId)
{
    const int driver = open(kLaneDriver, O_RDONLY);
    if (driver < 0)
        return OB_ERROR("open error, errno=%d", errno);
    OB_TRACE("open %s done", kLaneDriver);
    const bool done = ioctl(driver, kModphyResetLane, &ClientId) >= 0;
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
    if (GmacIdx >= sizeof(kClientIds) / sizeof(kClientIds[0]))
        return RC_ERROR;
    return _ResetModphy(kClientIds[GmacIdx][Speed2_5 != 0 ? 1 : 0]);
}

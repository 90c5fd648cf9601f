// The platform's driver that resets the SoC's SerDes lanes. Both families use it, each with log
// lines of its own.
#pragma once

#include <sys/ioctl.h>

#include <cstdint>

namespace orblink {

constexpr const char* kLaneDriver = "/dev/modphy_drv";

// MODPHY_RESET_LANE; its argument points to the client number.
constexpr unsigned long kResetLane = 0x4004BE05;
static_assert(kResetLane == _IOW(0xBE, 5, uint32_t));

constexpr uint32_t kLanes = 2;

// The driver's number for a lane below kLanes.
constexpr uint32_t LaneClient(uint32_t lane, bool at2_5Gbs)
{
    constexpr uint32_t kFirst = 3;
    constexpr uint32_t kFirstAt2_5Gbs = 5;
    return lane + (at2_5Gbs ? kFirstAt2_5Gbs : kFirst);
}

}  // namespace orblink

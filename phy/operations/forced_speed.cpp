#include "common/log.h"
#include "phy/ethphy_api.h"

namespace orblink::phy {
namespace {

// Register values that make the PHY advertise one speed.
struct SpeedMode {
    uint16_t multiGigabitControl;      // MMD 7 register 32
    uint16_t gigabitControl;           // register 9
    uint16_t advertisementHalfDuplex;  // register 4
    uint16_t advertisementFullDuplex;
    uint16_t control;  // register 0
};

constexpr SpeedMode k10M = {0x4002, 0x0000, 0x0C21, 0x0C61, 0x1200};
constexpr SpeedMode k100M = {0x4002, 0x0000, 0x0CE1, 0x0DE1, 0x1200};
constexpr SpeedMode k1G = {0x4002, 0x0200, 0x0DE1, 0x0DE1, 0x3240};
constexpr SpeedMode k2G5 = {0x40A2, 0x0200, 0x0DE1, 0x0DE1, 0x3240};

constexpr uint8_t kAutoNegotiationMmd = 7;
constexpr uint16_t kMultiGigabitControlReg = 32;
constexpr uint32_t kGigabitControlReg = 9;
constexpr uint32_t kAdvertisementReg = 4;
constexpr uint32_t kControlReg = 0;

const SpeedMode& ModeFor(uint32_t speed)
{
    switch (speed) {
        case 1:
            return k10M;
        case 2:
            return k100M;
        case 3:
            return k1G;
        default:
            return k2G5;
    }
}

}  // namespace
}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int ETHPHY_PhyZ88_SetSpeedDuplexMode(uint8_t DevIdx, uint32_t Speed, int FullDuplex)
{
    const SpeedMode& mode = ModeFor(Speed);
    const uint16_t advertisement =
        FullDuplex != 0 ? mode.advertisementFullDuplex : mode.advertisementHalfDuplex;
    if (ETHPHY_WriteMmd(DevIdx, kAutoNegotiationMmd, kMultiGigabitControlReg,
                        mode.multiGigabitControl) != 0 ||
        ETHPHY_WriteMdio(DevIdx, kGigabitControlReg, mode.gigabitControl) != 0 ||
        ETHPHY_WriteMdio(DevIdx, kAdvertisementReg, advertisement) != 0 ||
        ETHPHY_WriteMdio(DevIdx, kControlReg, mode.control) != 0)
        return EP_ERROR("Failed to write to register\n");
    return RC_OK;
}

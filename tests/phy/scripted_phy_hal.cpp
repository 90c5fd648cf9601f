// A PHY HAL library whose slots are played by the test program. The table is not constant, so that
// a test can take slots away.
#include <type_traits>

#define ETHPHY_HalFuncs ETHPHY_HalFuncsConst
#include "phy/ethphy_hal.h"
#undef ETHPHY_HalFuncs
#include "tests/support/scripted_hal_call.h"

extern "C" {
__attribute__((visibility("default"))) extern struct ETHPHY_HalFuncsConst ETHPHY_HalFuncs;

struct ETHPHY_HalFuncsConst ETHPHY_HalFuncs = {
    OB_SLOT(Init, "p"),          OB_SLOT(GetLink, "ippp"),     OB_SLOT(SetAdminState, "ii"),
    OB_SLOT(ResetDisable, "ii"), OB_SLOT(ResetEnable, "i"),    OB_SLOT(GetCaps, "ip"),
    .Reserved = nullptr,         OB_SLOT(GetCounters, "ip"),   OB_SLOT(ResetCounters, "i"),
    OB_SLOT(ReadChipReg, "iup"), OB_SLOT(WriteChipReg, "iui"), OB_SLOT(SetEeeState, "ii"),
    OB_SLOT(Poll, "i"),
};
}

// The table that the library loads.
#include "hals/phy/slots.h"
#include "phy/ethphy_hal.h"

extern "C" const struct ETHPHY_HalFuncs ETHPHY_HalFuncs = {
    .Init = ieee8023::Init,
    .GetLink = ieee8023::GetLink,
    .SetAdminState = ieee8023::SetAdminState,
    .ResetDisable = ieee8023::ResetDisable,
    .ResetEnable = ieee8023::ResetEnable,
    .GetCaps = ieee8023::GetCaps,
    .Reserved = nullptr,
    .GetCounters = ieee8023::GetCounters,
    .ResetCounters = ieee8023::ResetCounters,
    .ReadChipReg = ieee8023::ReadChipReg,
    .WriteChipReg = ieee8023::WriteChipReg,
    .SetEeeState = ieee8023::SetEeeState,
    .Poll = ieee8023::Poll,
};

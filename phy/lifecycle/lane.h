// The SoC SerDes lane behind a PHY.
#pragma once

#include "phy/ethphy_api.h"

namespace orblink::phy {

int _ResetSgmii(uint32_t serdesId, uint32_t speed);

// False when the PHY shows that its side of the lane is in order, or that there is no link to mend.
bool _IsResetSgmiiRequired(uint8_t devIdx, const PhyDeviceRecord& record);

}  // namespace orblink::phy

/* Restarts PHY 0 with its stored configuration. */
#include "phy/ethphy_api.h"

int main(void)
{
    if (ETHPHY_ResetEnable(0) != 0)
        return 1;
    return ETHPHY_ResetDisable(0, 0) == 0 ? 0 : 1;
}

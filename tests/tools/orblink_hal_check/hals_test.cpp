// The HALs of this house and the templates pass.
#include <gmock/gmock.h>

#include "tests/tools/orblink_hal_check/checked.h"

using namespace checked;
using testing::ElementsAre;

TEST(HalCheckHals, TheSwitchHalPasses)
{
    EXPECT_THAT(Findings(Built("lib/liborblink_velmar.so") + " --counters-size 240"),
                ElementsAre());
}

TEST(HalCheckHals, TheSwitchHalPassesOnABoardOfTwo)
{
    EXPECT_THAT(Findings(Built("lib/liborblink_velmar.so") +
                         " --board " ORBLINK_SOURCE "/virtual_board/boards/two_switches.toml"),
                ElementsAre());
}

TEST(HalCheckHals, TheGeneralPhyHalPasses)
{
    EXPECT_THAT(Findings(Built("lib/libethphy_ieee8023.so") + " --counters-size 32"),
                ElementsAre());
}

TEST(HalCheckHals, TheDefaultPhyHalPassesOnABoardOfTwo)
{
    EXPECT_THAT(Findings(Built("lib/libphyk20.so") + " --board " ORBLINK_SOURCE
                                                     "/virtual_board/boards/phy.toml"),
                ElementsAre());
}

TEST(HalCheckHals, TheTemplateOfASwitchHalPasses)
{
    EXPECT_THAT(Findings(Built("templates/template_switch_hal.so")), ElementsAre());
}

TEST(HalCheckHals, TheTemplateOfAPhyHalPasses)
{
    EXPECT_THAT(Findings(Built("templates/template_phy_hal.so")), ElementsAre());
}

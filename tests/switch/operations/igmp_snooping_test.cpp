#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class IgmpSnooping : public EnabledSwitch {};

TEST_F(IgmpSnooping, IsRefusedByASwitchWithoutItEvenForWhatIsStored)
{
    record.caps.capsFlags = OB_CAPS_NO_SNOOPING;
    for (const uint32_t stored : {0U, 1U, 2U}) {
        config.igmpSnooping = stored;
        transcript.Clear();
        EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), -1);
        EXPECT_EQ(ORBLINK_DisableIgmpSnooping(0), -1);
        EXPECT_LOGS(
            "log1 ORBLINK_EnableIgmpSnooping:# Switch does not support IGMP/MLD snooping, DevIdx=0",
            "log1 ORBLINK_DisableIgmpSnooping:# Switch does not support IGMP/MLD snooping, "
            "DevIdx=0");
        EXPECT_EQ(config.igmpSnooping, stored);
    }
    EXPECT_HALS();
}

TEST_F(IgmpSnooping, AnyStoredValueButOneCountsAsDisabled)
{
    config.igmpSnooping = 2;
    EXPECT_EQ(ORBLINK_DisableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 2U);
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 1U);
    EXPECT_HALS("hal0 EnableIgmpSnooping(0)");
}

TEST_F(IgmpSnooping, OnASwitchThatIsNotEnabledIsStoredAndThenFound)
{
    config.state = 0;
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_EQ(config.igmpSnooping, 1U);
    EXPECT_EQ(ORBLINK_EnableIgmpSnooping(0), 0);
    EXPECT_LOGS("log2 ORBLINK_EnableIgmpSnooping:# IGMP/MLD Snooping is already enabled, DevIdx=0");
}

}  // namespace

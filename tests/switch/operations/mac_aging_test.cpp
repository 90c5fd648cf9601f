#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class MacAging : public EnabledSwitch {};

TEST_F(MacAging, Steps0And6FailBeforeTheSemaphoreIsTaken)
{
    for (const int step : {0, 6, -1, 0x101}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetMacAging(0, step), -1);
        const std::string text = std::to_string(step);
        EXPECT_TRANSCRIPT("log9 ORBLINK_SetMacAging:# DevIdx=0, Aging=" + text,
                          "log1 ORBLINK_SetMacAging:# Wrong Aging " + text);
    }
    EXPECT_EQ(config.macAging, 3U);
}

TEST_F(MacAging, Steps1To5AreTakenWithoutAShortCut)
{
    for (const int step : {1, 2, 3, 3, 4, 5}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetMacAging(0, step), 0);
        EXPECT_HALS("hal0 SetMacAging(0, " + std::to_string(step) + ")");
        EXPECT_EQ(config.macAging, static_cast<uint32_t>(step));
    }
}

}  // namespace

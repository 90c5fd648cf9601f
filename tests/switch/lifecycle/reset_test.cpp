#include <cerrno>
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

const std::string kResetAttribute = "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset";

class ResetEnable : public SwitchTest {};

TEST_F(ResetEnable, HoldsTheSwitchInReset)
{
    InitEnabled();
    Record(0).dvtPorts = 0x06;
    EXPECT_EQ(ORBLINK_ResetEnable(0), 0);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetEnable:# --->", "log9 ORBLINK_ResetEnable:# DevIdx = 0",
                      "sys semop(0, -1, UNDO)", "sys fopen(" + kResetAttribute + ", w)",
                      "log9 OBOS_SetGpioValue:# Reset attribute " + kResetAttribute,
                      "sys write(sgmii1_reset, \"0\")",
                      "log3 ORBLINK_ResetEnable:# OBOS_SetGpioValue done, DevIdx 0, pin=19, val=0",
                      "sys semop(0, +1, UNDO)", "log9 ORBLINK_ResetEnable:# <---");
    EXPECT_EQ(Record(0).config.state, 1U);
    EXPECT_EQ(Record(0).dvtPorts, 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(ResetEnable, KeepsEverythingButTheStateAndTheDvtMarks)
{
    InitEnabled();
    SwitchDeviceRegion expected = Region();
    Record(0).dvtPorts = 0xFF;
    EXPECT_EQ(ORBLINK_ResetEnable(0), 0);
    expected.device[0].config.state = 1;
    EXPECT_EQ(memcmp(&expected, &Region(), sizeof(expected)), 0);
}

class ResetEnableInState : public ResetEnable, public testing::WithParamInterface<uint32_t> {};

TEST_P(ResetEnableInState, WarnsAndGoesOn)
{
    Init();
    Record(0).config.state = GetParam();
    EXPECT_EQ(ORBLINK_ResetEnable(0), 0);
    EXPECT_LOGS("log2 ORBLINK_ResetEnable:# Switch is not enabled, state=" +
                    std::to_string(static_cast<int>(GetParam())) + ", DevIdx=0",
                "log3 ORBLINK_ResetEnable:# OBOS_SetGpioValue done, DevIdx 0, pin=19, val=0");
    EXPECT_EQ(Record(0).config.state, 1U);
}

INSTANTIATE_TEST_SUITE_P(NotEnabled, ResetEnableInState, testing::Values(0, 1, 3, 0xFFFFFFFF),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_F(ResetEnable, WithoutAResetPinChangesNothingAndSucceeds)
{
    InitEnabled(SwitchBoard::With({{.resetGpioPin = 0xFFFFFFFF}}));
    Record(0).dvtPorts = 0x02;
    const SwitchDeviceRegion before = Region();
    EXPECT_EQ(ORBLINK_ResetEnable(0), 0);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetEnable:# --->", "log9 ORBLINK_ResetEnable:# DevIdx = 0",
                      "sys semop(0, -1, UNDO)",
                      "log2 ORBLINK_ResetEnable:# No 'Reset GPIO' pin defined for device 0!",
                      "sys semop(0, +1, UNDO)", "log9 ORBLINK_ResetEnable:# <---");
    EXPECT_EQ(memcmp(&before, &Region(), sizeof(before)), 0);
}

TEST_F(ResetEnable, FailsWhenThePinCannotBeWrittenAndChangesNothing)
{
    InitEnabled();
    Record(0).dvtPorts = 0x02;
    const SwitchDeviceRegion before = Region();
    platform.Fail("fwrite", EIO);
    EXPECT_EQ(ORBLINK_ResetEnable(0), -1);
    EXPECT_LOGS("log1 OBOS_SetGpioValue:# Failed to reset",
                "log1 ORBLINK_ResetEnable:# OBOS_SetGpioValue failed, DevIdx 0, pin=19, val=0");
    EXPECT_EQ(transcript.All().back(), "log9 ORBLINK_ResetEnable:# <---");
    EXPECT_EQ(memcmp(&before, &Region(), sizeof(before)), 0);
    EXPECT_EQ(SemaphoreValue(), 1);
}

TEST_F(ResetEnable, OfAnUnknownSwitchClosesWithTheArrow)
{
    Init();
    EXPECT_EQ(ORBLINK_ResetEnable(1), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetEnable:# --->", "log9 ORBLINK_ResetEnable:# DevIdx = 1",
                      "sys semop(0, -1, UNDO)",
                      "log1 ORBLINK_ResetEnable:# Invalid device index, DevIdx=1",
                      "sys semop(0, +1, UNDO)", "log9 ORBLINK_ResetEnable:# <---");
}

TEST_F(ResetEnable, WithoutPrologClosesWithTheArrow)
{
    Init();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(ORBLINK_ResetEnable(0), -1);
    EXPECT_TRANSCRIPT("log9 ORBLINK_ResetEnable:# --->", "log9 ORBLINK_ResetEnable:# DevIdx = 0",
                      "sys semop(0, -1, UNDO)",
                      "log1 _System5SemOp:# semop() fail, errno=" + std::to_string(EIDRM),
                      "log1 _ApiProlog:# _ApiGlobalLock() failed",
                      "log1 ORBLINK_ResetEnable:# _ApiProlog() failed, DevIdx=0",
                      "log9 ORBLINK_ResetEnable:# <---");
}

TEST_F(ResetEnable, NeedsNoHal)
{
    InitEnabled();
    EXPECT_EQ(ORBLINK_ResetEnable(0), 0);
    EXPECT_HALS();
}

TEST_F(ResetEnable, FollowedByARestoreBringsTheChangedSettingsBack)
{
    Init();
    ASSERT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    Record(0).config.lanPortVlan[2] = 100;
    ASSERT_EQ(ORBLINK_ResetEnable(0), 0);
    transcript.Clear();
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 0), 0);
    EXPECT_TRUE(transcript.Has("hal0 SetLanPortVlan(0, 2, 100)"));
}

}  // namespace

#include <cerrno>

#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortEnable : public EnabledSwitch {
protected:
    PortEnable() { config.enabledPorts = 0; }

    Lines Steps() const { return transcript.Only({"hal", "wait", "sys ioctl", "sys open"}); }
};

constexpr const char* kLaneOpen = "sys open(/dev/modphy_drv, O_RDONLY)";

TEST_F(PortEnable, OfPort0ResetsTheLaneAndTheReceivePath)
{
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), 0);
    EXPECT_EQ(Steps(), (Lines{"hal0 EnablePort(0, 0)", kLaneOpen, "sys ioctl(MODPHY_RESET_LANE, 6)",
                              "wait usleep(2000)", "hal0 VendorSpecificIoctl(0, 3, null)"}));
    EXPECT_EQ(config.enabledPorts, 0x01);
}

TEST_F(PortEnable, OfPort0TellsTheLaneItsSpeedByTheInterfaceMode)
{
    record.board.internalPortIfaceMode = OB_IFACE_SGMII;
    record.board.serdesId = 0;
    record.rxResetAfterSerdes = 0;
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), 0);
    EXPECT_EQ(Steps(),
              (Lines{"hal0 EnablePort(0, 0)", kLaneOpen, "sys ioctl(MODPHY_RESET_LANE, 3)"}));
}

TEST_F(PortEnable, AnyReceiveResetMarkButOneMeansNone)
{
    record.rxResetAfterSerdes = 2;
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), 0);
    EXPECT_FALSE(transcript.Has("VendorSpecificIoctl"));
}

TEST_F(PortEnable, OfPort0FailsWithTheLane)
{
    platform.Fail("ioctl", EIO);
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), -1);
    EXPECT_EQ(transcript.Log().back(), "log1 ORBLINK_EnablePort:# OBOS_ResetSerDes failed");
    EXPECT_FALSE(transcript.Has("VendorSpecificIoctl"));
    EXPECT_EQ(transcript.All().back(), "log9 ORBLINK_EnablePort:# <---");
    EXPECT_TRUE(transcript.Has("finished with error!"));
    EXPECT_EQ(config.enabledPorts, 0x01);
}

TEST_F(PortEnable, OfPort0FailsWithTheReceiveReset)
{
    platform.FailSlot("VendorSpecificIoctl");
    record.caps.port[0].portHasPhy = 1;
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), -1);
    EXPECT_LOGS("log1 ORBLINK_EnablePort:# switch RX reset failed");
    EXPECT_FALSE(transcript.Has("SetPhyPortSpeedDuplex"));
    EXPECT_EQ(config.enabledPorts, 0x01);
}

TEST_F(PortEnable, OfAnInternalPortOtherThan0LeavesTheLaneAlone)
{
    record.board.internalPortPidx = 7;
    EXPECT_EQ(ORBLINK_EnablePort(0, 7), 0);
    EXPECT_EQ(Steps(), (Lines{"hal0 EnablePort(0, 7)"}));
}

TEST_F(PortEnable, RestoresSpeedDuplexAndEeeOfThePort)
{
    config.link[2] = {OB_SPEED_100M, 0};
    config.eeePorts = 0;
    EXPECT_EQ(ORBLINK_EnablePort(0, 2), 0);
    EXPECT_HALS("hal0 EnablePort(0, 2)", "hal0 SetPhyPortSpeedDuplex(0, 2, 3, 0)",
                "hal0 DisablePhyPortEee(0, 2)");
}

TEST_F(PortEnable, StoresTheWishBeforeTheHalIsCalled)
{
    uint8_t during = 0;
    platform.slots["EnablePort"] = [&](const SlotArgs&) {
        during = config.enabledPorts;
        return 1;
    };
    EXPECT_EQ(ORBLINK_EnablePort(0, 3), -1);
    EXPECT_EQ(during, 0x08);
    EXPECT_EQ(config.enabledPorts, 0x08);
}

TEST_F(PortEnable, AfterAFailureARetryFindsThePortAlreadyEnabled)
{
    platform.FailSlot("EnablePort");
    ASSERT_EQ(ORBLINK_EnablePort(0, 3), -1);
    platform.slots.erase("EnablePort");
    transcript.Clear();
    EXPECT_EQ(ORBLINK_EnablePort(0, 3), 0);
    EXPECT_LOGS("log2 ORBLINK_EnablePort:# PortIdx=3 link is already enabled, DevIdx=0");
    EXPECT_HALS();
}

TEST_F(PortEnable, OnASwitchThatIsNotEnabledLeavesLaneAndHalAlone)
{
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_EnablePort(0, 0), 0);
    EXPECT_THAT(Steps(), testing::IsEmpty());
    EXPECT_EQ(config.enabledPorts, 0x01);
}

TEST_F(PortEnable, IsReadFromTheRecord)
{
    config.enabledPorts = 0x04;
    uint32_t enabled = 77;
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 2, &enabled), 0);
    EXPECT_EQ(enabled, 1U);
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 3, &enabled), 0);
    EXPECT_EQ(enabled, 0U);
    EXPECT_HALS();
}

TEST_F(PortEnable, ReadsAsOneWhenReadingFails)
{
    uint32_t enabled = 77;
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 8, &enabled), -1);
    EXPECT_EQ(enabled, 1U);
    enabled = 77;
    EXPECT_EQ(ORBLINK_GetPortEnable(1, 0, &enabled), -1);
    EXPECT_EQ(enabled, 1U);
    enabled = 77;
    config.state = OB_STATE_RESET;
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 3, &enabled), -1);
    EXPECT_EQ(enabled, 1U);
    enabled = 77;
    platform.Fail("semop", EINTR);
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 3, &enabled), -1);
    EXPECT_EQ(enabled, 1U);
}

TEST_F(PortEnable, IsNotReadIntoANullPointer)
{
    EXPECT_EQ(ORBLINK_GetPortEnable(0, 2, nullptr), -1);
    EXPECT_EQ(transcript.Log().size(), 1U);
    EXPECT_EQ(transcript.All().back(), "log9 ORBLINK_GetPortEnable:# <---");
}

TEST_F(PortEnable, DisablingEndsDvtModeAndStoresBothBeforeTheHalIsCalled)
{
    config.enabledPorts = 0x0C;
    record.dvtPorts = 0x0C;
    int during = 0;
    platform.slots["DisablePort"] = [&](const SlotArgs&) {
        during = config.enabledPorts << 8 | record.dvtPorts;
        return 0;
    };
    EXPECT_EQ(ORBLINK_DisablePort(0, 2), 0);
    EXPECT_EQ(during, 0x0808);
    EXPECT_TRUE(transcript.Has("log9 ORBLINK_DisablePort:# ORBLINK_Disable -> bits now: 0x8"));
}

TEST_F(PortEnable, DisablingADisabledPortLeavesItsDvtMode)
{
    record.dvtPorts = 0x04;
    EXPECT_EQ(ORBLINK_DisablePort(0, 2), 0);
    EXPECT_EQ(record.dvtPorts, 0x04);
}

}  // namespace

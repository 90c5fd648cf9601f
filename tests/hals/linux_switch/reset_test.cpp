// What a reset puts back, what it leaves alone, and what is left when it fails.
#include "tests/hals/linux_switch/kernel_bench.h"

using ::testing::HasSubstr;
using ::testing::Not;

class LinuxSwitchReset : public LinuxSwitch {
protected:
    // Settings that every kernel has, each other than after a reset.
    void ChangeWhatEveryKernelHas()
    {
        ASSERT_EQ(Hal().EnableIgmpSnooping(0), 0);
        ASSERT_EQ(Hal().SetMacAging(0, 1), 0);
        ASSERT_EQ(Hal().SetMtuSize(0, 1018), 0);
        ASSERT_EQ(Hal().DisablePort(0, 2), 0);
    }
};

TEST_F(LinuxSwitchReset, EverythingIsAsItWasAtFirst)
{
    BringUp();
    const std::string atFirst = KernelState();
    ChangeWhatEveryKernelHas();
    Sh("ip link set lan1 type bridge_slave hairpin on guard on fastleave on learning off\n"
       "bridge fdb add 02:00:00:00:00:11 dev lan1 master static");
    ASSERT_NE(KernelState(), atFirst);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(StateInTheEnd(atFirst), atFirst);
    EXPECT_THAT(Sh("bridge fdb show br br0"), Not(HasSubstr("02:00:00:00:00:11")));
}

TEST_F(LinuxSwitchReset, OneThatFailsLeavesTheSettingsThatWere)
{
    static constexpr uint32_t kApart = 1, kTogether = 0;
    ASSERT_EQ(Init(), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, &kApart, sizeof kApart), 0);
    ChangeWhatEveryKernelHas();
    Sh("ip link set lan1 type bridge_slave hairpin on");
    FailEachRequest([] { return Hal().ResetSwitch(0, &kTogether, sizeof kTogether); });
}

TEST_F(LinuxSwitchReset, OneThatFailsLeavesVlansAndFilters)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0x88A8), 0);
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 100), 0);
    ASSERT_EQ(Hal().SetLanPortPcp(0, 1, 5), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 2, 3), 0);
    FailEachRequest([] { return Hal().ResetSwitch(0, nullptr, 0); });
}

TEST_F(LinuxSwitchReset, TheHookGoesWithTheFilters)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    const std::string atFirst = KernelState();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    ASSERT_THAT(Sh("tc qdisc show dev lan1"), HasSubstr("clsact"));
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(KernelState(), atFirst);
}

TEST_F(LinuxSwitchReset, SomebodyMayHaveTakenTheHookAway)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    const std::string atFirst = KernelState();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    Sh("tc qdisc delete dev lan1 clsact");
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0) << ::testing::PrintToString(log);
    EXPECT_EQ(KernelState(), atFirst);
}

TEST_F(LinuxSwitchReset, FiltersOfAnEarlierLifeGo)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 1, 5), 0);
    ASSERT_EQ(Init(), 0);  // remembers nothing of them
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    for (const char* hook : {"ingress", "egress"})
        EXPECT_EQ(Sh(std::string("tc filter show dev lan1 ") + hook), "");
}

TEST_F(LinuxSwitchReset, SomebodysFiltersStayWhateverTheirPrecedence)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    Sh("tc qdisc add dev lan1 clsact\n"
       "tc filter add dev lan1 ingress prio 7 flower src_mac 02:00:00:00:00:09 action drop\n"
       "tc filter add dev lan1 ingress prio 20224 flower src_mac 02:00:00:00:00:09 action drop\n"
       "tc filter add dev lan1 egress prio 20242 matchall action pass");
    const std::string theirs = KernelState();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 1, 5), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(KernelState(), theirs);
}

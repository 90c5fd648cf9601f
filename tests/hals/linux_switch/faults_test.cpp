// A slot that fails leaves the kernel as it was, whichever of its requests the kernel did not get.
#include <cstring>

#include "tests/hals/linux_switch/kernel_bench.h"

namespace {

int stations = 0;

uint32_t CountStation(MacEntry* entry)
{
    constexpr uint8_t kAdded[] = {2, 0, 0, 0, 0, 0x11};
    stations += memcmp(entry->data, kAdded, sizeof kAdded) == 0 ? 1 : 0;
    return 1;
}

}  // namespace

class LinuxSwitchFaults : public LinuxSwitch {};

TEST_F(LinuxSwitchFaults, AListThatChangesWhileItIsReadIsReadAgain)
{
    BringUp();
    Sh("bridge fdb add 02:00:00:00:00:11 dev lan1 master static");
    interruptedLists = 2;
    stations = 0;
    EXPECT_EQ(Hal().ForEachMacEntry(0, CountStation, nullptr), 0);
    EXPECT_EQ(interruptedLists, 0);
    EXPECT_EQ(stations, 1);
    interruptedLists = 100;
    EXPECT_NE(Hal().ForEachMacEntry(0, CountStation, nullptr), 0);
    EXPECT_EQ(interruptedLists, 95);
    EXPECT_EQ(stations, 1);
    EXPECT_THAT(log, ::testing::ElementsAre("Cannot read the MAC table of br0, DevIdx=0: it has "
                                            "changed each time it was read, errno=11"));
}

TEST_F(LinuxSwitchFaults, AKernelThatDoesNotAnswerIsWaitedForOnce)
{
    BringUp();
    int silent = 0;
    do {
        log.clear();
        requests = waitsInVain = 0;
        silentFrom = ++silent;
        Hal().SetMtuSize(0, silent % 2 != 0 ? 1018 : 1518);
        silentFrom = 0;
        if (requests < silent)
            break;
        ASSERT_EQ(waitsInVain, 1) << "request " << silent;
        ASSERT_EQ(log.size(), 1u);
        ASSERT_THAT(log[0], ::testing::HasSubstr("the kernel has not answered, errno=110"));
    } while (silent < 100);
    EXPECT_GT(silent, 5);
    EXPECT_LT(silent, 100);
    EXPECT_TRUE(log.empty());
}

TEST_F(LinuxSwitchFaults, OfAFirstReset)
{
    // The kernel makes an interface's queue when it comes up first, and keeps it.
    Sh("for i in lan1 lan2 lan3; do ip link set $i up; ip link set $i down; done");
    ASSERT_EQ(Init(), 0);
    FailEachRequest([] { return Hal().ResetSwitch(0, nullptr, 0); });
}

TEST_F(LinuxSwitchFaults, OfTheMtu)
{
    BringUp();
    FailEachRequest([] { return Hal().SetMtuSize(0, 1018); });
}

TEST_F(LinuxSwitchFaults, OfEnabling)
{
    BringUp();
    FailEachRequest([] { return Hal().DisablePort(0, 1); });
}

TEST_F(LinuxSwitchFaults, OfAVlan)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 50), 0);
    FailEachRequest([] { return Hal().SetLanPortVlan(0, 1, 100); });
}

TEST_F(LinuxSwitchFaults, OfProviderBridging)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    FailEachRequest([] { return Hal().EnableProviderBridgedMode(0, 0x88A8); });
}

TEST_F(LinuxSwitchFaults, OfAGroup)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    FailEachRequest([] { return Hal().SetLanPortGroupId(0, 1, 5); });
}

TEST_F(LinuxSwitchFaults, OfAPriority)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    FailEachRequest([] { return Hal().SetLanPortPcp(0, 1, 5); });
}

TEST_F(LinuxSwitchFaults, OfASteeredStation)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    FailEachRequest([] { return Hal().MapSetMacToVlan(0, 1, kStation, 0xFFF, 200, 1); });
}

TEST_F(LinuxSwitchFaults, OfAMirror)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 2), 0);
    FailEachRequest([] { return Hal().SetPortMirror(0, 1, 3); });
}

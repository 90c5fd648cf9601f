// Every slot with the MDIO bus failing at each access in turn, and with a chip that never gets
// ready.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/hals/vswitch/hal_bench.h"

namespace {

using namespace std::chrono_literals;

uint32_t Ignore(MacEntry*)
{
    return 1;
}

struct SlotCall {
    const char* name;
    std::function<int(int devIdx)> call;
};

const uint8_t kMac[6] = {2, 0, 0, 0, 0, 9};

// One good call of every slot that reaches the chip.
std::vector<SlotCall> AllCalls()
{
    static SwitchCaps caps;
    static VswitchPortCounters counters;
    static uint32_t words[3];
    static VswitchStaticMac entry = {{2, 0, 0, 0, 0, 9}, 7, 3};
    return {
        {"ResetSwitch", [](int d) { return Hal().ResetSwitch(d, nullptr, 0); }},
        {"GetSwitchCaps", [](int d) { return Hal().GetSwitchCaps(d, &caps); }},
        {"ForEachMacEntry", [](int d) { return Hal().ForEachMacEntry(d, Ignore, nullptr); }},
        {"EnableProviderBridgedMode",
         [](int d) { return Hal().EnableProviderBridgedMode(d, 0x88A8); }},
        {"DisableProviderBridgedMode", [](int d) { return Hal().DisableProviderBridgedMode(d); }},
        {"SetLanPortVlan", [](int d) { return Hal().SetLanPortVlan(d, 1, 5); }},
        {"SetLanPortEgressTagging", [](int d) { return Hal().SetLanPortEgressTagging(d, 1, 1); }},
        {"SetLanPortGroupId", [](int d) { return Hal().SetLanPortGroupId(d, 1, 5); }},
        {"SetLanPortPcp", [](int d) { return Hal().SetLanPortPcp(d, 1, 5); }},
        {"GetPortCounters", [](int d) { return Hal().GetPortCounters(d, 1, &counters); }},
        {"ResetPortCounters", [](int d) { return Hal().ResetPortCounters(d, 1); }},
        {"GetPortLink", [](int d) { return Hal().GetPortLink(d, 1, words, words + 1, words + 2); }},
        {"SetPhyPortSpeedDuplex", [](int d) { return Hal().SetPhyPortSpeedDuplex(d, 1, 2, 1); }},
        {"EnablePort", [](int d) { return Hal().EnablePort(d, 1); }},
        {"DisablePort", [](int d) { return Hal().DisablePort(d, 1); }},
        {"EnableRgmiiDelay", [](int d) { return Hal().EnableRgmiiDelay(d, 7); }},
        {"DisableRgmiiDelay", [](int d) { return Hal().DisableRgmiiDelay(d, 7); }},
        {"EnableIgmpSnooping", [](int d) { return Hal().EnableIgmpSnooping(d); }},
        {"DisableIgmpSnooping", [](int d) { return Hal().DisableIgmpSnooping(d); }},
        {"EnablePhyPortEee", [](int d) { return Hal().EnablePhyPortEee(d, 1); }},
        {"DisablePhyPortEee", [](int d) { return Hal().DisablePhyPortEee(d, 1); }},
        {"SetPortMirror", [](int d) { return Hal().SetPortMirror(d, 1, 2); }},
        {"ReadPortReg", [](int d) { return Hal().ReadPortReg(d, 1, 3, words); }},
        {"WritePortReg", [](int d) { return Hal().WritePortReg(d, 1, 3, 5); }},
        {"receive reset",
         [](int d) { return Hal().VendorSpecificIoctl(d, OBHAL_IOCTL_RX_RESET, nullptr); }},
        {"flush",
         [](int d) { return Hal().VendorSpecificIoctl(d, VSWITCH_IOCTL_FLUSH_MAC, nullptr); }},
        {"add static",
         [](int d) { return Hal().VendorSpecificIoctl(d, VSWITCH_IOCTL_ADD_STATIC_MAC, &entry); }},
        {"PrintMachineState", [](int d) { return Hal().PrintMachineState(d); }},
        {"SetQWred", [](int d) { return Hal().SetQWred(d, 9, 1, 2, 3, 4, 5, 6); }},
        {"SetGlobWred", [](int d) { return Hal().SetGlobWred(d, 1, 2, 3, 4, 5, 6, 7, 8, 9); }},
        {"SetQRsrv", [](int d) { return Hal().SetQRsrv(d, 9, 6); }},
        {"SetPortFc", [](int d) { return Hal().SetPortFc(d, 1, 6, 5); }},
        {"SetPhyPortDvt", [](int d) { return Hal().SetPhyPortDvt(d, 1, 1); }},
        {"SetMacAging", [](int d) { return Hal().SetMacAging(d, 1); }},
        {"GetEeePortState", [](int d) { return Hal().GetEeePortState(d, 1, words); }},
        {"SetMtuSize", [](int d) { return Hal().SetMtuSize(d, 1500); }},
        {"MapSetMacToVlan", [](int d) { return Hal().MapSetMacToVlan(d, 1, kMac, 0xFFF, 5, 1); }},
        {"unmap", [](int d) { return Hal().MapSetMacToVlan(d, 2, kMac, 0xFFF, 0, 0); }},
        {"SmiRead", [](int d) { return Hal().SmiRead(d, 0x114, words); }},
        {"SmiWrite", [](int d) { return Hal().SmiWrite(d, 0x114, 1500); }},
        {"GetPortTestMode", [](int d) { return Hal().GetPortTestMode(d, 1, words); }},
        {"SetPortTestMode", [](int d) { return Hal().SetPortTestMode(d, 1, 1); }},
        {"GetLEDConfig",
         [](int d) { return Hal().GetLEDConfig(d, reinterpret_cast<uint8_t*>(words)); }},
        {"SetLEDConfig", [](int d) { return Hal().SetLEDConfig(d, 1); }},
    };
}

// A switch with something in every table.
void Prepare(HalBench& bench)
{
    bench.BringUp();
    ASSERT_TRUE(bench.device[0].chip.SetLink(1, true, 1, true));
    ASSERT_TRUE(bench.device[0].chip.Learn({2, 0, 0, 0, 0, 1}, 1, 1));
    const uint8_t other[6] = {2, 0, 0, 0, 0, 8};
    ASSERT_EQ(Hal().MapSetMacToVlan(0, 1, other, 0xFFF, 6, 1), 0);
    ASSERT_EQ(Hal().MapSetMacToVlan(0, 2, kMac, 0xFFF, 6, 1), 0);
    bench.accesses = 0;
}

// Each slot, with each of its accesses in turn struck by strike.
template <typename Strike>
void AtEachAccess(Strike strike)
{
    testing::internal::CaptureStdout();
    for (const SlotCall& slot : AllCalls()) {
        HalBench reference;
        ASSERT_NO_FATAL_FAILURE(Prepare(reference));
        ASSERT_EQ(slot.call(0), 0) << slot.name;
        const int total = reference.accesses;
        ASSERT_GT(total, 0) << slot.name;
        for (int at = 1; at <= total; ++at) {
            SCOPED_TRACE(testing::Message() << slot.name << ", access " << at);
            HalBench bench;
            ASSERT_NO_FATAL_FAILURE(Prepare(bench));
            strike(slot, bench, at);
        }
    }
    testing::internal::GetCapturedStdout();
}

TEST(VswitchHalFaults, EachMdioFailureFailsTheSlotAtOnce)
{
    AtEachAccess([](const SlotCall& slot, HalBench& bench, int at) {
        bench.failAt = at;
        EXPECT_NE(slot.call(0), 0);
        EXPECT_EQ(bench.accesses, at);
    });
}

TEST(VswitchHalFaults, AnAccessThatASignalCutsShortIsMadeAgain)
{
    AtEachAccess([](const SlotCall& slot, HalBench& bench, int at) {
        bench.interruptFrom = at;
        bench.interruptUntil = at + 2;
        EXPECT_EQ(slot.call(0), 0);
        EXPECT_GE(bench.accesses, at + 3);
    });
}

TEST(VswitchHalFaults, AnAccessThatIsAlwaysCutShortIsGivenUp)
{
    HalBench bench;
    ASSERT_NO_FATAL_FAILURE(Prepare(bench));
    bench.interruptFrom = 1;
    bench.interruptUntil = 1000000;
    EXPECT_NE(Hal().SmiWrite(0, 0x114, 1500), 0);
    EXPECT_GT(bench.accesses, 10);
    EXPECT_LT(bench.accesses, 1000);
}

TEST(VswitchHalFaults, AFailedSlotCanBeRepeated)
{
    testing::internal::CaptureStdout();
    for (const SlotCall& slot : AllCalls()) {
        HalBench bench;
        ASSERT_NO_FATAL_FAILURE(Prepare(bench));
        for (int at = 2; at <= 20; at += 3) {
            bench.accesses = 0;
            bench.failAt = at;
            slot.call(0);
        }
        bench.failAt = 0;
        EXPECT_EQ(slot.call(0), 0) << slot.name;
    }
    testing::internal::GetCapturedStdout();
}

TEST(VswitchHalFaults, NoSwitchHasSuchAnIndex)
{
    HalBench bench;
    bench.BringUp();
    ObhalPreReset preReset = {0, 0};
    for (int devIdx : {-1, 2, 256, 257}) {
        for (const SlotCall& slot : AllCalls())
            EXPECT_NE(slot.call(devIdx), 0) << slot.name << " " << devIdx;
        EXPECT_NE(Hal().VendorSpecificIoctl(devIdx, OBHAL_IOCTL_PRE_RESET, &preReset), 0);
    }
    EXPECT_EQ(bench.accesses, 0);
}

TEST(VswitchHalFaults, AChipThatNeverGetsReadyIsGivenUp)
{
    HalBench bench;
    ASSERT_EQ(Hal().Init(bench.privateData + 1), 0);
    bench.device[0].chip.SetResetLine(true);
    bench.device[0].chip.SetResetLine(false);
    bench.frozen = true;
    SwitchCaps caps;
    EXPECT_NE(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_NE(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_GE(bench.slept, 2 * 40ms) << "twice the boot time at the least, each time";
    EXPECT_LE(bench.slept, 2 * 200ms);
}

TEST(VswitchHalFaults, ACommandThatNeverEndsIsGivenUp)
{
    HalBench bench;
    bench.BringUp();
    bench.frozen = true;
    VswitchPortCounters counters;
    const SlotCall calls[] = {
        {"counters", [&](int d) { return Hal().GetPortCounters(d, 1, &counters); }},
        {"walk", [](int d) { return Hal().ForEachMacEntry(d, Ignore, nullptr); }},
        {"receive reset",
         [](int d) { return Hal().VendorSpecificIoctl(d, OBHAL_IOCTL_RX_RESET, nullptr); }},
    };
    for (const SlotCall& each : calls) {
        bench.slept = {};
        EXPECT_NE(each.call(0), 0) << each.name;
        EXPECT_GE(bench.slept, 1ms) << each.name;
        EXPECT_LE(bench.slept, 200ms) << each.name;
    }
}

TEST(VswitchHalFaults, OutputsStayUntouchedOnFailure)
{
    HalBench bench;
    bench.BringUp();
    bench.device[0].chip.SetResetLine(true);
    uint32_t words[3] = {7, 7, 7};
    EXPECT_NE(Hal().GetPortLink(0, 1, words, words + 1, words + 2), 0);
    EXPECT_NE(Hal().GetEeePortState(0, 1, words), 0);
    EXPECT_NE(Hal().ReadPortReg(0, 1, 3, words), 0);
    EXPECT_NE(Hal().SmiRead(0, 0x114, words), 0);
    EXPECT_NE(Hal().GetPortTestMode(0, 1, words), 0);
    VswitchPortCounters counters;
    counters.ifOutDiscards = 7;
    EXPECT_NE(Hal().GetPortCounters(0, 1, &counters), 0);
    EXPECT_EQ(counters.ifOutDiscards, 7u);
    for (uint32_t word : words)
        EXPECT_EQ(word, 7u);
}

}  // namespace

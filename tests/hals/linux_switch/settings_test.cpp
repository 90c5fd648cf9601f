// What the settings of ports and switch come to in the kernel.
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "tests/hals/linux_switch/kernel_bench.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::Not;

namespace {

std::vector<LinuxSwitchMacEntry> entries;

uint32_t Take(MacEntry* entry)
{
    LinuxSwitchMacEntry taken;
    memcpy(&taken, entry, sizeof taken);
    entries.push_back(taken);
    return 1;
}

uint32_t TakeOne(MacEntry* entry)
{
    Take(entry);
    return 0;
}

}  // namespace

TEST_F(LinuxSwitch, PortsGoDownAndUp)
{
    BringUp();
    uint32_t link = 2, speed = 9, duplex = 9;
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, &speed, &duplex), 0);
    EXPECT_EQ(link, 1u);
    EXPECT_EQ(speed, unsigned{OB_SPEED_10G});
    EXPECT_EQ(duplex, 1u);
    ASSERT_EQ(Hal().DisablePort(0, 1), 0);
    EXPECT_THAT(Sh("ip link show lan1"), HasSubstr("state DOWN"));
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, nullptr, nullptr), 0);
    EXPECT_EQ(link, 0u);
    ASSERT_EQ(Hal().EnablePort(0, 1), 0);
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, nullptr, nullptr), 0);
    EXPECT_EQ(link, 1u);
    Sh("ip link set host1 down");
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, &speed, nullptr), 0);
    EXPECT_EQ(link, 0u);
}

TEST_F(LinuxSwitch, PortsOutOfRangeAreRefused)
{
    BringUp();
    for (const int port : {-1, 4, 8}) {
        EXPECT_NE(Hal().EnablePort(0, port), 0);
        EXPECT_NE(Hal().SetLanPortVlan(0, port, 5), 0);
        EXPECT_NE(Hal().SetPortMirror(0, port, 1), 0);
    }
    EXPECT_NE(Hal().SetLanPortVlan(0, kCpuPort, 5), 0);
    EXPECT_NE(Hal().SetLanPortVlan(0, 1, 0), 0);
    EXPECT_NE(Hal().SetLanPortVlan(0, 1, 4095), 0);
    EXPECT_NE(Hal().SetLanPortPcp(0, 1, 8), 0);
    EXPECT_NE(Hal().SetPortMirror(0, 1, 1), 0);
    EXPECT_NE(Hal().SetPortMirror(0, 1, 4), 0);
    EXPECT_NE(Hal().SetMacAging(0, 6), 0);
    EXPECT_NE(Hal().SetMtuSize(0, 85), 0);
    EXPECT_NE(Hal().SetMtuSize(0, 10241), 0);
    EXPECT_EQ(log.size(), 18u);
}

TEST_F(LinuxSwitch, AVlanOfAPortIsTheCpusAsWell)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    EXPECT_EQ(Vlans("lan1"), "1 pvid untagged");
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 100), 0);
    ASSERT_EQ(Hal().SetLanPortVlan(0, 2, 100), 0);
    EXPECT_EQ(Vlans("lan1"), "100 pvid untagged");
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged, 100");
    ASSERT_EQ(Hal().SetLanPortEgressTagging(0, 2, 1), 0);
    EXPECT_EQ(Vlans("lan2"), "100 pvid");
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 1), 0);
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged, 100");
    ASSERT_EQ(Hal().SetLanPortVlan(0, 2, 4094), 0);
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged, 4094");
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(Vlans("lan2"), "1 pvid untagged");
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged");
}

TEST_F(LinuxSwitch, AKernelWithoutVlanFilteringRefusesVlansAndSaysWhy)
{
    BringUp();
    if (support::KernelFiltersVlans())
        GTEST_SKIP() << "this kernel's bridge has VLAN filtering";
    const std::string before = KernelState();
    EXPECT_NE(Hal().SetLanPortVlan(0, 1, 100), 0);
    EXPECT_NE(Hal().SetLanPortEgressTagging(0, 1, 1), 0);
    EXPECT_NE(Hal().EnableProviderBridgedMode(0, 0x88A8), 0);
    EXPECT_THAT(log, ElementsAre("Cannot set the VLAN of lan1, DevIdx=0: "
                                 "this kernel or driver has not got it, errno=95",
                                 HasSubstr("Cannot set the tagging of lan1"),
                                 HasSubstr("Cannot set the protocol of the tags of br0")));
    EXPECT_EQ(KernelState(), before);
}

TEST_F(LinuxSwitch, ProviderBridgingChangesTheProtocolOfTheTags)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    const auto protocol = [&] {
        return Json("ip -j -d link show br0")[0]["linkinfo"]["info_data"]["vlan_protocol"];
    };
    EXPECT_NE(Hal().EnableProviderBridgedMode(0, 0x9100), 0);
    ASSERT_EQ(Hal().EnableProviderBridgedMode(0, 0x88A8), 0);
    EXPECT_EQ(protocol(), "802.1ad");
    EXPECT_EQ(Vlans("br0"), "1 pvid");
    ASSERT_EQ(Hal().DisableProviderBridgedMode(0), 0);
    EXPECT_EQ(protocol(), "802.1Q");
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged");
}

TEST_F(LinuxSwitch, EveryPortInAGroupOfItsOwnIsIsolatedByTheBridge)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    for (int port = 1; port <= 3; ++port)
        ASSERT_EQ(Hal().SetLanPortGroupId(0, port, 10 + port), 0);
    EXPECT_THAT(Sh("ip -d link show lan2"), HasSubstr("isolated on"));
    EXPECT_EQ(Sh("tc filter show dev lan2 egress"), "");
    EXPECT_THAT(Sh("tc qdisc show dev lan2"), Not(HasSubstr("clsact")));
}

TEST_F(LinuxSwitch, GroupsAreKeptApartByFiltersThatGoWithThem)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 1, 5), 0);
    EXPECT_THAT(Sh("tc filter show dev lan1 egress"), HasSubstr("indev lan2"));
    EXPECT_THAT(Sh("tc filter show dev lan3 egress"), HasSubstr("indev lan1"));
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 2, 5), 0);
    EXPECT_THAT(Sh("tc filter show dev lan1 egress"), Not(HasSubstr("indev lan2")));
    EXPECT_THAT(Sh("tc filter show dev lan1 egress"), HasSubstr("indev lan3"));
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 1, 0xFFFFFFFF), 0);
    ASSERT_EQ(Hal().SetLanPortGroupId(0, 2, 0xFFFFFFFF), 0);
    for (const char* port : {"lan1", "lan2", "lan3"})
        EXPECT_THAT(Sh(std::string("tc qdisc show dev ") + port), Not(HasSubstr("clsact")));
}

TEST_F(LinuxSwitch, ThePriorityTagsWhatComesInWithoutATag)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().SetLanPortPcp(0, 1, 5), 0);
    EXPECT_THAT(Sh("tc filter show dev lan1 ingress"),
                HasSubstr("vlan  push id 1 protocol 802.1Q priority 5"));
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 30), 0);
    EXPECT_THAT(Sh("tc filter show dev lan1 ingress"),
                HasSubstr("vlan  push id 30 protocol 802.1Q priority 5"));
    ASSERT_EQ(Hal().SetLanPortPcp(0, 1, 0), 0);
    EXPECT_THAT(Sh("tc qdisc show dev lan1"), Not(HasSubstr("clsact")));
}

TEST_F(LinuxSwitch, AStationIsSteeredIntoItsVlan)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    const std::string before = KernelState();
    ASSERT_EQ(Hal().MapSetMacToVlan(0, 1, kStation, 0xFFE, 200, 1), 0);
    EXPECT_EQ(Vlans("lan1"), "1 pvid untagged, 200 untagged");
    EXPECT_EQ(Vlans("br0"), "1 pvid untagged, 200");
    const std::string filters = Sh("tc filter show dev lan1 ingress");
    EXPECT_THAT(filters, HasSubstr("src_mac 02:00:00:00:00:f0/44"));
    EXPECT_THAT(filters, HasSubstr("push id 200"));
    ASSERT_EQ(Hal().MapSetMacToVlan(0, 1, kStation, 0xFFE, 0, 0), 0);
    EXPECT_EQ(KernelState(), before);
    EXPECT_EQ(Hal().MapSetMacToVlan(0, 1, kStation, 0xFFE, 0, 0), 0);
}

TEST_F(LinuxSwitch, TheMirrorIsThereAndIsTakenAwayExactly)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    const std::string before = KernelState();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    for (const char* hook : {"ingress", "egress"})
        EXPECT_THAT(Sh(std::string("tc filter show dev lan1 ") + hook),
                    HasSubstr("Egress Mirror to device lan3"));
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 2), 0);
    EXPECT_THAT(Sh("tc filter show dev lan1 ingress"), Not(HasSubstr("lan3")));
    ASSERT_EQ(Hal().SetPortMirror(0, 1, OB_NO_MIRROR), 0);
    EXPECT_EQ(KernelState(), before);
}

TEST_F(LinuxSwitch, SomebodysOwnFiltersStay)
{
    BringUp();
    SKIP_WITHOUT_FILTERS();
    Sh("tc qdisc add dev lan1 clsact\n"
       "tc filter add dev lan1 ingress prio 7 flower src_mac 02:00:00:00:00:09 action drop");
    const std::string before = KernelState();
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 1, OB_NO_MIRROR), 0);
    EXPECT_EQ(KernelState(), before);
    ASSERT_EQ(Hal().SetPortMirror(0, 1, 3), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0);
    EXPECT_EQ(Sh("tc filter show dev lan1 egress"), "");
    EXPECT_THAT(Sh("tc filter show dev lan1 ingress"), HasSubstr("pref 7"));
}

TEST_F(LinuxSwitch, SwitchWideSettingsAreTheBridges)
{
    BringUp();
    const auto setting = [&](const char* name) {
        return Json("ip -j -d link show br0")[0]["linkinfo"]["info_data"][name];
    };
    ASSERT_EQ(Hal().EnableIgmpSnooping(0), 0);
    EXPECT_EQ(setting("mcast_snooping"), 1);
    ASSERT_EQ(Hal().DisableIgmpSnooping(0), 0);
    EXPECT_EQ(setting("mcast_snooping"), 0);
    ASSERT_EQ(Hal().SetMacAging(0, 1), 0);
    EXPECT_EQ(setting("ageing_time"), 1500);
    ASSERT_EQ(Hal().SetMacAging(0, 5), 0);
    EXPECT_EQ(setting("ageing_time"), 480000);
    ASSERT_EQ(Hal().SetMtuSize(0, 1018), 0);
    for (const char* interface : {"lan1", "lan2", "lan3", "br0"})
        EXPECT_EQ(Json(std::string("ip -j link show ") + interface)[0]["mtu"], 1000) << interface;
}

TEST_F(LinuxSwitch, TheMacTableHasStationsBehindPortsOnly)
{
    BringUp();
    Sh("bridge fdb add 02:00:00:00:00:11 dev lan1 master static\n"
       "bridge fdb add 02:00:00:00:00:12 dev lan2 master dynamic");
    LinuxSwitchStaticMac added = {{2, 0, 0, 0, 0, 0x13}, 1, 3};
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, LINUX_SWITCH_IOCTL_ADD_STATIC_MAC, &added), 0);
    entries.clear();
    ASSERT_EQ(Hal().ForEachMacEntry(0, Take, this), 0);
    std::ranges::sort(entries, {}, [](const auto& entry) { return entry.mac[5]; });
    // The kernel gives the hosts addresses at random, and the bridge may have learned those.
    const uint8_t ours[5] = {2};
    std::erase_if(entries, [&](const auto& entry) { return memcmp(entry.mac, ours, 5) != 0; });
    ASSERT_EQ(entries.size(), 3u);
    for (size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(entries[i].port, i + 1);
        EXPECT_EQ(entries[i].vlanId, 1);
        EXPECT_EQ(entries[i].isStatic, i != 1);
        EXPECT_EQ(entries[i].contextWord, static_cast<uint32_t>(reinterpret_cast<uintptr_t>(this)));
    }
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, LINUX_SWITCH_IOCTL_DELETE_MAC, &added), 0);
    EXPECT_NE(Hal().VendorSpecificIoctl(0, LINUX_SWITCH_IOCTL_DELETE_MAC, &added), 0);
    EXPECT_NE(Hal().VendorSpecificIoctl(0, 99, nullptr), 0);
}

TEST_F(LinuxSwitch, AWalkOfThousandsOfStationsIsWholeUntilItIsEnded)
{
    BringUp();
    Sh("for a in 0 1 2 3 4 5 6 7; do for b in $(seq 10 99); do\n"
       "echo \"fdb add 02:10:00:00:0$a:$b dev lan1 master static\"; done; done | bridge -b -");
    entries.clear();
    ASSERT_EQ(Hal().ForEachMacEntry(0, Take, nullptr), 0);
    EXPECT_EQ(std::ranges::count_if(
                  entries, [](const auto& e) { return e.mac[0] == 2 && e.mac[1] == 0x10; }),
              720);
    entries.clear();
    ASSERT_EQ(Hal().ForEachMacEntry(0, TakeOne, nullptr), 0);
    EXPECT_EQ(entries.size(), 1u);
}

TEST_F(LinuxSwitch, CountersAreTheKernelsAndTheOthersAreUnknown)
{
    BringUp();
    LinuxSwitchCounters before, after;
    refusals = 0;
    ASSERT_EQ(Hal().GetPortCounters(0, 1, &before), 0);
    EXPECT_EQ(refusals, 0) << "of the driver's counters";
    // An interface that the kernel has not put to use yet drops frames without a word.
    for (int tries = 0; tries < 100; ++tries) {
        SendFrames("host1", 5, 100);
        ASSERT_EQ(Hal().GetPortCounters(0, 1, &after), 0);
        if (after.etherStatsOctets - before.etherStatsOctets >= 520)
            break;
        usleep(20'000);
    }
    EXPECT_GE(after.aFramesReceivedOK - before.aFramesReceivedOK, 5u);
    EXPECT_GE(after.etherStatsOctets - before.etherStatsOctets, 5u * 104);
    EXPECT_EQ(after.etherStatsBroadcastPkts, LINUX_SWITCH_UNKNOWN);
    EXPECT_EQ(after.etherStatsPktsByLength[6], LINUX_SWITCH_UNKNOWN);
    EXPECT_EQ(after.dot1qTpVlanPortInDiscards, LINUX_SWITCH_UNKNOWN);
}

TEST_F(LinuxSwitch, WhatAnInterfaceCannotNegotiateIsAutomaticAlready)
{
    BringUp();
    EXPECT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_AUTONEG, 1), 0);
    EXPECT_EQ(Hal().EnablePhyPortEee(0, 1), 0);
    uint32_t state = 9;
    EXPECT_EQ(Hal().GetEeePortState(0, 1, &state), 0);
    EXPECT_EQ(state, 0u);
    EXPECT_TRUE(log.empty());
    EXPECT_NE(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_1G, 1), 0);
    EXPECT_NE(Hal().SetPhyPortSpeedDuplex(0, 1, 7, 1), 0);
    EXPECT_EQ(log.size(), 2u);
}

TEST_F(LinuxSwitch, WhatTheKernelHasNothingForFailsWithALineEach)
{
    BringUp();
    uint16_t value = 0;
    EXPECT_NE(Hal().SetQWred(0, 1, 2, 3, 4, 5, 6, 7), 0);
    EXPECT_NE(Hal().SetGlobWred(0, 1, 2, 3, 4, 5, 6, 7, 8, 9), 0);
    EXPECT_NE(Hal().SetQRsrv(0, 1, 2), 0);
    EXPECT_NE(Hal().SetPortFc(0, 1, 2, 3), 0);
    EXPECT_NE(Hal().SetPhyPortDvt(0, 1, 1), 0);
    EXPECT_NE(Hal().ReadPortReg(0, 1, 2, &value), 0);
    EXPECT_NE(Hal().WritePortReg(0, 1, 2, 3), 0);
    EXPECT_NE(Hal().SmiRead(0, 1, &value), 0);
    EXPECT_NE(Hal().SmiWrite(0, 1, 2), 0);
    EXPECT_NE(Hal().EnableRgmiiDelay(0, 1), 0);
    EXPECT_NE(Hal().DisableRgmiiDelay(0, 1), 0);
    EXPECT_NE(Hal().ResetPortCounters(0, 1), 0);
    EXPECT_EQ(log.size(), 12u);
    for (const std::string& line : log)
        EXPECT_THAT(line, HasSubstr("Not possible, DevIdx=0: "));
    EXPECT_EQ(Hal().SetLEDConfig, nullptr);
    EXPECT_EQ(Hal().GetPortTestMode, nullptr);
}

TEST_F(LinuxSwitch, AnInterfaceThatComesBackIsTakenInAgain)
{
    BringUp();
    ASSERT_EQ(Hal().SetPortMirror(0, 2, OB_NO_MIRROR), 0);
    Sh("ip link delete lan1");
    EXPECT_NE(Hal().EnablePort(0, 1), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("Cannot use port interface lan1, DevIdx=0: "
                                           "there is no such interface")));
    EXPECT_EQ(Hal().EnablePort(0, 2), 0);
    Sh("ip link add lan1 type veth peer name host1; ip link set host1 up");
    uint32_t link = 0;
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, nullptr, nullptr), 0);
    EXPECT_EQ(Json("ip -j link show lan1")[0]["master"], "br0");
    EXPECT_EQ(Hal().GetPortLink(0, 1, &link, nullptr, nullptr), 0);
    EXPECT_EQ(link, 1u);
}

TEST_F(LinuxSwitch, AnInterfaceThatComesBackHasItsSettingsAgain)
{
    BringUp();
    SKIP_WITHOUT_VLANS();
    SKIP_WITHOUT_FILTERS();
    ASSERT_EQ(Hal().SetLanPortVlan(0, 1, 100), 0);
    ASSERT_EQ(Hal().SetLanPortPcp(0, 1, 3), 0);
    ASSERT_EQ(Hal().SetPortMirror(0, 2, 1), 0);
    ASSERT_EQ(Hal().DisablePort(0, 1), 0);
    Sh("ip link delete lan1; ip link add lan1 type veth peer name host1; ip link set host1 up");
    ASSERT_EQ(Hal().SetMacAging(0, 3), 0);
    EXPECT_EQ(Vlans("lan1"), "100 pvid untagged");
    EXPECT_THAT(Sh("tc filter show dev lan1 ingress"), HasSubstr("push id 100"));
    EXPECT_THAT(Sh("tc filter show dev lan2 ingress"), HasSubstr("Mirror to device lan1"));
    EXPECT_THAT(Sh("ip link show lan1"), HasSubstr("state DOWN"));
    EXPECT_TRUE(log.empty()) << ::testing::PrintToString(log);
}

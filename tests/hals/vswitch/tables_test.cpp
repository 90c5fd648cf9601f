// The MAC table walk and the source-MAC-to-VLAN table through the HAL.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <nlohmann/json.hpp>
#include <set>
#include <vector>

#include "tests/hals/vswitch/hal_bench.h"

namespace {

using namespace std::chrono_literals;

vboard::MacAddress Station(unsigned number)
{
    return {0x02, 0, 0, 0, static_cast<uint8_t>(number >> 8), static_cast<uint8_t>(number)};
}

unsigned NumberOf(const VswitchMacEntry& entry)
{
    return entry.mac[4] << 8 | entry.mac[5];
}

std::vector<VswitchMacEntry> walked;
std::function<uint32_t(const VswitchMacEntry&)> duringWalk;

uint32_t OnEntry(MacEntry* entry)
{
    VswitchMacEntry copy;
    std::memcpy(&copy, entry, sizeof copy);
    walked.push_back(copy);
    return duringWalk ? duringWalk(copy) : 1;
}

class VswitchHalWalk : public testing::Test {
protected:
    VswitchHalWalk()
    {
        walked.clear();
        duringWalk = nullptr;
        bench.BringUp();
        for (unsigned port = 0; port < 8; ++port)
            EXPECT_TRUE(chip.SetLink(port, true, 1, true));
    }

    void Learn(unsigned first, unsigned count)
    {
        for (unsigned i = first; i < first + count; ++i)
            ASSERT_TRUE(chip.Learn(Station(i), 1 + i % 6, 1 + i % 100));
    }

    HalBench bench;
    vboard::VswitchChip& chip = bench.device[0].chip;
};

TEST_F(VswitchHalWalk, AnEmptyTableCallsNobody)
{
    EXPECT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    EXPECT_TRUE(walked.empty());
}

TEST_F(VswitchHalWalk, ThreeHundredEntriesEachOnceInOrder)
{
    Learn(0, 300);
    int context = 0;
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, &context), 0);
    ASSERT_EQ(walked.size(), 300u);
    for (unsigned i = 0; i < 300; ++i) {
        EXPECT_EQ(NumberOf(walked[i]), i);
        EXPECT_EQ(walked[i].mac[0], 2);
        EXPECT_EQ(walked[i].slot, i);
        EXPECT_EQ(walked[i].port, 1 + i % 6);
        EXPECT_EQ(walked[i].vlanId, 1 + i % 100);
        EXPECT_EQ(walked[i].isStatic, 0);
        EXPECT_EQ(walked[i].reserved, 0u);
        EXPECT_EQ(walked[i].contextWord,
                  static_cast<uint32_t>(reinterpret_cast<uintptr_t>(&context)));
    }
}

TEST_F(VswitchHalWalk, GapsAreSkipped)
{
    Learn(0, 40);
    ASSERT_TRUE(chip.SetLink(1, false, 0, false));  // takes every sixth with it
    ASSERT_TRUE(chip.SetLink(2, false, 0, false));
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    std::vector<unsigned> expected;
    for (unsigned i = 0; i < 40; ++i) {
        if (i % 6 > 1)
            expected.push_back(i);
    }
    std::vector<unsigned> met;
    for (const VswitchMacEntry& entry : walked)
        met.push_back(NumberOf(entry));
    EXPECT_EQ(met, expected);
}

TEST_F(VswitchHalWalk, AFullTableEndsAfterTheLastSlot)
{
    Learn(0, 2048);
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    EXPECT_EQ(walked.size(), 2048u);
    EXPECT_EQ(walked.back().slot, 2047);
    EXPECT_EQ(walked.back().contextWord, 0u);
}

TEST_F(VswitchHalWalk, ZeroFromTheCallbackStopsIt)
{
    Learn(0, 10);
    duringWalk = [](const VswitchMacEntry& entry) { return entry.slot < 4 ? 7u : 0u; };
    EXPECT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    EXPECT_EQ(walked.size(), 5u);
}

TEST_F(VswitchHalWalk, AgeIsTakenInSeconds)
{
    Learn(1, 1);
    bench.Wait(42s);
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    ASSERT_EQ(walked.size(), 1u);
    EXPECT_EQ(walked[0].ageSeconds, 42u);
}

TEST_F(VswitchHalWalk, WhatStaysIsMetOnceWhateverComesAndGoes)
{
    Learn(0, 100);
    unsigned next = 1000;
    // cppcheck-suppress danglingLifetime ; forgotten before the next test
    duringWalk = [&](const VswitchMacEntry& entry) {
        const unsigned number = NumberOf(entry);
        if (number < 100 && number % 10 == 5) {  // this one and one ahead go, two new ones come
            for (unsigned gone : {number, number + 4}) {
                VswitchStaticMac key{};
                std::memcpy(key.mac, Station(gone).data(), 6);
                key.vlanId = static_cast<uint16_t>(1 + gone % 100);
                HalBench::current->Wait(1ms);
                EXPECT_EQ(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_DELETE_MAC, &key), 0);
            }
            EXPECT_TRUE(chip.Learn(Station(next++), 1, 1));
            EXPECT_TRUE(chip.Learn(Station(next++), 1, 1));
        }
        return 1u;
    };
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    std::multiset<unsigned> met;
    for (const VswitchMacEntry& entry : walked)
        met.insert(NumberOf(entry));
    for (unsigned i = 0; i < 100; ++i)
        EXPECT_EQ(met.count(i), i % 10 == 9 ? 0u : 1u) << i;
    for (unsigned i = 1000; i < next; ++i)
        EXPECT_LE(met.count(i), 1u) << i;
}

TEST_F(VswitchHalWalk, EachMdioFailureEndsTheWalkWithAnError)
{
    Learn(0, 3);
    bench.accesses = 0;
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    const int total = bench.accesses;
    ASSERT_GT(total, 30);
    for (int at = 1; at <= total; ++at) {
        walked.clear();
        bench.accesses = 0;
        bench.failAt = at;
        EXPECT_NE(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0) << at;
        EXPECT_EQ(bench.accesses, at);
        EXPECT_LE(walked.size(), 3u);
        for (size_t i = 0; i < walked.size(); ++i)
            EXPECT_EQ(NumberOf(walked[i]), i) << "only whole entries";
    }
}

TEST_F(VswitchHalWalk, StaticEntriesComeAndGoByIoctl)
{
    VswitchStaticMac key{{2, 0, 0, 0, 0, 9}, 7, 3};
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_ADD_STATIC_MAC, &key), 0);
    Learn(1, 5);
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_FLUSH_MAC, nullptr), 0);
    ASSERT_EQ(Hal().ForEachMacEntry(0, OnEntry, nullptr), 0);
    ASSERT_EQ(walked.size(), 1u);
    EXPECT_EQ(NumberOf(walked[0]), 9u);
    EXPECT_EQ(walked[0].isStatic, 1);
    EXPECT_EQ(walked[0].port, 3);
    EXPECT_EQ(walked[0].vlanId, 7);
    ASSERT_EQ(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_DELETE_MAC, &key), 0);
    EXPECT_NE(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_DELETE_MAC, &key), 0);
    for (uint16_t vid : {0, 4095}) {
        key.vlanId = vid;
        EXPECT_NE(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_ADD_STATIC_MAC, &key), 0) << vid;
    }
    key = {{1, 0, 0, 0, 0, 9}, 7, 3};
    EXPECT_NE(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_ADD_STATIC_MAC, &key), 0);
    key = {{2, 0, 0, 0, 0, 9}, 7, 8};
    EXPECT_NE(Hal().VendorSpecificIoctl(0, VSWITCH_IOCTL_ADD_STATIC_MAC, &key), 0);
    EXPECT_EQ(bench.Register(0x0208), 0);
}

class VswitchHalMacVlan : public testing::Test {
protected:
    VswitchHalMacVlan() { bench.BringUp(); }

    int Map(unsigned number, int port, int vid, int mask = 0xFFF, int enable = 1)
    {
        return Hal().MapSetMacToVlan(0, port, Station(number).data(), mask, vid, enable);
    }
    nlohmann::json Entries() { return bench.device[0].chip.State()["macToVlan"]; }

    HalBench bench;
};

TEST_F(VswitchHalMacVlan, AnEntryIsWrittenAndRemoved)
{
    ASSERT_EQ(Map(0x1234, 3, 100, 0xFFF0), 0) << "bits above 11 are ignored";
    const nlohmann::json expected = {
        {{"index", 0}, {"port", 3}, {"vlan", 100}, {"mask", 0xFF0}, {"mac", "02:00:00:00:12:34"}}};
    EXPECT_EQ(Entries(), expected);
    ASSERT_EQ(Map(0x1234, 4, 0, 0, 0), 0) << "not there: nothing to remove";
    EXPECT_EQ(Entries(), expected);
    ASSERT_EQ(Map(0x1234, 3, 0, 0, 0), 0);
    EXPECT_TRUE(Entries().empty());
}

TEST_F(VswitchHalMacVlan, TheSameAddressOnThePortIsRewritten)
{
    ASSERT_EQ(Map(1, 3, 100), 0);
    ASSERT_EQ(Map(1, 4, 200), 0);
    ASSERT_EQ(Map(1, 3, 300, 0xF0F), 0);
    const nlohmann::json entries = Entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0]["vlan"], 300);
    EXPECT_EQ(entries[0]["mask"], 0xF0F);
    EXPECT_EQ(entries[1]["vlan"], 200);
    EXPECT_EQ(entries[1]["port"], 4);
}

TEST_F(VswitchHalMacVlan, ThirtyTwoEntriesFit)
{
    for (unsigned i = 0; i < 32; ++i)
        ASSERT_EQ(Map(i, 1 + i % 7, 1 + i), 0) << i;
    EXPECT_NE(Map(100, 1, 5), 0);
    EXPECT_EQ(Entries().size(), 32u);
    ASSERT_EQ(Map(31, 1 + 31 % 7, 4094), 0) << "a full table still takes changes";
    ASSERT_EQ(Map(10, 1 + 10 % 7, 0, 0, 0), 0);
    ASSERT_EQ(Map(100, 1, 5), 0);
    EXPECT_EQ(Entries()[10]["mac"], "02:00:00:00:00:64");
    EXPECT_EQ(Entries()[31]["vlan"], 4094);
}

TEST_F(VswitchHalMacVlan, TheInternalPortTakesNone)
{
    HalBench other;
    ASSERT_NO_FATAL_FAILURE(other.BringUp(1));
    EXPECT_NE(Hal().MapSetMacToVlan(1, 4, Station(1).data(), 0xFFF, 5, 1), 0);
    EXPECT_NE(Hal().SetLanPortVlan(1, 4, 5), 0);
    EXPECT_EQ(Hal().MapSetMacToVlan(1, 5, Station(1).data(), 0xFFF, 5, 1), 0);
    EXPECT_EQ(other.device[1].chip.State()["macToVlan"].size(), 1u);
    HalBench::current = &bench;
}

}  // namespace

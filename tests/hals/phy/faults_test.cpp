// The general PHY HAL where nobody answers, accesses fail and shared memory holds anything.
#include <algorithm>
#include <functional>
#include <random>

#include "tests/hals/phy/hal_fixture.h"

namespace vboard {
namespace {

struct Slot {
    const char* name;
    std::function<int(const struct ETHPHY_HalFuncs&, int devIdx)> call;
};

uint32_t words[3];
uint16_t halfWord;
EthphyIeee8023Counters anyCounters;

const Slot kSlots[] = {
    {"GetLink",
     [](auto& hal, int dev) { return hal.GetLink(dev, &words[0], &words[1], &words[2]); }},
    {"SetAdminStateDown", [](auto& hal, int dev) { return hal.SetAdminState(dev, 0); }},
    {"ResetDisableDefault", [](auto& hal, int dev) { return hal.ResetDisable(dev, 1); }},
    {"ResetDisableKept", [](auto& hal, int dev) { return hal.ResetDisable(dev, 0); }},
    {"ResetEnable", [](auto& hal, int dev) { return hal.ResetEnable(dev); }},
    {"GetCaps", [](auto& hal, int dev) { return hal.GetCaps(dev, &words[0]); }},
    {"GetCounters", [](auto& hal, int dev) { return hal.GetCounters(dev, &anyCounters); }},
    {"ResetCounters", [](auto& hal, int dev) { return hal.ResetCounters(dev); }},
    {"ReadChipReg", [](auto& hal, int dev) { return hal.ReadChipReg(dev, 5, &halfWord); }},
    {"ReadChipRegMmd",
     [](auto& hal, int dev) {
         return hal.ReadChipReg(dev, EPHAL_MDIO_CLAUSE45 | 7U << 16 | 60, &halfWord);
     }},
    {"WriteChipReg", [](auto& hal, int dev) { return hal.WriteChipReg(dev, 9, 0x0200); }},
    {"WriteChipRegMmd",
     [](auto& hal, int dev) {
         return hal.WriteChipReg(dev, EPHAL_MDIO_CLAUSE45 | 7U << 16 | 60, 2);
     }},
    {"SetEeeStateOn", [](auto& hal, int dev) { return hal.SetEeeState(dev, 1); }},
    {"Poll", [](auto& hal, int dev) { return hal.Poll(dev); }},
};

constexpr size_t kManyAccesses = 200;
constexpr auto kLongest = 1s;

struct Fault {
    const Slot* slot;
    bool clause45;
};

class HalFaults : public HalTest, public testing::WithParamInterface<Fault> {
protected:
    const Slot& TheSlot() const { return *GetParam().slot; }

    // The slot on a PHY that has a link at 1 Gb/s, freshly known.
    int Call(size_t failFrom, size_t failUntil, size_t silentFrom)
    {
        Prepare();
        halWorld.failFrom = failFrom;
        halWorld.failUntil = failUntil;
        halWorld.silentFrom = silentFrom;
        return Call();
    }
    void Prepare()
    {
        PhyConfig config;
        config.clause45 = GetParam().clause45;
        config.partner.eee = true;
        halWorld = {};
        MakeUp(config);
        hal_.Init(halWorld.privateData);
        halWorld.accesses.clear();
    }
    int Call()
    {
        auto start = halWorld.now;
        int result = TheSlot().call(hal_, 0);
        EXPECT_LT(halWorld.now - start, kLongest);
        EXPECT_LT(halWorld.accesses.size(), kManyAccesses);
        return result;
    }
    std::vector<HalAccess> Undisturbed()
    {
        EXPECT_EQ(Call(SIZE_MAX, SIZE_MAX, SIZE_MAX), 0);
        return halWorld.accesses;
    }
};

std::vector<Fault> AllFaults()
{
    std::vector<Fault> all;
    for (const Slot& slot : kSlots)
        for (bool clause45 : {true, false})
            all.push_back({&slot, clause45});
    return all;
}

std::string NameOf(const testing::TestParamInfo<Fault>& info)
{
    return std::string{info.param.slot->name} + (info.param.clause45 ? "Clause45" : "Indirect");
}

INSTANTIATE_TEST_SUITE_P(Slots, HalFaults, testing::ValuesIn(AllFaults()), NameOf);

TEST_P(HalFaults, FailsWhenTheBusFailsForGood)
{
    size_t all = Undisturbed().size();
    ASSERT_GT(all, 0U);
    for (size_t i = 0; i < all; ++i)
        EXPECT_NE(Call(i, SIZE_MAX, SIZE_MAX), 0) << "from access " << i;
}

// Two kinds of access may fail alone: the question whether clause-45 frames are answered, and the
// look at a PHY that resets.
TEST_P(HalFaults, FailsWhenOneAccessFails)
{
    std::vector<HalAccess> accesses = Undisturbed();
    auto reset = std::ranges::find(accesses, HalAccess{true, -1, 0, 0x8000});
    for (auto access = accesses.begin(); access != accesses.end(); ++access) {
        auto i = static_cast<size_t>(access - accesses.begin());
        bool asking = *access == HalAccess{false, 7, 5, 0};
        bool looking = access > reset && access - reset <= 2;
        if (asking || looking)
            EXPECT_EQ(Call(i, i, SIZE_MAX), 0) << "access " << i;
        else
            EXPECT_NE(Call(i, i, SIZE_MAX), 0) << "access " << i;
    }
}

TEST_P(HalFaults, MakesAnAccessAgainThatASignalCutShort)
{
    size_t all = Undisturbed().size();
    for (size_t i = 0; i < all; ++i) {
        Prepare();
        halWorld.cutFrom = i;
        halWorld.cutUntil = i + 2;
        EXPECT_EQ(Call(), 0) << "access " << i;
        EXPECT_EQ(halWorld.accesses.size(), all + 3) << "access " << i;
    }
}

TEST_P(HalFaults, GivesUpAnAccessThatIsAlwaysCutShort)
{
    Prepare();
    halWorld.cutFrom = 0;
    EXPECT_NE(TheSlot().call(hal_, 0), 0);
    EXPECT_GT(halWorld.accesses.size(), 10U);
    EXPECT_LT(halWorld.accesses.size(), 1000U);
}

// A PHY that vanishes between two accesses is noticed at the next read that it would answer.
TEST_P(HalFaults, EndsWhenThePhyVanishes)
{
    size_t all = Undisturbed().size();
    for (size_t i = 0; i < all; ++i)
        Call(SIZE_MAX, SIZE_MAX, i);
    EXPECT_NE(Call(SIZE_MAX, SIZE_MAX, 0), 0);
}

TEST_P(HalFaults, FailsWhereNobodyAnswers)
{
    halWorld = {};
    hal_.Init(halWorld.privateData);
    EXPECT_EQ(TheSlot().call(hal_, 0), ETHPHY_IEEE8023_FAILED);
    EXPECT_LT(halWorld.accesses.size(), 5U);
    EXPECT_EQ(Writes(), 0U);
    EXPECT_EQ(halWorld.now, 0ns);
}

TEST_P(HalFaults, FailsWithoutAnAccessBeforeInit)
{
    Make();
    for (uint8_t& byte : halWorld.privateData)
        byte = 0;
    halWorld.accesses.clear();
    EXPECT_EQ(TheSlot().call(hal_, 0), ETHPHY_IEEE8023_FAILED);
    halWorld.hasPrivateData = false;
    EXPECT_EQ(TheSlot().call(hal_, 0), ETHPHY_IEEE8023_FAILED);
    EXPECT_TRUE(halWorld.accesses.empty());
}

TEST_P(HalFaults, FailsWithoutAnAccessForAPhyThatCannotBe)
{
    Make();
    halWorld.accesses.clear();
    for (int devIdx : {-1, 2, 256, 257})
        EXPECT_EQ(TheSlot().call(hal_, devIdx), ETHPHY_IEEE8023_FAILED) << devIdx;
    EXPECT_TRUE(halWorld.accesses.empty());
}

using HalGarbage = HalTest;

// What the memory holds may be wrong, but not lead out of it or into a loop without end.
TEST_F(HalGarbage, AnythingInTheSharedMemoryIsSurvived)
{
    std::mt19937 random{1};
    halWorld.refusalsAreFailures = false;
    for (unsigned round = 0; round < 200; ++round)
        for (const Slot& slot : kSlots) {
            Make();
            hal_.Init(halWorld.privateData);
            for (size_t i = 4; i < sizeof halWorld.privateData; ++i)
                halWorld.privateData[i] = static_cast<uint8_t>(random());
            auto start = halWorld.now;
            halWorld.accesses.clear();
            slot.call(hal_, 0);
            EXPECT_LT(halWorld.accesses.size(), kManyAccesses) << slot.name;
            EXPECT_LT(halWorld.now - start, kLongest) << slot.name;
        }
}

}  // namespace
}  // namespace vboard

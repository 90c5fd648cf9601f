// Somebody writes the shared regions while the library works on them: every byte, all the time.
#include <sys/mman.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "tests/robustness/child.h"
#include "tests/robustness/effort.h"
#include "tests/robustness/scripted_board.h"
#include "tests/support/watched_region.h"

using namespace obtest;

namespace {

constexpr int kRounds = 5;

using Clock = std::chrono::steady_clock;

// Values that a check and a use would have to see alike to be safe, and any others.
uint8_t Spoilt(uint32_t random)
{
    constexpr uint8_t kTelling[] = {0, 1, 2, 3, 8, 9, 127, 128, 254, 255};
    return (random & 1) != 0 ? static_cast<uint8_t>(random >> 8)
                             : kTelling[(random >> 8) % sizeof(kTelling)];
}

void Spoil(volatile uint8_t* bytes, size_t size, uint32_t& random)
{
    for (size_t i = 0; i < size; ++i) {
        random = random * 1664525 + 1013904223;
        const uint8_t before = bytes[i];
        bytes[i] = Spoilt(random >> 8);
        if ((random & 0x100) != 0)
            bytes[i] = before;
    }
}

[[noreturn]] void SpoilAllForEver()
{
    auto* const switches = reinterpret_cast<volatile uint8_t*>(&Region());
    auto* const phys = reinterpret_cast<volatile uint8_t*>(&PhyRegion());
    for (uint32_t random = 1;;) {
        Spoil(switches, sizeof(SwitchDeviceRegion), random);
        Spoil(phys, sizeof(PhyDeviceRegion), random);
    }
}

// Most of what is read is bounded by a count. What the library stores there is overwritten before it
// reads it again, by values that rest long enough for a loop that believes them to run away.
[[noreturn]] void SpoilCountForEver(volatile uint8_t* count)
{
    constexpr int kRest = 200000;
    for (;;)
        for (const uint8_t value : {1, 255, 2, 128, 0, 255})
            for (int i = 0; i < kRest; ++i)
                *count = value;
}

// One process's life: the initialisation of a family, and all its calls. What it found wrong.
std::string Live(Family family)
{
    Platform().transcript.quiet = true;
    RemoveLock(family);
    Initialise(family);
    for (int round = 0; round < kRounds; ++round) {
        for (const ExportedCall& call : CallsOf(family))
            call.run();
        for (const ExportedCall& call : CallsOf(Family::kNone))
            call.run();
        uint8_t count = 0;
        const int result = family == Family::kSwitch ? ORBLINK_GetNumOfSwitches(&count)
                                                     : ETHPHY_GetNumOfPhys(&count);
        if (result == 0 && count > 2)
            return "a count of " + std::to_string(count);
    }
    return "";
}

class HostileRegion : public testing::TestWithParam<Family> {
protected:
    HostileRegion() { InitialiseElsewhere(); }

    // Processes live, one after the other, until the time is over.
    void ExpectLives(const char* what)
    {
        int lives = 0;
        const auto end = Clock::now() + std::chrono::seconds(Seconds(1));
        for (; Clock::now() < end; ++lives) {
            const Ended ended = InChild([this] { return Live(family); });
            ASSERT_TRUE(ended.inTime) << "life " << lives;
            ASSERT_EQ(ended.signal, 0) << "life " << lives;
            ASSERT_EQ(ended.text, "") << "life " << lives;
            ASSERT_EQ(LockValue(family), 1) << "life " << lives;
        }
        EXPECT_GT(lives, 2);
        printf("| %s calls while others write %s | %d processes, %zu calls each |\n",
               family == Family::kSwitch ? "switch" : "PHY", what, lives,
               kRounds * (CallsOf(family).size() + CallsOf(Family::kNone).size() + 1) + 1);
    }

    const Family family = GetParam();
};

// The same without chance: whatever the library reads has changed since it last read it. A byte is
// what the library wrote there, or something else, from one instruction to the next.
namespace reader {

constexpr size_t kWindow = 8;
uint8_t truth[8192];
uint8_t shown[kWindow];
uintptr_t window = 0;
uint32_t random = 1;

uint32_t Next()
{
    random = random * 1664525 + 1013904223;
    return random >> 8;
}

size_t WindowSize(const Mapping& mapping, uintptr_t address)
{
    return std::min(kWindow, mapping.first + mapping.size - address);
}

void Change(const Mapping& mapping, uintptr_t address)
{
    window = address;
    auto* const bytes = reinterpret_cast<uint8_t*>(address);
    const size_t size = WindowSize(mapping, address);
    const bool honest = Next() % 2 == 0;
    for (size_t i = 0; i < size; ++i)
        bytes[i] = honest ? truth[address - mapping.first + i] : Spoilt(Next());
    memcpy(shown, bytes, size);
}

// What the instruction has stored is the truth from now on.
void Keep(const Mapping& mapping)
{
    const auto* const bytes = reinterpret_cast<const uint8_t*>(window);
    for (size_t i = 0; i < WindowSize(mapping, window); ++i)
        if (bytes[i] != shown[i])
            truth[window - mapping.first + i] = bytes[i];
}

}  // namespace reader

TEST_P(HostileRegion, CrashesNobodyAndKeepsNoLock)
{
    const Background writer([] { SpoilAllForEver(); });
    ExpectLives("the regions");
}

TEST_P(HostileRegion, WithACountThatDoesNotStayCrashesNobody)
{
    volatile uint8_t* const count =
        family == Family::kSwitch ? &Region().NumOfSwitches : &PhyRegion().NumOfPhys;
    const Background writer([=] { SpoilCountForEver(count); });
    ExpectLives("the device count");
}

// One family's region only: the truth is that of one mapping.
std::string LiveWithChangingReads(Family family, uint32_t seed)
{
    reader::random = seed;
    ExcludeOwnMappings();
    Platform().transcript.quiet = false;
    Platform().transcript.watch = [](const std::string& line) {
        FollowMappings(line);
        Platform().transcript.Clear();
    };
    const std::string region = RegionBytes(family);
    std::ranges::copy(region, reader::truth);
    WatchRegions({PROT_NONE, reader::Change, reader::Keep});
    if (seed % 2 == 0) {
        RemoveLock(family);
        Initialise(family);
    }
    for (const ExportedCall& call : CallsOf(family))
        call.run();
    uint8_t count = 0;
    const int result =
        family == Family::kSwitch ? ORBLINK_GetNumOfSwitches(&count) : ETHPHY_GetNumOfPhys(&count);
    StopWatching();
    return result == 0 && count > 2 ? "a count of " + std::to_string(count) : "";
}

// Milliseconds: each of some hundred thousand instructions costs two signals, and others may have the
// processor.
constexpr int kPatience = 120000;

TEST_P(HostileRegion, ThatChangesBetweenAnyTwoReadsCrashesNobody)
{
    uint32_t seed = 0;
    const auto end = Clock::now() + std::chrono::seconds(Seconds(1));
    for (; Clock::now() < end || seed < 2; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        const Ended ended = InChild([&] { return LiveWithChangingReads(family, seed); }, kPatience);
        ASSERT_TRUE(ended.inTime);
        ASSERT_EQ(ended.signal, 0);
        ASSERT_EQ(ended.text, "");
        ASSERT_EQ(LockValue(family), 1);
    }
    printf("| %s calls, each read changed | %u processes, %zu calls each |\n",
           family == Family::kSwitch ? "switch" : "PHY", seed, CallsOf(family).size() + 1);
}

INSTANTIATE_TEST_SUITE_P(Family, HostileRegion, testing::Values(Family::kSwitch, Family::kPhy),
                         [](const auto& info) {
                             return std::string(info.param == Family::kSwitch ? "Switch" : "Phy");
                         });

}  // namespace

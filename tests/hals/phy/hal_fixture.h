// The general PHY HAL, loaded as the library loads it, over PHY models: the test program defines
// the services that the HAL calls back, and a usleep that advances the models' time.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

#include "hals/phy/ethphy_ieee8023.h"
#include "phy/ethphy_hal.h"
#include "tests/virtual_board/chips/ieee8023/model_fixture.h"

namespace vboard {

struct HalAccess {
    bool write;
    int mmd;  // -1: clause 22
    uint16_t reg;
    uint16_t value;
    bool operator==(const HalAccess&) const = default;
};

struct GmacSetting {
    int devIdx;
    int setSpeed;
    int speed;
    int duplex;
    bool operator==(const GmacSetting&) const = default;
};

// What the services stand on.
struct HalWorld {
    std::unique_ptr<PhyModel> phys[EP_MAX_PHYS] = {};  // null: nobody at the address
    bool refusalsAreFailures = true;                   // of the test
    bool hasPrivateData = true;
    alignas(uint64_t) uint8_t privateData[EP_HAL_PRIV_DATA_SIZE] = {};
    bool enabled = true;
    uint32_t portIfaceMode = OB_IFACE_UNKNOWN;
    int gmacResult = 0;
    std::vector<GmacSetting> toldMac = {};
    std::chrono::nanoseconds now{};
    unsigned interruptedWaits = 0;

    std::vector<HalAccess> accesses = {};
    size_t failFrom = SIZE_MAX;  // accesses that fail, counted from 0
    size_t failUntil = SIZE_MAX;
    size_t cutFrom = SIZE_MAX;  // accesses that a signal cuts short
    size_t cutUntil = SIZE_MAX;
    size_t silentFrom = SIZE_MAX;  // from here on reads give 0xFFFF and writes are lost
    // What a read gives instead of the model's register: {MMD or -1, register}.
    std::map<std::pair<int, uint16_t>, uint16_t> overrides = {};
    // A register of an MMD that reads as nothing, by either way, and what it gives instead.
    std::pair<int, uint16_t> missing = {-1, 0};
    uint16_t missingReads = 0xFFFF;
    bool clause45Fails = false;       // the bus has no such frames
    bool dataRegisterEchoes = false;  // register 14 holds what was written to it
    uint16_t dataRegister = 0;
    int selectedMmd = 0;
};
extern HalWorld halWorld;

// The table of a HAL library of the build, "libphyk20.so" or the like.
const struct ETHPHY_HalFuncs& LoadHal(const char* path);
extern const char kGeneralHal[];
extern const char kDefaultHal[];

struct HalLink {
    uint32_t up = 99;
    uint32_t speed = 99;
    uint32_t full = 99;
    bool operator==(const HalLink&) const = default;
};
inline void PrintTo(const HalLink& link, std::ostream* out)
{
    *out << "up " << link.up << " speed " << link.speed << " full " << link.full;
}
inline constexpr HalLink kLinkDown{0, OB_SPEED_UNKNOWN, 0};

class HalTest : public testing::Test {
public:
    static void Wait(std::chrono::nanoseconds time);
    static void Negotiate() { Wait(std::chrono::milliseconds{1500}); }

protected:
    HalTest();

    // PHY 0, out of reset, its negotiation not done.
    PhyModel& Make(const PhyConfig& config = {}, int devIdx = 0);
    // The same brought up by the HAL with the default configuration, and the negotiation done.
    PhyModel& MakeUp(const PhyConfig& config = {}, int devIdx = 0);

    HalLink Link(int devIdx = 0);
    EthphyIeee8023Counters Counters(int devIdx = 0);
    // What stands in the PHY, beside the HAL.
    static uint16_t Register(uint8_t reg) { return *halWorld.phys[0]->Peek22(reg); }
    static uint16_t Register(uint8_t mmd, uint16_t reg);
    static size_t Writes();
    // Whether the HAL accessed the register since the list was last cleared.
    static bool Touched(int mmd, uint16_t reg);

    const struct ETHPHY_HalFuncs& hal_;
};

}  // namespace vboard

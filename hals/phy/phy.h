// One PHY: its registers, by the ways that it has, and its capabilities.
#pragma once

#include <stdint.h>

#include "hals/phy/ethphy_ieee8023.h"
#include "hals/phy/memory.h"
#include "hals/phy/registers.h"

namespace ieee8023 {

class Phy {
public:
    explicit Phy(int deviceIndex);

    // False for a device index that no PHY has, and before Init.
    bool Exists() const { return memory_ != nullptr; }
    PhyMemory& Kept() { return *memory_; }
    uint8_t Index() const { return devIdx_; }

    // Registers that cannot hold kNobody: reading it is a failure. What the PHY clears when it is
    // read is counted, whatever it was read for.
    bool Read(uint8_t reg, uint16_t& value);
    bool Write(uint8_t reg, uint16_t value);
    bool ReadMmd(uint8_t mmd, uint16_t reg, uint16_t& value);
    bool WriteMmd(uint8_t mmd, uint16_t reg, uint16_t value);
    // Any register: what is read counts.
    bool ReadAny(uint8_t reg, uint16_t& value);
    bool ReadAnyMmd(uint8_t mmd, uint16_t reg, uint16_t& value);

    // Asks the PHY what it can, unless that is known already. Has and the Mmd functions rely on it.
    bool Learn();
    // What it can is asked anew next time.
    void Forget() { memory_->capsKnown = 0; }
    // The link is about to drop because the HAL makes it.
    void ExpectDrop() { memory_->linkWasUp = 0; }
    uint32_t Caps() const { return caps_; }
    bool Has(uint32_t anyOf) const { return (caps_ & anyOf) != 0; }

private:
    bool LearnClause22(uint16_t& status);
    bool IsIdentified();
    bool LearnMmds(bool& certain);
    bool LearnUnlistedMmds(bool frames, bool& certain);
    bool HasUnlistedEee(bool& found);
    bool LearnMultiGig();
    bool LearnEee();
    bool SelectMmd(uint8_t mmd, uint16_t reg);
    void CountClause22(uint8_t reg, uint16_t value);
    void CountPcs(uint16_t reg, uint16_t value);

    uint8_t devIdx_;
    PhyMemory* memory_;
    uint32_t caps_ = 0;
    uint16_t mmds_ = 0;  // bit n = MMD n, while learning
};

constexpr uint32_t kMmdWays = ETHPHY_IEEE8023_MMD_FRAMES | ETHPHY_IEEE8023_MMD_INDIRECT;
constexpr uint32_t kGigabit = ETHPHY_IEEE8023_1000_HALF | ETHPHY_IEEE8023_1000_FULL;
constexpr uint32_t k2500Or5000 = ETHPHY_IEEE8023_2500_FULL | ETHPHY_IEEE8023_5000_FULL;
constexpr uint32_t kMultiGig = k2500Or5000 | ETHPHY_IEEE8023_10000_FULL;
constexpr uint32_t kEeeSlow =
    ETHPHY_IEEE8023_EEE_100 | ETHPHY_IEEE8023_EEE_1000 | ETHPHY_IEEE8023_EEE_10000;
constexpr uint32_t kEeeFast = ETHPHY_IEEE8023_EEE_2500 | ETHPHY_IEEE8023_EEE_5000;
constexpr uint32_t kEee = kEeeSlow | kEeeFast;

// The result of a slot.
inline int Result(bool done)
{
    return done ? ETHPHY_IEEE8023_OK : ETHPHY_IEEE8023_FAILED;
}

}  // namespace ieee8023

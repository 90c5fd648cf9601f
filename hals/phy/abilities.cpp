// What a PHY can, and by which way its MMDs are reached.
#include "hals/phy/phy.h"
#include "hals/uninterrupted.h"

namespace ieee8023 {
namespace {

constexpr uint32_t kWaysInOrder[] = {ETHPHY_IEEE8023_MMD_FRAMES, ETHPHY_IEEE8023_MMD_INDIRECT};

uint32_t CapIf(bool condition, uint32_t cap)
{
    return condition ? cap : 0;
}

// A device in the package says so itself; what floats on a bus does not.
bool IsDeviceList(uint16_t devices)
{
    return devices != kNobody && (devices & 1U << kAn) != 0;
}

// Optional registers that a PHY lacks read as anything that a bus may hold.
uint16_t Ability(uint16_t value)
{
    return value == kNobody ? 0 : value;
}

uint32_t SlowEee(uint16_t abilities)
{
    return CapIf((abilities & kEee100) != 0, ETHPHY_IEEE8023_EEE_100) |
           CapIf((abilities & kEee1000) != 0, ETHPHY_IEEE8023_EEE_1000) |
           CapIf((abilities & kEee10000) != 0, ETHPHY_IEEE8023_EEE_10000);
}

}  // namespace

bool Phy::Learn()
{
    caps_ = memory_->caps;
    if (memory_->capsKnown != 0)
        return true;
    uint16_t status = 0;
    bool certain = true;
    if (!LearnClause22(status))
        return false;
    if ((status & kExtendedRegisters) != 0 &&
        !(LearnMmds(certain) && LearnMultiGig() && LearnEee()))
        return false;
    memory_->caps = caps_;
    memory_->capsKnown = certain ? 1 : 0;
    return true;
}

bool Phy::LearnClause22(uint16_t& status)
{
    uint16_t extended = 0;
    if (!Read(kStatus, status) || !IsIdentified())
        return false;
    caps_ = status >> kStatusModesShift;
    caps_ |= CapIf((status & kNegotiationAble) != 0, ETHPHY_IEEE8023_NEGOTIATES);
    if ((status & kExtendedStatusExists) != 0 && !ReadAny(kExtendedStatus, extended))
        return false;
    extended = Ability(extended);
    caps_ |= CapIf((extended & kExtendedGigabitFull) != 0, ETHPHY_IEEE8023_1000_FULL);
    caps_ |= CapIf((extended & kExtendedGigabitHalf) != 0, ETHPHY_IEEE8023_1000_HALF);
    return true;
}

// A bus that is held low reads like a PHY without any ability.
bool Phy::IsIdentified()
{
    uint16_t first = 0;
    uint16_t second = 0;
    return ReadAny(kIdentifier1, first) && ReadAny(kIdentifier2, second) && (first | second) != 0 &&
           (first & second) != kNobody;
}

// Clause-45 frames that fail say nothing about the PHY: another time they may not. `certain` gets
// false then, unless registers 13 and 14 lead to the MMDs.
bool Phy::LearnMmds(bool& certain)
{
    bool frames =
        hals::Uninterrupted([&] { return EPHAL_ReadMmd(devIdx_, kAn, kDevicesInPackage, &mmds_); });
    if (frames && IsDeviceList(mmds_)) {
        caps_ |= ETHPHY_IEEE8023_MMD_FRAMES;
        return true;
    }
    caps_ |= ETHPHY_IEEE8023_MMD_INDIRECT;
    if (!ReadAnyMmd(kAn, kDevicesInPackage, mmds_))
        return false;
    if (IsDeviceList(mmds_))
        return true;
    certain = frames;
    mmds_ = 0;
    return LearnUnlistedMmds(frames, certain);
}

bool Phy::LearnUnlistedMmds(bool frames, bool& certain)
{
    for (uint32_t way : kWaysInOrder) {
        bool found = false;
        if (way == ETHPHY_IEEE8023_MMD_FRAMES && !frames)
            continue;
        caps_ = (caps_ & ~kMmdWays) | way;
        if (!HasUnlistedEee(found))
            return false;
        if (found) {
            mmds_ = 1U << kPma | 1U << kPcs | 1U << kAn;
            certain = true;
            return true;
        }
    }
    caps_ &= ~kMmdWays;
    return true;
}

// Some PHYs list no MMD and have EEE all the same. Registers 13 and 14 of one that uses them for
// something else hold what was written to them, or always the same.
bool Phy::HasUnlistedEee(bool& found)
{
    uint16_t abilities = 0;
    uint16_t offer = 0;
    uint16_t address = kEeeAbilities;
    bool indirect = Has(ETHPHY_IEEE8023_MMD_INDIRECT);
    if (!ReadAnyMmd(kPcs, kEeeAbilities, abilities))
        return false;
    if (SlowEee(Ability(abilities)) == 0 || (indirect && abilities == kEeeAbilities))
        return true;
    if (indirect && !(Write(kMmdSelect, kPcs) && ReadAny(kMmdData, address)))
        return false;
    if (!ReadAnyMmd(kAn, kEeeOffer, offer))
        return false;
    found = address == kEeeAbilities && offer != kNobody;
    return true;
}

bool Phy::LearnMultiGig()
{
    uint16_t status = 0;
    uint16_t abilities = 0;
    uint16_t multiGig = 0;
    if ((mmds_ & 1U << kPma) == 0)
        return true;
    if (!ReadAnyMmd(kPma, kPmaStatus2, status))
        return false;
    if ((Ability(status) & kPmaExtendedAbilitiesExist) == 0)
        return true;
    if (!ReadAnyMmd(kPma, kPmaExtendedAbilities, abilities))
        return false;
    abilities = Ability(abilities);
    if ((abilities & kPmaMultiGigAbilitiesExist) != 0 &&
        !ReadAnyMmd(kPma, kPmaMultiGigAbilities, multiGig))
        return false;
    multiGig = Ability(multiGig);
    caps_ |= CapIf((multiGig & kPma2500) != 0, ETHPHY_IEEE8023_2500_FULL);
    caps_ |= CapIf((multiGig & kPma5000) != 0, ETHPHY_IEEE8023_5000_FULL);
    caps_ |= CapIf((abilities & kPma10000) != 0, ETHPHY_IEEE8023_10000_FULL);
    return true;
}

// Only PHYs of 2.5 or 5 Gb/s have the second register of abilities.
bool Phy::LearnEee()
{
    uint16_t slow = 0;
    uint16_t fast = 0;
    if ((mmds_ & 1U << kPcs) == 0)
        return true;
    if (!ReadAnyMmd(kPcs, kEeeAbilities, slow) ||
        (Has(k2500Or5000) && !ReadAnyMmd(kPcs, kEeeAbilities2, fast)))
        return false;
    fast = Ability(fast);
    caps_ |= SlowEee(Ability(slow));
    caps_ |= CapIf((fast & kEee2500) != 0, ETHPHY_IEEE8023_EEE_2500);
    caps_ |= CapIf((fast & kEee5000) != 0, ETHPHY_IEEE8023_EEE_5000);
    return true;
}

}  // namespace ieee8023

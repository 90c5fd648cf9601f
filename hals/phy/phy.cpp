#include "hals/phy/phy.h"

namespace ieee8023 {
namespace {

uint32_t CapIf(bool condition, uint32_t cap)
{
    return condition ? cap : 0;
}

// A device in the package says so itself; what floats on a bus does not.
bool IsDeviceList(uint16_t devices)
{
    return devices != kNobody && (devices & 1U << kAn) != 0;
}

}  // namespace

Phy::Phy(int deviceIndex) : devIdx(static_cast<uint8_t>(deviceIndex)), memory(MemoryOf(deviceIndex))
{
}

bool Phy::ReadAny(uint8_t reg, uint16_t& value) const
{
    return EPHAL_ReadMdio(devIdx, reg, &value) == 0;
}

bool Phy::Read(uint8_t reg, uint16_t& value) const
{
    return ReadAny(reg, value) && value != kNobody;
}

bool Phy::Write(uint8_t reg, uint16_t value) const
{
    return EPHAL_WriteMdio(devIdx, reg, value) == 0;
}

bool Phy::SelectMmd(uint8_t mmd, uint16_t reg) const
{
    return Write(kMmdSelect, mmd) && Write(kMmdData, reg) &&
           Write(kMmdSelect, kMmdDataFunction | mmd);
}

bool Phy::ReadIndirect(uint8_t mmd, uint16_t reg, uint16_t& value) const
{
    return SelectMmd(mmd, reg) && ReadAny(kMmdData, value);
}

bool Phy::ReadAnyMmd(uint8_t mmd, uint16_t reg, uint16_t& value) const
{
    if (Has(ETHPHY_IEEE8023_MMD_FRAMES))
        return EPHAL_ReadMmd(devIdx, mmd, reg, &value) == 0;
    return Has(ETHPHY_IEEE8023_MMD_INDIRECT) && ReadIndirect(mmd, reg, value);
}

bool Phy::ReadMmd(uint8_t mmd, uint16_t reg, uint16_t& value) const
{
    return ReadAnyMmd(mmd, reg, value) && value != kNobody;
}

bool Phy::WriteMmd(uint8_t mmd, uint16_t reg, uint16_t value) const
{
    if (Has(ETHPHY_IEEE8023_MMD_FRAMES))
        return EPHAL_WriteMmd(devIdx, mmd, reg, value) == 0;
    return Has(ETHPHY_IEEE8023_MMD_INDIRECT) && SelectMmd(mmd, reg) && Write(kMmdData, value);
}

bool Phy::Learn()
{
    caps = memory->caps;
    if (memory->capsKnown != 0)
        return true;
    uint16_t status = 0;
    uint16_t extended = 0;
    if (!Read(kStatus, status))
        return false;
    caps = status >> kStatusModesShift;
    caps |= CapIf((status & kNegotiationAble) != 0, ETHPHY_IEEE8023_NEGOTIATES);
    if ((status & kExtendedStatusExists) != 0 && !Read(kExtendedStatus, extended))
        return false;
    caps |= CapIf((extended & kExtendedGigabitFull) != 0, ETHPHY_IEEE8023_1000_FULL);
    caps |= CapIf((extended & kExtendedGigabitHalf) != 0, ETHPHY_IEEE8023_1000_HALF);
    if ((status & kExtendedRegisters) != 0 && !(LearnMmds() && LearnMultiGig() && LearnEee()))
        return false;
    memory->caps = caps;
    memory->capsKnown = 1;
    return true;
}

// A PHY that does not answer clause-45 frames may make the access fail or leave the bus floating.
bool Phy::LearnMmds()
{
    mmds = 0;
    uint32_t way = ETHPHY_IEEE8023_MMD_FRAMES;
    if (EPHAL_ReadMmd(devIdx, kAn, kDevicesInPackage, &mmds) != 0 || !IsDeviceList(mmds)) {
        way = ETHPHY_IEEE8023_MMD_INDIRECT;
        if (!ReadIndirect(kAn, kDevicesInPackage, mmds))
            return false;
    }
    if (IsDeviceList(mmds))
        caps |= way;
    else
        mmds = 0;
    return true;
}

bool Phy::LearnMultiGig()
{
    uint16_t status = 0;
    uint16_t abilities = 0;
    uint16_t multiGig = 0;
    if ((mmds & 1U << kPma) == 0)
        return true;
    if (!ReadMmd(kPma, kPmaStatus2, status))
        return false;
    if ((status & kPmaExtendedAbilitiesExist) == 0)
        return true;
    if (!ReadMmd(kPma, kPmaExtendedAbilities, abilities))
        return false;
    if ((abilities & kPmaMultiGigAbilitiesExist) != 0 &&
        !ReadMmd(kPma, kPmaMultiGigAbilities, multiGig))
        return false;
    caps |= CapIf((multiGig & kPma2500) != 0, ETHPHY_IEEE8023_2500_FULL);
    caps |= CapIf((multiGig & kPma5000) != 0, ETHPHY_IEEE8023_5000_FULL);
    caps |= CapIf((abilities & kPma10000) != 0, ETHPHY_IEEE8023_10000_FULL);
    return true;
}

bool Phy::LearnEee()
{
    uint16_t slow = 0;
    uint16_t fast = 0;
    if ((mmds & 1U << kPcs) == 0)
        return true;
    if (!ReadMmd(kPcs, kEeeAbilities, slow) || !ReadMmd(kPcs, kEeeAbilities2, fast))
        return false;
    caps |= CapIf((slow & kEee100) != 0, ETHPHY_IEEE8023_EEE_100);
    caps |= CapIf((slow & kEee1000) != 0, ETHPHY_IEEE8023_EEE_1000);
    caps |= CapIf((slow & kEee10000) != 0, ETHPHY_IEEE8023_EEE_10000);
    caps |= CapIf((fast & kEee2500) != 0, ETHPHY_IEEE8023_EEE_2500);
    caps |= CapIf((fast & kEee5000) != 0, ETHPHY_IEEE8023_EEE_5000);
    return true;
}

}  // namespace ieee8023

#include "hals/phy/settings.h"

#include "hals/phy/phy.h"

namespace ieee8023 {
namespace {

constexpr uint16_t kControlKept = kSpeedLow | kNegotiate | kFullDuplex | kSpeedHigh;

struct MultiGigOffer {
    uint32_t cap;
    uint16_t bit;
};
constexpr MultiGigOffer kMultiGigOffers[] = {{ETHPHY_IEEE8023_2500_FULL, kOffers2500},
                                             {ETHPHY_IEEE8023_5000_FULL, kOffers5000},
                                             {ETHPHY_IEEE8023_10000_FULL, kOffers10000}};

void OfferAll(const Phy& phy, Settings& settings)
{
    unsigned technologies = phy.Caps() << kTechnologyShift & kTechnologies;
    settings.advertisement =
        static_cast<uint16_t>((settings.advertisement & kAdvertisementKept) | technologies);
    unsigned gigabit = phy.Has(ETHPHY_IEEE8023_1000_FULL) ? kGigabitFull : 0U;
    gigabit |= phy.Has(ETHPHY_IEEE8023_1000_HALF) ? kGigabitModes & ~kGigabitFull : 0U;
    settings.gigabitControl =
        static_cast<uint16_t>((settings.gigabitControl & kGigabitKept) | gigabit);
    for (const MultiGigOffer& offer : kMultiGigOffers)
        if (phy.Has(offer.cap))
            settings.multiGigControl |= offer.bit;
}

bool Update(Phy& phy, uint8_t reg, uint16_t present, uint16_t wanted)
{
    return present == wanted || phy.Write(reg, wanted);
}

bool UpdateAn(Phy& phy, uint16_t reg, uint16_t present, uint16_t wanted)
{
    return present == wanted || phy.WriteMmd(kAn, reg, wanted);
}

// As the registers hold them; 0 for those that the PHY lacks.
bool ReadRegisters(Phy& phy, Settings& registers)
{
    registers = {};
    return phy.Read(kControl, registers.control) &&
           (!phy.Has(ETHPHY_IEEE8023_NEGOTIATES) ||
            phy.Read(kAdvertisement, registers.advertisement)) &&
           (!phy.Has(kGigabit) || phy.Read(kGigabitControl, registers.gigabitControl)) &&
           (!phy.Has(kMultiGig) || phy.ReadMmd(kAn, kMultiGigControl, registers.multiGigControl)) &&
           (!phy.Has(kEee) || phy.ReadMmd(kAn, kEeeOffer, registers.eeeOffer)) &&
           (!phy.Has(kEeeFast) || phy.ReadMmd(kAn, kEeeOffer2, registers.eeeOffer2));
}

// Without what describes a moment: power-down, isolation and test modes are no settings.
void KeepRestorable(Settings& settings)
{
    settings.control &= kControlKept;
    settings.gigabitControl &= kGigabitModes | kGigabitKept;
}

uint16_t* FindSetting(Settings& settings, uint32_t reg)
{
    constexpr uint32_t kAnRegister = EPHAL_MDIO_CLAUSE45 | uint32_t{kAn} << 16;
    switch (reg) {
        case kControl:
            return &settings.control;
        case kAdvertisement:
            return &settings.advertisement;
        case kGigabitControl:
            return &settings.gigabitControl;
        case kAnRegister | kMultiGigControl:
            return &settings.multiGigControl;
        case kAnRegister | kEeeOffer:
            return &settings.eeeOffer;
        case kAnRegister | kEeeOffer2:
            return &settings.eeeOffer2;
        default:
            return nullptr;
    }
}

}  // namespace

bool ReadSettings(Phy& phy, Settings& settings)
{
    if (!ReadRegisters(phy, settings))
        return false;
    KeepRestorable(settings);
    return true;
}

bool ReadDefaults(Phy& phy, Settings& settings)
{
    if (!ReadSettings(phy, settings))
        return false;
    if (!phy.Has(ETHPHY_IEEE8023_NEGOTIATES))
        return true;
    OfferAll(phy, settings);
    settings.control |= kNegotiate;
    return true;
}

bool ApplySettings(Phy& phy, const Settings& settings)
{
    Settings present;
    Settings wanted = settings;
    KeepRestorable(wanted);
    if (!ReadRegisters(phy, present))
        return false;
    if ((wanted.control & kNegotiate) != 0)
        wanted.control |= kRestart;
    return Update(phy, kAdvertisement, present.advertisement, wanted.advertisement) &&
           Update(phy, kGigabitControl, present.gigabitControl, wanted.gigabitControl) &&
           UpdateAn(phy, kMultiGigControl, present.multiGigControl, wanted.multiGigControl) &&
           UpdateAn(phy, kEeeOffer, present.eeeOffer, wanted.eeeOffer) &&
           UpdateAn(phy, kEeeOffer2, present.eeeOffer2, wanted.eeeOffer2) &&
           Update(phy, kControl, present.control, wanted.control);
}

void NoteWritten(Phy& phy, uint32_t reg, uint16_t value)
{
    PhyMemory& kept = phy.Kept();
    uint16_t* setting = FindSetting(kept.settings, reg);
    if (kept.settingsKept != kWhileDown || setting == nullptr)
        return;
    *setting = value;
    KeepRestorable(kept.settings);
}

}  // namespace ieee8023

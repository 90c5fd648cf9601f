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

bool Update(const Phy& phy, uint8_t reg, uint16_t present, uint16_t wanted)
{
    return present == wanted || phy.Write(reg, wanted);
}

bool UpdateAn(const Phy& phy, uint16_t reg, uint16_t present, uint16_t wanted)
{
    return present == wanted || phy.WriteMmd(kAn, reg, wanted);
}

}  // namespace

bool ReadSettings(const Phy& phy, Settings& settings)
{
    settings = {};
    if (!phy.Read(kControl, settings.control))
        return false;
    settings.control &= kControlKept;
    if (phy.Has(ETHPHY_IEEE8023_NEGOTIATES) && !phy.Read(kAdvertisement, settings.advertisement))
        return false;
    if (phy.Has(kGigabit) && !phy.Read(kGigabitControl, settings.gigabitControl))
        return false;
    if (phy.Has(kMultiGig) && !phy.ReadMmd(kAn, kMultiGigControl, settings.multiGigControl))
        return false;
    return !phy.Has(kEee) || (phy.ReadMmd(kAn, kEeeOffer, settings.eeeOffer) &&
                              phy.ReadMmd(kAn, kEeeOffer2, settings.eeeOffer2));
}

bool ReadDefaults(const Phy& phy, Settings& settings)
{
    if (!ReadSettings(phy, settings))
        return false;
    if (!phy.Has(ETHPHY_IEEE8023_NEGOTIATES))
        return true;
    OfferAll(phy, settings);
    settings.control |= kNegotiate;
    return true;
}

bool ApplySettings(const Phy& phy, const Settings& settings)
{
    Settings present;
    if (!ReadSettings(phy, present))
        return false;
    bool offered =
        Update(phy, kAdvertisement, present.advertisement, settings.advertisement) &&
        Update(phy, kGigabitControl, present.gigabitControl, settings.gigabitControl) &&
        UpdateAn(phy, kMultiGigControl, present.multiGigControl, settings.multiGigControl) &&
        UpdateAn(phy, kEeeOffer, present.eeeOffer, settings.eeeOffer) &&
        UpdateAn(phy, kEeeOffer2, present.eeeOffer2, settings.eeeOffer2);
    uint16_t control = settings.control;
    if ((control & kNegotiate) != 0)
        control |= kRestart;
    return offered && Update(phy, kControl, present.control, control);
}

}  // namespace ieee8023

#include "hals/phy/link.h"

#include "hals/phy/phy.h"
#include "hals/phy/slots.h"

namespace ieee8023 {
namespace {

LinkState Up(OB_Speed speed, bool fullDuplex, uint32_t eeeCap = 0)
{
    return {true, speed, fullDuplex, eeeCap};
}

LinkState Forced(uint16_t control)
{
    bool full = (control & kFullDuplex) != 0;
    bool low = (control & kSpeedLow) != 0;
    bool high = (control & kSpeedHigh) != 0;
    if (high && low)
        return Up(OB_SPEED_UNKNOWN, full);
    if (high)
        return Up(OB_SPEED_1G, full);
    return Up(low ? OB_SPEED_100M : OB_SPEED_10M, full);
}

// The best of the technologies of the base page.
LinkState BestOfBasePage(unsigned technologies)
{
    if ((technologies & kTech100Full) != 0)
        return Up(OB_SPEED_100M, true, ETHPHY_IEEE8023_EEE_100);
    if ((technologies & kTech100Half) != 0)
        return Up(OB_SPEED_100M, false);
    if ((technologies & kTech10Full) != 0)
        return Up(OB_SPEED_10M, true);
    if ((technologies & kTech10Half) != 0)
        return Up(OB_SPEED_10M, false);
    return Up(OB_SPEED_UNKNOWN, false);
}

// What was found in the signal of a partner that sends no pages is half duplex by definition.
bool Detected(Phy& phy, LinkState& state)
{
    uint16_t found = 0;
    if (!phy.Read(kPartnerAbility, found))
        return false;
    state = BestOfBasePage(found & (kTech100Half | kTech10Half));
    return true;
}

bool FindMultiGig(Phy& phy, LinkState& state, bool& found)
{
    uint16_t near = 0;
    uint16_t far = 0;
    if (!phy.ReadMmd(kAn, kMultiGigControl, near) || !phy.ReadMmd(kAn, kMultiGigStatus, far))
        return false;
    found = true;
    if ((near & kOffers10000) != 0 && (far & kPartner10000) != 0)
        state = Up(OB_SPEED_10G, true, ETHPHY_IEEE8023_EEE_10000);
    else if ((near & kOffers5000) != 0 && (far & kPartner5000) != 0)
        state = Up(OB_SPEED_UNKNOWN, true, ETHPHY_IEEE8023_EEE_5000);
    else if ((near & kOffers2500) != 0 && (far & kPartner2500) != 0)
        state = Up(OB_SPEED_2G5, true, ETHPHY_IEEE8023_EEE_2500);
    else
        found = false;
    return true;
}

bool FindGigabit(Phy& phy, LinkState& state, bool& found)
{
    uint16_t near = 0;
    uint16_t far = 0;
    if (!phy.Read(kGigabitControl, near) || !phy.Read(kGigabitStatus, far))
        return false;
    unsigned both = near & far >> kGigabitPartnerShift & kGigabitModes;
    found = both != 0;
    if (found)
        state = Up(OB_SPEED_1G, (both & kGigabitFull) != 0,
                   (both & kGigabitFull) != 0 ? ETHPHY_IEEE8023_EEE_1000 : 0);
    return true;
}

bool FindInBasePage(Phy& phy, LinkState& state)
{
    uint16_t near = 0;
    uint16_t far = 0;
    if (!phy.Read(kAdvertisement, near) || !phy.Read(kPartnerAbility, far))
        return false;
    // A fibre PHY lays its page out differently and has no technology of these.
    unsigned able = phy.Caps() << kTechnologyShift & kTechnologies;
    state = BestOfBasePage(near & far & able);
    return true;
}

bool Negotiated(Phy& phy, LinkState& state)
{
    uint16_t expansion = 0;
    bool found = false;
    if (!phy.Read(kExpansion, expansion))
        return false;
    if ((expansion & kPartnerNegotiates) == 0)
        return Detected(phy, state);
    if (phy.Has(kMultiGig) && !FindMultiGig(phy, state, found))
        return false;
    if (!found && phy.Has(kGigabit) && !FindGigabit(phy, state, found))
        return false;
    return found || FindInBasePage(phy, state);
}

}  // namespace

bool ReadLink(Phy& phy, LinkState& state)
{
    uint16_t past = 0;
    uint16_t status = 0;
    uint16_t control = 0;
    state = {};
    if (!phy.Learn() || !phy.Read(kStatus, past) || !phy.Read(kStatus, status))
        return false;
    if ((status & kLinkUp) == 0)
        return true;
    if (!phy.Read(kControl, control))
        return false;
    if (!phy.Has(ETHPHY_IEEE8023_NEGOTIATES) || (control & kNegotiate) == 0) {
        state = Forced(control);
        return true;
    }
    return (status & kNegotiationComplete) == 0 || Negotiated(phy, state);
}

int GetLink(int devIdx, uint32_t* link, uint32_t* speed, uint32_t* duplex)
{
    Phy phy{devIdx};
    LinkState state;
    if (link == nullptr || !phy.Exists() || !ReadLink(phy, state))
        return ETHPHY_IEEE8023_FAILED;
    *link = state.up ? 1 : 0;
    if (speed != nullptr)
        *speed = state.speed;
    if (duplex != nullptr)
        *duplex = state.fullDuplex ? 1 : 0;
    return ETHPHY_IEEE8023_OK;
}

}  // namespace ieee8023

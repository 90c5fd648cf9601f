// What the standard counts. Its registers are cleared by reading, so the sums are kept.
#include <string.h>

#include "hals/phy/link.h"
#include "hals/phy/phy.h"
#include "hals/phy/slots.h"

namespace ieee8023 {
namespace {

bool Collect(const Phy& phy)
{
    uint16_t value = 0;
    PhyMemory& sums = phy.Kept();
    if (phy.Has(kGigabit)) {
        if (!phy.Read(kGigabitStatus, value))
            return false;
        sums.idleErrors += value & kIdleErrors;
    }
    if (phy.Has(kMultiGig)) {
        if (!phy.ReadAnyMmd(kPcs, kBlockErrors, value))
            return false;
        sums.highBer += value >> kHighBerShift & kHighBer;
        sums.erroredBlocks += value & kErroredBlocks;
    }
    if (phy.Has(kEee)) {
        if (!phy.ReadAnyMmd(kPcs, kEeeWakeErrors, value))
            return false;
        sums.eeeWakeErrors += value;
    }
    return true;
}

uint32_t EeeCaps(unsigned slow, unsigned fast)
{
    uint32_t caps = (slow & kEee100) != 0 ? ETHPHY_IEEE8023_EEE_100 : 0;
    caps |= (slow & kEee1000) != 0 ? ETHPHY_IEEE8023_EEE_1000 : 0;
    caps |= (slow & kEee10000) != 0 ? ETHPHY_IEEE8023_EEE_10000 : 0;
    caps |= (fast & kEee2500) != 0 ? ETHPHY_IEEE8023_EEE_2500 : 0;
    caps |= (fast & kEee5000) != 0 ? ETHPHY_IEEE8023_EEE_5000 : 0;
    return caps;
}

bool ReadEeeState(Phy& phy, uint32_t& state)
{
    uint16_t offer = 0;
    uint16_t offer2 = 0;
    uint16_t far = 0;
    uint16_t far2 = 0;
    uint16_t pcs = 0;
    LinkState link;
    if (!phy.ReadMmd(kAn, kEeeOffer, offer) || !phy.ReadMmd(kAn, kEeeOffer2, offer2) ||
        !phy.ReadMmd(kAn, kEeePartner, far) || !phy.ReadMmd(kAn, kEeePartner2, far2) ||
        !phy.ReadMmd(kPcs, kPcsStatus1, pcs) || !ReadLink(phy, link))
        return false;
    state = EeeCaps(offer, offer2) != 0 ? ETHPHY_IEEE8023_EEE_OFFERED : 0;
    uint32_t both = EeeCaps(offer & far, offer2 & far2);
    state |= (both & link.eeeCap) != 0 ? ETHPHY_IEEE8023_EEE_NEGOTIATED : 0;
    state |= (pcs & kRxSleeps) != 0 ? ETHPHY_IEEE8023_EEE_RX_SLEEPS : 0;
    state |= (pcs & kTxSleeps) != 0 ? ETHPHY_IEEE8023_EEE_TX_SLEEPS : 0;
    return true;
}

uint32_t Counted(const Phy& phy)
{
    uint32_t valid = phy.Has(kGigabit) ? ETHPHY_IEEE8023_HAS_IDLE_ERRORS : 0;
    valid |= phy.Has(kMultiGig) ? ETHPHY_IEEE8023_HAS_BLOCK_ERRORS : 0;
    return valid | (phy.Has(kEee) ? ETHPHY_IEEE8023_HAS_EEE : 0);
}

// Collects where there is anything to count.
int Gather(Phy& phy)
{
    uint16_t status = 0;
    if (!phy.Exists() || !phy.Learn() || !phy.Read(kStatus, status))
        return ETHPHY_IEEE8023_FAILED;
    if (Counted(phy) == 0)
        return ETHPHY_IEEE8023_NOT_SUPPORTED;
    return Result(Collect(phy));
}

}  // namespace

int GetCounters(int devIdx, void* counters)
{
    Phy phy{devIdx};
    if (counters == nullptr)
        return ETHPHY_IEEE8023_FAILED;
    int result = Gather(phy);
    if (result != ETHPHY_IEEE8023_OK)
        return result;
    EthphyIeee8023Counters filled{};
    if (phy.Has(kEee) && !ReadEeeState(phy, filled.eeeState))
        return ETHPHY_IEEE8023_FAILED;
    const PhyMemory& sums = phy.Kept();
    filled.valid = Counted(phy);
    filled.idleErrors = sums.idleErrors;
    filled.highBer = sums.highBer;
    filled.erroredBlocks = sums.erroredBlocks;
    filled.eeeWakeErrors = sums.eeeWakeErrors;
    memcpy(counters, &filled, sizeof filled);
    return ETHPHY_IEEE8023_OK;
}

int ResetCounters(int devIdx)
{
    Phy phy{devIdx};
    int result = Gather(phy);
    if (result != ETHPHY_IEEE8023_OK)
        return result;
    PhyMemory& sums = phy.Kept();
    sums.idleErrors = sums.highBer = sums.erroredBlocks = sums.eeeWakeErrors = 0;
    return ETHPHY_IEEE8023_OK;
}

int Poll(int devIdx)
{
    Phy phy{devIdx};
    uint32_t enabled = 0;
    if (!phy.Exists() || EPHAL_GetHwState(static_cast<uint8_t>(devIdx), &enabled) != 0)
        return ETHPHY_IEEE8023_FAILED;
    if (enabled == 0)
        return ETHPHY_IEEE8023_OK;
    int result = Gather(phy);
    return result == ETHPHY_IEEE8023_NOT_SUPPORTED ? ETHPHY_IEEE8023_OK : result;
}

}  // namespace ieee8023

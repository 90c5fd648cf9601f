// What the standard counts, and the poll that keeps up with it.
#include <string.h>

#include "hals/phy/link.h"
#include "hals/phy/mac.h"
#include "hals/phy/phy.h"
#include "hals/phy/slots.h"

namespace ieee8023 {
namespace {

// Reading a register that counts adds it to the sums.
bool Collect(Phy& phy)
{
    uint16_t value = 0;
    return phy.Read(kStatus, value) && (!phy.Has(kGigabit) || phy.Read(kGigabitStatus, value)) &&
           (!phy.Has(kMultiGig) || phy.ReadAnyMmd(kPcs, kBlockErrors, value)) &&
           (!phy.Has(kEee) || phy.ReadAnyMmd(kPcs, kEeeWakeErrors, value));
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

// What both ends offer; the second pair of registers belongs to PHYs with EEE at 2.5 or 5 Gb/s.
bool ReadEeeOffers(Phy& phy, uint32_t& near, uint32_t& both)
{
    uint16_t slow = 0;
    uint16_t fast = 0;
    uint16_t farSlow = 0;
    uint16_t farFast = 0;
    if (!phy.ReadMmd(kAn, kEeeOffer, slow) || !phy.ReadMmd(kAn, kEeePartner, farSlow))
        return false;
    if (phy.Has(kEeeFast) &&
        (!phy.ReadMmd(kAn, kEeeOffer2, fast) || !phy.ReadMmd(kAn, kEeePartner2, farFast)))
        return false;
    near = EeeCaps(slow, fast);
    both = EeeCaps(slow & farSlow, fast & farFast);
    return true;
}

bool ReadEeeState(Phy& phy, uint32_t& state)
{
    uint32_t near = 0;
    uint32_t both = 0;
    uint16_t pcs = 0;
    LinkState link;
    if (!ReadEeeOffers(phy, near, both) || !phy.ReadMmd(kPcs, kPcsStatus1, pcs) ||
        !ReadLink(phy, link))
        return false;
    state = near != 0 ? ETHPHY_IEEE8023_EEE_OFFERED : 0;
    state |= (both & link.eeeCap) != 0 ? ETHPHY_IEEE8023_EEE_NEGOTIATED : 0;
    state |= (pcs & kRxSleeps) != 0 ? ETHPHY_IEEE8023_EEE_RX_SLEEPS : 0;
    state |= (pcs & kTxSleeps) != 0 ? ETHPHY_IEEE8023_EEE_TX_SLEEPS : 0;
    return true;
}

uint32_t Counted(const Phy& phy)
{
    uint32_t valid = ETHPHY_IEEE8023_HAS_LINK_DROPS;
    valid |= phy.Has(kGigabit) ? ETHPHY_IEEE8023_HAS_IDLE_ERRORS : 0;
    valid |= phy.Has(kMultiGig) ? ETHPHY_IEEE8023_HAS_BLOCK_ERRORS : 0;
    return valid | (phy.Has(kEee) ? ETHPHY_IEEE8023_HAS_EEE : 0);
}

bool Gather(Phy& phy)
{
    return phy.Exists() && phy.Learn() && Collect(phy);
}

}  // namespace

int GetCounters(int devIdx, void* counters)
{
    Phy phy{devIdx};
    EthphyIeee8023Counters filled{};
    if (counters == nullptr || !Gather(phy) ||
        (phy.Has(kEee) && !ReadEeeState(phy, filled.eeeState)))
        return ETHPHY_IEEE8023_FAILED;
    const PhyMemory& sums = phy.Kept();
    filled.valid = Counted(phy);
    filled.idleErrors = sums.idleErrors;
    filled.highBer = sums.highBer;
    filled.erroredBlocks = sums.erroredBlocks;
    filled.eeeWakeErrors = sums.eeeWakeErrors;
    filled.linkDrops = sums.linkDrops;
    filled.masterFaults = sums.masterFaults;
    memcpy(counters, &filled, sizeof filled);
    return ETHPHY_IEEE8023_OK;
}

int ResetCounters(int devIdx)
{
    Phy phy{devIdx};
    if (!Gather(phy))
        return ETHPHY_IEEE8023_FAILED;
    PhyMemory& sums = phy.Kept();
    sums.idleErrors = sums.highBer = sums.erroredBlocks = sums.eeeWakeErrors = 0;
    sums.linkDrops = sums.masterFaults = 0;
    return ETHPHY_IEEE8023_OK;
}

int Poll(int devIdx)
{
    Phy phy{devIdx};
    uint32_t enabled = 0;
    if (!phy.Exists() || EPHAL_GetHwState(static_cast<uint8_t>(devIdx), &enabled) != 0)
        return ETHPHY_IEEE8023_FAILED;
    return Result(enabled == 0 || (Gather(phy) && TellMac(phy)));
}

}  // namespace ieee8023

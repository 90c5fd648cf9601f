#include "hals/phy/phy.h"

#include "hals/uninterrupted.h"

namespace ieee8023 {

Phy::Phy(int deviceIndex)
    : devIdx_(static_cast<uint8_t>(deviceIndex)), memory_(MemoryOf(deviceIndex))
{
}

bool Phy::ReadAny(uint8_t reg, uint16_t& value)
{
    if (!hals::Uninterrupted([&] { return EPHAL_ReadMdio(devIdx_, reg, &value); }))
        return false;
    if (value != kNobody)
        CountClause22(reg, value);
    return true;
}

bool Phy::Read(uint8_t reg, uint16_t& value)
{
    return ReadAny(reg, value) && value != kNobody;
}

bool Phy::Write(uint8_t reg, uint16_t value)
{
    return hals::Uninterrupted([&] { return EPHAL_WriteMdio(devIdx_, reg, value); });
}

bool Phy::SelectMmd(uint8_t mmd, uint16_t reg)
{
    return Write(kMmdSelect, mmd) && Write(kMmdData, reg) &&
           Write(kMmdSelect, static_cast<uint16_t>(kMmdDataFunction | mmd));
}

bool Phy::ReadAnyMmd(uint8_t mmd, uint16_t reg, uint16_t& value)
{
    bool done = false;
    if (Has(ETHPHY_IEEE8023_MMD_FRAMES))
        done = hals::Uninterrupted([&] { return EPHAL_ReadMmd(devIdx_, mmd, reg, &value); });
    else if (Has(ETHPHY_IEEE8023_MMD_INDIRECT))
        done = SelectMmd(mmd, reg) && ReadAny(kMmdData, value);
    if (done && mmd == kPcs)
        CountPcs(reg, value);
    return done;
}

bool Phy::ReadMmd(uint8_t mmd, uint16_t reg, uint16_t& value)
{
    return ReadAnyMmd(mmd, reg, value) && value != kNobody;
}

bool Phy::WriteMmd(uint8_t mmd, uint16_t reg, uint16_t value)
{
    if (Has(ETHPHY_IEEE8023_MMD_FRAMES))
        return hals::Uninterrupted([&] { return EPHAL_WriteMmd(devIdx_, mmd, reg, value); });
    return Has(ETHPHY_IEEE8023_MMD_INDIRECT) && SelectMmd(mmd, reg) && Write(kMmdData, value);
}

// 1.2 stays low after a drop until it is read, also when the link is back by then.
void Phy::CountClause22(uint8_t reg, uint16_t value)
{
    if (reg == kStatus) {
        bool up = (value & kLinkUp) != 0;
        if (!up && memory_->linkWasUp != 0)
            ++memory_->linkDrops;
        memory_->linkWasUp = up ? 1 : 0;
    }
    if (reg == kGigabitStatus && Has(kGigabit)) {
        memory_->idleErrors += value & kIdleErrors;
        memory_->masterFaults += (value & kMasterFault) != 0 ? 1 : 0;
    }
}

void Phy::CountPcs(uint16_t reg, uint16_t value)
{
    bool blocks = reg == kBlockErrors && Has(kMultiGig);
    bool wakes = reg == kEeeWakeErrors && Has(kEee);
    uint16_t control = 0;
    // Full counters look like nobody.
    if ((!blocks && !wakes) || (value == kNobody && !Read(kControl, control)))
        return;
    if (wakes) {
        memory_->eeeWakeErrors += value;
        return;
    }
    memory_->highBer += value >> kHighBerShift & kHighBer;
    memory_->erroredBlocks += value & kErroredBlocks;
}

}  // namespace ieee8023

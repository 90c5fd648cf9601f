// Capabilities, EEE and raw registers.
#include "hals/phy/phy.h"
#include "hals/phy/settings.h"
#include "hals/phy/slots.h"

namespace ieee8023 {
namespace {

constexpr uint16_t kEeeHigher = kEee2500 | kEee5000;
// The capabilities lie as the bits of 3.20 and 3.21 do, and those of the offers.
constexpr unsigned kEeeSlowShift = 15;
constexpr unsigned kEeeFastShift = 19;
static_assert(ETHPHY_IEEE8023_EEE_100 >> kEeeSlowShift == kEee100);
static_assert(ETHPHY_IEEE8023_EEE_10000 >> kEeeSlowShift == kEee10000);
static_assert(ETHPHY_IEEE8023_EEE_2500 >> kEeeFastShift == kEee2500);
static_assert(ETHPHY_IEEE8023_EEE_5000 >> kEeeFastShift == kEee5000);
constexpr uint32_t kHighestRegister = 31;
constexpr int kHighestValue = 0xFFFF;

// Offers exactly the wanted ones of the bits; `changed` is only ever set.
bool Offer(Phy& phy, uint16_t reg, uint16_t bits, uint16_t wanted, bool& changed)
{
    uint16_t present = 0;
    if (!phy.ReadMmd(kAn, reg, present))
        return false;
    auto value = static_cast<uint16_t>((present & ~bits) | wanted);
    if (value == present)
        return true;
    changed = true;
    NoteWritten(phy, EPHAL_MDIO_CLAUSE45 | uint32_t{kAn} << 16 | reg, value);
    return phy.WriteMmd(kAn, reg, value);
}

bool RestartNegotiation(Phy& phy)
{
    uint16_t control = 0;
    if (!phy.Read(kControl, control))
        return false;
    if ((control & kNegotiate) == 0)
        return true;
    phy.ExpectDrop();
    return phy.Write(kControl, static_cast<uint16_t>((control & ~kReset) | kRestart));
}

bool SwitchEee(Phy& phy, bool on)
{
    auto slow = static_cast<uint16_t>(phy.Caps() >> kEeeSlowShift & kEeeTwistedPair);
    auto fast = static_cast<uint16_t>(phy.Caps() >> kEeeFastShift & kEeeHigher);
    bool changed = false;
    if (!Offer(phy, kEeeOffer, slow, on ? slow : 0, changed) ||
        (fast != 0 && !Offer(phy, kEeeOffer2, fast, on ? fast : 0, changed)))
        return false;
    return !changed || RestartNegotiation(phy);
}

struct ChipRegister {
    bool exists;
    bool clause45;
    uint8_t mmd;
    uint16_t reg;
};

ChipRegister Decode(uint32_t number)
{
    bool clause45 = (number & EPHAL_MDIO_CLAUSE45) != 0;
    uint32_t allowed = clause45 ? EPHAL_MDIO_CLAUSE45 | 0x001FFFFFU : kHighestRegister;
    return {(number & ~allowed) == 0, clause45, static_cast<uint8_t>(number >> 16 & 31),
            static_cast<uint16_t>(number)};
}

// Whether a PHY that can be asked has the register; what it holds is not looked at.
int Find(Phy& phy, const ChipRegister& chip)
{
    if (!phy.Exists() || !chip.exists || !phy.Learn())
        return ETHPHY_IEEE8023_FAILED;
    return chip.clause45 && !phy.Has(kMmdWays) ? ETHPHY_IEEE8023_NOT_SUPPORTED : ETHPHY_IEEE8023_OK;
}

bool Answers(Phy& phy)
{
    uint16_t control = 0;
    return phy.Read(kControl, control);
}

}  // namespace

int GetCaps(int devIdx, uint32_t* caps)
{
    Phy phy{devIdx};
    if (caps == nullptr || !phy.Exists())
        return ETHPHY_IEEE8023_FAILED;
    phy.Forget();
    if (!phy.Learn())
        return ETHPHY_IEEE8023_FAILED;
    *caps = phy.Caps();
    return ETHPHY_IEEE8023_OK;
}

int SetEeeState(int devIdx, int state)
{
    Phy phy{devIdx};
    if (!phy.Exists() || !phy.Learn())
        return ETHPHY_IEEE8023_FAILED;
    if (!phy.Has(kEee))
        return ETHPHY_IEEE8023_NOT_SUPPORTED;
    return Result(SwitchEee(phy, state != 0));
}

int ReadChipReg(int devIdx, uint32_t reg, uint16_t* value)
{
    Phy phy{devIdx};
    ChipRegister chip = Decode(reg);
    uint16_t read = 0;
    int result = value != nullptr ? Find(phy, chip) : ETHPHY_IEEE8023_FAILED;
    if (result != ETHPHY_IEEE8023_OK)
        return result;
    bool done = chip.clause45 ? phy.ReadAnyMmd(chip.mmd, chip.reg, read)
                              : phy.ReadAny(static_cast<uint8_t>(chip.reg), read);
    if (!done || (read == kNobody && !Answers(phy)))
        return ETHPHY_IEEE8023_FAILED;
    *value = read;
    return ETHPHY_IEEE8023_OK;
}

int WriteChipReg(int devIdx, uint32_t reg, int value)
{
    Phy phy{devIdx};
    ChipRegister chip = Decode(reg);
    int result = value >= 0 && value <= kHighestValue ? Find(phy, chip) : ETHPHY_IEEE8023_FAILED;
    if (result != ETHPHY_IEEE8023_OK)
        return result;
    auto word = static_cast<uint16_t>(value);
    if (!Answers(phy))
        return ETHPHY_IEEE8023_FAILED;
    NoteWritten(phy, reg, word);
    return Result((chip.clause45 ? phy.WriteMmd(chip.mmd, chip.reg, word)
                                 : phy.Write(static_cast<uint8_t>(chip.reg), word)));
}

}  // namespace ieee8023

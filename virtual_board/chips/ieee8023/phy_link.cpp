#include "virtual_board/chips/ieee8023/phy_link.h"

namespace vboard {
namespace {

constexpr PhyModes kFullModes = kPhy10Full | kPhy100Full | kPhy1000Full | kPhy2500Full;
constexpr unsigned kSlowestCode = 2;
constexpr unsigned kFastestCode = 5;

PhyMode HalfDuplexOf(PhyMode mode)
{
    return ModeFor(SpeedCodeOf(mode), false);
}

// The mode that a negotiating end finds in the signal of one that does not negotiate.
PhyMode Detect(PhyModes abilities, PhyMode forced)
{
    return PhyMode(HalfDuplexOf(forced) & abilities & kPhyDetectable);
}

}  // namespace

bool IsFullDuplex(PhyMode mode)
{
    return (mode & kFullModes) != 0;
}

unsigned MegabitsOf(PhyMode mode)
{
    static constexpr unsigned kMegabits[] = {0, 0, 10, 100, 1000, 2500};
    return kMegabits[SpeedCodeOf(mode)];
}

unsigned SpeedCodeOf(PhyMode mode)
{
    if (mode == kPhyNoMode)
        return 0;
    return kSlowestCode + static_cast<unsigned>(std::countr_zero(PhyModes{mode})) / 2;
}

PhyMode ModeFor(unsigned speedCode, bool fullDuplex)
{
    if (speedCode < kSlowestCode || speedCode > kFastestCode)
        return kPhyNoMode;
    if (speedCode == kFastestCode)
        return fullDuplex ? kPhy2500Full : kPhyNoMode;
    return PhyMode(1U << (2 * (speedCode - kSlowestCode) + (fullDuplex ? 1 : 0)));
}

PhyModes ModesOf(const LinkPartner& partner)
{
    unsigned modes = 0;
    modes |= partner.half10 ? kPhy10Half : kPhyNoMode;
    modes |= partner.full10 ? kPhy10Full : kPhyNoMode;
    modes |= partner.half100 ? kPhy100Half : kPhyNoMode;
    modes |= partner.full100 ? kPhy100Full : kPhyNoMode;
    modes |= partner.half1000 ? kPhy1000Half : kPhyNoMode;
    modes |= partner.full1000 ? kPhy1000Full : kPhyNoMode;
    modes |= partner.full2500 ? kPhy2500Full : kPhyNoMode;
    return static_cast<PhyModes>(modes);
}

PhyOutcome Negotiate(const PhyEnd& near, PhyModes abilities, const PhyEnd& far)
{
    PhyMode farForced = FastestOf(far.modes);
    if (near.negotiates && far.negotiates)
        return {.mode = FastestOf(near.modes & far.modes), .exchanged = true};
    if (near.negotiates) {
        PhyMode found = Detect(abilities, farForced);
        return {.mode = found, .detected = found != kPhyNoMode};
    }
    PhyMode forced = FastestOf(near.modes);
    bool matches = far.negotiates ? Detect(far.modes, forced) != kPhyNoMode
                                  : SpeedCodeOf(farForced) == SpeedCodeOf(forced);
    return {.mode = matches ? forced : kPhyNoMode};
}

}  // namespace vboard

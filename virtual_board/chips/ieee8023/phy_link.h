// What two ends of a twisted-pair link make of each other (IEEE 802.3 clause 28).
#pragma once

#include <bit>
#include <cstdint>

#include "virtual_board/description/link_partner.h"

namespace vboard {

// One speed and duplex; the values rise with the priority that negotiation gives them.
enum PhyMode : uint16_t {
    kPhyNoMode = 0,
    kPhy10Half = 0x01,
    kPhy10Full = 0x02,
    kPhy100Half = 0x04,
    kPhy100Full = 0x08,
    kPhy1000Half = 0x10,
    kPhy1000Full = 0x20,
    kPhy2500Full = 0x40,
};
using PhyModes = uint16_t;  // a set of them

inline constexpr PhyModes kPhyAllModes = 0x7F;
inline constexpr PhyModes kPhyGigabit = kPhy1000Half | kPhy1000Full;
// The modes that a receiver recognises without negotiation.
inline constexpr PhyModes kPhyDetectable = kPhy10Half | kPhy100Half;

constexpr PhyMode FastestOf(PhyModes modes)
{
    return PhyMode{std::bit_floor(modes)};
}

bool IsFullDuplex(PhyMode mode);
unsigned MegabitsOf(PhyMode mode);
// That of the board data: 2 = 10, 3 = 100, 4 = 1000, 5 = 2500 Mb/s; 0 = no mode.
unsigned SpeedCodeOf(PhyMode mode);
PhyMode ModeFor(unsigned speedCode, bool fullDuplex);
PhyModes ModesOf(const LinkPartner& partner);

// One end: what it offers when it negotiates, else the one mode it is forced to.
struct PhyEnd {
    bool negotiates = false;
    PhyModes modes = 0;
};

struct PhyOutcome {
    PhyMode mode = kPhyNoMode;  // of the near end; none: the link stays down
    bool exchanged = false;     // both ends negotiated
    bool detected = false;      // found by parallel detection
};

// `abilities`: what the near end can do, whatever it offers.
PhyOutcome Negotiate(const PhyEnd& near, PhyModes abilities, const PhyEnd& far);

}  // namespace vboard

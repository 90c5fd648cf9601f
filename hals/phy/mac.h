// The Ethernet MAC of the SoC behind a PHY.
#pragma once

namespace ieee8023 {

class Phy;

// Tells it the speed and duplex of the link when they are not those it was told last. False: no
// answer, or the MAC's driver refused.
bool TellMac(Phy& phy);

}  // namespace ieee8023

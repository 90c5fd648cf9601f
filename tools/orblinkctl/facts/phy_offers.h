// What a PHY and its partner offer each other, from the standard registers.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

// {negotiation, speed, duplex, link, link_speed, link_duplex, offers, partner_offers}; the partner's
// are null without a link, and where nothing is negotiated.
Model SpeedOffers(const PhyDeviceRegion& region, unsigned device);
// {eee, offers, partner_offers, active}.
Model EeeOffers(unsigned device);
// What the capabilities of a PHY of the general HAL stand for, by name; null for any other.
Model CapabilityNames(const PhyDeviceRecord& record, uint32_t capabilities);

}  // namespace ctl

// Models of what the PHY records hold and of what the PHYs report.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

std::string PhyStateWord(uint32_t hwState);

Model StoredPhy(const PhyDeviceRegion& region, unsigned device);
Model StoredPhys(const PhyDeviceRegion& region);

// Adds link, link_speed and link_duplex; a PHY that cannot be read has nulls and its "error".
void AddPhyLink(Model& model, unsigned device);
Model LivePhys(const PhyDeviceRegion& region);

Model PhyBoardModel(const PhyBoardEntry& entry);

}  // namespace ctl

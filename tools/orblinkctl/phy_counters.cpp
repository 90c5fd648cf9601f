#include "tools/orblinkctl/phy_counters.h"

namespace ctl {

Model PhyCounters(const PhyDeviceRegion&, unsigned device)
{
    uint8_t buffer[8192] = {};
    Enter(Family::kPhy);
    Check(ETHPHY_GetCounters(static_cast<uint8_t>(device), buffer), PhyObject(device),
          "ETHPHY_GetCounters");
    size_t size = sizeof buffer;
    while (size > 0 && buffer[size - 1] == 0)
        --size;
    Model model;
    model["raw"] = BytesWord(buffer, size);
    return model;
}

}  // namespace ctl

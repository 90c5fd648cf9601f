#include "tools/orblinkctl/facts/phy_counters.h"

#include <cstring>

#include "hals/phy/ethphy_ieee8023.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

constexpr char kKnownHal[] = "libethphy_ieee8023.so";

// Room for the counters of any HAL.
constexpr size_t kRoom = 8192;

Model Raw(const uint8_t* buffer, size_t size)
{
    while (size > 0 && buffer[size - 1] == 0)
        --size;
    Model model;
    model["raw"] = BytesWord(buffer, size);
    return model;
}

Model Known(const EthphyIeee8023Counters& counters)
{
    const auto counted = [&](uint32_t flag, uint32_t value) {
        return (counters.valid & flag) != 0 ? Model(value) : Model();
    };
    const auto state = [&](uint32_t bit) {
        return (counters.valid & ETHPHY_IEEE8023_HAS_EEE) != 0
                   ? Model((counters.eeeState & bit) != 0 ? 1 : 0)
                   : Model();
    };
    Model model;
    model["idle_errors"] = counted(ETHPHY_IEEE8023_HAS_IDLE_ERRORS, counters.idleErrors);
    model["high_ber"] = counted(ETHPHY_IEEE8023_HAS_BLOCK_ERRORS, counters.highBer);
    model["errored_blocks"] = counted(ETHPHY_IEEE8023_HAS_BLOCK_ERRORS, counters.erroredBlocks);
    model["eee_wake_errors"] = counted(ETHPHY_IEEE8023_HAS_EEE, counters.eeeWakeErrors);
    model["link_drops"] = counted(ETHPHY_IEEE8023_HAS_LINK_DROPS, counters.linkDrops);
    model["master_faults"] = counted(ETHPHY_IEEE8023_HAS_IDLE_ERRORS, counters.masterFaults);
    model["eee_offered"] = state(ETHPHY_IEEE8023_EEE_OFFERED);
    model["eee_negotiated"] = state(ETHPHY_IEEE8023_EEE_NEGOTIATED);
    model["eee_receive_sleeps"] = state(ETHPHY_IEEE8023_EEE_RX_SLEEPS);
    model["eee_transmit_sleeps"] = state(ETHPHY_IEEE8023_EEE_TX_SLEEPS);
    return model;
}

}  // namespace

bool IsIeee8023(const PhyDeviceRecord& record)
{
    return NameIn(record.board.halLibName) == kKnownHal;
}

Model PhyCounters(const PhyDeviceRegion& region, unsigned device)
{
    uint8_t buffer[kRoom] = {};
    Enter(Family::kPhy);
    Check(ETHPHY_GetCounters(static_cast<uint8_t>(device), buffer), PhyObject(device),
          "ETHPHY_GetCounters");
    if (!IsIeee8023(region.phy[device]))
        return Raw(buffer, sizeof buffer);
    EthphyIeee8023Counters counters;
    std::memcpy(&counters, buffer, sizeof counters);
    return Known(counters);
}

}  // namespace ctl

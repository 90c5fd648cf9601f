// Standalone PHYs. Each function is the C function of the same name, whose comment holds.
#pragma once

#include "phy/ethphy_api.h"
#include "result.hpp"
#include "values.hpp"

namespace orblink::phy {

inline Status InitOnce()
{
    return Status(ETHPHY_InitOnce());
}

inline Result<uint8_t> GetNumOfPhys()
{
    return Result<uint8_t>([](uint8_t* out) { return ETHPHY_GetNumOfPhys(out); });
}

inline Status CreatePhyDevices()
{
    return Status(EP_CreatePhyDevices());
}

// Null on failure.
[[nodiscard]] inline PhyDeviceRegion* MapEthphyDevices()
{
    return static_cast<PhyDeviceRegion*>(EP_MapEthphyDevices());
}

// Which configuration ETHPHY_ResetDisable applies.
enum class Configuration : int { kStored = 0, kDefaults = 1 };

inline Status ResetDisable(PhyIndex phy, Configuration which)
{
    return Status(ETHPHY_ResetDisable(Number(phy), Number(which)));
}

inline Status ResetEnable(PhyIndex phy)
{
    return Status(ETHPHY_ResetEnable(Number(phy)));
}

inline Status ResetSgmii(PhyIndex phy)
{
    return Status(ETHPHY_ResetSgmii(Number(phy)));
}

inline Result<Link> GetLink(PhyIndex phy)
{
    Link link{};  // not every HAL knows speed and duplex of a link that is down
    const int code = ETHPHY_GetLink(Number(phy), &link.up, &link.speed, &link.fullDuplex);
    return Result<Link>(code, link);
}

inline Status SetAdminState(PhyIndex phy, bool enable)
{
    return Status(ETHPHY_SetAdminState(Number(phy), enable ? 1 : 0));
}

inline Result<PhyProvConfig> GetProvisionedConfig(PhyIndex phy)
{
    return Result<PhyProvConfig>(
        [=](PhyProvConfig* out) { return ETHPHY_GetProvisionedConfig(Number(phy), out); });
}

inline Result<PhyBoardEntry> GetBsdConfig(PhyIndex phy)
{
    return Result<PhyBoardEntry>(
        [=](PhyBoardEntry* out) { return ETHPHY_GetBsdConfig(Number(phy), out); });
}

// What stands there changes with the calls of all processes.
inline Result<const PhyDeviceRecord*> GetPhyData(PhyIndex phy)
{
    void* place = nullptr;
    const int code = ETHPHY_GetPhyData(Number(phy), &place);
    return Result<const PhyDeviceRecord*>(code, static_cast<const PhyDeviceRecord*>(place));
}

inline Result<uint32_t> GetCaps(PhyIndex phy)
{
    return Result<uint32_t>([=](uint32_t* out) { return ETHPHY_GetCaps(Number(phy), out); });
}

inline Status Poll(PhyIndex phy)
{
    return Status(ETHPHY_Poll(Number(phy)));
}

// Counters as the HAL lays them out.
template <typename Counters>
Result<Counters> GetCounters(PhyIndex phy)
{
    return Result<Counters>([=](Counters* out) { return ETHPHY_GetCounters(Number(phy), out); });
}

inline Status ResetCounters(PhyIndex phy)
{
    return Status(ETHPHY_ResetCounters(Number(phy)));
}

inline Status SetEeeState(PhyIndex phy, uint8_t state)
{
    return Status(ETHPHY_SetEeeState(Number(phy), state));
}

inline Result<uint16_t> ReadMdio(PhyIndex phy, uint32_t reg)
{
    return Result<uint16_t>([=](uint16_t* out) { return ETHPHY_ReadMdio(Number(phy), reg, out); });
}

inline Status WriteMdio(PhyIndex phy, uint32_t reg, uint16_t value)
{
    return Status(ETHPHY_WriteMdio(Number(phy), reg, value));
}

inline Result<uint16_t> ReadMmd(PhyIndex phy, uint8_t mmd, uint16_t reg)
{
    return Result<uint16_t>(
        [=](uint16_t* out) { return ETHPHY_ReadMmd(Number(phy), mmd, reg, out); });
}

inline Status WriteMmd(PhyIndex phy, uint8_t mmd, uint16_t reg, uint16_t value)
{
    return Status(ETHPHY_WriteMmd(Number(phy), mmd, reg, value));
}

inline Result<uint16_t> ReadChipReg(PhyIndex phy, uint32_t reg)
{
    return Result<uint16_t>(
        [=](uint16_t* out) { return ETHPHY_ReadChipReg(Number(phy), reg, out); });
}

inline Status WriteChipReg(PhyIndex phy, uint32_t reg, uint16_t value)
{
    return Status(ETHPHY_WriteChipReg(Number(phy), reg, value));
}

inline Status SetSpeedDuplexMode(PhyIndex phy, ForcedSpeed speed, Duplex duplex)
{
    return Status(ETHPHY_PhyZ88_SetSpeedDuplexMode(Number(phy), Number(speed),
                                                   duplex == Duplex::kFull ? 1 : 0));
}

}  // namespace orblink::phy

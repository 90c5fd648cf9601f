#include "hals/phy/mac.h"

#include "hals/phy/link.h"
#include "hals/phy/phy.h"

namespace ieee8023 {
namespace {

constexpr uint32_t kTold = 0x80000000;

// The gigabit MACs are behind GMII, RGMII, SGMII and HSGMII.
bool IsOfGmac(uint32_t portIfaceMode)
{
    return portIfaceMode >= OB_IFACE_GMII && portIfaceMode <= OB_IFACE_HSGMII;
}

}  // namespace

bool TellMac(Phy& phy)
{
    LinkState link;
    if (!IsOfGmac(EPHAL_GetPortIfaceMode(phy.Index())))
        return true;
    if (!ReadLink(phy, link))
        return false;
    int duplex = link.fullDuplex ? 1 : 0;
    uint32_t news = kTold | static_cast<uint32_t>(link.speed) << 1 | static_cast<uint32_t>(duplex);
    if (!link.up || link.speed == OB_SPEED_UNKNOWN || news == phy.Kept().toldMac)
        return true;
    if (EPHAL_ReconfigureGmacPhy(phy.Index(), 1, link.speed, duplex) != 0)
        return false;
    phy.Kept().toldMac = news;
    return true;
}

}  // namespace ieee8023

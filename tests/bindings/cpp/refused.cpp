// A program that compiles, and lines (//!) with each of which it must not.
#include <array>

#include "orblink.hpp"

using namespace orblink;

bool Right(SwitchIndex device, PortIndex port, PhyIndex phy)
{
    std::array<MacToVlanEntry, OB_MAC_VLAN_ENTRIES> table{};
    std::array<MacToVlanEntry, 8> part{};
    const auto link = GetPortLink(device, port);
    //! SetLanPortVlan(device, port, 100);
    //! GetPortLink(device, port);
    //! IsBatteryMode();
    //! phy::Poll(phy);
    //! if (!SetLanPortVlan(port, device, 100)) return false;
    //! if (!SetLanPortVlan(0, 2, 100)) return false;
    //! if (!phy::Poll(device)) return false;
    //! if (!SetPhyPortSpeedDuplex(device, port, 100, Duplex::kFull)) return false;
    //! if (!SetPhyPortSpeedDuplex(device, port, Duplex::kFull, Speed::k1G)) return false;
    //! if (!GetMactoVlanTable(device, part)) return false;
    //! const uint32_t up = link.up;
    //! const int code = SetLanPortVlan(device, port, 100);
    if (!GetMactoVlanTable(device, table) || part[0].EnableMapping != 0)
        return false;
    return SetLanPortVlan(device, port, 100) && phy::Poll(phy) && link && link->IsUp();
}

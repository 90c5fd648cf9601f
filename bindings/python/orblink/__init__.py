"""OrbLink from Python, for test benches: switches, ports and PHYs over the C functions.

    import orblink
    for port in orblink.Switch(0).ports():
        print(port, port.link())

A call that fails raises orblink.Error; why is in the library's log lines. Every call takes the lock of
its family and gives it back before it returns. orblink.library.call reaches each C function by its
name, orblink.records has the structures."""

from .library import Error
from .phy import Phy, create_phy_region, initialise_phys, map_phy_region, phys
from .switch import (Port, Switch, configured_device, create_region, initialise, is_battery_mode,
                     mac_addresses, map_region, read_all, switches)
from .values import NO_GROUP, NO_PORT, BringUp, ForcedSpeed, GroupLock, Link, Speed

__all__ = ["NO_GROUP", "NO_PORT", "BringUp", "Error", "ForcedSpeed", "GroupLock", "Link", "Phy",
           "Port", "Speed", "Switch", "configured_device", "create_phy_region", "create_region",
           "initialise", "initialise_phys", "is_battery_mode", "mac_addresses", "map_phy_region",
           "map_region", "phys", "read_all", "switches"]

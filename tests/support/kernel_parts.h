// What the kernel of this machine has for a switch.
#pragma once

namespace support {

// A process may make network namespaces, and veth interfaces in them.
bool KernelHasCables();
// Bridges with VLAN filtering.
bool KernelFiltersVlans();
// The hook, classifiers and actions of traffic control that a switch's settings come to.
bool KernelHasFilters();

}  // namespace support

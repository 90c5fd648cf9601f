"""What the HAL libraries of this project lay out: counters and MAC entries."""

from ctypes import Structure, c_uint8, c_uint16, c_uint32, c_uint64

__all__ = ["EthphyIeee8023Counters", "VswitchMacEntry", "VswitchPortCounters"]


class VswitchPortCounters(Structure):
    """Of a VS08, since its last reset."""

    _fields_ = [(name, c_uint64) for name in (
        "etherStatsDropEvents", "etherStatsOctets", "etherStatsPkts", "etherStatsBroadcastPkts",
        "etherStatsMulticastPkts", "etherStatsCRCAlignErrors", "etherStatsUndersizePkts",
        "etherStatsOversizePkts", "etherStatsFragments", "etherStatsJabbers",
        "etherStatsCollisions", "etherStatsPkts64Octets", "etherStatsPkts65to127Octets",
        "etherStatsPkts128to255Octets", "etherStatsPkts256to511Octets",
        "etherStatsPkts512to1023Octets", "etherStatsPkts1024to1518Octets",
        "etherStatsPkts1519toMaxOctets", "aFramesTransmittedOK", "aOctetsTransmittedOK",
        "aMulticastFramesXmittedOK", "aBroadcastFramesXmittedOK", "aFramesReceivedOK",
        "aOctetsReceivedOK", "aPAUSEMACCtrlFramesTransmitted", "aPAUSEMACCtrlFramesReceived",
        "dot1dTpPortInDiscards", "dot1qTpVlanPortInDiscards", "dot1dBasePortMtuExceededDiscards",
        "ifOutDiscards")]


class VswitchMacEntry(Structure):
    """A MacEntry as the HAL of a VS08 fills it."""

    _fields_ = [("mac", c_uint8 * 6), ("vlanId", c_uint16), ("port", c_uint8),
                ("isStatic", c_uint8), ("slot", c_uint16), ("ageSeconds", c_uint32),
                ("reserved", c_uint32), ("contextWord", c_uint32)]


class EthphyIeee8023Counters(Structure):
    """Of a PHY with the standard registers."""

    _fields_ = [(name, c_uint32) for name in (
        "valid", "idleErrors", "highBer", "erroredBlocks", "eeeWakeErrors", "eeeState",
        "linkDrops", "masterFaults")]

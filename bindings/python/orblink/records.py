"""The library's structures, byte for byte as in its headers."""

from ctypes import (CFUNCTYPE, POINTER, Structure, c_char, c_int, c_int32, c_uint8,
                    c_uint16, c_uint32, c_void_p)

__all__ = ["EthphyBsd", "MacEntry", "MacEntryCallback", "MacTable", "MacToVlanEntry", "MsgBuilder",
           "MsgParser", "PhyBoardEntry", "PhyDeviceRecord", "PhyDeviceRegion", "PhyProvConfig",
           "PhyVendorRecord", "SwitchBoardEntry", "SwitchBsd", "SwitchCaps", "SwitchCapsPort",
           "SwitchDeviceRecord", "SwitchDeviceRegion", "SwitchLink", "SwitchProvConfig",
           "SwitchVendorRecord", "hwmbox_addr"]

MAX_DEVICES = 2
MAX_PORTS = 8
MAC_VLAN_ENTRIES = 32
MAC_TABLE_ENTRIES = 256


class SwitchBoardEntry(Structure):
    _fields_ = [("halLibName", c_char * 32), ("serdesId", c_uint32), ("enableGpioPin", c_uint32),
                ("resetGpioPin", c_uint32), ("internalPortPidx", c_uint32), ("mdioAddr", c_uint8),
                ("mdioBus", c_uint8), ("padding", c_uint8 * 2),
                ("internalPortIfaceSpeed", c_uint32), ("internalPortIfaceMode", c_uint32),
                ("preResetArg", c_uint32), ("reservedWord", c_uint32)]


class SwitchBsd(Structure):
    _fields_ = [("entry", SwitchBoardEntry * MAX_DEVICES), ("NumOfSwitchDevices", c_uint8),
                ("padding", c_uint8 * 3)]


class PhyBoardEntry(Structure):
    _fields_ = [("halLibName", c_char * 32), ("serdesId", c_uint32), ("enableGpioPin", c_uint32),
                ("resetGpioPin", c_uint32), ("mdioBus", c_uint8), ("mdioAddr", c_uint8),
                ("padding", c_uint8 * 2), ("portIfaceSpeed", c_uint32),
                ("portIfaceMode", c_uint32)]


class EthphyBsd(Structure):
    _fields_ = [("entry", PhyBoardEntry * MAX_DEVICES), ("numOfPhys", c_uint8),
                ("padding", c_uint8 * 3)]


class SwitchVendorRecord(Structure):
    _fields_ = [("vendorParamSize", c_uint32), ("vendorParams", c_uint8 * 32)]


class PhyVendorRecord(Structure):
    _fields_ = [("size", c_uint32), ("ulpModeEnabled", c_uint32)]


class SwitchCapsPort(Structure):
    _fields_ = [("portIfaceType", c_uint32), ("portHasPhy", c_uint32), ("halDefined", c_uint32)]


class SwitchCaps(Structure):
    _fields_ = [("capsFlags", c_uint8), ("halDefined", c_uint8 * 5), ("numOfPorts", c_uint8),
                ("halDefined2", c_uint8), ("port", SwitchCapsPort * MAX_PORTS)]


class MacToVlanEntry(Structure):
    _fields_ = [("VlanId", c_uint16), ("Mac", c_uint8 * 6), ("Mask", c_uint16),
                ("LogPort", c_uint8), ("padding", c_uint8), ("EnableMapping", c_uint32)]


class SwitchLink(Structure):
    _fields_ = [("linkSpeed", c_uint32), ("linkFullDuplex", c_uint32)]


class SwitchProvConfig(Structure):
    _fields_ = [("state", c_uint32), ("InProviderBridgedMode", c_uint32),
                ("groupId", c_int32 * MAX_PORTS), ("groupIdLock", c_uint32 * MAX_PORTS),
                ("lanPortVlan", c_uint16 * MAX_PORTS), ("lanPortPcp", c_uint8 * MAX_PORTS),
                ("egressTagging", c_uint32 * MAX_PORTS), ("link", SwitchLink * MAX_PORTS),
                ("enabledPorts", c_uint8), ("rgmiiDelayPorts", c_uint8), ("STagTpid", c_uint16),
                ("igmpSnooping", c_uint32), ("eeePorts", c_uint8),
                ("mirrorDst", c_uint8 * MAX_PORTS), ("ledMode", c_uint8), ("padding", c_uint8 * 2),
                ("macAging", c_uint32), ("mtuSize", c_uint16), ("padding2", c_uint8 * 2),
                ("macToVlanTable", MacToVlanEntry * MAC_VLAN_ENTRIES)]


class SwitchDeviceRecord(Structure):
    _fields_ = [("capsValid", c_uint8), ("padding", c_uint8 * 3), ("caps", SwitchCaps),
                ("configValid", c_uint8), ("padding2", c_uint8 * 3), ("config", SwitchProvConfig),
                ("bsdValid", c_uint8), ("padding3", c_uint8 * 3), ("board", SwitchBoardEntry),
                ("halIdx", c_uint8), ("padding4", c_uint8 * 3), ("rxResetAfterSerdes", c_uint32),
                ("serviceStatus", c_uint32), ("dvtPorts", c_uint8), ("padding5", c_uint8 * 3)]


class SwitchDeviceRegion(Structure):
    _fields_ = [("device", SwitchDeviceRecord * MAX_DEVICES),
                ("vendor", SwitchVendorRecord * MAX_DEVICES), ("NumOfSwitches", c_uint8),
                ("halPrivData", c_uint8 * 1900 * MAX_DEVICES), ("unused", c_uint8 * 3)]


class MacEntry(Structure):
    _fields_ = [("data", c_uint8 * 20), ("contextWord", c_uint32)]


class MacTable(Structure):
    _fields_ = [("entry", MacEntry * MAC_TABLE_ENTRIES), ("count", c_uint32),
                ("overflow", c_uint32)]


class PhyProvConfig(Structure):
    _fields_ = [("hwState", c_uint32), ("word8", c_uint32), ("word12", c_uint32),
                ("word16", c_uint32), ("adminState", c_uint32), ("word24", c_uint32),
                ("word28", c_uint32)]


class PhyDeviceRecord(Structure):
    _fields_ = [("word0", c_uint32), ("config", PhyProvConfig), ("bsdValid", c_uint8),
                ("padding", c_uint8 * 3), ("board", PhyBoardEntry), ("capsValid", c_uint8),
                ("padding2", c_uint8 * 3), ("caps", c_uint32), ("halIdx", c_uint8),
                ("postResetMark", c_uint8), ("padding3", c_uint8 * 2)]


class PhyDeviceRegion(Structure):
    _fields_ = [("phy", PhyDeviceRecord * MAX_DEVICES), ("vendor", PhyVendorRecord * MAX_DEVICES),
                ("halPrivData", c_uint8 * 552 * MAX_DEVICES), ("NumOfPhys", c_uint8),
                ("unused", c_uint8 * 3)]


class hwmbox_addr(Structure):
    _pack_ = 1
    _fields_ = [("family", c_uint16), ("mid", c_uint8), ("appid", c_uint16), ("zero", c_uint8 * 11)]


MacEntryCallback = CFUNCTYPE(c_uint32, POINTER(MacEntry))
MsgBuilder = CFUNCTYPE(c_int, c_void_p, POINTER(c_uint32))
MsgParser = CFUNCTYPE(c_int, c_void_p, c_uint32, c_void_p, c_int)

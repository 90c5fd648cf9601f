"""Switches and their ports. Each method says which C function it is; that one's manual holds."""

import ctypes
from ctypes import byref, c_uint8, c_uint16, c_uint32
from typing import Callable, Sequence, Type, TypeVar

from . import records
from .library import Error, call, do
from .values import BringUp, GroupLock, Link, Speed, mac_bytes, mac_text

__all__ = ["Port", "Switch", "create_region", "initialise", "is_battery_mode", "mac_addresses",
           "map_region", "read_all", "switches", "configured_device"]

Record = TypeVar("Record", bound=ctypes.Structure)


def initialise(defaults: bool = True) -> None:
    """ORBLINK_InitOnce; with the capabilities and the default configuration."""
    do("ORBLINK_InitOnce", 1 if defaults else 0)


def switches() -> "list[Switch]":
    """ORBLINK_GetNumOfSwitches, an object for each."""
    count = c_uint8()
    do("ORBLINK_GetNumOfSwitches", byref(count))
    return [Switch(index) for index in range(count.value)]


def read_all() -> records.SwitchDeviceRegion:
    """ORBLINK_GetSwitchDevices."""
    region = records.SwitchDeviceRegion()
    do("ORBLINK_GetSwitchDevices", byref(region))
    return region


def is_battery_mode() -> bool:
    """ORBLINK_isBatteryMode."""
    return bool(call("ORBLINK_isBatteryMode"))


def mac_addresses() -> list[str]:
    """ORBLINK_GetMacAddresses: known to the process that initialised the family."""
    addresses = [(c_uint8 * 6)() for _ in range(5)]
    do("ORBLINK_GetMacAddresses", *addresses)
    return [mac_text(bytes(address)) for address in addresses]


def create_region() -> None:
    """OBOS_CreateSwitchDevices."""
    do("OBOS_CreateSwitchDevices")


def map_region() -> records.SwitchDeviceRegion:
    """OBOS_MapSwitchDevices: what other processes write shows at once."""
    address = call("OBOS_MapSwitchDevices")
    if address is None:
        raise Error("OBOS_MapSwitchDevices")
    return records.SwitchDeviceRegion.from_address(address)


def configured_device(which: int) -> records.SwitchBoardEntry | None:
    """OBOS_GetConfiguredDevice."""
    entry, found = records.SwitchBoardEntry(), c_uint32()
    do("OBOS_GetConfiguredDevice", which, byref(entry), byref(found))
    return entry if found.value else None


class Switch:
    """One switch."""

    def __init__(self, index: int) -> None:
        self.index = index

    def __repr__(self) -> str:
        return f"Switch({self.index})"

    def port(self, index: int) -> "Port":
        return Port(self, index)

    def ports(self) -> "list[Port]":
        return [self.port(index) for index in range(self.caps().numOfPorts)]

    def _copied(self, function: str, kind: Type[Record]) -> Record:
        record = kind()
        do(function, self.index, byref(record))
        return record

    def caps(self) -> records.SwitchCaps:
        """ORBLINK_GetSwitchCaps."""
        return self._copied("ORBLINK_GetSwitchCaps", records.SwitchCaps)

    def config(self) -> records.SwitchProvConfig:
        """ORBLINK_GetSwitchProvConfig."""
        return self._copied("ORBLINK_GetSwitchProvConfig", records.SwitchProvConfig)

    def is_isolated(self) -> bool:
        """ORBLINK_GetIsolationModeEnabled."""
        on = c_uint32()
        do("ORBLINK_GetIsolationModeEnabled", self.index, byref(on))
        return on.value != 0

    def up(self, how: BringUp = BringUp.STORED, vendor: bytes | None = None) -> None:
        """ORBLINK_ResetDisable; takes seconds where the board has a reset pin."""
        raw = None if vendor is None else (c_uint8 * len(vendor))(*vendor)
        do("ORBLINK_ResetDisable", self.index, int(how), raw, len(vendor or b""))

    def down(self) -> None:
        """ORBLINK_ResetEnable."""
        do("ORBLINK_ResetEnable", self.index)

    def service(self) -> int:
        """ORBLINK_IsOrbLinkServiceOn."""
        return int(call("ORBLINK_IsOrbLinkServiceOn", self.index))

    def set_service(self, value: int) -> None:
        """ORBLINK_SetOrbLinkServiceStatus."""
        do("ORBLINK_SetOrbLinkServiceStatus", self.index, value)

    def set_provider_bridging(self, tpid: int | None) -> None:
        """ORBLINK_EnableProviderBridgedMode, ORBLINK_DisableProviderBridgedMode for None."""
        if tpid is None:
            do("ORBLINK_DisableProviderBridgedMode", self.index)
        else:
            do("ORBLINK_EnableProviderBridgedMode", self.index, tpid)

    def mac_vlan_table(self) -> list[records.MacToVlanEntry]:
        """ORBLINK_GetMactoVlanTable, the entries in use."""
        table = (records.MacToVlanEntry * records.MAC_VLAN_ENTRIES)()
        do("ORBLINK_GetMactoVlanTable", self.index, byref(table))
        return [entry for entry in table if entry.EnableMapping]

    def set_snooping(self, on: bool) -> None:
        """ORBLINK_EnableIgmpSnooping, ORBLINK_DisableIgmpSnooping."""
        do("ORBLINK_EnableIgmpSnooping" if on else "ORBLINK_DisableIgmpSnooping", self.index)

    def mac_table(self, kind: Type[Record]) -> tuple[list[Record], bool]:
        """ORBLINK_GetMacTable: entries as the HAL lays them out, and whether there were more."""
        table = self._copied("ORBLINK_GetMacTable", records.MacTable)
        count = min(table.count, records.MAC_TABLE_ENTRIES)
        entries = [kind.from_buffer_copy(table.entry[index]) for index in range(count)]
        return entries, table.overflow != 0

    def for_each_mac_entry(self, visit: Callable[[records.MacEntry], bool]) -> None:
        """ORBLINK_ForEachMacEntry: until visit says False. An exception of visit ends the walk and
        is raised when the lock is free again."""
        raised: list[BaseException] = []

        def visited(entry: "ctypes._Pointer[records.MacEntry]") -> int:
            try:
                return 1 if visit(records.MacEntry.from_buffer_copy(entry.contents)) else 0
            except BaseException as error:  # must not unwind through C
                raised.append(error)
                return 0

        result = call("ORBLINK_ForEachMacEntry", self.index, records.MacEntryCallback(visited))
        if raised:
            raise raised[0]
        if result != 0:
            raise Error("ORBLINK_ForEachMacEntry")

    def set_aging(self, step: int) -> None:
        """ORBLINK_SetMacAging."""
        do("ORBLINK_SetMacAging", self.index, step)

    def set_mtu(self, octets: int) -> None:
        """ORBLINK_SetMtuSize."""
        do("ORBLINK_SetMtuSize", self.index, octets)

    def led_mode(self) -> int:
        """ORBLINK_GetLEDConfig."""
        mode = c_uint8()
        do("ORBLINK_GetLEDConfig", self.index, byref(mode))
        return mode.value

    def set_led_mode(self, mode: int) -> None:
        """ORBLINK_SetLEDConfig."""
        do("ORBLINK_SetLEDConfig", self.index, mode)

    def read_port_register(self, port: int, register: int) -> int:
        """ORBLINK_ReadPortReg, of a HAL whose values have 16 bits."""
        value = c_uint16()
        do("ORBLINK_ReadPortReg", self.index, port, register, byref(value))
        return value.value

    def write_port_register(self, port: int, register: int, value: int) -> None:
        """ORBLINK_WritePortReg."""
        do("ORBLINK_WritePortReg", self.index, port, register, value)

    def read_register(self, address: int) -> int:
        """ORBLINK_SmiRead, of a HAL whose values have 16 bits."""
        value = c_uint16()
        do("ORBLINK_SmiRead", self.index, address, byref(value))
        return value.value

    def write_register(self, address: int, value: int) -> None:
        """ORBLINK_SmiWrite."""
        do("ORBLINK_SmiWrite", self.index, address, value)

    def command(self, number: int, parameter: ctypes.Structure | ctypes.Array[c_uint8]) -> None:
        """ORBLINK_VendorSpecificIoctl."""
        do("ORBLINK_VendorSpecificIoctl", self.index, number, byref(parameter))

    def print_state(self) -> None:
        """ORBLINK_PrintMachineState."""
        do("ORBLINK_PrintMachineState", self.index)

    def set_queue_wred(self, queue: int, limits: Sequence[int]) -> None:
        """ORBLINK_SetQWred: six limits."""
        do("ORBLINK_SetQWred", self.index, queue, *limits)

    def set_global_wred(self, a: int, b: int, c: int, limits: Sequence[int]) -> None:
        """ORBLINK_SetGlobWred: six limits."""
        do("ORBLINK_SetGlobWred", self.index, a, b, c, *limits)

    def reserve_queue(self, queue: int, buffers: int) -> None:
        """ORBLINK_SetQRsrv."""
        do("ORBLINK_SetQRsrv", self.index, queue, buffers)


class Port:
    """One port of a switch."""

    def __init__(self, switch: Switch, index: int) -> None:
        self.switch = switch
        self.index = index

    def __repr__(self) -> str:
        return f"Port({self.switch.index}, {self.index})"

    def _do(self, function: str, *arguments: int) -> None:
        do(function, self.switch.index, self.index, *arguments)

    def counters(self, layout: Type[Record]) -> Record:
        """ORBLINK_GetPortCounters, as the HAL lays them out (orblink.layouts)."""
        counters = layout()
        do("ORBLINK_GetPortCounters", self.switch.index, self.index, byref(counters))
        return counters

    def reset_counters(self) -> None:
        """ORBLINK_ResetPortCounters."""
        self._do("ORBLINK_ResetPortCounters")

    def link(self) -> Link:
        """ORBLINK_GetPortLink."""
        up, speed, full = c_uint32(), c_uint32(), c_uint32()
        do("ORBLINK_GetPortLink", self.switch.index, self.index, byref(up), byref(speed),
           byref(full))
        return Link.of(up.value, speed.value, full.value)

    def set_speed(self, speed: Speed, full_duplex: bool = True) -> None:
        """ORBLINK_SetPhyPortSpeedDuplex."""
        self._do("ORBLINK_SetPhyPortSpeedDuplex", int(speed), int(full_duplex))

    def enable(self) -> None:
        """ORBLINK_EnablePort."""
        self._do("ORBLINK_EnablePort")

    def disable(self) -> None:
        """ORBLINK_DisablePort."""
        self._do("ORBLINK_DisablePort")

    def _number(self, function: str) -> int:
        value = c_uint32()
        do(function, self.switch.index, self.index, byref(value))
        return value.value

    def is_enabled(self) -> bool:
        """ORBLINK_GetPortEnable."""
        return self._number("ORBLINK_GetPortEnable") != 0

    def set_rgmii_delay(self, on: bool) -> None:
        """ORBLINK_EnableRgmiiDelay, ORBLINK_DisableRgmiiDelay."""
        self._do("ORBLINK_EnableRgmiiDelay" if on else "ORBLINK_DisableRgmiiDelay")

    def eee(self) -> int:
        """ORBLINK_GetEeePortState."""
        return self._number("ORBLINK_GetEeePortState")

    def set_eee(self, on: bool) -> None:
        """ORBLINK_EnablePhyPortEee, ORBLINK_DisablePhyPortEee."""
        self._do("ORBLINK_EnablePhyPortEee" if on else "ORBLINK_DisablePhyPortEee")

    def set_mirror(self, to: int) -> None:
        """ORBLINK_SetPortMirror; orblink.NO_PORT ends it."""
        self._do("ORBLINK_SetPortMirror", to)

    def test_mode(self) -> int:
        """ORBLINK_GetPortIEEETestMode, of a HAL whose modes have 8 bits."""
        mode = c_uint8()
        do("ORBLINK_GetPortIEEETestMode", self.switch.index, self.index, byref(mode))
        return mode.value

    def set_test_mode(self, mode: int) -> None:
        """ORBLINK_SetPortIEEETestMode."""
        self._do("ORBLINK_SetPortIEEETestMode", mode)

    def start_dvt(self, test: int) -> None:
        """ORBLINK_EnablePhyPortDvt."""
        self._do("ORBLINK_EnablePhyPortDvt", test)

    def end_dvt(self) -> None:
        """ORBLINK_DisablePhyPortDvt."""
        self._do("ORBLINK_DisablePhyPortDvt")

    def set_flow_control(self, xoff: int, xon: int) -> None:
        """ORBLINK_SetPortFc."""
        self._do("ORBLINK_SetPortFc", xoff, xon)

    def set_vlan(self, vid: int) -> None:
        """ORBLINK_SetLanPortVlan."""
        self._do("ORBLINK_SetLanPortVlan", vid)

    def set_pcp(self, pcp: int) -> None:
        """ORBLINK_SetLanPortPcp."""
        self._do("ORBLINK_SetLanPortPcp", pcp)

    def set_tagging(self, tagging: int) -> None:
        """ORBLINK_SetLanPortEgressTagging."""
        self._do("ORBLINK_SetLanPortEgressTagging", tagging)

    def set_group(self, group: int, lock: GroupLock = GroupLock.RESPECT) -> None:
        """ORBLINK_SetLanPortGroupId; orblink.NO_GROUP for none."""
        self._do("ORBLINK_SetLanPortGroupId", group, int(lock))

    def map_station(self, address: str, vid: int, mask: int = 0xFFF, add: bool = True) -> None:
        """ORBLINK_MapMactoVlan."""
        mac = (c_uint8 * 6)(*mac_bytes(address))
        do("ORBLINK_MapMactoVlan", self.switch.index, self.index, mac, mask, vid, int(add))

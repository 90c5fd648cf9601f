"""Standalone PHYs. Each method says which C function it is; that one's manual holds."""

import ctypes
from ctypes import byref, c_uint8, c_uint16, c_uint32, c_void_p
from typing import Any, Type, TypeVar

from . import records
from .library import Error, call, do
from .values import ForcedSpeed, Link

__all__ = ["Phy", "create_phy_region", "initialise_phys", "map_phy_region", "phys"]

Record = TypeVar("Record", bound=ctypes.Structure)


def initialise_phys() -> None:
    """ETHPHY_InitOnce."""
    do("ETHPHY_InitOnce")


def phys() -> "list[Phy]":
    """ETHPHY_GetNumOfPhys, an object for each."""
    count = c_uint8()
    do("ETHPHY_GetNumOfPhys", byref(count))
    return [Phy(index) for index in range(count.value)]


def create_phy_region() -> None:
    """EP_CreatePhyDevices."""
    do("EP_CreatePhyDevices")


def map_phy_region() -> records.PhyDeviceRegion:
    """EP_MapEthphyDevices: what other processes write shows at once."""
    address = call("EP_MapEthphyDevices")
    if address is None:
        raise Error("EP_MapEthphyDevices")
    return records.PhyDeviceRegion.from_address(address)


class Phy:
    """One PHY."""

    def __init__(self, index: int) -> None:
        self.index = index

    def __repr__(self) -> str:
        return f"Phy({self.index})"

    def _do(self, function: str, *arguments: int) -> None:
        do(function, self.index, *arguments)

    def _copied(self, function: str, kind: Type[Record]) -> Record:
        record = kind()
        do(function, self.index, byref(record))
        return record

    def _word(self, function: str, *arguments: Any) -> int:
        value = c_uint16()
        do(function, self.index, *arguments, byref(value))
        return value.value

    def up(self, defaults: bool = False) -> None:
        """ETHPHY_ResetDisable."""
        self._do("ETHPHY_ResetDisable", int(defaults))

    def down(self) -> None:
        """ETHPHY_ResetEnable."""
        self._do("ETHPHY_ResetEnable")

    def reset_lane(self) -> None:
        """ETHPHY_ResetSgmii."""
        self._do("ETHPHY_ResetSgmii")

    def link(self) -> Link:
        """ETHPHY_GetLink."""
        up, speed, full = c_uint32(), c_uint32(), c_uint32()
        do("ETHPHY_GetLink", self.index, byref(up), byref(speed), byref(full))
        return Link.of(up.value, speed.value, full.value)

    def enable(self, on: bool = True) -> None:
        """ETHPHY_SetAdminState."""
        self._do("ETHPHY_SetAdminState", int(on))

    def config(self) -> records.PhyProvConfig:
        """ETHPHY_GetProvisionedConfig."""
        return self._copied("ETHPHY_GetProvisionedConfig", records.PhyProvConfig)

    def board(self) -> records.PhyBoardEntry:
        """ETHPHY_GetBsdConfig."""
        return self._copied("ETHPHY_GetBsdConfig", records.PhyBoardEntry)

    def record(self) -> records.PhyDeviceRecord:
        """ETHPHY_GetPhyData: what other processes write shows at once."""
        place = c_void_p()
        do("ETHPHY_GetPhyData", self.index, byref(place))
        return records.PhyDeviceRecord.from_address(place.value or 0)

    def caps(self) -> int:
        """ETHPHY_GetCaps."""
        caps = c_uint32()
        do("ETHPHY_GetCaps", self.index, byref(caps))
        return caps.value

    def poll(self) -> None:
        """ETHPHY_Poll."""
        self._do("ETHPHY_Poll")

    def counters(self, layout: Type[Record]) -> Record:
        """ETHPHY_GetCounters, as the HAL lays them out (orblink.layouts)."""
        return self._copied("ETHPHY_GetCounters", layout)

    def reset_counters(self) -> None:
        """ETHPHY_ResetCounters."""
        self._do("ETHPHY_ResetCounters")

    def set_eee(self, state: int) -> None:
        """ETHPHY_SetEeeState."""
        self._do("ETHPHY_SetEeeState", state)

    def read(self, register: int) -> int:
        """ETHPHY_ReadMdio."""
        return self._word("ETHPHY_ReadMdio", register)

    def write(self, register: int, value: int) -> None:
        """ETHPHY_WriteMdio."""
        self._do("ETHPHY_WriteMdio", register, value)

    def read_mmd(self, mmd: int, register: int) -> int:
        """ETHPHY_ReadMmd."""
        return self._word("ETHPHY_ReadMmd", mmd, register)

    def write_mmd(self, mmd: int, register: int, value: int) -> None:
        """ETHPHY_WriteMmd."""
        self._do("ETHPHY_WriteMmd", mmd, register, value)

    def read_chip(self, register: int) -> int:
        """ETHPHY_ReadChipReg."""
        return self._word("ETHPHY_ReadChipReg", register)

    def write_chip(self, register: int, value: int) -> None:
        """ETHPHY_WriteChipReg."""
        self._do("ETHPHY_WriteChipReg", register, value)

    def force_speed(self, speed: ForcedSpeed, full_duplex: bool = True) -> None:
        """ETHPHY_PhyZ88_SetSpeedDuplexMode."""
        self._do("ETHPHY_PhyZ88_SetSpeedDuplexMode", int(speed), int(full_duplex))

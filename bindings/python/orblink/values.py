"""Words for the values of the library."""

from dataclasses import dataclass
from enum import IntEnum

__all__ = ["BringUp", "ForcedSpeed", "GroupLock", "Link", "MAC_ADDRESS_SIZE", "NO_GROUP", "NO_PORT",
           "Speed", "mac_bytes", "mac_text"]

NO_PORT = 0xFF
NO_GROUP = 0xFFFFFFFF
MAC_ADDRESS_SIZE = 6


class Speed(IntEnum):
    UNKNOWN = 0
    AUTONEG = 1
    S10M = 2
    S100M = 3
    S1G = 4
    S2G5 = 5
    S10G = 6


class BringUp(IntEnum):
    """Which configuration a switch comes up with."""

    STORED = 0
    DEFAULTS = 1
    STORED_UNCHECKED = 2


class GroupLock(IntEnum):
    """What happens to the lock of a port's group."""

    RESPECT = 0
    LOCK = 1
    UNLOCK = 2


class ForcedSpeed(IntEnum):
    """Of Phy.force_speed, which numbers speeds in its own way."""

    S10M = 1
    S100M = 2
    S1G = 3
    S2G5 = 4


@dataclass(frozen=True)
class Link:
    up: bool
    speed: Speed
    full_duplex: bool

    @classmethod
    def of(cls, up: int, speed: int, full_duplex: int) -> "Link":
        known = speed if speed in Speed.__members__.values() else Speed.UNKNOWN
        return cls(up != 0, Speed(known), full_duplex != 0)


def mac_bytes(text: str) -> bytes:
    """02:00:00:00:00:01 as six bytes."""
    address = bytes.fromhex(text.replace(":", ""))
    if len(address) != MAC_ADDRESS_SIZE:
        raise ValueError(f"{text} is no MAC address")
    return address


def mac_text(address: bytes) -> str:
    return address.hex(":")

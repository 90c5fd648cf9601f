/*
 * Formats that the VS08 HAL defines: what ORBLINK_GetPortCounters fills, what the MAC walk hands
 * out, and how the values that the library passes through are meant.
 *
 *   SetQWred
 *       queue 0 to 63 (8 x port + queue of the port); then minimum and maximum of green, yellow and
 *       red, 0 to 4095 buffers of 256 octets, minimum not above maximum
 *   SetGlobWred
 *       on (0 or 1), weight 0 to 15, greatest discard probability 0 to 100 percent; then the six
 *       thresholds as above, of all buffers together
 *   SetQRsrv
 *       queue 0 to 63, reserved buffers 0 to 63
 *   SetPortFc
 *       port, XOFF and XON threshold, 0 to 4095 buffers, XON not above XOFF; 0, 0 = off
 *   ReadPortReg, WritePortReg
 *       port 0 to 7, offset 0x00 to 0xFF within the port's registers; value: uint16_t
 *   SmiRead, SmiWrite
 *       0x00 to 0x1F direct registers, from 0x100 on internal addresses; value: uint16_t
 *   GetPortTestMode, SetPortTestMode
 *       IEEE 802.3 clause 40.6.1.1.2 test mode 0 to 4, 0 = normal operation; uint8_t
 *   SetPhyPortDvt
 *       1 loopback at the MAC side, 2 loopback at the line side, 3 packet generator,
 *       4 pseudo-random bit stream, 0 = none
 *   SetMacAging
 *       1 = 15 s, 2 = 75 s, 3 = 300 s, 4 = 1200 s, 5 = 4800 s
 *   SetMtuSize
 *       64 to 10240 octets, the longest frame with its frame check sequence
 *   SetLanPortGroupId
 *       0 to 255, or 0xFFFFFFFF for no group
 *   SetLanPortEgressTagging
 *       0 untagged, 1 tagged
 *   SetLEDConfig
 *       0 off, 1 link, 2 activity, 3 link and activity, 4 speed, 5 duplex and collision, 6 all on,
 *       7 all blinking
 *   GetEeePortState
 *       1 = EEE is switched on, 0 = off or a port without a PHY
 *   pre-reset argument of the board data
 *       bit 0 inverts the receive pair of the internal port, bit 1 the transmit pair; the other
 *       bits are the board's
 *   vendor parameters
 *       first u32 non-zero = LAN ports without a group reach the internal port only; without
 *       parameters the switch keeps what it was last given
 *
 * A value out of its range makes the slot fail.
 */
#ifndef ORBLINK_HALS_VSWITCH_VSWITCH_HAL_H
#define ORBLINK_HALS_VSWITCH_VSWITCH_HAL_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Counters of one port since its last ResetPortCounters or reset. Names of RFC 2819 (received),
 * IEEE 802.3 clause 30, RFC 4188, RFC 4363 and RFC 2863. */
struct VswitchPortCounters {
    uint64_t etherStatsDropEvents;     /* received, lost for want of a buffer */
    uint64_t etherStatsOctets;         /* received, bad frames and their FCS included */
    uint64_t etherStatsPkts;           /* received, bad ones included */
    uint64_t etherStatsBroadcastPkts;  /* good, received */
    uint64_t etherStatsMulticastPkts;  /* good, received, without broadcast */
    uint64_t etherStatsCRCAlignErrors; /* valid length, bad FCS */
    uint64_t etherStatsUndersizePkts;  /* below 64 octets, good FCS */
    uint64_t etherStatsOversizePkts;   /* above the MTU, good FCS */
    uint64_t etherStatsFragments;      /* below 64 octets, bad FCS */
    uint64_t etherStatsJabbers;        /* above the MTU, bad FCS */
    uint64_t etherStatsCollisions;     /* half duplex only */
    uint64_t etherStatsPkts64Octets;   /* received by length, bad ones included */
    uint64_t etherStatsPkts65to127Octets;
    uint64_t etherStatsPkts128to255Octets;
    uint64_t etherStatsPkts256to511Octets;
    uint64_t etherStatsPkts512to1023Octets;
    uint64_t etherStatsPkts1024to1518Octets;
    uint64_t etherStatsPkts1519toMaxOctets;
    uint64_t aFramesTransmittedOK;
    uint64_t aOctetsTransmittedOK;      /* of data and pad */
    uint64_t aMulticastFramesXmittedOK; /* without broadcast */
    uint64_t aBroadcastFramesXmittedOK;
    uint64_t aFramesReceivedOK;
    uint64_t aOctetsReceivedOK; /* of data and pad */
    uint64_t aPAUSEMACCtrlFramesTransmitted;
    uint64_t aPAUSEMACCtrlFramesReceived;
    uint64_t dot1dTpPortInDiscards;     /* good, received, discarded by forwarding */
    uint64_t dot1qTpVlanPortInDiscards; /* of those, because of the VLAN */
    uint64_t dot1dBasePortMtuExceededDiscards;
    uint64_t ifOutDiscards; /* discarded at the transmit queue */
};

static_assert(sizeof(struct VswitchPortCounters) == 240, "counters");

/* A struct MacEntry of the library as this HAL fills it. */
struct VswitchMacEntry {
    uint8_t mac[6];
    uint16_t vlanId;      /* 1 to 4094 */
    uint8_t port;         /* 0 to 7 */
    uint8_t isStatic;     /* 1 = set by a host, does not age */
    uint16_t slot;        /* place in the chip's table; rises during a walk */
    uint32_t ageSeconds;  /* since the address was last seen; 0 for a static entry */
    uint32_t reserved;    /* 0 */
    uint32_t contextWord; /* low 32 bits of the walk's context */
};

static_assert(sizeof(struct VswitchMacEntry) == 24, "MAC entry");
static_assert(offsetof(struct VswitchMacEntry, contextWord) == 20, "MAC entry");

/* The bytes of struct SwitchCaps that the HAL defines: 1 to 5, and the third word of each port. */
struct VswitchCapsBytes {
    uint8_t chipId[2];    /* CHIP_ID, low byte first */
    uint8_t chipRev[2];   /* CHIP_REV, low byte first */
    uint8_t internalPort; /* strapped internal port */
};

static_assert(sizeof(struct VswitchCapsBytes) == 5, "capability bytes");

#define VSWITCH_PORT_INTERNAL 1u /* third word of a port: the internal port; other ports have 0 */

#ifdef __cplusplus
}
#endif

#endif

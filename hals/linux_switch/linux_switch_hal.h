/*
 * What the HAL of the switches that Linux drives defines: what ORBLINK_GetPortCounters fills, what
 * the MAC walk hands out, and how the values that the library passes through are meant. The manual
 * is docs/linux-switch.md.
 *
 *   GetPortCounters
 *       struct LinuxSwitchCounters; LINUX_SWITCH_UNKNOWN where neither driver nor kernel counts
 *   SetMacAging
 *       1 = 15 s, 2 = 75 s, 3 = 300 s, 4 = 1200 s, 5 = 4800 s
 *   SetMtuSize
 *       86 to 10240 octets, the longest frame with its frame check sequence, without a tag
 *   SetLanPortGroupId
 *       any number, or 0xFFFFFFFF for no group
 *   SetLanPortEgressTagging
 *       0 untagged, anything else tagged
 *   EnableProviderBridgedMode
 *       TPID 0x88A8, or 0x8100 for customer tags
 *   VendorSpecificIoctl
 *       the LINUX_SWITCH_IOCTL_ commands, and the two that the library sends, which do nothing
 *   vendor parameters
 *       first u32 non-zero = LAN ports without a group reach the CPU port only; without parameters
 *       the switch keeps what it was last given
 *
 * A value out of its range makes the slot fail, and so does a slot that the kernel has nothing for:
 * registers, LEDs, queues, RGMII delay, test modes, clearing of counters.
 */
#ifndef ORBLINK_HALS_LINUX_SWITCH_LINUX_SWITCH_HAL_H
#define ORBLINK_HALS_LINUX_SWITCH_LINUX_SWITCH_HAL_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define LINUX_SWITCH_UNKNOWN UINT64_MAX

/* Forgets all learnt addresses; no parameter. */
#define LINUX_SWITCH_IOCTL_FLUSH_MAC 16
/* struct LinuxSwitchStaticMac. */
#define LINUX_SWITCH_IOCTL_ADD_STATIC_MAC 17
/* struct LinuxSwitchStaticMac, learnt or static; fails when there is no such entry. */
#define LINUX_SWITCH_IOCTL_DELETE_MAC 18

struct LinuxSwitchStaticMac {
    uint8_t mac[6];  /* a station's address */
    uint16_t vlanId; /* 1 to 4094 */
    uint8_t port;    /* 0 to 7 */
};

/* Counters of one port since its interface was made. Names of RFC 2819 (received), IEEE 802.3
 * clause 30, RFC 4188, RFC 4363 and RFC 2863. */
struct LinuxSwitchCounters {
    uint64_t etherStatsDropEvents;
    uint64_t etherStatsOctets;
    uint64_t etherStatsPkts;
    uint64_t etherStatsBroadcastPkts;
    uint64_t etherStatsMulticastPkts;
    uint64_t etherStatsCRCAlignErrors;
    uint64_t etherStatsUndersizePkts;
    uint64_t etherStatsOversizePkts;
    uint64_t etherStatsFragments;
    uint64_t etherStatsJabbers;
    uint64_t etherStatsCollisions;
    uint64_t etherStatsPktsByLength[7]; /* 64, to 127, 255, 511, 1023, 1518, longer */
    uint64_t aFramesTransmittedOK;
    uint64_t aOctetsTransmittedOK;
    uint64_t aMulticastFramesXmittedOK;
    uint64_t aBroadcastFramesXmittedOK;
    uint64_t aFramesReceivedOK;
    uint64_t aOctetsReceivedOK;
    uint64_t aPAUSEMACCtrlFramesTransmitted;
    uint64_t aPAUSEMACCtrlFramesReceived;
    uint64_t dot1dTpPortInDiscards;
    uint64_t dot1qTpVlanPortInDiscards;
    uint64_t dot1dBasePortMtuExceededDiscards;
    uint64_t ifOutDiscards;
};

static_assert(sizeof(struct LinuxSwitchCounters) == 240, "counters");

/* A struct MacEntry of the library as this HAL fills it. */
struct LinuxSwitchMacEntry {
    uint8_t mac[6];
    uint16_t vlanId;      /* 1 to 4094 */
    uint8_t port;         /* 0 to 7 */
    uint8_t isStatic;     /* 1 = set by somebody, does not age */
    uint16_t slot;        /* place in the walk, from 0 */
    uint32_t ageSeconds;  /* since the address was last seen; 0 for a static entry */
    uint32_t reserved;    /* 0 */
    uint32_t contextWord; /* low 32 bits of the walk's context */
};

static_assert(sizeof(struct LinuxSwitchMacEntry) == 24, "MAC entry");
static_assert(offsetof(struct LinuxSwitchMacEntry, contextWord) == 20, "MAC entry");

#ifdef __cplusplus
}
#endif

#endif

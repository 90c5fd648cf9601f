/*
 * What the general PHY HAL means by the values that the library passes through: libethphy_ieee8023,
 * for every twisted-pair PHY with the standard registers. "1.11" is clause-22 register 1, bit 11;
 * "7.32.7" is register 32 of MMD 7 (clause 45), bit 7. All numbers are those of IEEE 802.3.
 *
 * Link (ETHPHY_GetLink)
 *   Link           1.2, read twice, since it stays low after a drop until it is read; and 1.5 where
 *                  the PHY negotiates (1.3 and 0.12)
 *   Speed, Duplex  negotiated (6.0): the best of what both ends offer, in this order
 *                    10 Gb/s full    7.32.12 and 7.33.11
 *                    5 Gb/s full     7.32.8 and 7.33.6; reported as OB_SPEED_UNKNOWN, full duplex,
 *                                    because no code stands for it
 *                    2.5 Gb/s full   7.32.7 and 7.33.5
 *                    1 Gb/s          9.9 and 10.11 full, 9.8 and 10.10 half
 *                    100 Mb/s        4.8 and 5.8 full, 4.9 and 5.9 (T4) or 4.7 and 5.7 half
 *                    10 Mb/s         4.6 and 5.6 full, 4.5 and 5.5 half
 *                  a partner that does not negotiate: 5.7 or 5.5, half duplex
 *                  not negotiating: 0.6 and 0.13 the speed, 0.8 the duplex
 *                  no link, or nothing in common: OB_SPEED_UNKNOWN, half duplex
 *
 * A PHY that reads 0 in both identifiers (registers 2 and 3) is none: that is a bus held low.
 *
 * Administrative state: 0.11, power-down; enabling clears 0.10, isolate, as well.
 *
 * Reset (ETHPHY_ResetDisable): 0.15, which the PHY clears within 0.5 s; the call waits 0.6 s for
 * it. Default configuration: 4.9 to 4.5 from 1.15 to 1.11, 9.9 and 9.8 from 15.13
 * and 15.12, 7.32.12, 7.32.8 and 7.32.7 from 1.11.2, 1.21.1 and 1.21.0 (MMD 1), and negotiation on;
 * pause, master and EEE as the PHY resets them. Other configuration: 0, 4, 9, 7.32, 7.60 and 7.62
 * as they were before the PHY was disabled or ETHPHY_ResetEnable was called, whichever came first,
 * else as they are; never the test modes (9.15 to 9.13). Both clear 0.11 and 0.10 and restart the
 * negotiation (0.9). ETHPHY_ResetEnable keeps those registers and sets 0.11.
 *
 * EEE (ETHPHY_SetEeeState): non-zero offers all that 3.20 and, of a PHY with 2.5 or 5 Gb/s, 3.21
 * show in 7.60 and 7.62; 0 offers none. When that changes anything the negotiation is restarted,
 * and the link drops. Fails without touching the PHY when it has no EEE.
 *
 * Chip registers (ETHPHY_ReadChipReg, ETHPHY_WriteChipReg): 0 to 31 are the clause-22 registers;
 * EPHAL_MDIO_CLAUSE45 | MMD << 16 | register those of clause 45, by whichever way the PHY has.
 *
 * ETHPHY_Poll collects the counters, whose registers are narrow, and tells the SoC's MAC the speed
 * (an OB_Speed) and duplex (1 = full) of a link whose speed or duplex is not what the MAC was told
 * last, where the interface mode of the board data is GMII, RGMII, SGMII or HSGMII. Call it every
 * second or so. It fails, and tells again the next time, when the MAC's driver refuses.
 */
#ifndef ORBLINK_HALS_PHY_ETHPHY_IEEE8023_H
#define ORBLINK_HALS_PHY_ETHPHY_IEEE8023_H

#include <assert.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* What the slots return. The library makes -1 of most failures: ask the capabilities first. */
#define ETHPHY_IEEE8023_OK 0
#define ETHPHY_IEEE8023_FAILED (-1)        /* no answer, or a wrong argument */
#define ETHPHY_IEEE8023_NOT_SUPPORTED (-2) /* the PHY lacks it */

/* Capabilities (ETHPHY_GetCaps). A speed or an EEE bit needs the MMDs where it is read there. An
 * ability register that reads 0xFFFF means none. */
#define ETHPHY_IEEE8023_10_HALF 0x00000001U      /* 1.11 */
#define ETHPHY_IEEE8023_10_FULL 0x00000002U      /* 1.12 */
#define ETHPHY_IEEE8023_100_HALF 0x00000004U     /* 1.13 */
#define ETHPHY_IEEE8023_100_FULL 0x00000008U     /* 1.14 */
#define ETHPHY_IEEE8023_100_T4 0x00000010U       /* 1.15 */
#define ETHPHY_IEEE8023_1000_HALF 0x00000020U    /* 1.8 and 15.12 */
#define ETHPHY_IEEE8023_1000_FULL 0x00000040U    /* 1.8 and 15.13 */
#define ETHPHY_IEEE8023_2500_FULL 0x00000080U    /* MMD 1: 1.8.9, 1.11.14 and 1.21.0 */
#define ETHPHY_IEEE8023_5000_FULL 0x00000100U    /* MMD 1: 1.8.9, 1.11.14 and 1.21.1 */
#define ETHPHY_IEEE8023_10000_FULL 0x00000200U   /* MMD 1: 1.8.9 and 1.11.2 */
#define ETHPHY_IEEE8023_NEGOTIATES 0x00001000U   /* 1.3 */
#define ETHPHY_IEEE8023_MMD_FRAMES 0x00002000U   /* clause-45 frames lead to the MMDs */
#define ETHPHY_IEEE8023_MMD_INDIRECT 0x00004000U /* only clause-22 registers 13 and 14 do */
#define ETHPHY_IEEE8023_EEE_100 0x00010000U      /* 3.20.1 */
#define ETHPHY_IEEE8023_EEE_1000 0x00020000U     /* 3.20.2 */
#define ETHPHY_IEEE8023_EEE_10000 0x00040000U    /* 3.20.3 */
#define ETHPHY_IEEE8023_EEE_2500 0x00080000U     /* 3.21.0 */
#define ETHPHY_IEEE8023_EEE_5000 0x00100000U     /* 3.21.1 */

/* Which members of the counters hold something; the others are 0. */
#define ETHPHY_IEEE8023_HAS_IDLE_ERRORS 0x1U
#define ETHPHY_IEEE8023_HAS_BLOCK_ERRORS 0x2U
#define ETHPHY_IEEE8023_HAS_EEE 0x4U
#define ETHPHY_IEEE8023_HAS_LINK_DROPS 0x8U

/* EthphyIeee8023Counters.eeeState */
#define ETHPHY_IEEE8023_EEE_OFFERED 0x1U /* 7.60 or 7.62 */
#define ETHPHY_IEEE8023_EEE_NEGOTIATED \
    0x2U /* and 7.61 or 7.63 in the same bit, at the link's speed */
#define ETHPHY_IEEE8023_EEE_RX_SLEEPS 0x4U /* 3.1.8: low power received now */
#define ETHPHY_IEEE8023_EEE_TX_SLEEPS 0x8U /* 3.1.9: low power sent now */

/*
 * What ETHPHY_GetCounters fills, 32 bytes. The sums run since the last ETHPHY_ResetCounters, over
 * all processes, and wrap around. Each register stops at its greatest value between two calls that
 * collect. What ETHPHY_ReadMdio and ETHPHY_ReadMmd read of registers that reading clears is lost.
 */
struct EthphyIeee8023Counters {
    uint32_t valid;         /* ETHPHY_IEEE8023_HAS_ */
    uint32_t idleErrors;    /* 1000BASE-T: 10.7 to 10.0 */
    uint32_t highBer;       /* 2.5 Gb/s and up: 3.33.13 to 3.33.8 */
    uint32_t erroredBlocks; /* 2.5 Gb/s and up: 3.33.7 to 3.33.0 */
    uint32_t eeeWakeErrors; /* EEE: 3.22 */
    uint32_t eeeState;      /* EEE as it is now: ETHPHY_IEEE8023_EEE_ */
    uint32_t linkDrops;     /* 1.2: drops that were noticed, and not made by an operation; one for
                             * all between two looks */
    uint32_t masterFaults;  /* 1000BASE-T: 10.15, master and slave not agreed, seen */
};

static_assert(sizeof(struct EthphyIeee8023Counters) == 32, "format");
static_assert(offsetof(struct EthphyIeee8023Counters, linkDrops) == 24, "format");

#ifdef __cplusplus
}
#endif

#endif

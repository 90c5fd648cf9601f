/*
 * PHY control API: the records in shared memory and the operations on standalone Ethernet PHYs.
 *
 * Common to every ETHPHY_ function unless its comment says otherwise:
 *  - DevIdx is the PHY, 0 or 1, below the number of PHYs of the board.
 *  - Result: 0 for success, -1 for failure. A failure logs at severity 1 through the platform's log
 *    sink (module 26).
 *  - The call holds the PHY semaphore from its prolog to its end and releases it on every path. The
 *    semaphore has no undo: a process that dies inside a call leaves it held until reboot. A call
 *    must not be made from a HAL slot or from a signal handler: it would wait for itself.
 *  - The first call of a process attaches it: opens the semaphore, maps the region, loads the HAL
 *    libraries. Before ETHPHY_InitOnce has run on the machine every call fails.
 *  - Out pointers are the caller's and not kept; null fails unless said. They are untouched on
 *    failure unless said.
 *  - "Needs the PHY enabled": fails while the PHY is held in reset ("PHY is in disabled state").
 */
#ifndef ORBLINK_PHY_ETHPHY_API_H
#define ORBLINK_PHY_ETHPHY_API_H

#include <stdint.h>

#include "board/board_services.h"
#include "common/export.h"
#include "common/format.h"
#include "common/iface.h"

#ifdef __cplusplus
extern "C" {
#endif

#define EP_MAX_PHYS OB_MAX_DEVICES
#define EP_HAL_PRIV_DATA_SIZE 552

#define EP_NO_HAL_INDEX 255

/* PhyProvConfig.hwState; 0 = never brought up or reset. */
#define EP_HW_STATE_DISABLED 1
#define EP_HW_STATE_ENABLED 2

/* PhyDeviceRecord.postResetMark */
#define EP_POST_RESET_NONE 0
#define EP_POST_RESET_HELD 0xFF

/* The provisioned configuration of one PHY: seven words. Those without a meaning here are kept for
 * the programs that provision PHYs. */
struct PhyProvConfig {
    uint32_t hwState;
    uint32_t word8;
    uint32_t word12;     /* 1 by default */
    uint32_t word16;     /* 1 by default */
    uint32_t adminState; /* Enable value last given to ETHPHY_SetAdminState; 1 by default */
    uint32_t word24;
    uint32_t word28;
};

/* All that the library keeps of one PHY. */
struct PhyDeviceRecord {
    uint32_t word0;
    struct PhyProvConfig config;
    uint8_t bsdValid; /* 1 when the board data name this PHY */
    uint8_t padding[3];
    struct PhyBoardEntry board;
    uint8_t capsValid;
    uint8_t padding2[3];
    uint32_t caps;         /* filled by the HAL's GetCaps */
    uint8_t halIdx;        /* EP_NO_HAL_INDEX = none */
    uint8_t postResetMark; /* EP_POST_RESET_ */
    uint8_t padding3[2];
};

/* The shared region "/ethphy_driver". */
struct PhyDeviceRegion {
    struct PhyDeviceRecord phy[EP_MAX_PHYS];
    struct PhyVendorRecord vendor[EP_MAX_PHYS];
    uint8_t halPrivData[EP_MAX_PHYS][EP_HAL_PRIV_DATA_SIZE]; /* by HAL index */
    uint8_t NumOfPhys;
    uint8_t unused[3];
};

OB_FORMAT_AT(struct PhyProvConfig, hwState, 0);
OB_FORMAT_SIZE(struct PhyProvConfig, 28);

OB_FORMAT_AT(struct PhyDeviceRecord, word0, 0);
OB_FORMAT_AT(struct PhyDeviceRecord, config.hwState, 4);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word8, 8);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word12, 12);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word16, 16);
OB_FORMAT_AT(struct PhyDeviceRecord, config.adminState, 20);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word24, 24);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word28, 28);
OB_FORMAT_AT(struct PhyDeviceRecord, bsdValid, 32);
OB_FORMAT_AT(struct PhyDeviceRecord, board, 36);
OB_FORMAT_AT(struct PhyDeviceRecord, board.serdesId, 68);
OB_FORMAT_AT(struct PhyDeviceRecord, board.mdioBus, 80);
OB_FORMAT_AT(struct PhyDeviceRecord, board.mdioAddr, 81);
OB_FORMAT_AT(struct PhyDeviceRecord, board.portIfaceSpeed, 84);
OB_FORMAT_AT(struct PhyDeviceRecord, board.portIfaceMode, 88);
OB_FORMAT_AT(struct PhyDeviceRecord, capsValid, 92);
OB_FORMAT_AT(struct PhyDeviceRecord, caps, 96);
OB_FORMAT_AT(struct PhyDeviceRecord, halIdx, 100);
OB_FORMAT_AT(struct PhyDeviceRecord, postResetMark, 101);
OB_FORMAT_SIZE(struct PhyDeviceRecord, 104);

OB_FORMAT_AT(struct PhyDeviceRegion, phy[0], 0);
OB_FORMAT_AT(struct PhyDeviceRegion, phy[1], 104);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[0], 208);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[0].ulpModeEnabled, 212);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[1], 216);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[1].ulpModeEnabled, 220);
OB_FORMAT_AT(struct PhyDeviceRegion, halPrivData[0], 224);
OB_FORMAT_AT(struct PhyDeviceRegion, halPrivData[1], 776);
OB_FORMAT_AT(struct PhyDeviceRegion, NumOfPhys, 1328);
OB_FORMAT_AT(struct PhyDeviceRegion, unused, 1329);
OB_FORMAT_SIZE(struct PhyDeviceRegion, 1332);

/* ---- Initialisation and queries ------------------------------------------------------------- */

/*
 * Initialises the PHY family; run once per boot. Creates the semaphore and the region, receives the
 * board data over the mailbox (blocks until it arrives), loads the HAL libraries and calls each
 * one's Init.
 *
 * A second call while the semaphore exists fails and leaves the region untouched. A HAL library
 * that cannot be loaded, or whose Init fails, is only logged: the result is still 0. A board
 * without board data initialises with zero PHYs. When the call fails after the semaphore was
 * created, the semaphore stays and has to be removed from outside (ipcrm) before a retry.
 */
OB_EXPORT int ETHPHY_InitOnce(void);

/* Writes the number of PHYs, 0 to 2. */
OB_EXPORT int ETHPHY_GetNumOfPhys(uint8_t* Out);

/* Region services. They take no semaphore. Creating reuses a region that exists; mapping returns
 * the address of struct PhyDeviceRegion, or null, and is for the life of the process. */
OB_EXPORT int EP_CreatePhyDevices(void);
OB_EXPORT void* EP_MapEthphyDevices(void);

/* ---- Reset ---------------------------------------------------------------------------------- */

/*
 * Takes a PHY out of reset: pulses its reset line if it has one and waits for the PHY to answer (at
 * least 0.4 s, up to about 2.3 s), calls the HAL's ResetDisable (up to 0.6 s more with the general
 * PHY HAL), resets the SerDes lane where needed, reads the capabilities and applies the stored
 * administrative state. The semaphore is held all the while, 2.9 s at most and the PHY accesses.
 *
 *   DefConfig  non-zero first brings the stored configuration back to its defaults; handed to the
 *              HAL as it is
 *
 * Only a failure to read the capabilities, or to apply the administrative state, makes the call
 * fail; the PHY counts as enabled all the same. Everything else that fails on the way is logged.
 */
OB_EXPORT int ETHPHY_ResetDisable(uint8_t DevIdx, int DefConfig);

/* Puts a PHY into reset; the stored configuration is kept. On a board with a reset line the result
 * is that of driving the line, whatever the HAL said. The PHY counts as held in reset even when the
 * call fails, if it was enabled before. */
OB_EXPORT int ETHPHY_ResetEnable(uint8_t DevIdx);

/* Resets the SoC SerDes lane of a PHY; the outcome is only logged. DevIdx is not compared with the
 * number of PHYs. Fails only when the prolog does. */
OB_EXPORT int ETHPHY_ResetSgmii(uint8_t DevIdx);

/* ---- Operations that work in any state ------------------------------------------------------ */

/*
 * Reads the link. A PHY held in reset has no link: *Link = 0, without a call of the HAL.
 *
 *   Link           out: non-zero = up; null fails before anything else
 *   Speed, Duplex  out: handed to the HAL as they are
 */
OB_EXPORT int ETHPHY_GetLink(uint8_t DevIdx, uint32_t* Link, uint32_t* Speed, uint32_t* Duplex);

/* Enables (non-zero) or disables the PHY. The value is stored even when the HAL fails; a PHY held
 * in reset takes it at the next ETHPHY_ResetDisable. */
OB_EXPORT int ETHPHY_SetAdminState(uint8_t DevIdx, int Enable);

/* Copies the provisioned configuration (struct PhyProvConfig, 28 bytes). */
OB_EXPORT int ETHPHY_GetProvisionedConfig(uint8_t DevIdx, void* Out);

/* Copies the board entry (struct PhyBoardEntry, 56 bytes). */
OB_EXPORT int ETHPHY_GetBsdConfig(uint8_t DevIdx, void* Out);

/* Stores the address of the PHY's struct PhyDeviceRecord in the shared region. It stays valid for
 * the life of the process; other calls, in any process, change what it points to. */
OB_EXPORT int ETHPHY_GetPhyData(uint8_t DevIdx, void** Out);

/* Writes the capabilities; fails until ETHPHY_ResetDisable has read them. */
OB_EXPORT int ETHPHY_GetCaps(uint8_t DevIdx, uint32_t* Caps);

/* Lets the HAL do its periodic work. */
OB_EXPORT int ETHPHY_Poll(uint8_t DevIdx);

/* ---- Operations that need the PHY enabled --------------------------------------------------- */

/* Counters; their layout is the HAL's. */
OB_EXPORT int ETHPHY_GetCounters(uint8_t DevIdx, void* Counters);
OB_EXPORT int ETHPHY_ResetCounters(uint8_t DevIdx);

/* Energy-efficient Ethernet; the value goes to the HAL as it is. */
OB_EXPORT int ETHPHY_SetEeeState(uint8_t DevIdx, uint8_t State);

/*
 * One register of the PHY over MDIO: IEEE 802.3 clause 22, and clause 45 for the Mmd functions.
 *
 *   Reg     register number in bits 0 to 15; bit 30 makes the access a clause-45 one, with the MMD
 *           in bits 16 to 20
 *   Mmd     MMD device address, 0 to 31
 *   Value   out: what was read; 0xFFFF when the prolog fails
 */
OB_EXPORT int ETHPHY_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value);
OB_EXPORT int ETHPHY_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Value);
OB_EXPORT int ETHPHY_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value);
OB_EXPORT int ETHPHY_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Value);

/* One register of the chip, by the HAL's own numbering. */
OB_EXPORT int ETHPHY_ReadChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t* Value);
OB_EXPORT int ETHPHY_WriteChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t Value);

/*
 * Makes the PHY advertise one speed and restarts its negotiation, by four register writes. Each
 * write is a call of its own (other callers may come between); the first that fails ends the call.
 *
 *   Speed       1 = 10 Mb/s, 2 = 100 Mb/s, 3 = 1 Gb/s, any other = 2.5 Gb/s
 *   FullDuplex  non-zero = full; matters at 10 and 100 Mb/s only
 */
OB_EXPORT int ETHPHY_PhyZ88_SetSpeedDuplexMode(uint8_t DevIdx, uint32_t Speed, int FullDuplex);

#ifdef __cplusplus
}
#endif

#endif

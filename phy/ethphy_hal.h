/*
 * What the author of a PHY HAL library includes: the table that the library exports, and what its
 * slots may call back. The library exports one data symbol, ETHPHY_HalFuncs, of the type below;
 * liborblink loads it with dlopen and calls the slots.
 *
 * Each slot returns 0 for success and anything else for failure; the caller logs and fails. Slots
 * run with the PHY semaphore held: they must not call the ETHPHY_ functions, longjmp or throw, which
 * ends the program. Init runs once per boot, in one process only; state that other processes need
 * belongs into the private data it is given.
 *
 * DevIdx is the PHY's index; every index and value is passed as an int-sized argument. Pointers are
 * the caller's and must not be kept.
 */
#ifndef ORBLINK_PHY_ETHPHY_HAL_H
#define ORBLINK_PHY_ETHPHY_HAL_H

#include "phy/ethphy_api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* In slot order: 13 pointers. A slot that is null counts as one that fails. */
struct ETHPHY_HalFuncs {
    /* Private data: EP_HAL_PRIV_DATA_SIZE bytes, zero. Called once for each library; an index of
     * the PHYs it drives is not given. */
    int (*Init)(void* PrivData);
    /* Link non-zero = up. Speed and Duplex may be null; the caller of ETHPHY_GetLink gave them. */
    int (*GetLink)(int DevIdx, uint32_t* Link, uint32_t* Speed, uint32_t* Duplex);
    /* Enable non-zero = up. */
    int (*SetAdminState)(int DevIdx, int Enable);
    /* The PHY has just left reset, or has to leave it where the board has no reset line. DefConfig
     * non-zero: with the default configuration. */
    int (*ResetDisable)(int DevIdx, int DefConfig);
    /* The PHY is about to be held in reset. */
    int (*ResetEnable)(int DevIdx);
    int (*GetCaps)(int DevIdx, uint32_t* Caps);
    /* Never called; may be null. */
    int (*Reserved)(void);
    /* The layout of Counters is the HAL's own. */
    int (*GetCounters)(int DevIdx, void* Counters);
    int (*ResetCounters)(int DevIdx);
    int (*ReadChipReg)(int DevIdx, uint32_t Reg, uint16_t* Value);
    /* Value is 0 to 0xFFFF. */
    int (*WriteChipReg)(int DevIdx, uint32_t Reg, int Value);
    /* State is 0 to 255. */
    int (*SetEeeState)(int DevIdx, int State);
    int (*Poll)(int DevIdx);
};

static_assert(sizeof(struct ETHPHY_HalFuncs) == 13 * sizeof(void (*)(void)), "slots");

/* Defined by the HAL library. */
OB_EXPORT extern const struct ETHPHY_HalFuncs ETHPHY_HalFuncs;

/*
 * The services. None takes the PHY semaphore: they run under that of the calling operation and
 * share one process-wide socket. None may be called from a signal handler. DevIdx above 1, or a
 * process that has not attached yet, gives null, 0 or -1 by type. Lines have module 26.
 */

/* Bit 30 of a register number: clause-45 access, the MMD in bits 16 to 20. */
#define EPHAL_MDIO_CLAUSE45 0x40000000U

/**
 * Reads one PHY register at a given place, through the MII ioctl of "nsgmii0".
 *
 * \param[in]  MdioBus   bus, 0 to 0xFFFF
 * \param[in]  MdioAddr  address on the bus, 0 to 31
 * \param[in]  Reg       register, bits 0 to 15; EPHAL_MDIO_CLAUSE45 for a clause-45 access, with
 *                       the MMD in bits 16 to 20
 * \param[out] Value     what was read; untouched on failure; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int EPHAL_DirectMdioReadAccess(uint32_t MdioBus, uint32_t MdioAddr, uint32_t Reg,
                                         uint16_t* Value);

/**
 * Writes one PHY register at a given place, through the MII ioctl of "nsgmii0".
 *
 * \param[in] MdioBus   bus, 0 to 0xFFFF
 * \param[in] MdioAddr  address on the bus, 0 to 31
 * \param[in] Reg       register, bits 0 to 15; EPHAL_MDIO_CLAUSE45 for a clause-45 access, with
 *                      the MMD in bits 16 to 20
 * \param[in] Data      0 to 0xFFFF
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int EPHAL_DirectMdioWriteAccess(uint32_t MdioBus, uint32_t MdioAddr, uint32_t Reg,
                                          uint16_t Data);

/**
 * Reads one register of a PHY at the place that the board data give.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in]  Reg     register, bits 0 to 15; EPHAL_MDIO_CLAUSE45 for a clause-45 access, with
 *                     the MMD in bits 16 to 20
 * \param[out] Value   what was read; untouched on failure; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int EPHAL_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value);

/**
 * Writes one register of a PHY at the place that the board data give.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Reg     register, bits 0 to 15; EPHAL_MDIO_CLAUSE45 for a clause-45 access, with the
 *                    MMD in bits 16 to 20
 * \param[in] Data    0 to 0xFFFF
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int EPHAL_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Data);

/**
 * Reads one register of an MDIO manageable device (MMD) of a PHY.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in]  Mmd     device address, 0 to 31
 * \param[in]  MmdReg  register, 0 to 0xFFFF
 * \param[out] Value   what was read; untouched on failure; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 45
 */
OB_EXPORT int EPHAL_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value);

/**
 * Writes one register of an MDIO manageable device (MMD) of a PHY.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Mmd     device address, 0 to 31
 * \param[in] MmdReg  register, 0 to 0xFFFF
 * \param[in] Data    0 to 0xFFFF
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; each access at 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 45
 */
OB_EXPORT int EPHAL_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Data);

/* What ifr_data points to in the SIOCDEVPRIVATE request of EPHAL_ReconfigureGmacPhy; ifr_name is
 * the interface as well. */
struct GmacReconfigRequest {
    char IfName[16];  /* the PHY's interface */
    uint32_t Command; /* EP_GMAC_RECONFIGURE */
    uint32_t Speed;
    uint32_t Duplex;
    int32_t Result; /* the driver's answer; negative = not done */
};

OB_FORMAT_AT(struct GmacReconfigRequest, IfName, 0);
OB_FORMAT_AT(struct GmacReconfigRequest, Command, 16);
OB_FORMAT_AT(struct GmacReconfigRequest, Speed, 20);
OB_FORMAT_AT(struct GmacReconfigRequest, Duplex, 24);
OB_FORMAT_AT(struct GmacReconfigRequest, Result, 28);
OB_FORMAT_SIZE(struct GmacReconfigRequest, 32);

#define EP_GMAC_RECONFIGURE 55

/**
 * Tells the SoC's Ethernet MAC behind the PHY its speed and duplex.
 *
 * \param[in] DevIdx    PHY, 0 or 1, below the number of PHYs
 * \param[in] SetSpeed  0 leaves the speed alone (0 is sent)
 * \param[in] Speed     as the MAC driver codes it
 * \param[in] Duplex    as the MAC driver codes it
 * \return 0, or -1 on failure, also when the driver has skipped or aborted it
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_ReconfigureGmacPhy(uint8_t DevIdx, int SetSpeed, int Speed, int Duplex);

/**
 * Brings the network interface of a PHY up or down, through ifconfig, whose exit status is not
 * looked at.
 *
 * \param[in] DevIdx  PHY, 0 or 1, not compared with the number of PHYs
 * \param[in] Up      non-zero = up
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_SetInterfaceState(uint8_t DevIdx, int Up);

/**
 * Stores whether the PHY is enabled; enabling also clears the post-reset mark.
 *
 * \param[in] DevIdx   PHY, 0 or 1, not compared with the number of PHYs
 * \param[in] Enabled  non-zero = enabled
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_SetHwState(uint8_t DevIdx, int Enabled);

/**
 * Tells whether the PHY is enabled.
 *
 * \param[in]  DevIdx   PHY, 0 or 1, not compared with the number of PHYs
 * \param[out] Enabled  1 or 0; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_GetHwState(uint8_t DevIdx, uint32_t* Enabled);

/**
 * Tells the ultra-low-power mode of a PHY.
 *
 * \param[in]  DevIdx   PHY, 0 or 1, not compared with the number of PHYs
 * \param[out] Enabled  1 = on; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_GetUlpModeEnabled(uint8_t DevIdx, uint32_t* Enabled);

/**
 * Gives the private data of the HAL library of a PHY, in shared memory: EP_HAL_PRIV_DATA_SIZE
 * bytes, shared by all PHYs that name the same library, valid for the life of the process.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \return their address; null for a PHY that does not exist or has no HAL index
 * \note Logs: nothing
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT void* EPHAL_GetHalPrivData(uint8_t DevIdx);

/**
 * Tells the interface mode of a PHY.
 *
 * \param[in] DevIdx  PHY, 0 or 1, not compared with the number of PHYs
 * \return enum OB_IfaceMode; 0 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t EPHAL_GetPortIfaceMode(uint8_t DevIdx);

/**
 * Tells the interface speed of a PHY.
 *
 * \param[in] DevIdx  PHY, 0 or 1, not compared with the number of PHYs
 * \return enum OB_Speed; 0 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t EPHAL_GetPortIfaceSpeed(uint8_t DevIdx);

/**
 * Tells where a PHY is on the MDIO buses.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] BusId   bus; may be null
 * \param[out] Addr    address on the bus, 0 to 31; may be null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int EPHAL_GetMdioAddrAndBusId(uint8_t DevIdx, uint8_t* BusId, uint8_t* Addr);

#ifdef __cplusplus
}
#endif

#endif

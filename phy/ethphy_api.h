/*
 * PHY control API: the operations on standalone Ethernet PHYs. The records in shared memory are in
 * phy/ethphy_records.h.
 *
 * What the comments of the functions mean:
 *  - "taken" (lock): the call holds the PHY semaphore from its prolog to its end and releases it on
 *    every path; a thread is not cancelled there. The semaphore has no undo: a process that dies
 *    inside a call leaves it held until reboot. Such a call must not be made from a HAL slot or
 *    from a signal handler: it would wait for itself. Slots must not throw: that ends the program
 *    (std::terminate) with the semaphore held. Nor may they longjmp: it would stay held as well.
 *  - The first call of a process attaches it: opens the semaphore, maps the region, loads the HAL
 *    libraries. Before ETHPHY_InitOnce has run on the machine every call that takes the lock fails.
 *    A call that finds the semaphore removed fails, and the next one attaches anew.
 *  - Lines go to the log sink of the platform, module 26.
 *  - Out pointers are the caller's and not kept. They are untouched on failure unless said. A null
 *    one that is "not null" fails the call.
 *  - "As the HAL has it": handed to the HAL, or by it, unchanged; the HAL's manual has the values.
 */
#ifndef ORBLINK_PHY_ETHPHY_API_H
#define ORBLINK_PHY_ETHPHY_API_H

#include <stdint.h>

#include "common/export.h"
#include "phy/ethphy_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Initialisation and queries ------------------------------------------------------------- */

/**
 * Initialises the PHY family; run once per boot. Creates the semaphore and the region, receives
 * the board data over the mailbox (blocks until they arrive), loads the HAL libraries and calls
 * each one's Init.
 *
 * A second call while the semaphore exists fails and leaves the region untouched. A HAL library
 * that cannot be loaded, or whose Init fails, is only logged: the result is still 0. A board
 * without board data initialises with zero PHYs. When the call fails after the semaphore was
 * created, the semaphore stays and has to be removed from outside (ipcrm) before a retry.
 *
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; progress at 3 and 9
 * \note Lock: created held, and released at the end; not from a HAL slot or a signal handler
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_InitOnce(void);

/**
 * Tells how many PHYs the board has.
 *
 * \param[out] Out  0 to 2; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; a failed prolog by its own lines only
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetNumOfPhys(uint8_t* Out);

/**
 * Creates the shared region, or gives one that exists its size; its contents stay.
 *
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT int EP_CreatePhyDevices(void);

/**
 * Maps the shared region, for the life of the process. Refuses one that is too short, and in a
 * process of root one that root does not own.
 *
 * \return address of struct PhyDeviceRegion, or null
 * \note Logs: failures once, at severity 1
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT void* EP_MapEthphyDevices(void);

/* ---- Reset ---------------------------------------------------------------------------------- */

/**
 * Takes a PHY out of reset: pulses its reset line if it has one and waits for the PHY to answer
 * (at least 0.4 s, up to about 2.3 s, with the lock held), calls the HAL's ResetDisable, resets
 * the SerDes lane where needed, reads the capabilities and applies the stored administrative
 * state.
 *
 * \param[in] DevIdx     PHY, 0 or 1, below the number of PHYs
 * \param[in] DefConfig  non-zero first brings the stored configuration back to its defaults; goes
 *                       to the HAL as it is
 * \return 0, or -1 when the prolog failed, the PHY does not exist, or the capabilities could not
 *         be read or the administrative state not applied, the PHY then counting as enabled; all
 *         else that fails on the way is only logged
 * \note Logs: failures once, at severity 1; progress at 3, entry at 9
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22 (register 2, the wait for the PHY)
 */
OB_EXPORT int ETHPHY_ResetDisable(uint8_t DevIdx, int DefConfig);

/**
 * Puts a PHY into reset; the stored configuration is kept. The PHY counts as held in reset even
 * when the call fails, if it was enabled before.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \return 0, or -1 on failure; on a board with a reset line that of driving the line, whatever
 *         the HAL said
 * \note Logs: failures once, at severity 1; the line at 3, entry at 9
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_ResetEnable(uint8_t DevIdx);

/**
 * Resets the SerDes lane of the SoC behind a PHY.
 *
 * \param[in] DevIdx  PHY, not compared with the number of PHYs; above 1 nothing is reset
 * \return 0 whatever became of the lane, -1 when the prolog failed
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_ResetSgmii(uint8_t DevIdx);

/* ---- Operations that work in any state ------------------------------------------------------ */

/**
 * Reads the link. A PHY held in reset has none, without a call of the HAL.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] Link    non-zero = up; not null, which is checked before anything else
 * \param[out] Speed   as the HAL has it; goes to the HAL as it is
 * \param[out] Duplex  as the HAL has it; goes to the HAL as it is
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22.2.4.2 (link status)
 */
OB_EXPORT int ETHPHY_GetLink(uint8_t DevIdx, uint32_t* Link, uint32_t* Speed, uint32_t* Duplex);

/**
 * Enables or disables the PHY. The value is stored even when the HAL fails; a PHY held in reset
 * takes it at the next ETHPHY_ResetDisable.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Enable  non-zero = enabled
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; entry at 9
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_SetAdminState(uint8_t DevIdx, int Enable);

/**
 * Copies the provisioned configuration.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] Out     struct PhyProvConfig, 28 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; a failed prolog by its own lines only
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetProvisionedConfig(uint8_t DevIdx, void* Out);

/**
 * Copies the board entry.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] Out     struct PhyBoardEntry, 56 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; a failed prolog by its own lines only
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetBsdConfig(uint8_t DevIdx, void* Out);

/**
 * Gives the place of a PHY's record in the shared region, valid for the life of the process.
 * Other calls, in any process, change what stands there.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] Out     address of struct PhyDeviceRecord; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; a failed prolog by its own lines only
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetPhyData(uint8_t DevIdx, void** Out);

/**
 * Tells the capabilities; fails until ETHPHY_ResetDisable has read them.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[out] Caps    as the HAL has it; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetCaps(uint8_t DevIdx, uint32_t* Caps);

/**
 * Lets the HAL do its periodic work.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_Poll(uint8_t DevIdx);

/* ---- Operations that need the PHY enabled --------------------------------------------------- */

/**
 * Reads the counters.
 *
 * \param[in]  DevIdx    PHY, 0 or 1, below the number of PHYs
 * \param[out] Counters  laid out by the HAL; not null
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_GetCounters(uint8_t DevIdx, void* Counters);

/**
 * Clears the counters.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_ResetCounters(uint8_t DevIdx);

/**
 * Sets Energy-Efficient Ethernet.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] State   0 to 255, as the HAL has it
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3az (clause 78)
 */
OB_EXPORT int ETHPHY_SetEeeState(uint8_t DevIdx, uint8_t State);

/**
 * Reads one register of the PHY over MDIO.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in]  Reg     register, bits 0 to 15; bit 30 makes the access a clause-45 one, with the
 *                     MMD in bits 16 to 20
 * \param[out] Value   what was read; 0xFFFF when the prolog fails, else untouched on failure; not
 *                     null
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int ETHPHY_ReadMdio(uint8_t DevIdx, uint32_t Reg, uint16_t* Value);

/**
 * Writes one register of the PHY over MDIO.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Reg     register, bits 0 to 15; bit 30 makes the access a clause-45 one, with the
 *                    MMD in bits 16 to 20
 * \param[in] Value   0 to 0xFFFF
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22, clause 45 with bit 30
 */
OB_EXPORT int ETHPHY_WriteMdio(uint8_t DevIdx, uint32_t Reg, uint16_t Value);

/**
 * Reads one register of an MDIO manageable device (MMD) of the PHY.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in]  Mmd     device address, 0 to 31
 * \param[in]  MmdReg  register, 0 to 0xFFFF
 * \param[out] Value   what was read; 0xFFFF when the prolog fails, else untouched on failure; not
 *                     null
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 45
 */
OB_EXPORT int ETHPHY_ReadMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t* Value);

/**
 * Writes one register of an MDIO manageable device (MMD) of the PHY.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Mmd     device address, 0 to 31
 * \param[in] MmdReg  register, 0 to 0xFFFF
 * \param[in] Value   0 to 0xFFFF
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 45
 */
OB_EXPORT int ETHPHY_WriteMmd(uint8_t DevIdx, uint8_t Mmd, uint16_t MmdReg, uint16_t Value);

/**
 * Reads one register of the chip, by the HAL's own numbering.
 *
 * \param[in]  DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in]  Reg     as the HAL has it
 * \param[out] Value   what was read; not null
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_ReadChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t* Value);

/**
 * Writes one register of the chip, by the HAL's own numbering.
 *
 * \param[in] DevIdx  PHY, 0 or 1, below the number of PHYs
 * \param[in] Reg     as the HAL has it
 * \param[in] Value   0 to 0xFFFF
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ETHPHY_WriteChipReg(uint8_t DevIdx, uint32_t Reg, uint16_t Value);

/**
 * Makes the PHY advertise one speed and restarts its negotiation, by four register writes. Each
 * write is a call of its own (other callers may come between); the first that fails ends the
 * call.
 *
 * \param[in] DevIdx      PHY, 0 or 1, below the number of PHYs
 * \param[in] Speed       1 = 10 Mb/s, 2 = 100 Mb/s, 3 = 1 Gb/s, any other = 2.5 Gb/s
 * \param[in] FullDuplex  non-zero = full; matters at 10 and 100 Mb/s only
 * \return 0, or -1 on failure, also while the PHY is held in reset
 * \note Logs: failures once, at severity 1, and those of ETHPHY_WriteMmd and ETHPHY_WriteMdio
 * \note Lock: taken for each write
 * \note Standard: IEEE 802.3 clause 22 registers 0, 4 and 9, clause 45 register 7.32
 */
OB_EXPORT int ETHPHY_PhyZ88_SetSpeedDuplexMode(uint8_t DevIdx, uint32_t Speed, int FullDuplex);

#ifdef __cplusplus
}
#endif

#endif

/*
 * What a switch HAL library calls back from inside a slot, that is, while the calling operation
 * holds the switch semaphore. None of these takes the semaphore, compares DevIdx with the number of
 * switches or blocks longer than the platform call it makes; none may be called from a signal
 * handler. DevIdx above 1, or a process that has not attached yet, gives null, 0 or -1 by type.
 * Lines have module 21.
 */
#ifndef ORBLINK_SWITCH_HAL_SERVICES_ORBLINK_HAL_SERVICES_H
#define ORBLINK_SWITCH_HAL_SERVICES_ORBLINK_HAL_SERVICES_H

#include <stdint.h>

#include "common/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Gives the scratch area of the HAL library of a switch, in shared memory: OB_HAL_PRIV_DATA_SIZE
 * bytes, unaligned, zero after initialisation, shared by all switches that name the same library.
 * Owned by the library, valid for the life of the process.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \return its address; null while the switch has no HAL index
 * \note Logs: nothing
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT void* OBHAL_GetHalPrivData(uint8_t DevIdx);

/**
 * Tells the switch port that is wired to the SoC.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \return port index; 0 for a switch that cannot be
 * \note Logs: nothing
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int OBHAL_GetInternalPortPidx(uint8_t DevIdx);

/**
 * Tells the interface mode of the internal port.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \return enum OB_IfaceMode; 0 for a switch that cannot be
 * \note Logs: entry at severity 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t DevIdx);

/**
 * Tells the speed of the internal port.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \return enum OB_Speed; 0 for a switch that cannot be
 * \note Logs: entry at severity 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t DevIdx);

/**
 * Tells the stored MTU.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \return bytes; 0 for a switch that cannot be
 * \note Logs: entry at severity 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t OBHAL_GetMtuSize(uint8_t DevIdx);

/**
 * Tells how many switches the board has.
 *
 * \return 0 to 2
 * \note Logs: entry at severity 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT uint32_t OBHAL_GetSwitchCount(void);

/**
 * Tells where a switch is on the MDIO buses. 0xFF means that the board gives none.
 *
 * \param[in]  DevIdx  switch, 0 or 1, not compared with the number of switches
 * \param[out] Bus     bus; may be null
 * \param[out] Addr    address on the bus, 0 to 31; may be null
 * \return 0, which carries no status
 * \note Logs: entry at severity 9
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: none
 */
OB_EXPORT int OBHAL_GetMdioParams(uint8_t DevIdx, uint8_t* Bus, uint8_t* Addr);

/**
 * Reads one register of the switch over MDIO, through the MII ioctl of "nsgmii0", whichever
 * switch is meant.
 *
 * \param[in]  DevIdx  switch, 0 or 1, not compared with the number of switches
 * \param[in]  Reg     register, in its low 16 bits
 * \param[out] Value   what was read; untouched on failure; not null
 * \return 0, or -1: no MDIO bus or address in the board data, no socket, or the bus did not
 *         answer
 * \note Logs: entry at severity 9; failures once, at 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22
 */
OB_EXPORT int OBHAL_ReadMdio(uint8_t DevIdx, int Reg, uint16_t* Value);

/**
 * Writes one register of the switch over MDIO, through the MII ioctl of "nsgmii0", whichever
 * switch is meant.
 *
 * \param[in] DevIdx  switch, 0 or 1, not compared with the number of switches
 * \param[in] Reg     register, in its low 16 bits
 * \param[in] Data    0 to 0xFFFF
 * \return 0, or -1: no MDIO bus or address in the board data, no socket, or the bus did not
 *         answer
 * \note Logs: entry at severity 9; failures once, at 1
 * \note Lock: the caller's: from a HAL slot only
 * \note Standard: IEEE 802.3 clause 22
 */
OB_EXPORT int OBHAL_WriteMdio(uint8_t DevIdx, int Reg, uint16_t Data);

#ifdef __cplusplus
}
#endif

#endif

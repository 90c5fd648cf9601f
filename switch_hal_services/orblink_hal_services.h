/*
 * What a switch HAL library calls back from inside a slot, that is, while the calling operation
 * holds the switch semaphore. None of these takes the semaphore, compares DevIdx with the number of
 * switches or blocks longer than the platform call it makes; none may be called from a signal
 * handler. DevIdx above 1, or a process that has not attached yet, gives null, 0 or -1 by type.
 *
 * All but OBHAL_GetHalPrivData and OBHAL_GetInternalPortPidx log an entry line at severity 9.
 */
#ifndef ORBLINK_SWITCH_HAL_SERVICES_ORBLINK_HAL_SERVICES_H
#define ORBLINK_SWITCH_HAL_SERVICES_ORBLINK_HAL_SERVICES_H

#include <stdint.h>

#include "common/export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The switch's HAL scratch area in shared memory: OB_HAL_PRIV_DATA_SIZE bytes, unaligned, zero
 * after initialisation, shared by all switches that name the same library. Null while the switch
 * has no HAL index. Owned by the library; valid for the life of the process. */
OB_EXPORT void* OBHAL_GetHalPrivData(uint8_t DevIdx);

/* Switch port that is wired to the SoC. */
OB_EXPORT int OBHAL_GetInternalPortPidx(uint8_t DevIdx);

/* enum OB_IfaceMode of the internal port. */
OB_EXPORT uint32_t OBHAL_GetInternalPortIfaceMode(uint8_t DevIdx);

/* enum OB_Speed of the internal port. */
OB_EXPORT uint32_t OBHAL_GetInternalPortIfaceSpeed(uint8_t DevIdx);

/* Stored MTU in bytes. */
OB_EXPORT uint32_t OBHAL_GetMtuSize(uint8_t DevIdx);

/* Number of switches, 0 to 2. */
OB_EXPORT uint32_t OBHAL_GetSwitchCount(void);

/* Writes the switch's MDIO bus id and MDIO address; either pointer may be null. 0xFF means that the
 * board gives none. The result carries no status. */
OB_EXPORT int OBHAL_GetMdioParams(uint8_t DevIdx, uint8_t* Bus, uint8_t* Addr);

/*
 * Reads or writes one register of the switch over MDIO (IEEE 802.3 clause 22), through the MII
 * ioctls of "nsgmii0", whichever switch DevIdx names.
 *
 *   Reg    register number; its low 16 bits are used
 *   Value  out: what was read; untouched on failure; not null
 *
 * Result: 0, or -1 with one severity-1 line: no MDIO bus or address in the board data, no socket,
 * or the bus did not answer.
 */
OB_EXPORT int OBHAL_ReadMdio(uint8_t DevIdx, int Reg, uint16_t* Value);
OB_EXPORT int OBHAL_WriteMdio(uint8_t DevIdx, int Reg, uint16_t Data);

#ifdef __cplusplus
}
#endif

#endif

/*
 * Switch control: features of the whole switch and raw access.
 * A part of switch/orblink_api.h, where the terms of the comments are explained.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_FEATURES_H
#define ORBLINK_SWITCH_ORBLINK_FEATURES_H

#include <stdint.h>

#include "common/export.h"
#include "switch/orblink_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Called once per MAC table entry, with the switch semaphore held; non-zero = go on. Must not call
 * an ORBLINK_ function, longjmp or throw, which ends the program. */
typedef uint32_t (*MacEntryCallback)(struct MacEntry* Entry);

/**
 * Walks the MAC table: calls Callback once per entry. The callback must not call an ORBLINK_
 * function, longjmp or throw, which ends the program.
 *
 * \param[in] DevIdx    switch, 0 or 1, below the number of switches
 * \param[in] Callback  goes to the HAL as it is
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken, also while the callback runs
 * \note Standard: IEEE 802.1D (filtering database)
 */
OB_EXPORT int ORBLINK_ForEachMacEntry(uint8_t DevIdx, MacEntryCallback Callback);

/**
 * Copies up to 256 MAC table entries and tells whether there were more. The table is zeroed only
 * when the switch is enabled; entries copied before a failure of the HAL stay.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[out] Table   6152 bytes; not null
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.1D (filtering database)
 */
OB_EXPORT int ORBLINK_GetMacTable(uint8_t DevIdx, struct MacTable* Table);

/**
 * Switches IGMP and MLD snooping on or off. Stored. Fails on a chip without it.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: RFC 4541
 */
OB_EXPORT int ORBLINK_EnableIgmpSnooping(uint8_t DevIdx);
OB_EXPORT int ORBLINK_DisableIgmpSnooping(uint8_t DevIdx);

/**
 * Reads one register of a port.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[in]  Port    as the HAL numbers it, not bounded by the library
 * \param[in]  Reg     register, 0 to 0xFFFF, not bounded by the library
 * \param[out] Value   laid out by the HAL, which gets the pointer as it is
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_ReadPortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, void* Value);

/**
 * Writes one register of a port.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Port    as the HAL numbers it, not bounded by the library
 * \param[in] Reg     register, 0 to 0xFFFF, not bounded by the library
 * \param[in] Val     0 to 0xFFFF
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_WritePortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, uint16_t Val);

/**
 * Reads one register over the serial management interface of the chip.
 *
 * \param[in]  DevIdx   switch, 0 or 1, below the number of switches
 * \param[in]  RegAddr  address, 0 to 0xFFFF, not bounded by the library
 * \param[out] Data     laid out by the HAL, which gets the pointer as it is
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22.2.4 (management interface)
 */
OB_EXPORT int ORBLINK_SmiRead(uint8_t DevIdx, uint16_t RegAddr, void* Data);

/**
 * Writes one register over the serial management interface of the chip.
 *
 * \param[in] DevIdx   switch, 0 or 1, below the number of switches
 * \param[in] RegAddr  address, 0 to 0xFFFF, not bounded by the library
 * \param[in] Data     0 to 0xFFFF
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22.2.4 (management interface)
 */
OB_EXPORT int ORBLINK_SmiWrite(uint8_t DevIdx, uint16_t RegAddr, uint16_t Data);

/**
 * Sends a command of the HAL's own.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Cmd     as the HAL has it
 * \param[in] pParam  in or out as the command has it; goes to the HAL as it is
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_VendorSpecificIoctl(uint8_t DevIdx, int Cmd, void* pParam);

/**
 * Has the HAL print the state machines of the chip.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_PrintMachineState(uint8_t DevIdx);

/**
 * Sets the weighted random early detection of a queue. Not stored.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] A       queue, as the HAL has it
 * \param[in] B       as the HAL has it
 * \param[in] C       as the HAL has it
 * \param[in] D       as the HAL has it
 * \param[in] E       as the HAL has it
 * \param[in] F       as the HAL has it
 * \param[in] G       as the HAL has it
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetQWred(uint8_t DevIdx, uint8_t A, uint16_t B, uint16_t C, uint16_t D,
                               uint16_t E, uint16_t F, uint16_t G);

/**
 * Sets the weighted random early detection of all queues together. Not stored.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] A       as the HAL has it
 * \param[in] B       as the HAL has it
 * \param[in] C       as the HAL has it
 * \param[in] D       as the HAL has it
 * \param[in] E       as the HAL has it
 * \param[in] F       as the HAL has it
 * \param[in] G       as the HAL has it
 * \param[in] H       as the HAL has it
 * \param[in] I       as the HAL has it
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetGlobWred(uint8_t DevIdx, uint8_t A, uint8_t B, uint8_t C, uint16_t D,
                                  uint16_t E, uint16_t F, uint16_t G, uint16_t H, uint16_t I);

/**
 * Sets the reservation of a queue. Not stored.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] A       queue, as the HAL has it
 * \param[in] B       as the HAL has it
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetQRsrv(uint8_t DevIdx, uint8_t A, uint16_t B);

/**
 * Sets the flow control of a port. Not stored.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Port    as the HAL numbers it, not bounded by the library
 * \param[in] A       as the HAL has it
 * \param[in] B       as the HAL has it
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 annex 31B (PAUSE)
 */
OB_EXPORT int ORBLINK_SetPortFc(uint8_t DevIdx, uint8_t Port, uint16_t A, uint16_t B);

/**
 * Sets the ageing of learned MAC addresses. Stored. There is no short-cut for what is stored
 * already.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Aging   step, 1 to 5, meaning the HAL's
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.1D (ageing time)
 */
OB_EXPORT int ORBLINK_SetMacAging(uint8_t DevIdx, int Aging);

/**
 * Sets the size of the largest frame; then kept for the next bring-up. There is no short-cut for
 * what is stored already.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Val     bytes, no range
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetMtuSize(uint8_t DevIdx, uint16_t Val);

/**
 * Reads the LED mode as the chip uses it and compares it with the stored one, also while the
 * switch is not enabled, when Mode is left as it was.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[out] Mode    as the HAL has it; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; a difference at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetLEDConfig(uint8_t DevIdx, uint8_t* Mode);

/**
 * Sets the LED mode. Stored. There is no short-cut for what is stored already.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Mode    as the HAL has it
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetLEDConfig(uint8_t DevIdx, uint8_t Mode);

#ifdef __cplusplus
}
#endif

#endif

/*
 * Switch control API. This header has initialisation, queries, bring-up and reset; it brings
 *   switch/orblink_records.h   the records in shared memory
 *   switch/orblink_bridging.h  VLANs and provider bridging
 *   switch/orblink_ports.h     ports
 *   switch/orblink_features.h  MAC table, snooping, registers, quality of service
 *
 * What the comments of the functions mean:
 *  - "taken" (lock): the call holds the switch semaphore from its prolog to its end and releases it
 *    on every path; a process that dies inside a call gives it back, and a thread is not cancelled
 *    there. Such a call must not be made from a HAL slot, from the callback of the MAC walk or from
 *    a signal handler: it would wait for itself. Slots and callbacks must not throw: that ends the
 *    program (std::terminate). Nor may they longjmp: the semaphore would stay taken.
 *  - The first call of a process attaches it: opens the semaphore, maps the region, loads the HAL
 *    libraries. Before ORBLINK_InitOnce has run on the machine every call that takes the lock
 *    fails. A call that finds the semaphore removed fails, and the next one attaches anew.
 *  - Lines go to the log sink of the platform, module 21. Most operations log their entry and end
 *    at severity 9 as well.
 *  - Out pointers are the caller's and not kept. A null one that is "not null" fails the call.
 *  - "Stored": a switch that is not enabled takes the value into its record and applies it at the
 *    next bring-up.
 *  - "As the HAL has it": handed to the HAL, or by it, unchanged; the HAL's manual has the values.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_API_H
#define ORBLINK_SWITCH_ORBLINK_API_H

#include <stdint.h>

#include "common/export.h"
#include "switch/orblink_bridging.h"
#include "switch/orblink_features.h"
#include "switch/orblink_ports.h"
#include "switch/orblink_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/* ---- Initialisation and queries ------------------------------------------------------------- */

/**
 * Initialises the switch family; run once per boot, by the process that owns the switches.
 * Creates the semaphore and the region, receives the board data over the mailbox (blocks until
 * they arrive), loads the HAL libraries and calls each one's Init.
 *
 * A second call while the semaphore exists fails and leaves the region untouched. A failure on
 * the way leaves the semaphore in existence; it has to be removed from outside (ipcrm) before a
 * retry. A board without board data initialises with zero switches.
 *
 * \param[in] Arg  only the low byte is tested: non-zero also reads the capabilities of every
 *                 switch and writes the default configuration
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; progress at 1 (around GetSwitchCaps), 3 and 9
 * \note Lock: created, and held to the end; not from a HAL slot or a signal handler
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_InitOnce(uint32_t Arg);

/**
 * Tells how many switches the board has.
 *
 * \param[out] Out  0 to 2; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetNumOfSwitches(uint8_t* Out);

/**
 * Copies the capability block. Works in any state; fails until the capabilities have been read,
 * by initialisation or by bring-up.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[out] Out     struct SwitchCaps, 104 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetSwitchCaps(uint8_t DevIdx, void* Out);

/**
 * Copies the provisioned configuration. Fails while nothing was provisioned, and in battery mode.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[out] Out     struct SwitchProvConfig, 732 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; battery mode at 9
 * \note Lock: taken; not in battery mode
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetSwitchProvConfig(uint8_t DevIdx, void* Out);

/**
 * Copies the whole region.
 *
 * \param[out] Out  struct SwitchDeviceRegion, 5740 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetSwitchDevices(void* Out);

/**
 * Tells whether the board data ask for port isolation.
 *
 * \param[in]  DevIdx  switch, 0 or 1, whatever the number of switches
 * \param[out] Out     1 = on, 0 = off; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken while the region is copied
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetIsolationModeEnabled(uint8_t DevIdx, uint32_t* Out);

/**
 * Creates the shared region, or gives one that exists its size; its contents stay.
 *
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_CreateSwitchDevices(void);

/**
 * Maps the shared region, for the life of the process. Refuses one that is too short, and in a
 * process of root one that root does not own.
 *
 * \return address of struct SwitchDeviceRegion, or null
 * \note Logs: failures once, at severity 1
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT void* OBOS_MapSwitchDevices(void);

/**
 * Gives a built-in board entry to callers that have no board data.
 *
 * \param[in]  Which  1; any other has none
 * \param[out] Entry  filled when there is one, else left alone; not null
 * \param[out] Found  1 or 0; not null
 * \return 0, or -1 when the name cannot be copied or a pointer is null
 * \note Logs: failures once, at severity 1
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_GetConfiguredDevice(int Which, struct SwitchBoardEntry* Entry, uint32_t* Found);

/* ---- Bring-up and reset --------------------------------------------------------------------- */

/**
 * Takes a switch out of reset and applies its stored configuration. Blocks for at least 3.2 s
 * with the lock held when the board has a reset pin. An enabled switch is left alone (0).
 *
 * Fails in battery mode, after the pre-reset command. A failure after the chip's reset leaves the
 * switch enabled with part of the configuration applied; nothing is rolled back. A failing per-
 * port restore at the end is only logged.
 *
 * \param[in] DevIdx           switch, 0 or 1, below the number of switches
 * \param[in] SetDefault       0 restores the stored configuration, which must be valid; 1 first
 *                             writes the defaults; any other value restores without the validity
 *                             check
 * \param[in] VendorParams     null, or up to 32 bytes for the ResetSwitch of the HAL, which are
 *                             stored as well; null with SetDefault non-zero uses the stored ones
 * \param[in] VendorParamSize  bytes at VendorParams, 0 to 32
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; battery mode at 2, progress at 3
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_ResetDisable(uint8_t DevIdx, int SetDefault, uint8_t* VendorParams,
                                   uint32_t VendorParamSize);

/**
 * Puts a switch into reset; the stored configuration is kept, DVT marks are cleared. On a board
 * without a reset pin nothing changes.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; no reset pin at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_ResetEnable(uint8_t DevIdx);

/**
 * Reads the system-state attribute of the platform.
 *
 * \return the integer found there, non-zero in battery mode; 0 when it cannot be read
 * \note Logs: nothing
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_isBatteryMode(void);

/**
 * Copies the five MAC addresses of the board: OBOS_GetMacAddresses.
 *
 * \param[out] Mac0  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac1  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac2  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac3  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac4  6 bytes in transmission order; null makes that copy fail
 * \return as OBOS_GetMacAddresses
 * \note Logs: as OBOS_GetMacAddresses
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: IEEE 802 (EUI-48)
 */
OB_EXPORT int ORBLINK_GetMacAddresses(uint8_t* Mac0, uint8_t* Mac1, uint8_t* Mac2, uint8_t* Mac3,
                                      uint8_t* Mac4);

/**
 * Tells the service flag of a switch.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \return the value last given to ORBLINK_SetOrbLinkServiceStatus; 0 on any failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT uint32_t ORBLINK_IsOrbLinkServiceOn(uint8_t DevIdx);

/**
 * Stores the service flag of a switch; the chip is not touched.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \param[in] Signal  any value
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetOrbLinkServiceStatus(uint8_t DevIdx, uint32_t Signal);

#ifdef __cplusplus
}
#endif

#endif

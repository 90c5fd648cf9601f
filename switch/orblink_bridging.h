/*
 * Switch control: VLANs and provider bridging.
 * A part of switch/orblink_api.h, where the terms of the comments are explained.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_BRIDGING_H
#define ORBLINK_SWITCH_ORBLINK_BRIDGING_H

#include <stdint.h>

#include "common/export.h"
#include "switch/orblink_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Turns provider bridging on. Stored. With another TPID while it is on: programs that.
 *
 * \param[in] DevIdx    switch, 0 or 1, below the number of switches
 * \param[in] STagTpid  tag protocol identifier of the service tag, 1 to 0xFFFF
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: IEEE 802.1ad
 */
OB_EXPORT int ORBLINK_EnableProviderBridgedMode(uint8_t DevIdx, uint16_t STagTpid);

/**
 * Turns provider bridging off; the TPID is kept. Stored. Fails in battery mode.
 *
 * \param[in] DevIdx  switch, 0 or 1, below the number of switches
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2; battery mode at
 *       2
 * \note Lock: taken; not in battery mode
 * \note Standard: IEEE 802.1ad
 */
OB_EXPORT int ORBLINK_DisableProviderBridgedMode(uint8_t DevIdx);

/**
 * Sets the port VLAN identifier (PVID) of a LAN port. Stored.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] LanPortIdx  LAN port, 1 to the number of ports - 1
 * \param[in] Vid         1 to 4094, in its low 16 bits
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: IEEE 802.1Q
 */
OB_EXPORT int ORBLINK_SetLanPortVlan(uint8_t DevIdx, uint8_t LanPortIdx, int Vid);

/**
 * Sets the priority code point of a LAN port. Stored.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] LanPortIdx  LAN port, 1 to the number of ports - 1
 * \param[in] Pcp         0 to 7
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: IEEE 802.1Q
 */
OB_EXPORT int ORBLINK_SetLanPortPcp(uint8_t DevIdx, uint8_t LanPortIdx, uint8_t Pcp);

/**
 * Sets the egress tagging of a LAN port. Stored.
 *
 * \param[in] DevIdx               switch, 0 or 1, below the number of switches
 * \param[in] LanPortIdx           LAN port, 1 to the number of ports - 1
 * \param[in] EnableEgressTagging  as the HAL has it
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: IEEE 802.1Q
 */
OB_EXPORT int ORBLINK_SetLanPortEgressTagging(uint8_t DevIdx, uint8_t LanPortIdx,
                                              uint32_t EnableEgressTagging);

/**
 * Sets the port group of a LAN port. Stored. The lock of the group stays changed when the write
 * then fails; ports are locked by default.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] LanPortIdx  LAN port, 1 to the number of ports - 1
 * \param[in] GroupId     as the HAL has it; 0xFFFFFFFF = none
 * \param[in] LockState   1 locks the group and writes, 2 unlocks and writes, 0 writes only when
 *                        unlocked and is else a silent success; others fail
 * \return 0, also for a value that is stored already; -1 on failure, the lock of the group then
 *         as asked for
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetLanPortGroupId(uint8_t DevIdx, uint8_t LanPortIdx, uint32_t GroupId,
                                        uint32_t LockState);

/**
 * Maps a source MAC address to a VLAN, or removes the mapping. Stored. An entry is the pair of
 * masked address and port; there are 32. Removing what is not there succeeds. There is no short-
 * cut for what is stored already.
 *
 * \param[in] DevIdx         switch, 0 or 1, below the number of switches
 * \param[in] LogPort        port, 1 to the number of ports - 1
 * \param[in] Mac            6 bytes in transmission order; not null
 * \param[in] Mask           bit b of 0 to 11: nibble b counts, bit 0 being the last hex digit;
 *                           nibbles that do not count are stored and sent as 0xF
 * \param[in] VlanId         as the HAL has it
 * \param[in] EnableMapping  non-zero adds or updates, 0 removes
 * \return 0, or -1 on failure; when the HAL failed the record keeps the new entry
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.1Q
 */
OB_EXPORT int ORBLINK_MapMactoVlan(uint8_t DevIdx, uint8_t LogPort, const uint8_t* Mac,
                                   uint16_t Mask, uint16_t VlanId, int EnableMapping);

/**
 * Copies the mapping table, free entries included.
 *
 * \param[in]  DevIdx  switch, 0 or 1, below the number of switches
 * \param[out] Table   32 struct MacToVlanEntry, 512 bytes; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetMactoVlanTable(uint8_t DevIdx, void* Table);

#ifdef __cplusplus
}
#endif

#endif

/*
 * Switch control: ports. Ports 8 and above do not exist.
 * A part of switch/orblink_api.h, where the terms of the comments are explained.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_PORTS_H
#define ORBLINK_SWITCH_ORBLINK_PORTS_H

#include <stdint.h>

#include "common/export.h"
#include "switch/orblink_records.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Reads the counters of a port.
 *
 * \param[in]  DevIdx    switch, 0 or 1, below the number of switches
 * \param[in]  PortIdx   port, 0 to the number of ports - 1
 * \param[out] Counters  laid out by the HAL, which gets the pointer as it is
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetPortCounters(uint8_t DevIdx, uint8_t PortIdx, void* Counters);

/**
 * Clears the counters of a port.
 *
 * \param[in] DevIdx   switch, 0 or 1, below the number of switches
 * \param[in] PortIdx  port, 0 to the number of ports - 1
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_ResetPortCounters(uint8_t DevIdx, uint8_t PortIdx);

/**
 * Reads the link of a port. With the link down and Link given, speed and duplex are the
 * configured ones.
 *
 * \param[in]  DevIdx      switch, 0 or 1, below the number of switches
 * \param[in]  PortIdx     port, 0 to the number of ports - 1
 * \param[out] Link        non-zero = up; may be null
 * \param[out] Speed       enum OB_Speed; may be null
 * \param[out] FullDuplex  non-zero = full; may be null
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 22.2.4.2 (link status)
 */
OB_EXPORT int ORBLINK_GetPortLink(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Link, uint32_t* Speed,
                                  uint32_t* FullDuplex);

/**
 * Forces speed and duplex of a PHY port, or lets it negotiate. Stored. Fails on a port that is
 * not enabled, unless the values are stored already.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] PhyPortIdx  port with a PHY, 0 to the number of ports - 1
 * \param[in] Speed       enum OB_Speed; OB_SPEED_AUTONEG = negotiate
 * \param[in] FullDuplex  non-zero = full
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2; a port that is
 *       not enabled at 2
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 28 (auto-negotiation)
 */
OB_EXPORT int ORBLINK_SetPhyPortSpeedDuplex(uint8_t DevIdx, uint8_t PhyPortIdx, uint32_t Speed,
                                            uint32_t FullDuplex);

/**
 * Enables a port and restores its settings; port 0 also resets the SerDes lane of the SoC. The
 * wish is stored first and stays when a step fails. Succeeds while the switch is not enabled.
 *
 * \param[in] DevIdx   switch, 0 or 1, below the number of switches
 * \param[in] PortIdx  port, 0 to the number of ports - 1
 * \return 0, or -1 on failure, the wish then stored
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_EnablePort(uint8_t DevIdx, uint8_t PortIdx);

/**
 * Tells whether a port is to be enabled. The record is read, not the chip.
 *
 * \param[in]  DevIdx   switch, 0 or 1, below the number of switches
 * \param[in]  PortIdx  port, 0 to the number of ports - 1
 * \param[out] Enabled  0 when it is not to be enabled, else 1; 1 on every failure; not null
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_GetPortEnable(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Enabled);

/**
 * Disables a port and ends its DVT mode; stored first, and stays when the HAL fails.
 *
 * \param[in] DevIdx   switch, 0 or 1, below the number of switches
 * \param[in] PortIdx  port, 0 to the number of ports - 1
 * \return 0, or -1 on failure, the wish then stored
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_DisablePort(uint8_t DevIdx, uint8_t PortIdx);

/**
 * Switches the internal delay of an RGMII port on or off. Stored.
 *
 * \param[in] DevIdx        switch, 0 or 1, below the number of switches
 * \param[in] RgmiiPortIdx  port without a PHY whose interface type is RGMII, 0 to the number of
 *                          ports - 1
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: RGMII 2.0
 */
OB_EXPORT int ORBLINK_EnableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx);
OB_EXPORT int ORBLINK_DisableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx);

/**
 * Tells the Energy-Efficient Ethernet state of a port, as the chip reports it.
 *
 * \param[in]  DevIdx    switch, 0 or 1, below the number of switches
 * \param[in]  Port      port, 0 to the number of ports - 1
 * \param[out] EeeState  as the HAL has it; 0 while the switch is not enabled; not null
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3az
 */
OB_EXPORT int ORBLINK_GetEeePortState(uint8_t DevIdx, uint8_t Port, uint32_t* EeeState);

/**
 * Switches Energy-Efficient Ethernet of a port on or off; the link goes down during the change.
 * Stored. Switching it off fails in battery mode.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] PhyPortIdx  port with a PHY, 0 to the number of ports - 1
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 2; battery mode at
 *       2
 * \note Lock: taken; not in battery mode for switching off
 * \note Standard: IEEE 802.3az
 */
OB_EXPORT int ORBLINK_EnablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx);
OB_EXPORT int ORBLINK_DisablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx);

/**
 * Mirrors the traffic of the source port to the destination port. Stored.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] SrcPortIdx  port, 0 to the number of ports - 1
 * \param[in] DstPortIdx  port, 0 to the number of ports - 1; 255 = no longer
 * \return 0, also for a value that is stored already; -1 on failure, the record then as before
 * \note Logs: failures once, at severity 1; a value that is stored already at 9
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_SetPortMirror(uint8_t DevIdx, uint8_t SrcPortIdx, uint8_t DstPortIdx);

/**
 * Reads the PHY test mode of a port. Does nothing, successfully, while the switch is not enabled;
 * a HAL without the slot fails.
 *
 * \param[in]  DevIdx   switch, 0 or 1, below the number of switches
 * \param[in]  PortIdx  port, 0 to the number of ports - 1
 * \param[out] Mode     laid out by the HAL, which gets the pointer as it is
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 40.6.1.1.2 for 1000BASE-T
 */
OB_EXPORT int ORBLINK_GetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, void* Mode);

/**
 * Sets the PHY test mode of a port. Not kept. Does nothing, successfully, while the switch is not
 * enabled; a HAL without the slot fails.
 *
 * \param[in] DevIdx   switch, 0 or 1, below the number of switches
 * \param[in] PortIdx  port, 0 to the number of ports - 1
 * \param[in] Mode     as the HAL has it
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: IEEE 802.3 clause 40.6.1.1.2 for 1000BASE-T
 */
OB_EXPORT int ORBLINK_SetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, uint8_t Mode);

/**
 * Starts a design-verification test of a PHY port. There is no short-cut for one that runs
 * already.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] PhyPortIdx  port with a PHY, 0 to the number of ports - 1
 * \param[in] DvtTest     1 to 4, meaning the HAL's
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_EnablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx, int DvtTest);

/**
 * Ends the design-verification test of a PHY port and restores the settings of the port.
 *
 * \param[in] DevIdx      switch, 0 or 1, below the number of switches
 * \param[in] PhyPortIdx  port with a PHY, 0 to the number of ports - 1
 * \return 0, or -1 on failure, also while the switch is not enabled
 * \note Logs: failures once, at severity 1; a value that is stored already at 2
 * \note Lock: taken
 * \note Standard: none
 */
OB_EXPORT int ORBLINK_DisablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx);

#ifdef __cplusplus
}
#endif

#endif

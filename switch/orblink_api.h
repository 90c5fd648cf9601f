/*
 * Switch control API: the records in shared memory and the operations.
 *
 * Common to every ORBLINK_ function unless its comment says otherwise:
 *  - DevIdx is the switch, 0 or 1, below the number of switches of the board.
 *  - Result: 0 for success, -1 for failure. A failure logs one severity-1 line through the
 * platform's log sink (module 21) and leaves the record as it was.
 *  - The call holds the switch semaphore from its prolog to its end and releases it on every path;
 *    a process that dies inside a call gives it back. It must not be made from a HAL slot, from the
 *    callback of the MAC walk or from a signal handler: it would wait for itself.
 *  - The first call of a process attaches it: opens the semaphore, maps the region, loads the HAL
 *    libraries. Before ORBLINK_InitOnce has run on the machine every call fails.
 *  - Out pointers are the caller's and not kept. Null fails unless said; what is laid out by the HAL
 *    (counters, register values, test modes, ioctl parameters) and the walk's callback go to the HAL
 *    as they are.
 *  - "Stored": a switch that is not enabled takes the value into its record and applies it at the
 *    next bring-up. "Needs the switch enabled": fails instead.
 *  - Setters return 0 without touching the chip when the value is stored already (severity 2).
 */
#ifndef ORBLINK_SWITCH_ORBLINK_API_H
#define ORBLINK_SWITCH_ORBLINK_API_H

#include <stdint.h>

#include "board/board_services.h"
#include "common/export.h"
#include "common/format.h"
#include "common/iface.h"

#ifdef __cplusplus
extern "C" {
#endif

#define OB_MAX_SWITCHES OB_MAX_DEVICES
#define OB_MAX_PORTS 8
#define OB_MAC_VLAN_ENTRIES 32
#define OB_HAL_PRIV_DATA_SIZE 1900
#define OB_MAC_TABLE_ENTRIES 256

#define OB_NO_HAL_INDEX 255
#define OB_NO_GROUP (-1)
#define OB_NO_MIRROR 0xFF

/* SwitchCaps.capsFlags. The snooping bit means that the feature is missing. */
#define OB_CAPS_NO_SNOOPING 0x01
#define OB_CAPS_EEE 0x02
#define OB_CAPS_MIRRORING 0x04

/* SwitchDeviceRecord.state; 0 = never brought up. */
#define OB_STATE_RESET 1
#define OB_STATE_ENABLED 2

/* Capabilities, filled by the HAL's GetSwitchCaps; bytes without a name are the HAL's own. */
struct SwitchCaps {
    uint8_t capsFlags;
    uint8_t halDefined[5];
    uint8_t numOfPorts;
    uint8_t halDefined2;
    struct {
        uint32_t portIfaceType; /* 4 = RGMII */
        uint32_t portHasPhy;    /* non-zero = a PHY is attached */
        uint32_t halDefined;
    } port[OB_MAX_PORTS];
};

/* One source-MAC-to-VLAN mapping. */
struct MacToVlanEntry {
    uint16_t VlanId;
    uint8_t Mac[6]; /* masked-out nibbles set to 0xF */
    uint16_t Mask;  /* nibble mask as the caller gave it */
    uint8_t LogPort;
    uint8_t padding;
    uint32_t EnableMapping; /* 1 = in use, 0 = free */
};

/* The provisioned configuration of one switch. */
struct SwitchProvConfig {
    uint32_t state;
    uint32_t InProviderBridgedMode; /* 0 = as the chip comes out of reset, 1 = on, else off */
    int32_t groupId[OB_MAX_PORTS];
    uint32_t groupIdLock[OB_MAX_PORTS]; /* non-zero = locked against plain writes */
    uint16_t lanPortVlan[OB_MAX_PORTS];
    uint8_t lanPortPcp[OB_MAX_PORTS];
    uint32_t egressTagging[OB_MAX_PORTS];
    struct {
        uint32_t linkSpeed; /* enum OB_Speed */
        uint32_t linkFullDuplex;
    } link[OB_MAX_PORTS];
    uint8_t enabledPorts;    /* bit n = port n */
    uint8_t rgmiiDelayPorts; /* bit n = port n */
    uint16_t STagTpid;
    uint32_t igmpSnooping; /* 0 = leave, 1 = enable, else disable */
    uint8_t eeePorts;      /* bit n = port n */
    uint8_t mirrorDst[OB_MAX_PORTS];
    uint8_t ledMode;
    uint8_t padding[2];
    uint32_t macAging;
    uint16_t mtuSize;
    uint8_t padding2[2];
    struct MacToVlanEntry macToVlanTable[OB_MAC_VLAN_ENTRIES];
};

/* All that the library keeps of one switch. */
struct SwitchDeviceRecord {
    uint8_t capsValid;
    uint8_t padding[3];
    struct SwitchCaps caps;
    uint8_t configValid; /* 1 when the stored configuration may be restored */
    uint8_t padding2[3];
    struct SwitchProvConfig config;
    uint8_t bsdValid;
    uint8_t padding3[3];
    struct SwitchBoardEntry board;
    uint8_t halIdx; /* OB_NO_HAL_INDEX = none */
    uint8_t padding4[3];
    uint32_t rxResetAfterSerdes; /* 1 = a receive-path reset follows each lane reset */
    uint32_t serviceStatus;
    uint8_t dvtPorts; /* bit n = PHY port n in DVT mode */
    uint8_t padding5[3];
};

/* The shared region "/obos_orblink_driver". */
struct SwitchDeviceRegion {
    struct SwitchDeviceRecord device[OB_MAX_SWITCHES];
    struct SwitchVendorRecord vendor[OB_MAX_SWITCHES];
    uint8_t NumOfSwitches;
    uint8_t halPrivData[OB_MAX_SWITCHES][OB_HAL_PRIV_DATA_SIZE]; /* by HAL index */
    uint8_t unused[3];
};

/* One entry of the chip's MAC table. */
struct MacEntry {
    uint8_t data[20];     /* laid out by the HAL */
    uint32_t contextWord; /* low 32 bits of the context that the HAL was given */
};

/* Output of ORBLINK_GetMacTable. */
struct MacTable {
    struct MacEntry entry[OB_MAC_TABLE_ENTRIES];
    uint32_t count;
    uint32_t overflow; /* 1 when the chip held more */
};

OB_FORMAT_AT(struct SwitchCaps, capsFlags, 0);
OB_FORMAT_AT(struct SwitchCaps, numOfPorts, 6);
OB_FORMAT_AT(struct SwitchCaps, port[0].portIfaceType, 8);
OB_FORMAT_AT(struct SwitchCaps, port[1].portIfaceType, 20);
OB_FORMAT_AT(struct SwitchCaps, port[2].portIfaceType, 32);
OB_FORMAT_AT(struct SwitchCaps, port[3].portIfaceType, 44);
OB_FORMAT_AT(struct SwitchCaps, port[4].portIfaceType, 56);
OB_FORMAT_AT(struct SwitchCaps, port[5].portIfaceType, 68);
OB_FORMAT_AT(struct SwitchCaps, port[6].portIfaceType, 80);
OB_FORMAT_AT(struct SwitchCaps, port[7].portIfaceType, 92);
OB_FORMAT_AT(struct SwitchCaps, port[0].portHasPhy, 12);
OB_FORMAT_AT(struct SwitchCaps, port[0].halDefined, 16);
OB_FORMAT_AT(struct SwitchCaps, port[7].portHasPhy, 96);
OB_FORMAT_AT(struct SwitchCaps, port[7].halDefined, 100);
OB_FORMAT_SIZE(struct SwitchCaps, 104);

OB_FORMAT_AT(struct MacToVlanEntry, VlanId, 0);
OB_FORMAT_AT(struct MacToVlanEntry, Mac, 2);
OB_FORMAT_AT(struct MacToVlanEntry, Mask, 8);
OB_FORMAT_AT(struct MacToVlanEntry, LogPort, 10);
OB_FORMAT_AT(struct MacToVlanEntry, EnableMapping, 12);
OB_FORMAT_SIZE(struct MacToVlanEntry, 16);

OB_FORMAT_AT(struct SwitchDeviceRecord, capsValid, 0);
OB_FORMAT_AT(struct SwitchDeviceRecord, caps, 4);
OB_FORMAT_AT(struct SwitchDeviceRecord, configValid, 108);
OB_FORMAT_AT(struct SwitchDeviceRecord, config, 112);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.state, 112);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.InProviderBridgedMode, 116);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.groupId, 120);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.groupIdLock, 152);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.lanPortVlan, 184);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.lanPortPcp, 200);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.egressTagging, 208);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.link[0].linkSpeed, 240);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.link[0].linkFullDuplex, 244);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.link[1].linkSpeed, 248);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.link[7].linkFullDuplex, 300);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.enabledPorts, 304);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.rgmiiDelayPorts, 305);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.STagTpid, 306);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.igmpSnooping, 308);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.eeePorts, 312);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.mirrorDst, 313);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.ledMode, 321);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.macAging, 324);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.mtuSize, 328);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.macToVlanTable[0], 332);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.macToVlanTable[1], 348);
OB_FORMAT_AT(struct SwitchDeviceRecord, config.macToVlanTable[31], 828);
OB_FORMAT_AT(struct SwitchDeviceRecord, bsdValid, 844);
OB_FORMAT_AT(struct SwitchDeviceRecord, board, 848);
OB_FORMAT_AT(struct SwitchDeviceRecord, board.internalPortPidx, 892);
OB_FORMAT_AT(struct SwitchDeviceRecord, board.mdioAddr, 896);
OB_FORMAT_AT(struct SwitchDeviceRecord, board.mdioBus, 897);
OB_FORMAT_AT(struct SwitchDeviceRecord, board.internalPortIfaceSpeed, 900);
OB_FORMAT_AT(struct SwitchDeviceRecord, board.internalPortIfaceMode, 904);
OB_FORMAT_AT(struct SwitchDeviceRecord, halIdx, 916);
OB_FORMAT_AT(struct SwitchDeviceRecord, rxResetAfterSerdes, 920);
OB_FORMAT_AT(struct SwitchDeviceRecord, serviceStatus, 924);
OB_FORMAT_AT(struct SwitchDeviceRecord, dvtPorts, 928);
OB_FORMAT_SIZE(struct SwitchDeviceRecord, 932);
OB_FORMAT_SIZE(struct SwitchProvConfig, 732);

OB_FORMAT_AT(struct SwitchDeviceRegion, device[0], 0);
OB_FORMAT_AT(struct SwitchDeviceRegion, device[1], 932);
OB_FORMAT_AT(struct SwitchDeviceRegion, vendor[0].vendorParamSize, 1864);
OB_FORMAT_AT(struct SwitchDeviceRegion, vendor[0].vendorParams, 1868);
OB_FORMAT_AT(struct SwitchDeviceRegion, vendor[1].vendorParamSize, 1900);
OB_FORMAT_AT(struct SwitchDeviceRegion, vendor[1].vendorParams, 1904);
OB_FORMAT_AT(struct SwitchDeviceRegion, NumOfSwitches, 1936);
OB_FORMAT_AT(struct SwitchDeviceRegion, halPrivData[0], 1937);
OB_FORMAT_AT(struct SwitchDeviceRegion, halPrivData[1], 3837);
OB_FORMAT_AT(struct SwitchDeviceRegion, unused, 5737);
OB_FORMAT_SIZE(struct SwitchDeviceRegion, 5740);

OB_FORMAT_AT(struct MacEntry, data, 0);
OB_FORMAT_AT(struct MacEntry, contextWord, 20);
OB_FORMAT_SIZE(struct MacEntry, 24);
OB_FORMAT_AT(struct MacTable, entry[1], 24);
OB_FORMAT_AT(struct MacTable, entry[255], 6120);
OB_FORMAT_AT(struct MacTable, count, 6144);
OB_FORMAT_AT(struct MacTable, overflow, 6148);
OB_FORMAT_SIZE(struct MacTable, 6152);

/* Called once per MAC table entry, with the switch semaphore held; non-zero = go on. */
typedef uint32_t (*MacEntryCallback)(struct MacEntry* Entry);

/* ---- Initialisation and queries ------------------------------------------------------------- */

/*
 * Initialises the switch family; run once per boot, by the process that owns the switches. Creates
 * the semaphore and the region, receives the board data over the mailbox (blocks until it arrives),
 * loads the HAL libraries and calls each one's Init. Only the low byte of Arg is tested: non-zero
 * also reads every switch's capabilities and writes the default configuration.
 *
 * A second call while the semaphore exists fails and leaves the region untouched. A failure on the
 * way leaves the semaphore in existence; it has to be removed from outside (ipcrm) before a retry.
 * A board without board data initialises with zero switches.
 */
OB_EXPORT int ORBLINK_InitOnce(uint32_t Arg);

/* Writes the number of switches, 0 to 2. */
OB_EXPORT int ORBLINK_GetNumOfSwitches(uint8_t* Out);

/* Copies the capability block (struct SwitchCaps, 104 bytes). Works in any state; fails until the
 * capabilities have been read, by initialisation or by bring-up. */
OB_EXPORT int ORBLINK_GetSwitchCaps(uint8_t DevIdx, void* Out);

/* Copies the provisioned configuration (struct SwitchProvConfig, 732 bytes). Fails while nothing
 * was provisioned, and in battery mode (severity 9), then without taking the semaphore. */
OB_EXPORT int ORBLINK_GetSwitchProvConfig(uint8_t DevIdx, void* Out);

/* Copies the whole region (struct SwitchDeviceRegion, 5740 bytes). */
OB_EXPORT int ORBLINK_GetSwitchDevices(void* Out);

/* Writes 1 when the board data ask for port isolation, else 0. DevIdx is bounded by the capacity
 * (2) and not by the number of switches; the semaphore is held only while the region is copied. */
OB_EXPORT int ORBLINK_GetIsolationModeEnabled(uint8_t DevIdx, uint32_t* Out);

/* Region services. They take no semaphore. Creating reuses a region that exists; mapping returns
 * the address of struct SwitchDeviceRegion, or null, and is for the life of the process. */
OB_EXPORT int OBOS_CreateSwitchDevices(void);
OB_EXPORT void* OBOS_MapSwitchDevices(void);

/* A built-in board entry for callers that have no board data. Only Which 1 has one (*Found = 1,
 * Entry filled); any other sets *Found = 0 and leaves Entry alone. Takes no semaphore. */
OB_EXPORT int OBOS_GetConfiguredDevice(int Which, struct SwitchBoardEntry* Entry, uint32_t* Found);

/* ---- Bring-up and reset --------------------------------------------------------------------- */

/*
 * Takes a switch out of reset and applies its stored configuration. Blocks for at least 3.2 s with
 * the semaphore held when the board has a reset pin. An enabled switch is left alone (0).
 *
 *   SetDefault       0 restores the stored configuration, which must be valid; 1 first writes the
 *                    defaults; any other value restores without the validity check
 *   VendorParams     null, or up to 32 bytes for the HAL's ResetSwitch, which are stored as well;
 *                    null with SetDefault non-zero uses the stored ones
 *   VendorParamSize  bytes at VendorParams
 *
 * Fails in battery mode (severity 2), after the pre-reset command. A failure after the chip's reset
 * leaves the switch enabled with part of the configuration applied; nothing is rolled back. A
 * failing per-port restore at the end is only logged. Progress is logged at severity 3.
 */
OB_EXPORT int ORBLINK_ResetDisable(uint8_t DevIdx, int SetDefault, uint8_t* VendorParams,
                                   uint32_t VendorParamSize);

/* Puts a switch into reset; the stored configuration is kept, DVT marks are cleared. On a board
 * without a reset pin nothing changes and the result is 0. */
OB_EXPORT int ORBLINK_ResetEnable(uint8_t DevIdx);

/* The integer of the platform's system-state attribute, non-zero in battery mode; 0 when it cannot
 * be read. Takes no semaphore, needs no initialisation, logs nothing. */
OB_EXPORT int ORBLINK_isBatteryMode(void);

/* The board's five MAC addresses: OBOS_GetMacAddresses. Takes no semaphore. */
OB_EXPORT int ORBLINK_GetMacAddresses(uint8_t* Mac0, uint8_t* Mac1, uint8_t* Mac2, uint8_t* Mac3,
                                      uint8_t* Mac4);

/* The value last given to ORBLINK_SetOrbLinkServiceStatus; 0 on any failure. */
OB_EXPORT uint32_t ORBLINK_IsOrbLinkServiceOn(uint8_t DevIdx);

/* Stores the service flag of a switch; the chip is not touched. */
OB_EXPORT int ORBLINK_SetOrbLinkServiceStatus(uint8_t DevIdx, uint32_t Signal);

/* ---- VLAN and bridging ---------------------------------------------------------------------- */

/* Provider bridging (IEEE 802.1ad) on, with the TPID of the service tag, not 0. Stored. With
 * another TPID while on: re-programmed. */
OB_EXPORT int ORBLINK_EnableProviderBridgedMode(uint8_t DevIdx, uint16_t STagTpid);

/* Provider bridging off; the TPID is kept. Stored. Fails in battery mode (severity 2) without
 * taking the semaphore. */
OB_EXPORT int ORBLINK_DisableProviderBridgedMode(uint8_t DevIdx);

/* The LAN-port setters: LanPortIdx is 1 to the number of ports - 1. Stored. */

/* Port VLAN identifier (PVID, IEEE 802.1Q); the low 16 bits of Vid, 1 to 4094. */
OB_EXPORT int ORBLINK_SetLanPortVlan(uint8_t DevIdx, uint8_t LanPortIdx, int Vid);

/* Priority code point (PCP, IEEE 802.1Q), 0 to 7. */
OB_EXPORT int ORBLINK_SetLanPortPcp(uint8_t DevIdx, uint8_t LanPortIdx, uint8_t Pcp);

/* Egress tagging; the value goes to the HAL as it is. */
OB_EXPORT int ORBLINK_SetLanPortEgressTagging(uint8_t DevIdx, uint8_t LanPortIdx,
                                              uint32_t EnableEgressTagging);

/* Port group; the value goes to the HAL as it is. LockState 1 locks the port's group and writes, 2
 * unlocks and writes, 0 writes only when unlocked and is otherwise a silent success; others fail.
 * The lock stays changed when the write then fails. Ports are locked by default. */
OB_EXPORT int ORBLINK_SetLanPortGroupId(uint8_t DevIdx, uint8_t LanPortIdx, uint32_t GroupId,
                                        uint32_t LockState);

/*
 * Maps a source MAC address to a VLAN. Stored.
 *
 *   LogPort        1 to the number of ports - 1
 *   Mac            6 bytes in transmission order
 *   Mask           bit b of 0 to 11: nibble b counts, bit 0 being the last hex digit; nibbles that
 *                  do not count are stored and sent as 0xF
 *   EnableMapping  non-zero adds or updates, 0 removes; removing what is not there succeeds
 *
 * An entry is the pair of masked address and port; there are 32. When the HAL fails the record
 * keeps the new entry.
 */
OB_EXPORT int ORBLINK_MapMactoVlan(uint8_t DevIdx, uint8_t LogPort, const uint8_t* Mac,
                                   uint16_t Mask, uint16_t VlanId, int EnableMapping);

/* Copies the mapping table (32 struct MacToVlanEntry, 512 bytes), free entries included. */
OB_EXPORT int ORBLINK_GetMactoVlanTable(uint8_t DevIdx, void* Table);

/* ---- Ports ---------------------------------------------------------------------------------- */

/* PortIdx is 0 to the number of ports - 1 and below 8; a PHY port also has a PHY attached. */

/* Reads or clears the port's counters; the layout is the HAL's. Needs the switch enabled. */
OB_EXPORT int ORBLINK_GetPortCounters(uint8_t DevIdx, uint8_t PortIdx, void* Counters);
OB_EXPORT int ORBLINK_ResetPortCounters(uint8_t DevIdx, uint8_t PortIdx);

/* Reads the link: up (non-zero), speed (enum OB_Speed) and duplex; each pointer may be null. With
 * the link down and Link given, speed and duplex are the configured ones. Needs the switch enabled.
 */
OB_EXPORT int ORBLINK_GetPortLink(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Link, uint32_t* Speed,
                                  uint32_t* FullDuplex);

/* Forces speed (enum OB_Speed; 1 = autonegotiation) and duplex of a PHY port. Stored. Fails
 * (severity 2) on a port that is not enabled, unless the values are stored already. */
OB_EXPORT int ORBLINK_SetPhyPortSpeedDuplex(uint8_t DevIdx, uint8_t PhyPortIdx, uint32_t Speed,
                                            uint32_t FullDuplex);

/* Enables a port and restores its settings; port 0 also resets the SoC's SerDes lane. The wish is
 * stored first and stays when a step fails. Succeeds while the switch is not enabled. */
OB_EXPORT int ORBLINK_EnablePort(uint8_t DevIdx, uint8_t PortIdx);

/* Writes 0 when the port is not to be enabled, else 1; 1 on every failure. The record is read, not
 * the chip. Needs the switch enabled. */
OB_EXPORT int ORBLINK_GetPortEnable(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Enabled);

/* Disables a port and ends its DVT mode; stored first, stays when the HAL fails. */
OB_EXPORT int ORBLINK_DisablePort(uint8_t DevIdx, uint8_t PortIdx);

/* RGMII internal delay of a port without a PHY whose interface type is RGMII. Stored. */
OB_EXPORT int ORBLINK_EnableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx);
OB_EXPORT int ORBLINK_DisableRgmiiDelay(uint8_t DevIdx, uint8_t RgmiiPortIdx);

/* Energy-Efficient Ethernet (IEEE 802.3az) of a port, as the chip reports it; 0 while the switch is
 * not enabled. */
OB_EXPORT int ORBLINK_GetEeePortState(uint8_t DevIdx, uint8_t Port, uint32_t* EeeState);

/* Energy-Efficient Ethernet of a port on or off; the link goes down during the change. Stored.
 * Disabling fails in battery mode (severity 2) without taking the semaphore. */
OB_EXPORT int ORBLINK_EnablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx);
OB_EXPORT int ORBLINK_DisablePhyPortEee(uint8_t DevIdx, uint8_t PhyPortIdx);

/* Mirrors the source port's traffic to the destination port; 255 = no longer. Stored. Already set
 * is logged at severity 9. */
OB_EXPORT int ORBLINK_SetPortMirror(uint8_t DevIdx, uint8_t SrcPortIdx, uint8_t DstPortIdx);

/* IEEE 802.3 PHY test mode of a port (clause 40.6 for 1000BASE-T); the value is the HAL's. Not
 * kept. Does nothing, successfully, while the switch is not enabled; a HAL without the slot fails.
 */
OB_EXPORT int ORBLINK_GetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, void* Mode);
OB_EXPORT int ORBLINK_SetPortIEEETestMode(uint8_t DevIdx, uint8_t PortIdx, uint8_t Mode);

/* Design-verification test of a PHY port: DvtTest 1 to 4, meaning the HAL's. Ending it restores the
 * port's settings. Needs the switch enabled. */
OB_EXPORT int ORBLINK_EnablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx, int DvtTest);
OB_EXPORT int ORBLINK_DisablePhyPortDvt(uint8_t DevIdx, uint8_t PhyPortIdx);

/* ---- Switch-wide features ------------------------------------------------------------------- */

/* Walks the MAC table (FDB, IEEE 802.1D): Callback once per entry, the semaphore held; it must not
 * call an ORBLINK_ function. Needs the switch enabled. */
OB_EXPORT int ORBLINK_ForEachMacEntry(uint8_t DevIdx, MacEntryCallback Callback);

/* Copies up to 256 MAC table entries and tells whether there were more. Zeroes Table only when the
 * switch is enabled, which it must be; entries copied before a HAL failure stay. */
OB_EXPORT int ORBLINK_GetMacTable(uint8_t DevIdx, struct MacTable* Table);

/* IGMP (RFC 4541) and MLD snooping. Stored. Fails on a chip without it. */
OB_EXPORT int ORBLINK_EnableIgmpSnooping(uint8_t DevIdx);
OB_EXPORT int ORBLINK_DisableIgmpSnooping(uint8_t DevIdx);

/* Raw register of a port, raw SMI register, and a command of the HAL's own. Handed to the HAL as
 * they are, without a bound; what is read is laid out by the HAL. Need the switch enabled. */
OB_EXPORT int ORBLINK_ReadPortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, void* Value);
OB_EXPORT int ORBLINK_WritePortReg(uint8_t DevIdx, uint16_t Port, uint16_t Reg, uint16_t Val);
OB_EXPORT int ORBLINK_SmiRead(uint8_t DevIdx, uint16_t RegAddr, void* Data);
OB_EXPORT int ORBLINK_SmiWrite(uint8_t DevIdx, uint16_t RegAddr, uint16_t Data);
OB_EXPORT int ORBLINK_VendorSpecificIoctl(uint8_t DevIdx, int Cmd, void* pParam);

/* Has the HAL print the chip's state machines. Needs the switch enabled. */
OB_EXPORT int ORBLINK_PrintMachineState(uint8_t DevIdx);

/* QoS: weighted random early detection per queue and global, queue reservation, port flow control
 * (IEEE 802.3 annex 31B). The values are the HAL's, in this order; nothing is stored. Need the
 * switch enabled. */
OB_EXPORT int ORBLINK_SetQWred(uint8_t DevIdx, uint8_t A, uint16_t B, uint16_t C, uint16_t D,
                               uint16_t E, uint16_t F, uint16_t G);
OB_EXPORT int ORBLINK_SetGlobWred(uint8_t DevIdx, uint8_t A, uint8_t B, uint8_t C, uint16_t D,
                                  uint16_t E, uint16_t F, uint16_t G, uint16_t H, uint16_t I);
OB_EXPORT int ORBLINK_SetQRsrv(uint8_t DevIdx, uint8_t A, uint16_t B);
OB_EXPORT int ORBLINK_SetPortFc(uint8_t DevIdx, uint8_t Port, uint16_t A, uint16_t B);

/* Ageing of learned MAC addresses, steps 1 to 5, meaning the HAL's. Stored. No short-cut. */
OB_EXPORT int ORBLINK_SetMacAging(uint8_t DevIdx, int Aging);

/* Largest frame in bytes, no range. Needs the switch enabled; then kept for the next bring-up. No
 * short-cut. */
OB_EXPORT int ORBLINK_SetMtuSize(uint8_t DevIdx, uint16_t Val);

/* LED mode as the chip uses it, compared with the stored one (a difference is logged at severity 2,
 * also while the switch is not enabled, when *Mode is left as it was). */
OB_EXPORT int ORBLINK_GetLEDConfig(uint8_t DevIdx, uint8_t* Mode);

/* LED mode, meaning the HAL's. Stored. No short-cut. */
OB_EXPORT int ORBLINK_SetLEDConfig(uint8_t DevIdx, uint8_t Mode);

#ifdef __cplusplus
}
#endif

#endif

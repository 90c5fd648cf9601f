/*
 * Formats of the switch family: the records in shared memory and what operations hand out. The same
 * bytes with every compiler and ABI.
 */
#ifndef ORBLINK_SWITCH_ORBLINK_RECORDS_H
#define ORBLINK_SWITCH_ORBLINK_RECORDS_H

#include <stdint.h>

#include "board/board_services.h"
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

/* The shared region OB_SWITCH_REGION_NAME (common/shared_names.h). */
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

#ifdef __cplusplus
}
#endif

#endif

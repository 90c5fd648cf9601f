/*
 * Formats of the PHY family: the records in shared memory. The same bytes with every compiler and
 * ABI.
 */
#ifndef ORBLINK_PHY_ETHPHY_RECORDS_H
#define ORBLINK_PHY_ETHPHY_RECORDS_H

#include <stdint.h>

#include "board/board_services.h"
#include "common/format.h"
#include "common/iface.h"

#ifdef __cplusplus
extern "C" {
#endif

#define EP_MAX_PHYS OB_MAX_DEVICES
#define EP_HAL_PRIV_DATA_SIZE 552

#define EP_NO_HAL_INDEX 255

/* PhyProvConfig.hwState; 0 = never brought up or reset. */
#define EP_HW_STATE_DISABLED 1
#define EP_HW_STATE_ENABLED 2

/* PhyDeviceRecord.postResetMark */
#define EP_POST_RESET_NONE 0
#define EP_POST_RESET_HELD 0xFF

/* The provisioned configuration of one PHY: seven words. Those without a meaning here are kept for
 * the programs that provision PHYs. */
struct PhyProvConfig {
    uint32_t hwState;
    uint32_t word8;
    uint32_t word12;     /* 1 by default */
    uint32_t word16;     /* 1 by default */
    uint32_t adminState; /* Enable value last given to ETHPHY_SetAdminState; 1 by default */
    uint32_t word24;
    uint32_t word28;
};

/* All that the library keeps of one PHY. */
struct PhyDeviceRecord {
    uint32_t word0;
    struct PhyProvConfig config;
    uint8_t bsdValid; /* 1 when the board data name this PHY */
    uint8_t padding[3];
    struct PhyBoardEntry board;
    uint8_t capsValid;
    uint8_t padding2[3];
    uint32_t caps;         /* filled by the HAL's GetCaps */
    uint8_t halIdx;        /* EP_NO_HAL_INDEX = none */
    uint8_t postResetMark; /* EP_POST_RESET_ */
    uint8_t padding3[2];
};

/* The shared region OB_PHY_REGION_NAME (common/shared_names.h). */
struct PhyDeviceRegion {
    struct PhyDeviceRecord phy[EP_MAX_PHYS];
    struct PhyVendorRecord vendor[EP_MAX_PHYS];
    uint8_t halPrivData[EP_MAX_PHYS][EP_HAL_PRIV_DATA_SIZE]; /* by HAL index */
    uint8_t NumOfPhys;
    uint8_t unused[3];
};

OB_FORMAT_AT(struct PhyProvConfig, hwState, 0);
OB_FORMAT_SIZE(struct PhyProvConfig, 28);

OB_FORMAT_AT(struct PhyDeviceRecord, word0, 0);
OB_FORMAT_AT(struct PhyDeviceRecord, config.hwState, 4);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word8, 8);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word12, 12);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word16, 16);
OB_FORMAT_AT(struct PhyDeviceRecord, config.adminState, 20);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word24, 24);
OB_FORMAT_AT(struct PhyDeviceRecord, config.word28, 28);
OB_FORMAT_AT(struct PhyDeviceRecord, bsdValid, 32);
OB_FORMAT_AT(struct PhyDeviceRecord, board, 36);
OB_FORMAT_AT(struct PhyDeviceRecord, board.serdesId, 68);
OB_FORMAT_AT(struct PhyDeviceRecord, board.mdioBus, 80);
OB_FORMAT_AT(struct PhyDeviceRecord, board.mdioAddr, 81);
OB_FORMAT_AT(struct PhyDeviceRecord, board.portIfaceSpeed, 84);
OB_FORMAT_AT(struct PhyDeviceRecord, board.portIfaceMode, 88);
OB_FORMAT_AT(struct PhyDeviceRecord, capsValid, 92);
OB_FORMAT_AT(struct PhyDeviceRecord, caps, 96);
OB_FORMAT_AT(struct PhyDeviceRecord, halIdx, 100);
OB_FORMAT_AT(struct PhyDeviceRecord, postResetMark, 101);
OB_FORMAT_SIZE(struct PhyDeviceRecord, 104);

OB_FORMAT_AT(struct PhyDeviceRegion, phy[0], 0);
OB_FORMAT_AT(struct PhyDeviceRegion, phy[1], 104);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[0], 208);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[0].ulpModeEnabled, 212);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[1], 216);
OB_FORMAT_AT(struct PhyDeviceRegion, vendor[1].ulpModeEnabled, 220);
OB_FORMAT_AT(struct PhyDeviceRegion, halPrivData[0], 224);
OB_FORMAT_AT(struct PhyDeviceRegion, halPrivData[1], 776);
OB_FORMAT_AT(struct PhyDeviceRegion, NumOfPhys, 1328);
OB_FORMAT_AT(struct PhyDeviceRegion, unused, 1329);
OB_FORMAT_SIZE(struct PhyDeviceRegion, 1332);

#ifdef __cplusplus
}
#endif

#endif

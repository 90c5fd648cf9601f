/*
 * Board services: the board-specific data that the application CPU sends over the mailbox, the
 * reset lines of the external devices, the SoC's SerDes lanes and the board's MAC addresses.
 *
 * No function takes a semaphore: those that need one run under that of the calling family. Lines go
 * to the log sink of the platform, module 21, of EP_InitBoardSpecificData module 26. Buffers are
 * owned by the caller.
 */
#ifndef ORBLINK_BOARD_BOARD_SERVICES_H
#define ORBLINK_BOARD_BOARD_SERVICES_H

#include <stdint.h>

#include "common/export.h"
#include "common/format.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Number of switches, and of PHYs, that a board can have. */
#define OB_MAX_DEVICES 2

/* Length of a HAL library's file name with its NUL. Without a NUL it counts as 32 characters. */
#define OB_HAL_NAME_SIZE 32

/* A pin number that means that there is no pin. */
#define OB_NO_GPIO_PIN 0xFFFFFFFFU

/* The first word, in network byte order, of the messages in which the board data come. */
#define OB_MESSAGE_SWITCH_DATA 10U
#define OB_MESSAGE_PHY_DATA 11U

/* One switch's wiring, as in the board data (there in network byte order). */
struct SwitchBoardEntry {
    char halLibName[OB_HAL_NAME_SIZE]; /* file name of the switch HAL library */
    uint32_t serdesId;                 /* SoC GMAC and SerDes lane of the internal port, 0 or 1 */
    uint32_t enableGpioPin;            /* OB_NO_GPIO_PIN = none */
    uint32_t resetGpioPin;             /* holds the switch in reset; OB_NO_GPIO_PIN = none */
    uint32_t internalPortPidx;         /* switch port wired to the SoC */
    uint8_t mdioAddr;                  /* 0xFF = none */
    uint8_t mdioBus;                   /* 0xFF = none */
    uint8_t padding[2];
    uint32_t internalPortIfaceSpeed; /* enum OB_Speed */
    uint32_t internalPortIfaceMode;  /* enum OB_IfaceMode */
    uint32_t preResetArg;            /* low byte goes into the pre-reset command */
    uint32_t reservedWord;
};

/* Switch board data as OBOS_InitHwSpecificData hands it back. */
struct SwitchBsd {
    struct SwitchBoardEntry entry[OB_MAX_DEVICES];
    uint8_t NumOfSwitchDevices; /* number of valid entries */
    uint8_t padding[3];
};

/* One PHY's wiring. The two MDIO bytes stand in the opposite order from the switch entry. */
struct PhyBoardEntry {
    char halLibName[OB_HAL_NAME_SIZE]; /* file name of the PHY HAL library */
    uint32_t serdesId;                 /* SoC GMAC and SerDes lane, 0 or 1 */
    uint32_t enableGpioPin;            /* OB_NO_GPIO_PIN = none */
    uint32_t resetGpioPin;             /* only the low byte is used, 255 = none */
    uint8_t mdioBus;                   /* 0xFF = none */
    uint8_t mdioAddr;                  /* 0xFF = none */
    uint8_t padding[2];
    uint32_t portIfaceSpeed; /* enum OB_Speed */
    uint32_t portIfaceMode;  /* enum OB_IfaceMode */
};

/* PHY board data as EP_InitBoardSpecificData hands it back. */
struct EthphyBsd {
    struct PhyBoardEntry entry[OB_MAX_DEVICES];
    uint8_t numOfPhys; /* number of valid entries */
    uint8_t padding[3];
};

/* Stored vendor parameters of one switch. */
struct SwitchVendorRecord {
    uint32_t vendorParamSize; /* bytes in use; above 32 counts as 32 */
    uint8_t vendorParams[32]; /* the first u32 is the port-isolation flag */
};

/* Board words of one PHY. */
struct PhyVendorRecord {
    uint32_t size;           /* 4 once filled */
    uint32_t ulpModeEnabled; /* 1 = ultra-low-power mode */
};

OB_FORMAT_AT(struct SwitchBoardEntry, halLibName, 0);
OB_FORMAT_AT(struct SwitchBoardEntry, serdesId, 32);
OB_FORMAT_AT(struct SwitchBoardEntry, enableGpioPin, 36);
OB_FORMAT_AT(struct SwitchBoardEntry, resetGpioPin, 40);
OB_FORMAT_AT(struct SwitchBoardEntry, internalPortPidx, 44);
OB_FORMAT_AT(struct SwitchBoardEntry, mdioAddr, 48);
OB_FORMAT_AT(struct SwitchBoardEntry, mdioBus, 49);
OB_FORMAT_AT(struct SwitchBoardEntry, internalPortIfaceSpeed, 52);
OB_FORMAT_AT(struct SwitchBoardEntry, internalPortIfaceMode, 56);
OB_FORMAT_AT(struct SwitchBoardEntry, preResetArg, 60);
OB_FORMAT_AT(struct SwitchBoardEntry, reservedWord, 64);
OB_FORMAT_SIZE(struct SwitchBoardEntry, 68);

OB_FORMAT_AT(struct SwitchBsd, entry[0], 0);
OB_FORMAT_AT(struct SwitchBsd, entry[1], 68);
OB_FORMAT_AT(struct SwitchBsd, NumOfSwitchDevices, 136);
OB_FORMAT_SIZE(struct SwitchBsd, 140);

OB_FORMAT_AT(struct PhyBoardEntry, halLibName, 0);
OB_FORMAT_AT(struct PhyBoardEntry, serdesId, 32);
OB_FORMAT_AT(struct PhyBoardEntry, enableGpioPin, 36);
OB_FORMAT_AT(struct PhyBoardEntry, resetGpioPin, 40);
OB_FORMAT_AT(struct PhyBoardEntry, mdioBus, 44);
OB_FORMAT_AT(struct PhyBoardEntry, mdioAddr, 45);
OB_FORMAT_AT(struct PhyBoardEntry, portIfaceSpeed, 48);
OB_FORMAT_AT(struct PhyBoardEntry, portIfaceMode, 52);
OB_FORMAT_SIZE(struct PhyBoardEntry, 56);

OB_FORMAT_AT(struct EthphyBsd, entry[0], 0);
OB_FORMAT_AT(struct EthphyBsd, entry[1], 56);
OB_FORMAT_AT(struct EthphyBsd, numOfPhys, 112);
OB_FORMAT_SIZE(struct EthphyBsd, 116);

OB_FORMAT_AT(struct SwitchVendorRecord, vendorParamSize, 0);
OB_FORMAT_AT(struct SwitchVendorRecord, vendorParams, 4);
OB_FORMAT_SIZE(struct SwitchVendorRecord, 36);
OB_FORMAT_AT(struct PhyVendorRecord, size, 0);
OB_FORMAT_AT(struct PhyVendorRecord, ulpModeEnabled, 4);
OB_FORMAT_SIZE(struct PhyVendorRecord, 8);

/**
 * Waits for the switch board data (message type 10) on the mailbox and acknowledges it. Blocks
 * until one message has been received or the mailbox failed. A mailbox failure or a message of
 * the wrong type, size or count leaves zero switches and is not a failure of this call. Also
 * stores the five MAC addresses for OBOS_GetMacAddresses, in this process only.
 *
 * \param[out] Bsd     entries, in host byte order up to the count, and the count; not null
 * \param[out] Vendor  two records, both zeroed, the first then filled; not null
 * \return 0; -1 for a null pointer, or when a copy or OBOS_InitBsdFromIni failed
 * \note Logs: failures once, at severity 1; the wiring of each switch at 3, entry and end at 9
 * \note Lock: not taken: the caller holds that of its family; not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_InitHwSpecificData(struct SwitchBsd* Bsd, struct SwitchVendorRecord* Vendor);

/**
 * Hook for a local source of board data that overrides the mailbox: a non-zero count left in Bsd
 * makes OBOS_InitHwSpecificData keep Bsd as it is; one above OB_MAX_DEVICES counts as 0. The
 * library's own does nothing; a program overrides it by defining the same symbol.
 *
 * \param[out] Bsd  defaults in, board data out
 * \return 0; any other value makes OBOS_InitHwSpecificData fail
 * \note Logs: that it is not implemented, at severity 3
 * \note Lock: not taken: the caller holds that of its family; not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_InitBsdFromIni(struct SwitchBsd* Bsd);

/**
 * Waits for the PHY board data (message type 11), as OBOS_InitHwSpecificData does for switches.
 *
 * \param[out] Bsd     entries and count; not null
 * \param[out] Vendor  the first record is filled, the second is left alone; not null
 * \return 0; -1 for a null pointer or when a copy failed
 * \note Logs: failures once, at severity 1; the wiring of each PHY at 3
 * \note Lock: not taken: the caller holds that of its family; not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int EP_InitBoardSpecificData(struct EthphyBsd* Bsd, struct PhyVendorRecord* Vendor);

/**
 * Drives the reset line of an external device.
 *
 * \param[in] Pin    18 or 19: the only lines there are
 * \param[in] Value  0 holds the device in reset, 1 releases it; written in decimal as given
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1; the line at 9
 * \note Lock: not taken: the caller holds that of its family; not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_SetGpioValue(uint32_t Pin, int Value);

/**
 * Resets the SerDes lane of a GMAC of the SoC through the lane driver.
 *
 * \param[in] GmacIdx   0 or 1
 * \param[in] Speed2_5  non-zero: the lane runs at 2.5 Gb/s (HSGMII)
 * \return 0, or -1 on failure
 * \note Logs: failures once, at severity 1, but none for another GmacIdx; steps at 9
 * \note Lock: not taken: the caller holds that of its family; not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int OBOS_ResetSerDes(uint32_t GmacIdx, int Speed2_5);

/**
 * Copies the five MAC addresses of the board. Fails, copying nothing, while any of the five is
 * all zero: before OBOS_InitHwSpecificData ran in this process, and after it ran without a
 * message.
 *
 * \param[out] Mac0  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac1  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac2  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac3  6 bytes in transmission order; null makes that copy fail
 * \param[out] Mac4  6 bytes in transmission order; null makes that copy fail
 * \return 0; -1 while they are missing; the non-zero code of the fifth copy when that failed,
 *         whatever the others did
 * \note Logs: the call at severity 3; missing addresses at 1; a failed copy not at all
 * \note Lock: not taken; may run anywhere but in a signal handler
 * \note Standard: IEEE 802 (EUI-48)
 */
OB_EXPORT int OBOS_GetMacAddresses(uint8_t* Mac0, uint8_t* Mac1, uint8_t* Mac2, uint8_t* Mac3,
                                   uint8_t* Mac4);

#ifdef __cplusplus
}
#endif

#endif

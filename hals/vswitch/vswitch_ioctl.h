/*
 * Commands of ORBLINK_VendorSpecificIoctl that the VS08 HAL knows, beside OBHAL_IOCTL_RX_RESET and
 * OBHAL_IOCTL_PRE_RESET of switch/orblink_hal.h; every other command fails.
 */
#ifndef ORBLINK_HALS_VSWITCH_VSWITCH_IOCTL_H
#define ORBLINK_HALS_VSWITCH_VSWITCH_IOCTL_H

#include <stdint.h>

/* Forgets every learnt address; no parameter. */
#define VSWITCH_IOCTL_FLUSH_MAC 16
/* struct VswitchStaticMac; fails when the table is full. */
#define VSWITCH_IOCTL_ADD_STATIC_MAC 17
/* struct VswitchStaticMac without its port; learnt or static; fails when there is no such entry. */
#define VSWITCH_IOCTL_DELETE_MAC 18

struct VswitchStaticMac {
    uint8_t mac[6];  /* a station's address */
    uint16_t vlanId; /* 1 to 4094 */
    uint8_t port;    /* 0 to 7 */
};

#endif

/* Interface modes and speeds, as the board data and the port operations code them. */
#ifndef ORBLINK_COMMON_IFACE_H
#define ORBLINK_COMMON_IFACE_H

/* Interface mode of a link between two chips (u32 on the wire and in the records). */
enum OB_IfaceMode {
    OB_IFACE_UNKNOWN = 0,
    OB_IFACE_MII = 1,    /* IEEE 802.3 clause 22 */
    OB_IFACE_RMII = 2,   /* reduced MII */
    OB_IFACE_GMII = 3,   /* IEEE 802.3 clause 35 */
    OB_IFACE_RGMII = 4,  /* reduced GMII */
    OB_IFACE_SGMII = 5,  /* serial GMII, 1.25 GBd */
    OB_IFACE_HSGMII = 6, /* serial GMII at 3.125 GBd (2.5 Gb/s) */
    OB_IFACE_MODE_COUNT = 7
};

/* Speed code (u32), for board interfaces and for ports alike. */
enum OB_Speed {
    OB_SPEED_UNKNOWN = 0,
    OB_SPEED_AUTONEG = 1,
    OB_SPEED_10M = 2,
    OB_SPEED_100M = 3,
    OB_SPEED_1G = 4,
    OB_SPEED_2G5 = 5,
    OB_SPEED_10G = 6,
    OB_SPEED_COUNT = 7
};

#endif

/* What the processes of one machine share: two locks, found by a key file, and two regions. */
#pragma once

/* The lock of each family is a System V set of one semaphore; its key is that of ftok() with this
 * file and number. The value is 1 while the lock is free. */
#define OB_SWITCH_KEY_FILE "/var/tmp/orblink_sem"
#define OB_PHY_KEY_FILE "/var/tmp/ethphy_sem"
#define OB_KEY_NUMBER 97

/* The POSIX shared-memory objects: struct SwitchDeviceRegion and struct PhyDeviceRegion. */
#define OB_SWITCH_REGION_NAME "/obos_orblink_driver"
#define OB_PHY_REGION_NAME "/ethphy_driver"

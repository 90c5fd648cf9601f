/* Marks the functions that liborblink exports. */
#ifndef ORBLINK_COMMON_EXPORT_H
#define ORBLINK_COMMON_EXPORT_H

#define OB_EXPORT __attribute__((visibility("default")))

#endif

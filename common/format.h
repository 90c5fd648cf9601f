/* Checks of the formats that processes, chips and boards share: every byte where it is said to be. */
#ifndef ORBLINK_COMMON_FORMAT_H
#define ORBLINK_COMMON_FORMAT_H

#include <assert.h>
#include <stddef.h>

#define OB_FORMAT_SIZE(type, size) static_assert(sizeof(type) == (size), "format")
#define OB_FORMAT_AT(type, member, offset) \
    static_assert(offsetof(type, member) == (offset), "format")

#endif

// What the MII ioctls find in an interface request behind the interface's name.
#pragma once

#include <net/if.h>

#include <cstdint>
#include <cstring>

#include "common/format.h"

namespace orblink {

struct MiiWords {
    uint16_t phyId;  // MDIO address; clause 45: with the MMD and bit 15 as its mark
    uint16_t regNum;
    uint16_t valueIn;
    uint16_t valueOut;
    uint16_t mdioBus;  // an extension of the platform's MDIO driver
};
static_assert(sizeof(MiiWords) == 10 && sizeof(MiiWords) <= sizeof(ifreq::ifr_ifru));
OB_FORMAT_AT(MiiWords, phyId, 0);
OB_FORMAT_AT(MiiWords, regNum, 2);
OB_FORMAT_AT(MiiWords, valueIn, 4);
OB_FORMAT_AT(MiiWords, valueOut, 6);
OB_FORMAT_AT(MiiWords, mdioBus, 8);

inline void PutMiiWords(ifreq& request, const MiiWords& words)
{
    memcpy(&request.ifr_ifru, &words, sizeof(words));
}

inline MiiWords TakeMiiWords(const ifreq& request)
{
    MiiWords words;
    memcpy(&words, &request.ifr_ifru, sizeof(words));
    return words;
}

}  // namespace orblink

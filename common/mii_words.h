// What the MII ioctls find in an interface request behind the interface's name.
#pragma once

#include <net/if.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace orblink {

struct MiiWords {
    uint16_t phyId;  // MDIO address; clause 45: with the MMD and bit 15 as its mark
    uint16_t regNum;
    uint16_t valueIn;
    uint16_t valueOut;
    uint16_t mdioBus;  // an extension of the platform's MDIO driver
};
static_assert(sizeof(MiiWords) == 10 && sizeof(MiiWords) <= sizeof(ifreq::ifr_ifru));
static_assert(offsetof(MiiWords, phyId) == 0);
static_assert(offsetof(MiiWords, regNum) == 2);
static_assert(offsetof(MiiWords, valueIn) == 4);
static_assert(offsetof(MiiWords, valueOut) == 6);
static_assert(offsetof(MiiWords, mdioBus) == 8);

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

#include "common/iface.h"

#include "common/iface_words.h"

namespace orblink {
namespace {

constexpr const char* kModeWords[] = {"UNKNOWN", "MII", "RMII", "GMII", "RGMII", "SGMII", "HSGMII"};
constexpr const char* kSpeedWords[] = {"UNKNOWN",  "AUTONEG", "10 Mbs", "100 Mbs",
                                       "1000 Mbs", "2.5Gbs",  "10 Gbs"};
constexpr const char* kPortSpeedWords[] = {"UNKNOWN", "AUTONEG", "10Mb/s", "100Mb/s",
                                           "1Gb/s",   "2.5Gb/s", "10Gb/s"};
static_assert(sizeof(kModeWords) / sizeof(kModeWords[0]) == OB_IFACE_MODE_COUNT);
static_assert(sizeof(kSpeedWords) / sizeof(kSpeedWords[0]) == OB_SPEED_COUNT);
static_assert(sizeof(kPortSpeedWords) / sizeof(kPortSpeedWords[0]) == OB_SPEED_COUNT);

}  // namespace

const char* IfaceModeWord(uint32_t mode)
{
    return mode < OB_IFACE_MODE_COUNT ? kModeWords[mode] : kModeWords[OB_IFACE_UNKNOWN];
}

const char* IfaceSpeedWord(uint32_t speed)
{
    return speed < OB_SPEED_COUNT ? kSpeedWords[speed] : kSpeedWords[OB_SPEED_UNKNOWN];
}

const char* PortSpeedWord(uint32_t speed)
{
    return speed < OB_SPEED_COUNT ? kPortSpeedWords[speed] : "Illegal";
}

}  // namespace orblink

#include "common/iface_words.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

constexpr const char* kNoValue = "NA";

// Not in each combination of pointers where the library is to be small: it would be many times as long.
OB_IN_EACH_CALL const char* WordFor(const uint32_t* value, const char* ifSet, const char* ifZero)
{
    if (value == nullptr)
        return kNoValue;
    return *value != 0 ? ifSet : ifZero;
}

}  // namespace

int ORBLINK_GetPortLink(uint8_t DevIdx, uint8_t PortIdx, uint32_t* Link, uint32_t* Speed,
                        uint32_t* FullDuplex)
{
    SwitchCall call{OB_CALLER, DevIdx};
    if (!call)
        return RC_ERROR;
    if (!call.Device().IsPort(PortIdx))
        return OB_ERROR("Invalid PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    if (!call.Enabled())
        return OB_ERROR("Switch is not in enabled state, DevIdx=%d", DevIdx);
    if (call.Hal(&HalTable::GetPortLink, PortIdx, Link, Speed, FullDuplex) != RC_OK)
        return OB_ERROR("GetPortLink failed, PortIdx=%d, DevIdx=%d", PortIdx, DevIdx);
    // A link that is down has no speed of its own: the configured one is of more use.
    const bool down = Link != nullptr && *Link == 0;
    if (down && Speed != nullptr)
        *Speed = call.Config().link[PortIdx].linkSpeed;
    if (down && FullDuplex != nullptr)
        *FullDuplex = call.Config().link[PortIdx].linkFullDuplex;
    OB_TRACE("DevIdx=%d, PortIdx=%d, LinkDetected=%s, LinkSpeed=%s, FullDp=%s", DevIdx, PortIdx,
             WordFor(Link, "ON", "DOWN"), Speed != nullptr ? PortSpeedWord(*Speed) : kNoValue,
             WordFor(FullDuplex, "FD", "HD"));
    return RC_OK;
}

#include "common/iface_words.h"
#include "switch/call/frame.h"

using namespace orblink;
using namespace orblink::sw;

namespace {

const char* DuplexWord(uint32_t fullDuplex)
{
    return fullDuplex != 0 ? "FD" : "HD";
}

const char* LinkWord(uint32_t link)
{
    return link != 0 ? "ON" : "DOWN";
}

const char* WordOrNa(const uint32_t* value, const char* (*word)(uint32_t))
{
    return value != nullptr ? word(*value) : "NA";
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
             WordOrNa(Link, LinkWord), WordOrNa(Speed, PortSpeedWord),
             WordOrNa(FullDuplex, DuplexWord));
    return RC_OK;
}

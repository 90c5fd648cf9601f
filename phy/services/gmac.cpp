#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <cerrno>
#include <cstring>

#include "phy/services/process_socket.h"

namespace orblink::phy {

namespace {

int SendReconfiguration(LogCaller caller, ifreq& request, const GmacReconfigRequest& gmac)
{
    if (ioctl(process.socket, SIOCDEVPRIVATE, &request) >= 0)
        return RC_OK;
    const int error = errno;
    EP_ERROR_AT_AS(caller, "ioctl to if=%s failed, errno=%8s cmd=%d speed=%d Duplex=%d errno=%d",
                   gmac.IfName, strerror(error), gmac.Command, gmac.Speed, gmac.Duplex, error);
    CloseProcessSocket();
    return RC_ERROR;
}

}  // namespace

}  // namespace orblink::phy

using namespace orblink;
using namespace orblink::phy;

int EPHAL_ReconfigureGmacPhy(uint8_t DevIdx, int SetSpeed, int Speed, int Duplex)
{
    if (DevIdx >= PhyCount())
        return EP_ERROR_AT("failed DevIndex=%d", DevIdx);
    const char* const name = InterfaceName(EP_CALLER, DevIdx, *FindRecord(DevIdx));
    if (name == nullptr || OpenProcessSocket(EP_CALLER) != RC_OK)
        return RC_ERROR;
    GmacReconfigRequest gmac = {.IfName = {},
                                .Command = EP_GMAC_RECONFIGURE,
                                .Speed = static_cast<uint32_t>(SetSpeed != 0 ? Speed : 0),
                                .Duplex = static_cast<uint32_t>(Duplex),
                                .Result = 0};
    ifreq request = {};
    request.ifr_data = reinterpret_cast<char*>(&gmac);
    if (StoreInterfaceName(EP_CALLER, request.ifr_name, name) != RC_OK ||
        StoreInterfaceName(EP_CALLER, gmac.IfName, name) != RC_OK ||
        SendReconfiguration(EP_CALLER, request, gmac) != RC_OK)
        return RC_ERROR;
    if (gmac.Result < 0)
        return EP_ERROR("interface update was skipped or aborted");
    return RC_OK;
}

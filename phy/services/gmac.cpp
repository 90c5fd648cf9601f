#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "common/log.h"
#include "phy/call/region.h"
#include "phy/services/process_socket.h"

using namespace orblink;
using namespace orblink::phy;

int EPHAL_ReconfigureGmacPhy(uint8_t DevIdx, int SetSpeed, int Speed, int Duplex)
{
    if (DevIdx >= PhyCount())
        return EP_ERROR_AT("%s:%d failed DevIndex=%d", DevIdx);
    if (!OpenProcessSocket())
        return EP_ERROR_AT("%s:%d socket failed, errno=%d", errno);
    const auto lane = static_cast<uint8_t>(ReadOnce(FindRecord(DevIdx)->board.serdesId));
    const char* const name = InterfaceName(lane);
    if (name == nullptr)
        return EP_ERROR_AT("%s:%d Invalid serdesId=%d, DevIndex=%d", lane, DevIdx);
    GmacReconfigRequest gmac = {.IfName = {},
                                .Command = EP_GMAC_RECONFIGURE,
                                .Speed = static_cast<uint32_t>(SetSpeed != 0 ? Speed : 0),
                                .Duplex = static_cast<uint32_t>(Duplex),
                                .Result = 0};
    ifreq request = {};
    request.ifr_data = reinterpret_cast<char*>(&gmac);
    if (strncpy_s(request.ifr_name, sizeof(request.ifr_name), name, sizeof(request.ifr_name)) != 0)
        return EP_ERROR_AT("%s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    if (strncpy_s(gmac.IfName, sizeof(gmac.IfName), name, sizeof(gmac.IfName)) != 0)
        return EP_ERROR_AT("%s:%d: Runtime-constraint violation error in function kova_strncpy_s");
    if (ioctl(process.socket.Get(), SIOCDEVPRIVATE, &request) < 0) {
        const int error = errno;
        EP_ERROR_AT("%s:%d ioctl to if=%s failed, errno=%8s cmd=%d speed=%d Duplex=%d errno=%d",
                    gmac.IfName, strerror(error), gmac.Command, gmac.Speed, gmac.Duplex, error);
        CloseProcessSocket();
        return RC_ERROR;
    }
    if (gmac.Result < 0)
        return EP_ERROR("interface update was skipped or aborted");
    return RC_OK;
}

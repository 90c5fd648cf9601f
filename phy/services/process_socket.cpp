#include "phy/services/process_socket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <iterator>

#include "common/descriptor.h"
#include "phy/call/process_state.h"

namespace orblink::phy {

bool OpenProcessSocket()
{
    if (process.socket < 0)
        process.socket = KeepDescriptor(socket(AF_INET, SOCK_DGRAM, 0));
    return process.socket >= 0;
}

void CloseProcessSocket()
{
    close(process.socket);  // result dropped: the request's failure is what is reported
    process.socket = -1;
}

const char* InterfaceName(uint8_t lane)
{
    static constexpr const char* kNames[] = {"nsgmii0", "nsgmii1", "UNKNOWN"};
    return lane < std::size(kNames) ? kNames[lane] : nullptr;
}

}  // namespace orblink::phy

#include "phy/services/process_socket.h"

#include <sys/socket.h>
#include <unistd.h>

#include <iterator>

#include "common/descriptor.h"
#include "phy/call/process_state.h"

namespace orblink::phy {

bool OpenProcessSocket()
{
    if (process.socket.Get() < 0)
        process.socket.Set(KeepDescriptor(socket(AF_INET, SOCK_DGRAM, 0)));
    return process.socket.Get() >= 0;
}

void CloseProcessSocket()
{
    close(process.socket.Get());  // result dropped: the request's failure is what is reported
    process.socket.Set(-1);
}

const char* InterfaceName(uint8_t lane)
{
    static constexpr const char* kNames[] = {"nsgmii0", "nsgmii1", "UNKNOWN"};
    return lane < std::size(kNames) ? kNames[lane] : nullptr;
}

}  // namespace orblink::phy

#include "platform/log_socket.h"

namespace obplatform {

sockaddr_un LogDaemonAddress()
{
    const sockaddr_un address{AF_UNIX, "/dev/log"};
    return address;
}

}  // namespace obplatform

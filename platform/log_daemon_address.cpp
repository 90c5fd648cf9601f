#include "platform/log_socket.h"

namespace obplatform {

sockaddr_un LogDaemonAddress()
{
    return {AF_UNIX, "/dev/log"};
}

}  // namespace obplatform

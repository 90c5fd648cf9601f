#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include "common/descriptor.h"
#include "common/result.h"
#include "common/wait.h"
#include "hwmbox/mailbox.h"

int HWMB_socket = -1;

namespace orblink {

constinit Mailbox mailbox = {};

void WaitBeforeRetry()
{
    WaitMicroseconds(kRetryMilliseconds * 1000);
}

namespace {

constexpr int kAddressFamily = 43;

int Bind(uint16_t appid, uint8_t mid)
{
    hwmbox_addr address = {};
    address.family = kAddressFamily;
    address.mid = mid;
    address.appid = appid;
    return bind(HWMB_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address));
}

}  // namespace

int HWMB_initializeSocket(int role, uint16_t appid, uint8_t mid)
{
    for (uint32_t failures = 0;; ++failures) {
        HWMB_socket = socket(kAddressFamily, role, 0);
        if (HWMB_socket >= 0)
            break;
        const int error = errno;
        HWMB_PRINT("failed to open socket!!! [ret=%d, errno=%d: %s]", HWMB_socket, error,
                   strerror(error));
        if (IsCountLineDue(failures))
            HWMB_PRINT("initialize socket failed for %u times!!!", failures);
        if (error != ENETDOWN) {
            HWMB_PRINT("Critical failure in open socket!!! [ret=%d, errno=%d: %s]", HWMB_socket,
                       error, strerror(error));
            HWMB_PRINT("HWMB_initializeSocket Failed");
            return RC_ERROR;
        }
        HWMB_PRINT("HW_MBOX not ready yet, try again in %d msec...", kRetryMilliseconds);
        WaitBeforeRetry();
    }
    HWMB_socket = KeepDescriptor(HWMB_socket);
    HWMB_PRINT("socket successfully opened! [HWMB_socket=%d]", HWMB_socket);

    HWMB_PRINT("hwmbox_addr values: mid=%d, appid=%d", mid, appid);
    for (uint32_t failures = 0;; ++failures) {
        const int ret = Bind(appid, mid);
        if (ret >= 0)
            break;
        const int error = errno;
        HWMB_PRINT("failed to bind socket!!! [ret=%d, errno=%d: %s]", ret, error, strerror(error));
        if (IsCountLineDue(failures))
            HWMB_PRINT("bind socket failed for %u times!!!", failures);
        if (error != EHOSTDOWN) {
            HWMB_PRINT("Critical failure in bind socket!!! [ret=%d, errno=%d: %s]", ret, error,
                       strerror(error));
            HWMB_PRINT("HWMB_initializeSocket Failed");
            return RC_ERROR;
        }
        HWMB_PRINT("APP-CPU's HW_MBOX not ready yet, try again in %d msec...", kRetryMilliseconds);
        WaitBeforeRetry();
    }
    HWMB_PRINT("socket is ready!!!");
    HWMB_PRINT("HWMB_initializeSocket done");
    return RC_OK;
}

}  // namespace orblink

using namespace orblink;

int HWMB_Start(int Role, uint16_t Appid, uint8_t Mid, MsgBuilder Builder, MsgParser Parser,
               void* Dest, int DestSize)
{
    HWMB_PRINT("Start. Socket type %s", Role != 0 ? "SOCK_SUBJECT" : "SOCK_COMMANDER");
    if (HWMB_initializeSocket(Role, Appid, Mid) != RC_OK)
        return RC_ERROR;

    const Callbacks callbacks = {Builder, Parser, Dest, DestSize};
    int result = RC_ERROR;
    if (Role == SOCK_COMMANDER)
        result = HWMB_Commander(callbacks);
    else if (Role == SOCK_SUBJECT)
        result = HWMB_Subject(callbacks);
    else
        HWMB_PRINT("HWMB_Start failed - Unknown socket type %d", Role);
    close(HWMB_socket);
    return result;
}

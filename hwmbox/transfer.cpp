#include <string.h>
#include <sys/socket.h>

#include "common/result.h"
#include "hwmbox/mailbox.h"

namespace orblink {
namespace {

constexpr uint32_t kBufferSize = HWMB_BUFFER_SIZE;

// What an earlier, longer message left must not be taken for a part of this one.
void ClearBehind(uint32_t size)
{
    if (size < kBufferSize)
        memset(mailbox.receiveBuffer + size, 0, kBufferSize - size);
}

}  // namespace

int HWMB_sendMsg(uint32_t size)
{
    HWMB_PRINT("Sending message [msgSize=%u]...", size);
    const bool fits = size <= kBufferSize;
    const ssize_t sent = fits ? send(HWMB_socket, mailbox.transmitBuffer, size, 0) : 0;
    if (sent < 0) {
        const int error = errno;
        HWMB_PRINT("failed to send!!! [ret=%d, errno=%d: %s]", static_cast<int>(sent), error,
                   strerror(error));
        if (IsCountLineDue(mailbox.sendFailures))
            HWMB_PRINT("sendMsg failed for %u times!!!", mailbox.sendFailures);
        ++mailbox.sendFailures;
        HWMB_PRINT("Critical failure in send!!! [ret=%d, errno=%d: %s]", HWMB_socket, error,
                   strerror(error));
        mailbox.sendFailures = 0;
        return RC_ERROR;
    }
    mailbox.sendFailures = 0;
    const auto count = static_cast<uint32_t>(sent);
    if (count < size) {
        HWMB_PRINT("failed to sent entire message (msgSize=%u), sent only %u bytes!", size, count);
        return RC_ERROR;
    }
    HWMB_PRINT("successfully sent %u bytes!", count);
    return RC_OK;
}

int HWMB_recvMsg(uint32_t* rtnMsgSize)
{
    if (rtnMsgSize == nullptr) {
        HWMB_PRINT("rtnMsgSize is NULL!!!");
        return RC_ERROR;
    }
    HWMB_PRINT("Receiving message...");
    const ssize_t ret = recv(HWMB_socket, mailbox.receiveBuffer, kBufferSize, MSG_TRUNC);
    if (ret >= 0) {
        *rtnMsgSize = static_cast<uint32_t>(ret);
        mailbox.receiveFailures = 0;
        ClearBehind(*rtnMsgSize);
        HWMB_PRINT("successfully received %u bytes!", *rtnMsgSize);
        HWMB_dumpBuffer(mailbox.receiveBuffer, static_cast<int>(*rtnMsgSize),
                        static_cast<int>(Readable(*rtnMsgSize)));
        return RC_OK;
    }

    const int error = errno;
    HWMB_PRINT("failed to recv!!! [ret=%d, errno=%d: %s]", static_cast<int>(ret), error,
               strerror(error));
    if (IsCountLineDue(mailbox.receiveFailures))
        HWMB_PRINT("recvMsg failed for %u times!!!", mailbox.receiveFailures);
    ++mailbox.receiveFailures;
    if (error == ECONNREFUSED) {
        HWMB_PRINT("Socket on other side is not ready yet, try again in %d msec...",
                   kRetryMilliseconds);
        return HWMB_NOT_READY;
    }
    HWMB_PRINT("Critical failure in recv!!! [ret=%d, errno=%d: %s]", HWMB_socket, error,
               strerror(error));
    if (error == ETIMEDOUT)
        HWMB_PRINT("HW_MBOX connection timed out!!! [errno=%d: %s]", error, strerror(error));
    mailbox.receiveFailures = 0;
    return RC_ERROR;
}

}  // namespace orblink

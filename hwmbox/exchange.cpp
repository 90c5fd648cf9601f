#include <string.h>

#include "common/result.h"
#include "hwmbox/mailbox.h"

namespace orblink {
namespace {

// The message header's second word, in the byte order in which the builder stored it.
uint32_t StoredPayloadLength()
{
    uint32_t word = 0;
    memcpy(&word, mailbox.transmitBuffer + sizeof(word), sizeof(word));
    return word;
}

// Up to a multiple of four. A size that would wrap there is too long to be sent as it is.
uint32_t Padded(uint32_t size)
{
    constexpr uint32_t kMask = 3;
    return size > UINT32_MAX - kMask ? size : (size + kMask) & ~kMask;
}

int HWMB_sendRecvMsg(uint32_t size, uint32_t* receivedSize)
{
    HWMB_PRINT("Send-Recv message...");
    HWMB_PRINT("Sending message... [msgSize=%u]", size);
    int result = HWMB_sendMsg(size);
    if (result == HWMB_NOT_READY) {
        HWMB_PRINT("internal error on send...");
        return HWMB_NOT_READY;
    }
    if (result != RC_OK) {
        HWMB_PRINT("failed to send Msg!");
        return RC_ERROR;
    }
    HWMB_PRINT("Msg successfully sent!");
    ::HWMB_dumpBuffer(mailbox.transmitBuffer, static_cast<int>(size));

    HWMB_PRINT("Receiving reply message...");
    result = HWMB_recvMsg(receivedSize);
    if (result == RC_OK) {
        HWMB_PRINT("Reply Msg is ready in buffer! [totalSize=%u]", *receivedSize);
        return RC_OK;
    }
    if (result == HWMB_NOT_READY) {
        HWMB_PRINT("internal error on recv...");
        return HWMB_NOT_READY;
    }
    HWMB_PRINT("failed to recv Reply Msg!");
    return RC_ERROR;
}

}  // namespace

int HWMB_Subject(const Callbacks& callbacks)
{
    HWMB_PRINT("Receiving message...");
    uint32_t receivedSize = 0;
    const int received = HWMB_recvMsg(&receivedSize);
    if (received != RC_OK) {
        if (received == HWMB_NOT_READY)
            HWMB_PRINT("internal error on recv...");
        else
            HWMB_PRINT("failed to recv Msg!");
        HWMB_PRINT("HWMB_Subject Failed");
        return received == HWMB_NOT_READY ? HWMB_NOT_READY : RC_ERROR;
    }
    HWMB_PRINT("Reply Msg is ready in buffer! [totalSize=%u]", receivedSize);

    uint32_t sendSize = 0;
    callbacks.builder(mailbox.transmitBuffer, &sendSize);
    HWMB_PRINT("Sending reply message... [msgSize=%u]", sendSize);
    if (HWMB_sendMsg(sendSize) != RC_OK) {
        HWMB_PRINT("failed to send Msg!");
        HWMB_PRINT("HWMB_Subject Failed");
        return RC_ERROR;
    }
    HWMB_PRINT("Msg successfully sent!");

    // The other side waits for its answer, not for our opinion of the message: that comes last.
    callbacks.parser(mailbox.receiveBuffer, Readable(receivedSize), callbacks.dest,
                     callbacks.destSize);
    return RC_OK;
}

int HWMB_Commander(const Callbacks& callbacks)
{
    uint32_t size = 0;
    if (callbacks.builder(mailbox.transmitBuffer, &size) != 0)
        HWMB_PRINT("msg builder failed");
    HWMB_PRINT("CreateMsg Done with msgSize %d, payload_len %d", size, StoredPayloadLength());
    size = Padded(size);
    HWMB_PRINT("Padded msgSize = %d", size);

    uint32_t receivedSize = 0;
    for (;;) {
        const int result = HWMB_sendRecvMsg(size, &receivedSize);
        if (result == RC_OK)
            break;
        HWMB_PRINT("HWMB_sendRecvMsg Done");
        if (result == HWMB_NOT_READY) {
            HWMB_PRINT("internal error, retry in %d msec...", kRetryMilliseconds);
            WaitBeforeRetry();
        } else {
            HWMB_PRINT("HWMB_sendRecvMsg failed - errno %d", errno);
        }
        if (size > HWMB_BUFFER_SIZE) {  // no repetition makes it fit
            HWMB_PRINT("HWMB_Commander Failed");
            return RC_ERROR;
        }
    }
    callbacks.parser(mailbox.receiveBuffer, Readable(receivedSize), nullptr, 0);
    // Commanders learn the outcome from their parser; the role always ends like this.
    HWMB_PRINT("HWMB_Commander Failed");
    return RC_ERROR;
}

}  // namespace orblink

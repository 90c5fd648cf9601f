// The steps of a mailbox exchange and the state that they share, inside the mailbox client only.
#pragma once

#include <errno.h>
#include <stdint.h>
#include <stdio.h>

#include "hwmbox/hwmbox.h"

namespace orblink {

// One line of diagnostics. It leaves errno as the failing call set it.
#define HWMB_PRINT(format, ...)                                                      \
    do {                                                                             \
        const int hwmbErrno = errno;                                                 \
        printf("%s:%d " format "\n", __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__); \
        errno = hwmbErrno;                                                           \
    } while (false)

constexpr unsigned kRetryMilliseconds = 1000;
constexpr uint32_t kFailuresPerCountLine = 10;

struct Mailbox {
    alignas(uint32_t) uint8_t receiveBuffer[HWMB_BUFFER_SIZE];
    alignas(uint32_t) uint8_t transmitBuffer[HWMB_BUFFER_SIZE];
    uint32_t receiveFailures;
    uint32_t sendFailures;
};
extern Mailbox mailbox;

struct Callbacks {
    MsgBuilder builder;
    MsgParser parser;
    void* dest;
    int destSize;
};

int HWMB_initializeSocket(int role, uint16_t appid, uint8_t mid);

int HWMB_Subject(const Callbacks& callbacks);
int HWMB_Commander(const Callbacks& callbacks);

// Sends nothing of a message that is longer than the transmit buffer, and fails.
int HWMB_sendMsg(uint32_t size);

// *rtnMsgSize is the message's full length, above HWMB_BUFFER_SIZE when it was cut.
int HWMB_recvMsg(uint32_t* rtnMsgSize);

// Shows a length, but reads no more than what is there of it.
void HWMB_dumpBuffer(const void* buffer, int shown, int readable);

// What of a message of that length the buffers hold.
constexpr uint32_t Readable(uint32_t size)
{
    return size < HWMB_BUFFER_SIZE ? size : HWMB_BUFFER_SIZE;
}

// Whether a failure count earns a line of its own.
constexpr bool IsCountLineDue(uint32_t failures)
{
    return failures != 0 && failures % kFailuresPerCountLine == 0;
}

void WaitBeforeRetry();

}  // namespace orblink

/*
 * Client of the hardware mailbox, the socket link to the application CPU (address family 43).
 *
 * Diagnostics go to standard output, each line beginning with the step's name and a line number.
 * State is one per process and has no lock: two threads must not run HWMB_Start at the same time,
 * and it must not be called from a signal handler. Nothing here takes a family's semaphore.
 */
#ifndef ORBLINK_HWMBOX_HWMBOX_H
#define ORBLINK_HWMBOX_HWMBOX_H

#include <stdint.h>

#include "common/export.h"
#include "common/format.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Roles. The number is also the socket type handed to socket(2). */
#define SOCK_COMMANDER 0 /* sends a message and waits for the reply */
#define SOCK_SUBJECT 1   /* waits for a message and answers it */

/* What HWMB_Start returns when a subject's receive was refused: the other side is not ready. */
#define HWMB_NOT_READY 256

/* Size of the receive and of the transmit buffer, in bytes. */
#define HWMB_BUFFER_SIZE 4096

/* The socket address that names an application's mailbox: 16 bytes, host byte order. */
#pragma pack(push, 1)
struct hwmbox_addr {
    uint16_t family; /* 43 */
    uint8_t mid;     /* module id */
    uint16_t appid;  /* application id */
    uint8_t zero[11];
};
#pragma pack(pop)

OB_FORMAT_AT(struct hwmbox_addr, family, 0);
OB_FORMAT_AT(struct hwmbox_addr, mid, 2);
OB_FORMAT_AT(struct hwmbox_addr, appid, 3);
OB_FORMAT_AT(struct hwmbox_addr, zero, 5);
OB_FORMAT_SIZE(struct hwmbox_addr, 16);

/*
 * Writes one message into the transmit buffer (Msg, HWMB_BUFFER_SIZE bytes, not cleared between
 * exchanges) and its size in bytes into *Size. Of a message above HWMB_BUFFER_SIZE nothing is
 * sent: the send fails, and the role ends.
 * Result: 0 for success; a subject ignores it, a commander prints a line and goes on.
 */
typedef int (*MsgBuilder)(void* Msg, uint32_t* Size);

/*
 * Interprets one received message. Msg is the receive buffer; Size is the message's length, or
 * HWMB_BUFFER_SIZE when it was longer and was cut. Bytes behind a shorter message are zero. Dest
 * and DestSize are what HWMB_Start was given (null and 0 in the commander's role). The result is
 * not used.
 */
typedef int (*MsgParser)(void* Msg, uint32_t Size, void* Dest, int DestSize);

/* Descriptor of the mailbox socket, -1 before the first HWMB_Start; keeps the number of the last
 * socket after it was closed. Never 0, 1 or 2, and closed on exec. */
OB_EXPORT extern int HWMB_socket;

/**
 * Opens and binds a mailbox socket, runs one exchange and closes the socket. A critical bind
 * failure leaves it open.
 *
 * Blocks: a mailbox that is not up (ENETDOWN from socket, EHOSTDOWN from bind) is tried again
 * every second without limit, a subject then waits for its message, and a commander repeats its
 * exchange until a reply arrives.
 *
 * \param[in]  Role      SOCK_COMMANDER or SOCK_SUBJECT
 * \param[in]  Appid     application id to bind
 * \param[in]  Mid       module id to bind
 * \param[in]  Builder   writes the message (commander) or the reply (subject); not null
 * \param[in]  Parser    interprets what was received, after the reply of a subject went out; not
 *                       null
 * \param[out] Dest      owned by the caller, handed to Parser
 * \param[in]  DestSize  bytes at Dest
 * \return 0 after the exchange of a subject; HWMB_NOT_READY when its receive was refused
 *         (ECONNREFUSED); -1 on any other failure, and always at the end of a commander's run,
 *         whose outcome the caller learns from its parser
 * \note Logs: each step on standard output, nothing through the log sink
 * \note Lock: not taken; one thread of a process at a time, not from a signal handler
 * \note Standard: none
 */
OB_EXPORT int HWMB_Start(int Role, uint16_t Appid, uint8_t Mid, MsgBuilder Builder,
                         MsgParser Parser, void* Dest, int DestSize);

/**
 * Prints a hex dump, 16 bytes to a line with their offset and their printable characters (0x21 to
 * 0x7D; others as '.').
 *
 * \param[in] Buffer  Length bytes; of null nothing is read
 * \param[in] Length  bytes; nothing below 1
 * \return nothing
 * \note Logs: the dump on standard output
 * \note Lock: not taken; one thread of a process at a time, not from a signal handler
 * \note Standard: none
 */
OB_EXPORT void HWMB_dumpBuffer(const void* Buffer, int Length);

#ifdef __cplusplus
}
#endif

#endif

/*
 * libobplatform.so.0: the three things that liborblink takes from its platform and that a plain
 * Linux machine lacks: a log sink, a shared-memory database service, and bounds-checked copies.
 *
 * A product replaces this library by its own: build a shared library with the SONAME
 * "libobplatform.so.0" that exports OBPLAT_Log, shm_init, kova_memcpy_s, kova_strncpy_s and
 * kova_vsnprintf_s as described here. liborblink needs no other symbol of it; the OBPLAT_Set
 * functions are for programs that use the shipped log sink. Every function is called through its
 * dynamic symbol, so a program or a preloaded library that defines the same name takes it over.
 */
#ifndef ORBLINK_PLATFORM_OB_PLATFORM_H
#define ORBLINK_PLATFORM_OB_PLATFORM_H

#include <stdarg.h>
#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Severities of a log site. */
#define OBPLAT_SEVERITY_ERROR 1U  /* a failure */
#define OBPLAT_SEVERITY_NOTICE 2U /* a value already set, a port in test mode */
#define OBPLAT_SEVERITY_INFO 3U   /* progress */
#define OBPLAT_SEVERITY_TRACE 9U  /* entry and exit of operations */

/* Modules of a log site. */
#define OBPLAT_MODULE_SWITCH 21U
#define OBPLAT_MODULE_PHY 26U

/* One static record for each place in the source that logs. */
typedef struct OBPLAT_LogSite {
    uint32_t Severity;
    uint32_t Class; /* always 3 */
    uint32_t Module;
    uint32_t Line; /* source line */
} OBPLAT_LogSite;

/**
 * The log sink. Called with a family's semaphore held as a rule, so it must not call back into
 * liborblink.
 *
 * Shipped: a site whose severity is above the level costs one compare and no formatting; the
 * others go to the program's handler, or to the local log daemon (/dev/log, one datagram a line,
 * "<8 * facility + level>program: text", facility LOG_USER) with severity 1 as LOG_ERR, 2 as
 * LOG_NOTICE, 3 as LOG_INFO, 9 as LOG_DEBUG. A line of more than 2047 bytes is cut.
 *
 * The sink never waits: a line that the daemon cannot take at once is lost, and the next one that
 * gets through begins with "[N lines lost] ". A daemon that does not keep up has little room: the
 * kernel queues net.unix.max_dgram_qlen lines (10 by default) for it. Where there was no daemon it
 * is looked for again after 10 ms. One descriptor is kept, above 2 and closed on exec; a program
 * may close it. errno stays as it is.
 *
 * \param[in] Site    the place that logs; static
 * \param[in] Func    name of the function that logs
 * \param[in] Zero    0
 * \param[in] Format  as for printf, and what follows it
 * \return nothing
 * \note Logs: the line
 * \note Lock: none of its own; from any thread and in the child of a fork
 * \note Standard: RFC 3164 (priority and tag)
 */
void OBPLAT_Log(const OBPLAT_LogSite* Site, const char* Func, int Zero, const char* Format, ...)
    __attribute__((format(printf, 4, 5)));

/* Receives the lines of the shipped sink; must not keep Args or the pointers. */
typedef void (*OBPLAT_LogHandler)(const OBPLAT_LogSite* Site, const char* Func, const char* Format,
                                  va_list Args);

/**
 * Installs a handler in place of the log daemon. Lines that other threads log meanwhile may still
 * go to the former one.
 *
 * \param[in] Handler  null brings the daemon back
 * \return nothing
 * \note Logs: nothing
 * \note Lock: none; from any thread
 * \note Standard: none
 */
void OBPLAT_SetLogHandler(OBPLAT_LogHandler Handler);

/**
 * Sets which lines are logged; up to severity 3 at the start.
 *
 * \param[in] Level  highest severity number that is still logged: 0 (none), 1, 2, 3 or 9
 * \return nothing
 * \note Logs: nothing
 * \note Lock: none; from any thread
 * \note Standard: none
 */
void OBPLAT_SetLogLevel(uint32_t Level);

/**
 * Initialises the platform's shared-memory database service for this process. liborblink calls it
 * once per process before it maps the PHY region. Shipped: does nothing.
 *
 * \param[in] Client    3
 * \param[in] Flags     0
 * \param[in] Reserved  0
 * \return negative fails the call that needs the region; shipped: 0
 * \note Logs: nothing; the caller logs a negative result
 * \note Lock: called with the PHY semaphore held
 * \note Standard: none
 */
int shm_init(int Client, int Flags, int Reserved);

/**
 * Bounds-checked copy. On a violation a valid destination is zeroed.
 *
 * \param[out] Dest     DestMax bytes; not null
 * \param[in]  DestMax  bytes at Dest, up to SIZE_MAX / 2
 * \param[in]  Src      Count bytes that do not overlap Dest; not null
 * \param[in]  Count    bytes to copy, up to DestMax
 * \return 0, or non-zero with nothing written past the destination
 * \note Logs: nothing; the caller logs a failure
 * \note Lock: none; from any thread
 * \note Standard: C11 annex K.3.7.1.1
 */
int kova_memcpy_s(void* Dest, size_t DestMax, const void* Src, size_t Count);

/**
 * Bounds-checked copy of a string. On a violation a valid destination becomes the empty string.
 *
 * \param[out] Dest     DestMax bytes; not null
 * \param[in]  DestMax  bytes at Dest, 1 to SIZE_MAX / 2
 * \param[in]  Src      string that does not overlap Dest; not null
 * \param[in]  Count    most characters to copy; a NUL follows them in any case
 * \return 0, or non-zero with nothing written past the destination
 * \note Logs: nothing; the caller logs a failure
 * \note Lock: none; from any thread
 * \note Standard: C11 annex K.3.7.1.4
 */
int kova_strncpy_s(char* Dest, size_t DestMax, const char* Src, size_t Count);

/**
 * Bounds-checked formatting: writes at most DestMax - 1 characters and a NUL.
 *
 * \param[out] Dest     DestMax bytes; not null
 * \param[in]  DestMax  bytes at Dest, 1 to SIZE_MAX / 2
 * \param[in]  Format   as for printf; not null
 * \param[in]  Args     what Format asks for
 * \return length of the whole text, or a negative value on failure
 * \note Logs: nothing; the caller logs a failure
 * \note Lock: none; from any thread
 * \note Standard: C11 annex K.3.5.3.12
 */
int kova_vsnprintf_s(char* Dest, size_t DestMax, const char* Format, va_list Args)
    __attribute__((format(printf, 3, 0)));

#define memcpy_s kova_memcpy_s
#define strncpy_s kova_strncpy_s
#define vsnprintf_s kova_vsnprintf_s

#ifdef __cplusplus
}
#endif

#endif

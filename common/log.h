// Log lines. Every place that logs owns one static record: severity, 3, module, source line. The
// name and the line that a record carries are those of the operation that one reads; formats are
// checked by the compiler.
//
//   macro                                  what it adds
//   OB_ERROR OB_NOTICE OB_INFO OB_TRACE     "%s:%d " before the format, function and line for it
//   OB_ERROR_AS OB_NOTICE_AS OB_INFO_AS     the same, function and line being those of the caller
//   OB_TRACE_AS                               that comes first
//   OB_ERROR_TWICE                          function, line, function, line, for the format's first four
//   EP_ERROR EP_INFO EP_TRACE               nothing
//   EP_ERROR_AT EP_INFO_AT EP_TRACE_AT      function and line, for the format's first two
//   EP_ERROR_AT_AS                          the same, being those of the caller that comes first
//
// OB_ is the switch side's module, EP_ the PHY side's. Severities: ERROR 1, NOTICE 2, INFO 3,
// TRACE 9. Only the ERROR forms have a value, RC_ERROR, so that a failing check reads
//     return OB_ERROR("Invalid Vid=%d", vid);
// the others are statements.
//
// OB_CALLER and EP_CALLER name the operation, and the line where they stand, for code that logs for
// others.
#pragma once

#include "common/result.h"
#include "platform/ob_platform.h"

namespace orblink {

// The record of a place that logs for itself. Internal linkage: one for each place, not one for all
// files that log in the same line.
template <uint32_t severity, uint32_t module, uint32_t line>
static constexpr OBPLAT_LogSite kLogSite = {severity, 3U, module, line};

// The records of a place on whose behalf shared code logs, whichever line that is.
struct LogSites {
    OBPLAT_LogSite error;
    OBPLAT_LogSite notice;
    OBPLAT_LogSite info;
    OBPLAT_LogSite trace;
};

template <uint32_t module, uint32_t line>
static constexpr LogSites kLogSites = {{OBPLAT_SEVERITY_ERROR, 3U, module, line},
                                       {OBPLAT_SEVERITY_NOTICE, 3U, module, line},
                                       {OBPLAT_SEVERITY_INFO, 3U, module, line},
                                       {OBPLAT_SEVERITY_TRACE, 3U, module, line}};

// An operation, and the line of it at which shared code was called.
struct LogCaller {
    const char* func;
    const LogSites* sites;

    int Line() const { return static_cast<int>(sites->error.Line); }
};

// The value of a line that reports a failure.
inline int Failed()
{
    return RC_ERROR;
}

}  // namespace orblink

#define OB_CALLER OB_CALLER_OF(OBPLAT_MODULE_SWITCH)
#define EP_CALLER OB_CALLER_OF(OBPLAT_MODULE_PHY)
#define OB_CALLER_OF(module) \
    (::orblink::LogCaller{__func__, &::orblink::kLogSites<module, __LINE__>})

#define OB_SITE(severity) (&::orblink::kLogSite<severity, OBPLAT_MODULE_SWITCH, __LINE__>)
#define EP_SITE(severity) (&::orblink::kLogSite<severity, OBPLAT_MODULE_PHY, __LINE__>)
#define OB_LOG(site, func, line, format, ...) \
    OBPLAT_Log(site, func, 0, format, func, line __VA_OPT__(, ) __VA_ARGS__)
#define OB_LOG_AS(caller, severity, ...) \
    OB_LOG(&(caller).sites->severity, (caller).func, (caller).Line(), __VA_ARGS__)
#define OB_FAILED(logged) (logged, ::orblink::Failed())

#define OB_ERROR(...) \
    OB_FAILED(OB_LOG(OB_SITE(OBPLAT_SEVERITY_ERROR), __func__, __LINE__, "%s:%d " __VA_ARGS__))
#define OB_NOTICE(...) \
    OB_LOG(OB_SITE(OBPLAT_SEVERITY_NOTICE), __func__, __LINE__, "%s:%d " __VA_ARGS__)
#define OB_INFO(...) OB_LOG(OB_SITE(OBPLAT_SEVERITY_INFO), __func__, __LINE__, "%s:%d " __VA_ARGS__)
#define OB_TRACE(...) \
    OB_LOG(OB_SITE(OBPLAT_SEVERITY_TRACE), __func__, __LINE__, "%s:%d " __VA_ARGS__)

#define OB_ERROR_AS(caller, ...) OB_FAILED(OB_LOG_AS(caller, error, "%s:%d " __VA_ARGS__))
#define OB_NOTICE_AS(caller, ...) OB_LOG_AS(caller, notice, "%s:%d " __VA_ARGS__)
#define OB_INFO_AS(caller, ...) OB_LOG_AS(caller, info, "%s:%d " __VA_ARGS__)
#define OB_TRACE_AS(caller, ...) OB_LOG_AS(caller, trace, "%s:%d " __VA_ARGS__)

#define OB_ERROR_TWICE(format, ...)                                                        \
    OB_FAILED(OB_LOG(OB_SITE(OBPLAT_SEVERITY_ERROR), __func__, __LINE__, format, __func__, \
                     __LINE__ __VA_OPT__(, ) __VA_ARGS__))

#define EP_ERROR(...) \
    OB_FAILED(OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_ERROR), __func__, 0, __VA_ARGS__))
#define EP_INFO(...) OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_INFO), __func__, 0, __VA_ARGS__)
#define EP_TRACE(...) OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_TRACE), __func__, 0, __VA_ARGS__)

#define EP_ERROR_AT(...) \
    OB_FAILED(OB_LOG(EP_SITE(OBPLAT_SEVERITY_ERROR), __func__, __LINE__, __VA_ARGS__))
#define EP_INFO_AT(...) OB_LOG(EP_SITE(OBPLAT_SEVERITY_INFO), __func__, __LINE__, __VA_ARGS__)
#define EP_TRACE_AT(...) OB_LOG(EP_SITE(OBPLAT_SEVERITY_TRACE), __func__, __LINE__, __VA_ARGS__)

#define EP_ERROR_AT_AS(caller, ...) OB_FAILED(OB_LOG_AS(caller, error, __VA_ARGS__))

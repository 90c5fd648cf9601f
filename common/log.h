// Log lines. Every place that logs owns one static record: severity, 3, module, source line. The
// name and the line that a record carries are those of the operation that one reads; formats are
// checked by the compiler.
//
//   macro                                   goes before the format   the operation is
//   OB_ERROR OB_NOTICE OB_INFO OB_TRACE     "%s:%d "                 the function itself
//   OB_ERROR_AS OB_NOTICE_AS OB_INFO_AS
//   OB_TRACE_AS                             "%s:%d "                 the caller handed over
//   EP_ERROR EP_INFO EP_TRACE               nothing                  the function itself
//   EP_ERROR_AT EP_INFO_AT EP_TRACE_AT      "%s:%d "                 the function itself
//   EP_ERROR_AT_AS                          "%s:%d "                 the caller handed over
//   OB_ERROR_TWICE                          function, line, function, line as first arguments
//   EP_ERROR_PLACED EP_TRACE_PLACED         function, line as first arguments
//
// The last three rows are for prefixes of another form: the format is given whole.
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

#define OB_LOG(severity, module, ...) \
    OBPLAT_Log(&::orblink::kLogSite<severity, module, __LINE__>, __func__, 0, __VA_ARGS__)
#define OB_LOG_AT(severity, module, format, ...) \
    OB_LOG(severity, module, "%s:%d " format, __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define OB_LOG_AS(caller, severity, ...) \
    OBPLAT_Log(&(caller).sites->severity, (caller).func, 0, __VA_ARGS__)
#define OB_LOG_AT_AS(caller, severity, format, ...)             \
    OB_LOG_AS(caller, severity, "%s:%d " format, (caller).func, \
              (caller).Line() __VA_OPT__(, ) __VA_ARGS__)
#define OB_FAILED(logged) (logged, ::orblink::Failed())

#define OB_ERROR(...) OB_FAILED(OB_LOG_AT(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_SWITCH, __VA_ARGS__))
#define OB_ERROR_TWICE(format, ...)                                                           \
    OB_FAILED(OB_LOG(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_SWITCH, format, __func__, __LINE__, \
                     __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__))
#define OB_NOTICE(...) OB_LOG_AT(OBPLAT_SEVERITY_NOTICE, OBPLAT_MODULE_SWITCH, __VA_ARGS__)
#define OB_INFO(...) OB_LOG_AT(OBPLAT_SEVERITY_INFO, OBPLAT_MODULE_SWITCH, __VA_ARGS__)
#define OB_TRACE(...) OB_LOG_AT(OBPLAT_SEVERITY_TRACE, OBPLAT_MODULE_SWITCH, __VA_ARGS__)

#define OB_ERROR_AS(caller, ...) OB_FAILED(OB_LOG_AT_AS(caller, error, __VA_ARGS__))
#define OB_NOTICE_AS(caller, ...) OB_LOG_AT_AS(caller, notice, __VA_ARGS__)
#define OB_INFO_AS(caller, ...) OB_LOG_AT_AS(caller, info, __VA_ARGS__)
#define OB_TRACE_AS(caller, ...) OB_LOG_AT_AS(caller, trace, __VA_ARGS__)

#define EP_ERROR(...) OB_FAILED(OB_LOG(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_PHY, __VA_ARGS__))
#define EP_INFO(...) OB_LOG(OBPLAT_SEVERITY_INFO, OBPLAT_MODULE_PHY, __VA_ARGS__)
#define EP_TRACE(...) OB_LOG(OBPLAT_SEVERITY_TRACE, OBPLAT_MODULE_PHY, __VA_ARGS__)

#define EP_ERROR_AT(...) OB_FAILED(OB_LOG_AT(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_PHY, __VA_ARGS__))
#define EP_INFO_AT(...) OB_LOG_AT(OBPLAT_SEVERITY_INFO, OBPLAT_MODULE_PHY, __VA_ARGS__)
#define EP_TRACE_AT(...) OB_LOG_AT(OBPLAT_SEVERITY_TRACE, OBPLAT_MODULE_PHY, __VA_ARGS__)

#define EP_ERROR_AT_AS(caller, ...) OB_FAILED(OB_LOG_AT_AS(caller, error, __VA_ARGS__))

#define EP_ERROR_PLACED(format, ...)                                             \
    OB_FAILED(OB_LOG(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_PHY, format, __func__, \
                     __LINE__ __VA_OPT__(, ) __VA_ARGS__))
#define EP_TRACE_PLACED(format, ...)                                   \
    OB_LOG(OBPLAT_SEVERITY_TRACE, OBPLAT_MODULE_PHY, format, __func__, \
           __LINE__ __VA_OPT__(, ) __VA_ARGS__)

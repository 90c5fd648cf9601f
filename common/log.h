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
// OB_CALLER and EP_CALLER name the operation, and the line where they stand, for code that reports
// failures for others; OB_STEP_CALLER for code that reports progress as well, OB_TRACE_CALLER for
// code that traces.
#pragma once

#include <type_traits>

#include "common/result.h"
#include "platform/ob_platform.h"

namespace orblink {

// The record of a place that logs for itself. Internal linkage: one for each place, not one for all
// files that log in the same line.
template <uint32_t severity, uint32_t module, uint32_t line>
static constexpr OBPLAT_LogSite kLogSite = {severity, 3U, module, line};

// An operation, and the line of it at which code that logs for it with one severity was called.
template <uint32_t severity>
struct LogCallerOf {
    const char* func;
    const OBPLAT_LogSite* site;

    const OBPLAT_LogSite* Site() const { return site; }
    int Line() const { return static_cast<int>(site->Line); }
};
using LogCaller = LogCallerOf<OBPLAT_SEVERITY_ERROR>;
using TraceCaller = LogCallerOf<OBPLAT_SEVERITY_TRACE>;

// The records of a place on whose behalf shared code reports failures and progress.
struct StepSites {
    OBPLAT_LogSite error;
    OBPLAT_LogSite notice;
    OBPLAT_LogSite info;
};

template <uint32_t module, uint32_t line>
static constexpr StepSites kStepSites = {{OBPLAT_SEVERITY_ERROR, 3U, module, line},
                                         {OBPLAT_SEVERITY_NOTICE, 3U, module, line},
                                         {OBPLAT_SEVERITY_INFO, 3U, module, line}};

struct StepCaller {
    const char* func;
    const StepSites* sites;

    // Who reports steps reports failures.
    operator LogCaller() const { return {func, &sites->error}; }
    const OBPLAT_LogSite* Site() const { return &sites->error; }
};

// Integers and pointers of up to a word take one word among variable arguments.
using LogWord = long;

template <typename T>
LogWord WordOf(T value)
{
    static_assert(sizeof(T) <= sizeof(LogWord));
    if constexpr (std::is_pointer_v<T>)
        return reinterpret_cast<LogWord>(value);
    else
        return static_cast<LogWord>(value);
}

// A line that begins with function and line. Out of the way of the operations: each of them has
// several of these, and takes few of them.
template <typename... Words>
[[gnu::noinline]] void WriteLine(const OBPLAT_LogSite* site, const char* func, const char* format,
                                 Words... words)
{
    OBPLAT_Log(site, func, 0, format, func, static_cast<int>(site->Line), words...);
}

template <typename... Args>
[[gnu::always_inline]] inline void Write(const OBPLAT_LogSite* site, const char* func,
                                         const char* format, Args... args)
{
    WriteLine(site, func, format, WordOf(args)...);
}

// The value of a line that reports a failure.
inline int Failed()
{
    return RC_ERROR;
}

}  // namespace orblink

#define OB_CALLER (::orblink::LogCaller{__func__, OB_SITE(OBPLAT_SEVERITY_ERROR)})
#define OB_TRACE_CALLER (::orblink::TraceCaller{__func__, OB_SITE(OBPLAT_SEVERITY_TRACE)})
#define OB_STEP_CALLER \
    (::orblink::StepCaller{__func__, &::orblink::kStepSites<OBPLAT_MODULE_SWITCH, __LINE__>})
#define EP_CALLER (::orblink::LogCaller{__func__, EP_SITE(OBPLAT_SEVERITY_ERROR)})

#define OB_SITE(severity) (&::orblink::kLogSite<severity, OBPLAT_MODULE_SWITCH, __LINE__>)
#define EP_SITE(severity) (&::orblink::kLogSite<severity, OBPLAT_MODULE_PHY, __LINE__>)
#define OB_FAILED(logged) (logged, ::orblink::Failed())

// What operations log as a rule goes straight to the sink.
#define OB_LOG(site, func, line, format, ...) \
    OBPLAT_Log(site, func, 0, format, func, line __VA_OPT__(, ) __VA_ARGS__)
// The first branch is never taken: there the compiler checks the format.
#define OB_WRITE(site, func, format, ...)                                    \
    (false ? OB_LOG(site, func, __LINE__, format __VA_OPT__(, ) __VA_ARGS__) \
           : ::orblink::Write(site, func, format __VA_OPT__(, ) __VA_ARGS__))

#define OB_ERROR(...) \
    OB_FAILED(OB_WRITE(OB_SITE(OBPLAT_SEVERITY_ERROR), __func__, "%s:%d " __VA_ARGS__))
#define OB_NOTICE(...) OB_WRITE(OB_SITE(OBPLAT_SEVERITY_NOTICE), __func__, "%s:%d " __VA_ARGS__)
#define OB_INFO(...) OB_WRITE(OB_SITE(OBPLAT_SEVERITY_INFO), __func__, "%s:%d " __VA_ARGS__)
#define OB_TRACE(...) \
    OB_LOG(OB_SITE(OBPLAT_SEVERITY_TRACE), __func__, __LINE__, "%s:%d " __VA_ARGS__)

#define OB_ERROR_AS(caller, ...) \
    OB_FAILED(OB_WRITE((caller).Site(), (caller).func, "%s:%d " __VA_ARGS__))
#define OB_NOTICE_AS(caller, ...) \
    OB_WRITE(&(caller).sites->notice, (caller).func, "%s:%d " __VA_ARGS__)
#define OB_INFO_AS(caller, ...) OB_WRITE(&(caller).sites->info, (caller).func, "%s:%d " __VA_ARGS__)
#define OB_TRACE_AS(caller, ...) \
    OB_LOG((caller).site, (caller).func, (caller).Line(), "%s:%d " __VA_ARGS__)

#define OB_ERROR_TWICE(format, ...)                                                        \
    OB_FAILED(OB_LOG(OB_SITE(OBPLAT_SEVERITY_ERROR), __func__, __LINE__, format, __func__, \
                     __LINE__ __VA_OPT__(, ) __VA_ARGS__))

#define EP_ERROR(...) \
    OB_FAILED(OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_ERROR), __func__, 0, __VA_ARGS__))
#define EP_INFO(...) OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_INFO), __func__, 0, __VA_ARGS__)
#define EP_TRACE(...) OBPLAT_Log(EP_SITE(OBPLAT_SEVERITY_TRACE), __func__, 0, __VA_ARGS__)

#define EP_ERROR_AT(...) OB_FAILED(OB_WRITE(EP_SITE(OBPLAT_SEVERITY_ERROR), __func__, __VA_ARGS__))
#define EP_INFO_AT(...) OB_WRITE(EP_SITE(OBPLAT_SEVERITY_INFO), __func__, __VA_ARGS__)
#define EP_TRACE_AT(...) OB_LOG(EP_SITE(OBPLAT_SEVERITY_TRACE), __func__, __LINE__, __VA_ARGS__)

#define EP_ERROR_AT_AS(caller, ...) OB_FAILED(OB_WRITE((caller).Site(), (caller).func, __VA_ARGS__))

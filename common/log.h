// Log lines. Every place that logs owns one static descriptor; formats are checked by the compiler.
//
//   OB_TRACE OB_INFO OB_NOTICE OB_ERROR     switch side: "%s:%d " with function and line goes first
//   EP_TRACE EP_INFO EP_NOTICE EP_ERROR     PHY side: the bare message
//   EP_TRACE_AT EP_INFO_AT EP_ERROR_AT      PHY side, with "%s:%d " first
//
// Each yields RC_ERROR, so that a failing check reads: return OB_ERROR("Invalid Vid=%d", vid);
// Code that several operations share logs in the name of the operation: the _AS forms take the
// OB_CALLER that it was given.
#pragma once

#include "common/result.h"
#include "platform/ob_platform.h"

namespace orblink {

// The operation on whose behalf shared code logs.
struct LogCaller {
    const char* func;
};

}  // namespace orblink

#define OB_CALLER (::orblink::LogCaller{__func__})

// The lambda gives each use a static of its own inside an expression.
#define OB_LOG_SITE(severity, module, func, format, ...)                                        \
    ([&](const char* obFunc) -> int {                                                           \
        static constexpr OBPLAT_LogSite obSite = {severity, 3U, module, __LINE__};              \
        OBPLAT_Log(&obSite, obFunc, 0, format __VA_OPT__(, ) __VA_ARGS__);                      \
        return ::orblink::RC_ERROR;                                                             \
    }(func))

#define OB_LOG_PREFIXED(severity, module, func, format, ...) \
    OB_LOG_SITE(severity, module, func, "%s:%d" format, obFunc, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

// Function name and line given twice.
#define OB_LOG_DOUBLY_PREFIXED(severity, func, between, format, ...)                           \
    OB_LOG_PREFIXED(severity, OBPLAT_MODULE_SWITCH, func, between "%s:%d" format, obFunc, __LINE__ \
                    __VA_OPT__(, ) __VA_ARGS__)

#define OB_LOG(severity, func, format, ...) \
    OB_LOG_PREFIXED(severity, OBPLAT_MODULE_SWITCH, func, " " format __VA_OPT__(, ) __VA_ARGS__)

#define OB_ERROR_AS(caller, ...) OB_LOG(OBPLAT_SEVERITY_ERROR, (caller).func, __VA_ARGS__)
#define OB_NOTICE_AS(caller, ...) OB_LOG(OBPLAT_SEVERITY_NOTICE, (caller).func, __VA_ARGS__)
#define OB_INFO_AS(caller, ...) OB_LOG(OBPLAT_SEVERITY_INFO, (caller).func, __VA_ARGS__)
#define OB_TRACE_AS(caller, ...) OB_LOG(OBPLAT_SEVERITY_TRACE, (caller).func, __VA_ARGS__)

#define OB_ERROR(...) OB_LOG(OBPLAT_SEVERITY_ERROR, __func__, __VA_ARGS__)
#define OB_NOTICE(...) OB_LOG(OBPLAT_SEVERITY_NOTICE, __func__, __VA_ARGS__)
#define OB_INFO(...) OB_LOG(OBPLAT_SEVERITY_INFO, __func__, __VA_ARGS__)
#define OB_TRACE(...) OB_LOG(OBPLAT_SEVERITY_TRACE, __func__, __VA_ARGS__)

// "%s:%d %s:%d ..." and "%s:%d ERROR: %s:%d: ..."
#define OB_ERROR_TWICE_AS(caller, ...) \
    OB_LOG_DOUBLY_PREFIXED(OBPLAT_SEVERITY_ERROR, (caller).func, " ", " " __VA_ARGS__)
#define OB_ERROR_TWICE(...) OB_ERROR_TWICE_AS(OB_CALLER, __VA_ARGS__)
#define OB_ERROR_MARKED(...) \
    OB_LOG_DOUBLY_PREFIXED(OBPLAT_SEVERITY_ERROR, __func__, " ERROR: ", ": " __VA_ARGS__)

#define EP_LOG(severity, func, format, ...) \
    OB_LOG_SITE(severity, OBPLAT_MODULE_PHY, func, format __VA_OPT__(, ) __VA_ARGS__)
#define EP_LOG_AT(severity, func, format, ...) \
    OB_LOG_PREFIXED(severity, OBPLAT_MODULE_PHY, func, format __VA_OPT__(, ) __VA_ARGS__)

#define EP_ERROR_AS(caller, ...) EP_LOG(OBPLAT_SEVERITY_ERROR, (caller).func, __VA_ARGS__)
#define EP_ERROR_AT_AS(caller, ...) EP_LOG_AT(OBPLAT_SEVERITY_ERROR, (caller).func, " " __VA_ARGS__)

#define EP_ERROR(...) EP_LOG(OBPLAT_SEVERITY_ERROR, __func__, __VA_ARGS__)
#define EP_INFO_AS(caller, ...) EP_LOG(OBPLAT_SEVERITY_INFO, (caller).func, __VA_ARGS__)
#define EP_INFO(...) EP_LOG(OBPLAT_SEVERITY_INFO, __func__, __VA_ARGS__)
#define EP_TRACE(...) EP_LOG(OBPLAT_SEVERITY_TRACE, __func__, __VA_ARGS__)

#define EP_ERROR_AT(...) EP_LOG_AT(OBPLAT_SEVERITY_ERROR, __func__, " " __VA_ARGS__)
#define EP_INFO_AT(...) EP_LOG_AT(OBPLAT_SEVERITY_INFO, __func__, " " __VA_ARGS__)
#define EP_TRACE_AT(...) EP_LOG_AT(OBPLAT_SEVERITY_TRACE, __func__, " " __VA_ARGS__)

// "%s:%d: ..." and "%s.%d ..."
#define EP_ERROR_AT_COLON_AS(caller, ...) \
    EP_LOG_AT(OBPLAT_SEVERITY_ERROR, (caller).func, ": " __VA_ARGS__)
#define EP_ERROR_AT_COLON(...) EP_LOG_AT(OBPLAT_SEVERITY_ERROR, __func__, ": " __VA_ARGS__)
#define EP_TRACE_AT_COLON(...) EP_LOG_AT(OBPLAT_SEVERITY_TRACE, __func__, ": " __VA_ARGS__)
#define EP_ERROR_AT_POINT(format, ...)                                               \
    OB_LOG_SITE(OBPLAT_SEVERITY_ERROR, OBPLAT_MODULE_PHY, __func__, "%s.%d " format, \
                obFunc, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

// Log lines of the HAL, by the platform's sink: "function:line text", as the library writes them.
#pragma once

#include "platform/ob_platform.h"

#define LS_LOG(severity, ...) LS_WRITE((&::linux_switch::kLogSite<severity, __LINE__>), __VA_ARGS__)
#define LS_WRITE(site, format, ...) \
    OBPLAT_Log(site, __func__, 0, "%s:%d " format, __func__, __LINE__ __VA_OPT__(, ) __VA_ARGS__)
#define LS_ERROR(...) LS_LOG(OBPLAT_SEVERITY_ERROR, __VA_ARGS__)
#define LS_NOTICE(...) LS_LOG(OBPLAT_SEVERITY_NOTICE, __VA_ARGS__)

namespace linux_switch {

// The record of a place that logs.
template <uint32_t severity, uint32_t line>
static constexpr OBPLAT_LogSite kLogSite = {severity, 3, OBPLAT_MODULE_SWITCH, line};

}  // namespace linux_switch

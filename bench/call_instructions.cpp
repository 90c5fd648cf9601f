// Calls of each class, marked for valgrind, which counts the instructions between the marks.
#include <valgrind/callgrind.h>

#include <cstdio>

#include "bench/call_classes.h"
#include "platform/ob_platform.h"

namespace {

constexpr int kCalls = 10;

void Drop(const OBPLAT_LogSite*, const char*, const char*, va_list) {}

}  // namespace

int main()
{
    const bench::ReadyBoard board;
    // What a line costs is the sink's, and depends on the log daemon.
    OBPLAT_SetLogHandler(Drop);
    for (const auto& [name, call] : bench::CallClasses(board)) {
        call();
        CALLGRIND_ZERO_STATS;
        for (int i = 0; i < kCalls; ++i)
            call();
        CALLGRIND_DUMP_STATS_AT(name);
    }
    if (!bench::CallsReachedTheHal()) {
        fprintf(stderr, "the calls do not reach the HAL\n");
        return 1;
    }
    return 0;
}

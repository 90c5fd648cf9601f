// A bring-up on a board whose waits, slots, lines and lanes take no time: what is left is the
// library's own.
#include <benchmark/benchmark.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "bench/call_classes.h"
#include "platform/ob_platform.h"

namespace {

constexpr uint32_t kResetPin = 18;

void Drop(const OBPLAT_LogSite*, const char*, const char*, va_list) {}

void BringUp(benchmark::State& state)
{
    for (auto _ : state) {
        if (ORBLINK_ResetEnable(bench::kSwitch) != 0 ||
            ORBLINK_ResetDisable(bench::kSwitch, 1, nullptr, 0) != 0)
            return state.SkipWithError("the switch does not come up");
    }
}

}  // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode)
{
    return fopen64(strncmp(path, "/sys/", 5) == 0 ? "/dev/null" : path, mode);
}

int ioctl(int, unsigned long, ...)
{
    return 0;
}

int usleep(useconds_t)
{
    return 0;
}

unsigned sleep(unsigned)
{
    return 0;
}

}  // extern "C"

int main(int argc, char** argv)
{
    const bench::ReadyBoard board;
    OBPLAT_SetLogHandler(Drop);
    auto* const region = static_cast<SwitchDeviceRegion*>(OBOS_MapSwitchDevices());
    region->device[bench::kSwitch].board.resetGpioPin = kResetPin;
    benchmark::RegisterBenchmark("reset-and-bring-up", BringUp);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

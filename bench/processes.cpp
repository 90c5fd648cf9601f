// What needs processes of its own: the first call of a process, and many that call at once. This one
// never calls the library itself.
#include <benchmark/benchmark.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "bench/call_classes.h"
#include "common/shared_names.h"
#include "platform/ob_platform.h"

namespace {

constexpr int kCallsOfAll = 32768;

double Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

// Seconds that the work takes in a process that has not done it before; negative when it fails.
double InNewProcess(bool (*work)())
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        const double start = Now();
        const bool done = work();
        const double taken = done ? Now() - start : -1;
        _exit(write(ends[1], &taken, sizeof(taken)) == sizeof(taken) ? 0 : 1);
    }
    close(ends[1]);
    double taken = -1;
    if (read(ends[0], &taken, sizeof(taken)) != sizeof(taken))
        taken = -1;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return taken;
}

bool FirstCall()
{
    uint8_t count = 0;
    return ORBLINK_GetNumOfSwitches(&count) == 0 && count == 1;
}

// The same system calls and the same library to load, without a library around them.
bool FirstCallBare()
{
    close(open(OB_SWITCH_KEY_FILE, O_RDWR));
    const int lock = semget(ftok(OB_SWITCH_KEY_FILE, OB_KEY_NUMBER), 1, IPC_EXCL | 0777);
    sembuf change = {0, -1, SEM_UNDO};
    const bool taken = semop(lock, &change, 1) == 0;
    const int fd = shm_open(OB_SWITCH_REGION_NAME, O_RDWR, 0666);
    fcntl(fd, F_SETFD, FD_CLOEXEC);
    struct stat found = {};
    fstat(fd, &found);
    const void* const at =
        mmap(nullptr, sizeof(SwitchDeviceRegion), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    const auto* const region = static_cast<const SwitchDeviceRegion*>(at);
    void* const hal = dlopen(BENCH_HAL, RTLD_NOW);
    const bool ready = taken && at != MAP_FAILED && hal != nullptr &&
                       dlsym(hal, "OBHAL_HalFuncs") != nullptr && region->NumOfSwitches == 1;
    change.sem_op = 1;
    // cppcheck-suppress resourceLeak ; as in the library, it stays
    return semop(lock, &change, 1) == 0 && ready;
}

void First(benchmark::State& state, bool (*work)())
{
    for (auto _ : state) {
        const double taken = InNewProcess(work);
        if (taken < 0)
            return state.SkipWithError("the first call failed");
        state.SetIterationTime(taken);
    }
}

void AtOnce(benchmark::State& state, void (*call)())
{
    const auto processes = static_cast<int>(state.range(0));
    for (auto _ : state) {
        int gate[2];
        if (pipe(gate) != 0)
            return state.SkipWithError("pipe");
        for (int i = 0; i < processes; ++i) {
            if (fork() != 0)
                continue;
            close(gate[1]);
            call();  // attaches
            char open = 0;
            if (read(gate[0], &open, 1) != 0)
                _exit(1);
            for (int done = 0; done < kCallsOfAll / processes; ++done)
                call();
            _exit(0);
        }
        usleep(2000U * static_cast<unsigned>(processes) + 20000U);
        close(gate[0]);
        const double start = Now();
        close(gate[1]);
        for (int i = 0; i < processes; ++i)
            wait(nullptr);
        state.SetIterationTime(Now() - start);
    }
}

}  // namespace

int main(int argc, char** argv)
{
    const bench::ReadyBoard board;
    benchmark::RegisterBenchmark("first-call", First, FirstCall)->UseManualTime()->Iterations(50);
    benchmark::RegisterBenchmark("first-call-bare", First, FirstCallBare)
        ->UseManualTime()
        ->Iterations(50);
    for (const auto& [name, call] : bench::CallClasses(board)) {
        const std::string which = name;
        if (which == "query" || which == "bare-semop-pair")
            benchmark::RegisterBenchmark((which + "-by-processes").c_str(), AtOnce, call)
                ->RangeMultiplier(2)
                ->Range(1, 64)
                ->UseManualTime()
                ->Iterations(1);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

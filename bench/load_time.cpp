// load_time LIBRARY: nanoseconds that loading it takes in a process that has not loaded it before,
// with what it needs; the median of many.
#include <dlfcn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

namespace {

constexpr size_t kLoads = 301;

int64_t Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

// Negative when it cannot be loaded.
int64_t LoadInNewProcess(const char* library)
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    const pid_t child = fork();
    if (child == 0) {
        const int64_t start = Now();
        const void* const loaded = dlopen(library, RTLD_NOW);
        const int64_t taken = loaded != nullptr ? Now() - start : -1;
        _exit(write(ends[1], &taken, sizeof(taken)) == sizeof(taken) ? 0 : 1);
    }
    close(ends[1]);
    int64_t taken = -1;
    if (read(ends[0], &taken, sizeof(taken)) != sizeof(taken))
        taken = -1;
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return taken;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::array<int64_t, kLoads> taken;
    for (int64_t& one : taken) {
        one = LoadInNewProcess(argv[1]);
        if (one < 0) {
            fprintf(stderr, "%s cannot be loaded\n", argv[1]);
            return 1;
        }
    }
    std::nth_element(taken.begin(), taken.begin() + kLoads / 2, taken.end());
    printf("%lld\n", static_cast<long long>(taken[kLoads / 2]));
    return 0;
}

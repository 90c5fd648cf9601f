#include "bench/spawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace bench {
namespace {

double Now()
{
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

void SpawnToExit(benchmark::State& state, std::vector<std::string> words)
{
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int stream : {STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_WRONLY, 0);
    for (auto _ : state) {
        pid_t child = 0;
        int status = 0;
        const double start = Now();
        if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0 ||
            waitpid(child, &status, 0) != child || status != 0) {
            state.SkipWithError(arguments[0]);
            break;
        }
        state.SetIterationTime(Now() - start);
    }
    posix_spawn_file_actions_destroy(&actions);
}

}  // namespace

void RegisterSpawn(const std::string& name, const std::vector<std::string>& words, int iterations)
{
    benchmark::RegisterBenchmark(name.c_str(), SpawnToExit, words)
        ->UseManualTime()
        ->Iterations(iterations);
}

}  // namespace bench

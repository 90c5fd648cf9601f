// Commands of orblinkctl beside those that do the same for the kernel's interfaces, each from its
// start to its end. To be run on a virtual board whose switch is up.
#include <net/if.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstdio>

#include "bench/spawn.h"

namespace {

constexpr int kBatchLines = 300;

// A file of settings, each of which differs from the last.
bool WriteBatch(char* path)
{
    const int fd = mkstemp(path);
    FILE* const out = fd < 0 ? nullptr : fdopen(fd, "w");
    if (out == nullptr)
        return false;
    for (int i = 0; i < kBatchLines; ++i)
        fprintf(out, "port 1 vlan %d\n", 5 + i % 2);
    return fclose(out) == 0;
}

}  // namespace

int main(int argc, char** argv)
{
    char batch[] = "/tmp/orblink-bench-XXXXXX";
    if (!WriteBatch(batch)) {
        perror(batch);
        return 1;
    }
    bench::RegisterSpawn("spawn-true", {"true"}, 20);
    bench::RegisterSpawn("orblinkctl-version", {BENCH_ORBLINKCTL, "--version"}, 20);
    bench::RegisterSpawn("orblinkctl-port", {BENCH_ORBLINKCTL, "port"}, 10);
    bench::RegisterSpawn("orblinkctl-mac", {BENCH_ORBLINKCTL, "mac"}, 10);
    bench::RegisterSpawn("orblinkctl-batch-300", {BENCH_ORBLINKCTL, "batch", batch}, 2);
    bench::RegisterSpawn("ip-link", {"ip", "-j", "link"}, 20);
    bench::RegisterSpawn("bridge-fdb", {"bridge", "-j", "fdb"}, 20);
    if (if_nametoindex("obbench0") != 0)
        bench::RegisterSpawn("ethtool", {"ethtool", "obbench0"}, 20);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    unlink(batch);
    return 0;
}

#include "tests/support/watched_region.h"

#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace obtest {
namespace {

constexpr greg_t kTrapFlag = 0x100;
constexpr size_t kMost = 64;
#ifdef __x86_64__
constexpr int kInstruction = REG_RIP;
#else
constexpr int kInstruction = REG_EIP;
#endif

struct Mappings {
    Mapping entry[kMost];
    size_t count = 0;

    void Add(const Mapping& mapping)
    {
        if (count < kMost)
            entry[count++] = mapping;
    }

    const Mapping* Find(uintptr_t address) const
    {
        for (size_t i = 0; i < count; ++i)
            if (address - entry[i].first < entry[i].size)
                return &entry[i];
        return nullptr;
    }
};

// What the signal handlers work on.
Mappings own, watched;
RegionWatch watch = {};
bool watching = false;
const Mapping* touched = nullptr;
greg_t stepping = 0;

Mappings SharedMappings()
{
    Mappings mappings;
    FILE* const maps = fopen("/proc/self/maps", "r");
    char line[512];
    while (fgets(line, sizeof(line), maps) != nullptr) {
        const bool region = strstr(line, "obos_orblink_driver") != nullptr ||
                            strstr(line, "ethphy_driver") != nullptr;
        char* end = nullptr;
        const unsigned long first = strtoul(line, &end, 16);
        if (region && *end == '-')
            mappings.Add({first, strtoul(end + 1, nullptr, 16) - first});
    }
    fclose(maps);
    return mappings;
}

void Protect(int protection)
{
    for (size_t i = 0; i < watched.count; ++i)
        mprotect(reinterpret_cast<void*>(watched.entry[i].first), watched.entry[i].size,
                 protection);
}

void OnAccess(int, siginfo_t* info, void* context)
{
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    touched = watching ? watched.Find(address) : nullptr;
    if (touched == nullptr) {
        signal(SIGSEGV, SIG_DFL);  // a fault of the code's own: let it be one
        return;
    }
    Protect(PROT_READ | PROT_WRITE);
    watch.before(*touched, address);
    auto* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    stepping = registers[kInstruction];
    registers[REG_EFL] |= kTrapFlag;
}

void OnStep(int, siginfo_t*, void* context)
{
    auto* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    if (registers[kInstruction] == stepping)
        return;  // a repeated instruction, not done yet
    registers[REG_EFL] &= ~kTrapFlag;
    if (watch.after != nullptr)
        watch.after(*touched);
    Protect(watch.protection);
}

void Handle(int signalNumber, void (*handler)(int, siginfo_t*, void*))
{
    struct sigaction action = {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    sigaction(signalNumber, &action, nullptr);
}

}  // namespace

void ExcludeOwnMappings()
{
    own = SharedMappings();
}

void WatchRegions(const RegionWatch& how)
{
    watch = how;
    Handle(SIGSEGV, OnAccess);
    Handle(SIGTRAP, OnStep);
    watching = true;
    WatchNewMappings();
}

void WatchNewMappings()
{
    if (!watching)
        return;
    const Mappings now = SharedMappings();
    for (size_t i = 0; i < now.count; ++i)
        if (own.Find(now.entry[i].first) == nullptr && watched.Find(now.entry[i].first) == nullptr)
            watched.Add(now.entry[i]);
    Protect(watch.protection);
}

void FollowMappings(const std::string& line)
{
    static bool mapped = false;
    if (mapped)
        WatchNewMappings();
    mapped = line.rfind("sys mmap(", 0) == 0;
}

void StopWatching()
{
    watching = false;
    Protect(PROT_READ | PROT_WRITE);
}

}  // namespace obtest

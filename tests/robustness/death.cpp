#include "tests/robustness/death.h"

#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "tests/robustness/child.h"
#include "tests/support/scripted_platform.h"

namespace obtest {
namespace {

constexpr greg_t kTrapFlag = 0x100;
constexpr int kNever = -1;
#ifdef __x86_64__
constexpr int kInstruction = REG_RIP;
#else
constexpr int kInstruction = REG_EIP;
#endif

struct Mapping {
    uintptr_t first;
    size_t size;
};

// What the signal handlers of the dying process work on.
struct Death {
    int target = kNever;
    int passed = 0;
    bool counting = false;
    std::vector<Mapping> own;      // mappings of the test's
    std::vector<Mapping> watched;  // the library's, write-protected
    greg_t writing = 0;            // instruction that is being stepped over
    std::vector<DeathPoint> points;
};

Death death;

// The process's mappings of shared regions.
std::vector<Mapping> SharedMappings()
{
    std::vector<Mapping> mappings;
    FILE* const maps = fopen("/proc/self/maps", "r");
    char line[512];
    while (fgets(line, sizeof(line), maps) != nullptr) {
        unsigned long first = 0, last = 0;
        const std::string text(line);
        const bool region = text.find("obos_orblink_driver") != std::string::npos ||
                            text.find("ethphy_driver") != std::string::npos;
        if (region && sscanf(line, "%lx-%lx", &first, &last) == 2)
            mappings.push_back({first, last - first});
    }
    fclose(maps);
    return mappings;
}

const Mapping* Find(const std::vector<Mapping>& mappings, uintptr_t address)
{
    for (const Mapping& mapping : mappings)
        if (address - mapping.first < mapping.size)
            return &mapping;
    return nullptr;
}

void Protect(int access)
{
    for (const Mapping& mapping : death.watched)
        mprotect(reinterpret_cast<void*>(mapping.first), mapping.size, access);
}

// Takes the library's new mappings under watch.
void WatchMappings()
{
    for (const Mapping& mapping : SharedMappings())
        if (Find(death.own, mapping.first) == nullptr &&
            Find(death.watched, mapping.first) == nullptr)
            death.watched.push_back(mapping);
    Protect(PROT_READ);
}

void Pass(PointKind kind, const std::string& what)
{
    if (death.passed++ == death.target) {
        kill(getpid(), SIGKILL);
        pause();
    }
    if (death.target == kNever)
        death.points.push_back({kind, what});
}

void OnWrite(int, siginfo_t* info, void* context)
{
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    const Mapping* mapping = Find(death.watched, address);
    if (mapping == nullptr) {
        signal(SIGSEGV, SIG_DFL);
        return;
    }
    // The handler runs at a store of the library or of a HAL: never within the allocator.
    Pass(PointKind::kRecordWrite, "+" + std::to_string(address - mapping->first));
    auto* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    death.writing = registers[kInstruction];
    registers[REG_EFL] |= kTrapFlag;
    Protect(PROT_READ | PROT_WRITE);
}

void OnStep(int, siginfo_t*, void* context)
{
    auto* registers = static_cast<ucontext_t*>(context)->uc_mcontext.gregs;
    if (registers[kInstruction] == death.writing)
        return;  // a repeated store, not done yet
    registers[REG_EFL] &= ~kTrapFlag;
    Protect(PROT_READ);
}

void Handle(int signalNumber, void (*handler)(int, siginfo_t*, void*))
{
    struct sigaction action = {};
    action.sa_sigaction = handler;
    action.sa_flags = SA_SIGINFO;
    sigaction(signalNumber, &action, nullptr);
}

void OnLine(const std::string& line)
{
    if (!death.counting)
        return;
    WatchMappings();
    if (line.rfind("sys ", 0) == 0 || line.rfind("wait ", 0) == 0)
        Pass(PointKind::kSystemCall, line);
    else if (line.rfind("hal", 0) == 0)
        Pass(PointKind::kHalCall, line);
}

void Live(int target, const std::function<void()>& before, const std::function<void()>& call)
{
    death.target = target;
    death.own = SharedMappings();
    Platform().transcript.watch = OnLine;
    before();
    Handle(SIGSEGV, OnWrite);
    Handle(SIGTRAP, OnStep);
    WatchMappings();
    death.counting = true;
    call();
    death.counting = false;
    Protect(PROT_READ | PROT_WRITE);
}

}  // namespace

std::vector<DeathPoint> PointsOf(const std::function<void()>& before,
                                 const std::function<void()>& call)
{
    const Ended ended = InChild([&] {
        Live(kNever, before, call);
        std::ostringstream text;
        for (const DeathPoint& point : death.points)
            text << static_cast<int>(point.kind) << ' ' << point.what << '\n';
        return text.str();
    });
    std::vector<DeathPoint> points;
    std::istringstream text(ended.text);
    int kind = 0;
    for (std::string what; text >> kind && text.ignore(1) && std::getline(text, what);)
        points.push_back({static_cast<PointKind>(kind), what});
    return points;
}

std::vector<size_t> Chosen(const std::vector<DeathPoint>& points)
{
    constexpr size_t kEach = 8;
    const bool all = getenv("ORBLINK_THOROUGH") != nullptr || points.size() < 30;
    std::vector<size_t> chosen;
    for (size_t at = 0; at < points.size(); ++at)
        if (all || points[at].kind != PointKind::kRecordWrite || at % kEach == 0)
            chosen.push_back(at);
    return chosen;
}

bool DiesAt(int point, const std::function<void()>& before, const std::function<void()>& call)
{
    const Ended ended = InChild([&] {
        Live(point, before, call);
        return std::string("lives");
    });
    return ended.inTime && ended.signal == SIGKILL;
}

}  // namespace obtest

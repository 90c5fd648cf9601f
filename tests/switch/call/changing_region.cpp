#include "tests/switch/call/changing_region.h"

#include <signal.h>
#include <sys/mman.h>
#include <ucontext.h>
#include <unistd.h>

#include <cstdint>

namespace obtest {
namespace {

constexpr greg_t kTrapFlag = 0x100;

struct Watched {
    uintptr_t begin;
    uintptr_t end;
    int nth;
    int seen;
    const std::function<void()>* change;
};

Watched watched;

void Protect(int protection)
{
    mprotect(reinterpret_cast<void*>(watched.begin), watched.end - watched.begin, protection);
}

greg_t& Flags(void* context)
{
    return static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_EFL];
}

// Lets the one instruction through.
void OnFault(int number, siginfo_t* info, void* context)
{
    const auto address = reinterpret_cast<uintptr_t>(info->si_addr);
    if (address < watched.begin || address >= watched.end) {
        signal(number, SIG_DFL);  // a fault of the library's own: it comes again, and ends the test
        return;
    }
    Protect(PROT_READ | PROT_WRITE);
    Flags(context) |= kTrapFlag;
}

void OnStep(int, siginfo_t*, void* context)
{
    Flags(context) &= ~kTrapFlag;
    if (++watched.seen == watched.nth)
        (*watched.change)();
    Protect(PROT_NONE);
}

class Handler {
public:
    Handler(int number, void (*handler)(int, siginfo_t*, void*)) : number_(number)
    {
        struct sigaction action = {};
        action.sa_sigaction = handler;
        action.sa_flags = SA_SIGINFO;
        sigaction(number, &action, &before_);
    }
    ~Handler() { sigaction(number_, &before_, nullptr); }
    Handler(const Handler&) = delete;
    Handler& operator=(const Handler&) = delete;

private:
    int number_;
    struct sigaction before_ = {};
};

}  // namespace

int RunChangingAfter(int nth, void* mapping, size_t size, const std::function<void()>& change,
                     const std::function<void()>& call)
{
    const auto begin = reinterpret_cast<uintptr_t>(mapping);
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    watched = {begin, (begin + size + page - 1) / page * page, nth, 0, &change};
    const Handler fault{SIGSEGV, OnFault};
    const Handler step{SIGTRAP, OnStep};
    Protect(PROT_NONE);
    call();
    Protect(PROT_READ | PROT_WRITE);
    return watched.seen;
}

}  // namespace obtest

// Functions of the C library that the library and its HALs call, and that pass through here on their
// way: the program's own definitions come first.
#include <dlfcn.h>
#include <sys/ioctl.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <ctime>

#include "tools/orblink_hal_check/watch/slot_call.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace {

constexpr unsigned long kReadRegister = 0x8948;   // SIOCGMIIREG
constexpr unsigned long kWriteRegister = 0x8949;  // SIOCSMIIREG

template <typename Function>
Function* NextOf(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

bool IsOfTheLibrary(const void* caller)
{
    Dl_info info;
    if (dladdr(caller, &info) == 0 || info.dli_fname == nullptr)
        return false;
    const char* const slash = strrchr(info.dli_fname, '/');
    const char* const file = slash != nullptr ? slash + 1 : info.dli_fname;
    return strncmp(file, "liborblink.so", 13) == 0;
}

int64_t Nanoseconds()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1'000'000'000LL + now.tv_nsec;
}

// A wait of a slot: how long it was to be, and how long it was.
class Wait {
public:
    explicit Wait(uint64_t microseconds) : start_(Nanoseconds())
    {
        halcheck::platformUse.asked += microseconds;
    }
    ~Wait()
    {
        halcheck::platformUse.waited += static_cast<uint64_t>(Nanoseconds() - start_) / 1000;
    }
    Wait(const Wait&) = delete;
    Wait& operator=(const Wait&) = delete;

private:
    int64_t start_;
};

uint64_t MicrosecondsOf(const timespec* time)
{
    return time == nullptr ? 0
                           : static_cast<uint64_t>(time->tv_sec) * 1'000'000 +
                                 static_cast<uint64_t>(time->tv_nsec) / 1'000;
}

}  // namespace

extern "C" {

// The library takes and gives its locks by this call. A slot runs with one of them held: a second
// one is refused instead of waited for until the end of time.
int semop(int set, struct sembuf* operations, size_t count) noexcept
{
    if (halcheck::TheWatch().inSlot && IsOfTheLibrary(__builtin_return_address(0))) {
        halcheck::platformUse.tookLock = true;
        errno = EDEADLK;
        return -1;
    }
    static auto* const next = NextOf<int(int, sembuf*, size_t)>("semop");
    return next(set, operations, count);
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* const argument = va_arg(arguments, void*);
    va_end(arguments);
    if (request == kReadRegister || request == kWriteRegister) {
        ++halcheck::platformUse.accesses;
        if (halcheck::busFails) {
            errno = EIO;
            return -1;
        }
    }
    static auto* const next = NextOf<int(int, unsigned long, ...)>("ioctl");
    return next(descriptor, request, argument);
}

int usleep(useconds_t microseconds)
{
    static auto* const next = NextOf<int(useconds_t)>("usleep");
    const Wait wait{microseconds};
    return next(microseconds);
}

unsigned sleep(unsigned seconds)
{
    static auto* const next = NextOf<unsigned(unsigned)>("sleep");
    const Wait wait{uint64_t{seconds} * 1'000'000};
    return next(seconds);
}

int nanosleep(const timespec* time, timespec* left)
{
    static auto* const next = NextOf<int(const timespec*, timespec*)>("nanosleep");
    const Wait wait{MicrosecondsOf(time)};
    return next(time, left);
}

int clock_nanosleep(clockid_t clock, int flags, const timespec* time, timespec* left)
{
    static auto* const next =
        NextOf<int(clockid_t, int, const timespec*, timespec*)>("clock_nanosleep");
    // Until a point of time: it takes as long as it takes.
    if ((flags & TIMER_ABSTIME) != 0)
        return next(clock, flags, time, left);
    const Wait wait{MicrosecondsOf(time)};
    return next(clock, flags, time, left);
}

}  // extern "C"

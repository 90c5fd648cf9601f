// The system calls of the library. Outside a scene they are the real ones.
#include <dlfcn.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "phy/ethphy_api.h"
#include "phy/ethphy_hal.h"
#include "tests/robustness/fuzz/hal_tables.h"
#include "tests/robustness/fuzz/platform.h"

using namespace fuzz;

namespace {

constexpr int kRegionDescriptor = 200;  // and the next one, by family
constexpr int kOtherDescriptor = 100;
constexpr int kSemaphore = 7;  // and the next one
constexpr int kErrors[] = {EINTR,  EINVAL, EIDRM,    ENOENT,    EACCES,       EPERM,     ENOMEM,
                           EMFILE, EAGAIN, ENETDOWN, EHOSTDOWN, ECONNREFUSED, ETIMEDOUT, EIO};

bool Playing()
{
    return platform.input != nullptr && pthread_equal(platform.thread, pthread_self()) != 0;
}

// Now and then a call fails. An input that has ended fails nothing: loops that wait for a success
// come to their end.
bool Fails()
{
    if (!platform.faults || platform.input->remaining_bytes() == 0)
        return false;
    if (platform.input->ConsumeIntegral<uint8_t>() < 0xE0)
        return false;
    errno = platform.input->PickValueInArray(kErrors);
    return true;
}

int Result(int success)
{
    return Fails() ? -1 : success;
}

}  // namespace

#define REAL(result, name, ...)        \
    result __real_##name(__VA_ARGS__); \
    result __wrap_##name(__VA_ARGS__)

extern "C" {

REAL(int, socket, int domain, int type, int protocol)
{
    return Playing() ? Result(kOtherDescriptor) : __real_socket(domain, type, protocol);
}

REAL(int, bind, int fd, const sockaddr* address, socklen_t size)
{
    return Playing() ? Result(0) : __real_bind(fd, address, size);
}

REAL(ssize_t, send, int fd, const void* data, size_t size, int flags)
{
    if (!Playing())
        return __real_send(fd, data, size, flags);
    const auto* bytes = static_cast<const uint8_t*>(data);
    volatile unsigned sum = 0;
    for (size_t i = 0; i < size; ++i)
        sum = sum + bytes[i];
    if (Fails())
        return -1;
    bool whole = !platform.faults || Any<uint8_t>() < 0xF0;
    return whole ? static_cast<ssize_t>(size) : platform.input->ConsumeIntegralInRange(0, 5000);
}

// As MSG_TRUNC has it: the whole length, as many bytes as there is room for.
REAL(ssize_t, recv, int fd, void* data, size_t size, int flags)
{
    if (!Playing())
        return __real_recv(fd, data, size, flags);
    if (Fails())
        return -1;
    std::vector<uint8_t> message = platform.message;
    if (message.empty())
        message = platform.input->ConsumeBytes<uint8_t>(
            platform.input->ConsumeIntegralInRange<size_t>(0, 6000));
    std::copy_n(message.begin(), std::min(size, message.size()), static_cast<uint8_t*>(data));
    bool longer = platform.faults && Any<uint8_t>() >= 0xF8;
    return static_cast<ssize_t>(longer ? message.size() + Any<uint16_t>() : message.size());
}

REAL(int, open, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return Playing() ? Result(kOtherDescriptor) : __real_open(path, flags, mode);
}

REAL(int, close, int fd)
{
    return Playing() ? 0 : __real_close(fd);
}

REAL(int, fcntl, int fd, int command, ...)
{
    va_list arguments;
    va_start(arguments, command);
    long argument = va_arg(arguments, long);
    va_end(arguments);
    return Playing() ? Result(fd) : __real_fcntl(fd, command, argument);
}

REAL(int, fstat, int fd, struct stat* status)
{
    if (!Playing())
        return __real_fstat(fd, status);
    *status = {};
    status->st_uid = geteuid();
    auto family = fd == kRegionDescriptor ? Family::kSwitch : Family::kPhy;
    status->st_size = static_cast<off_t>(RegionSize(family));
    return Result(0);
}

REAL(int, ftruncate, int fd, off_t size)
{
    return Playing() ? Result(0) : __real_ftruncate(fd, size);
}

REAL(int, shm_open, const char* name, int flags, mode_t mode)
{
    if (!Playing())
        return __real_shm_open(name, flags, mode);
    return Result(kRegionDescriptor + (std::strstr(name, "ethphy") != nullptr ? 1 : 0));
}

REAL(void*, mmap, void* at, size_t size, int protection, int flags, int fd, off_t offset)
{
    if (!Playing() || fd < kRegionDescriptor)
        return __real_mmap(at, size, protection, flags, fd, offset);
    return Fails() ? MAP_FAILED : Region(fd == kRegionDescriptor ? Family::kSwitch : Family::kPhy);
}

REAL(key_t, ftok, const char* path, int id)
{
    if (!Playing())
        return __real_ftok(path, id);
    return Result(std::strstr(path, "ethphy") != nullptr ? 2 : 1);
}

REAL(int, semget, key_t key, int count, int flags)
{
    if (!Playing())
        return __real_semget(key, count, flags);
    int family = key == 2 ? 1 : 0;
    if (Fails())
        return -1;
    if ((flags & IPC_CREAT) != 0)
        ++platform.held[family];  // a new semaphore is 0
    return kSemaphore + family;
}

REAL(int, semop, int id, sembuf* operations, size_t count)
{
    if (!Playing())
        return __real_semop(id, operations, count);
    if (platform.forget) {
        errno = EIDRM;
        return -1;
    }
    if (Fails()) {
        platform.releaseFailed = platform.releaseFailed || operations->sem_op > 0;
        return -1;
    }
    platform.held[id == kSemaphore ? 0 : 1] -= operations->sem_op;
    return 0;
}

REAL(int, ioctl, int fd, unsigned long request, void* argument)
{
    return Playing() ? Result(0) : __real_ioctl(fd, request, argument);
}

REAL(int, usleep, useconds_t time)
{
    return Playing() ? Result(0) : __real_usleep(time);
}

REAL(unsigned, sleep, unsigned time)
{
    if (!Playing())
        return __real_sleep(time);
    return Fails() ? time : 0;
}

REAL(int, system, const char* command)
{
    return Playing() ? Result(std::strlen(command) == 0 ? 1 : 0) : __real_system(command);
}

// The attributes: what they hold is the input's, what is written to them is dropped.
REAL(FILE*, fopen, const char* path, const char* mode)
{
    if (!Playing())
        return __real_fopen(path, mode);
    if (Fails())
        return nullptr;
    char text[8] = {};
    platform.input->ConsumeData(text, sizeof text - 1);
    FILE* stream = fmemopen(nullptr, sizeof text, "w+");
    if (mode[0] == 'r' && stream != nullptr) {
        fputs(text, stream);
        rewind(stream);
    }
    return stream;
}

REAL(void*, dlopen, const char* name, int flags)
{
    if (!Playing())
        return __real_dlopen(name, flags);
    static char library;
    return Fails() || strnlen(name, 33) > 32 ? nullptr : &library;
}

REAL(void*, dlsym, void* library, const char* name)
{
    if (!Playing())
        return __real_dlsym(library, name);
    return Fails() ? nullptr : AnyTable(name);
}

REAL(char*, dlerror)
{
    static char reason[] = "as the input has it";
    if (!Playing())
        return __real_dlerror();
    return platform.faults && Any<uint8_t>() >= 0xF0 ? nullptr : reason;
}

// The mailbox client's lines.
REAL(int, printf, const char* format, ...)
{
    char line[1024];
    va_list arguments;
    va_start(arguments, format);
    int length =
        Playing() ? vsnprintf(line, sizeof line, format, arguments) : vprintf(format, arguments);
    va_end(arguments);
    return length;
}
}

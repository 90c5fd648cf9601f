// Shared memory, semaphores, files, waits and system(): real under names of the process's own.
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/sem.h>

#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <string>

#include "tests/support/interpose.h"
#include "tests/support/played_files.h"
#include "tests/support/private_names.h"
#include "tests/support/scripted_platform.h"

using namespace obtest;

// There when the program is built to find data races: a semaphore orders threads as a mutex does.
extern "C" __attribute__((weak)) void __tsan_acquire(void* address);
extern "C" __attribute__((weak)) void __tsan_release(void* address);

namespace {

void Record(const std::string& line)
{
    Platform().transcript.Add(line);
}

std::string OpenFlags(int flags)
{
    std::string text = (flags & O_ACCMODE) == O_RDWR ? "O_RDWR" : "O_RDONLY";
    if ((flags & O_CREAT) != 0)
        text += "|O_CREAT";
    const int rest = flags & ~(O_ACCMODE | O_CREAT);
    return rest == 0 ? text : text + Text("|0x%x", static_cast<unsigned>(rest));
}

}  // namespace

OB_INTERPOSE(int, shm_open, const char* name, int flags, mode_t mode)
{
    if (OB_FROM_LIBRARY) {
        Record(Text("sys shm_open(%s, %s, %o)", name, OpenFlags(flags).c_str(), mode));
        long result = 0;
        if (Platform().TakesFailure("shm_open", result))
            return static_cast<int>(result);
    }
    return Real<int(const char*, int, mode_t)>("shm_open")(PrivateObject(name).c_str(), flags,
                                                           mode);
}

OB_INTERPOSE(int, ftruncate, int fd, off_t length)
{
    if (OB_FROM_LIBRARY) {
        Record(Text("sys ftruncate(%ld)", static_cast<long>(length)));
        long result = 0;
        if (Platform().TakesFailure("ftruncate", result))
            return static_cast<int>(result);
    }
    return Real<int(int, off_t)>("ftruncate")(fd, length);
}

OB_INTERPOSE(void*, mmap, void* address, size_t length, int prot, int flags, int fd, off_t offset)
{
    if (OB_FROM_LIBRARY) {
        Record(Text("sys mmap(%zu, %d, %d)", length, prot, flags));
        long result = 0;
        if (Platform().TakesFailure("mmap", result))
            return MAP_FAILED;
    }
    return Real<void*(void*, size_t, int, int, int, off_t)>("mmap")(address, length, prot, flags,
                                                                    fd, offset);
}

OB_INTERPOSE(key_t, ftok, const char* path, int id)
{
    if (OB_FROM_LIBRARY) {
        Record(Text("sys ftok(%s, %d)", path, id));
        long result = 0;
        if (Platform().TakesFailure("ftok", result))
            return static_cast<key_t>(result);
    }
    const key_t key = Real<key_t(const char*, int)>("ftok")(PrivatePath(path).c_str(), id);
    return key == -1 ? -1 : PrivateKey(path, id, key);
}

OB_INTERPOSE(int, semget, key_t key, int count, int flags)
{
    if (OB_FROM_LIBRARY) {
        Record(Text("sys semget(%d, 0x%X)", count, static_cast<unsigned>(flags)));
        long result = 0;
        if (Platform().TakesFailure("semget", result))
            return static_cast<int>(result);
    }
    return Real<int(key_t, int, int)>("semget")(key, count, flags);
}

OB_INTERPOSE(int, semop, int id, sembuf* operations, size_t count)
{
    if (OB_FROM_LIBRARY) {
        std::string flags =
            operations->sem_flg == SEM_UNDO ? "UNDO" : Text("%d", operations->sem_flg);
        Record(
            Text("sys semop(%d, %+d, %s)", operations->sem_num, operations->sem_op, flags.c_str()));
        long result = 0;
        if (Platform().TakesFailure("semop", result))
            return static_cast<int>(result);
    }
    if (operations->sem_op > 0 && __tsan_release != nullptr)
        __tsan_release(&Platform());
    const int done = Real<int(int, sembuf*, size_t)>("semop")(id, operations, count);
    if (operations->sem_op < 0 && done == 0 && __tsan_acquire != nullptr)
        __tsan_acquire(&Platform());
    return done;
}

OB_INTERPOSE(int, open, const char* path, int flags, ...)
{
    va_list args;
    va_start(args, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(args, mode_t) : 0;
    va_end(args);
    const auto realOpen = Real<int(const char*, int, ...)>("open");
    if (!OB_FROM_LIBRARY)
        return realOpen(PrivatePath(path).c_str(), flags, mode);
    const std::string modeText = (flags & O_CREAT) != 0 ? Text(", %o", mode) : "";
    Record(Text("sys open(%s, %s%s)", path, OpenFlags(flags).c_str(), modeText.c_str()));
    long result = 0;
    if (Platform().TakesFailure("open", result))
        return static_cast<int>(result);
    return strcmp(path, "/dev/modphy_drv") == 0 ? PlayedDescriptor()
                                                : realOpen(PrivatePath(path).c_str(), flags, mode);
}

OB_INTERPOSE(int, close, int fd)
{
    if (OB_FROM_LIBRARY) {
        Record("sys close()");
        long result = 0;
        if (Platform().TakesFailure("close", result)) {
            // The descriptor is gone all the same, as with the kernel.
            const int error = errno;
            Real<int(int)>("close")(fd);
            errno = error;
            return static_cast<int>(result);
        }
    }
    return Real<int(int)>("close")(fd);
}

OB_INTERPOSE(int, usleep, unsigned microseconds)
{
    if (!OB_FROM_LIBRARY)
        return Real<int(unsigned)>("usleep")(microseconds);
    Record(Text("wait usleep(%u)", microseconds));
    long result = 0;
    if (Platform().TakesFailure("usleep", result))
        return static_cast<int>(result);
    return Platform().realWaits ? Real<int(unsigned)>("usleep")(microseconds) : 0;
}

OB_INTERPOSE(unsigned, sleep, unsigned seconds)
{
    if (!OB_FROM_LIBRARY)
        return Real<unsigned(unsigned)>("sleep")(seconds);
    Record(Text("wait sleep(%u)", seconds));
    long result = 0;
    if (Platform().TakesFailure("sleep", result))
        return static_cast<unsigned>(result);
    return Platform().realWaits ? Real<unsigned(unsigned)>("sleep")(seconds) : 0;
}

OB_INTERPOSE(int, system, const char* command)
{
    if (!OB_FROM_LIBRARY)
        return Real<int(const char*)>("system")(command);
    Record(Text("sys system(%s)", command));
    long result = 0;
    return Platform().TakesFailure("system", result) ? static_cast<int>(result) : 0;
}

OB_INTERPOSE(FILE*, fopen, const char* path, const char* mode)
{
    if (!OB_FROM_LIBRARY)
        return Real<FILE*(const char*, const char*)>("fopen")(PrivatePath(path).c_str(), mode);
    Record(Text("sys fopen(%s, %s)", path, mode));
    long result = 0;
    if (Platform().TakesFailure("fopen", result))
        return nullptr;
    return PlayedAttribute(path);
}

OB_INTERPOSE(void*, dlopen, const char* name, int flags)
{
    const auto realOpen = Real<void*(const char*, int)>("dlopen");
    if (!OB_FROM_LIBRARY)
        return realOpen(name, flags);
    Record(Text("sys dlopen(%s, %s)", name, flags == RTLD_NOW ? "RTLD_NOW" : "?"));
    long result = 0;
    if (Platform().TakesFailure("dlopen", result))
        return realOpen("/nonexistent/refused.so", flags);
    const auto library = Platform().libraries.find(name);
    const std::string path =
        library == Platform().libraries.end() ? name : ScriptedLibraryPath(library->second);
    return realOpen(path.c_str(), flags);
}

OB_INTERPOSE(int, shm_init, int client, int flags, int reserved)
{
    Record(Text("sys shm_init(%d, %d, %d)", client, flags, reserved));
    long result = 0;
    return Platform().TakesFailure("shm_init", result) ? static_cast<int>(result) : 0;
}

#include "tests/support/private_names.h"

#include <dirent.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/random.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tests/support/interpose.h"

namespace obtest {
namespace {

// "PREFIX KEYS", for the programs that a test process executes.
constexpr const char* kInherited = "ORBLINK_TEST_NAMES";
constexpr const char* kFolders[] = {"/dev/shm/", "/var/tmp/"};
constexpr uint32_t kKeysOfAProcess = 256;
// Above what tests look at when they count descriptors.
constexpr int kLifeline = 500;

// Plain arrays: interposed functions ask before any constructor has run.
char prefix[48];
uint32_t firstKey;

bool Complain(const char* what)
{
    perror(what);
    return false;
}

uint32_t Random()
{
    uint32_t value = 0;
    if (getrandom(&value, sizeof(value), 0) != sizeof(value))
        value = static_cast<uint32_t>(getpid());
    return value;
}

int SemaphoreOf(uint32_t key)
{
    return semget(static_cast<key_t>(key), 0, 0);
}

bool AnyKeyInUse(uint32_t first)
{
    for (uint32_t i = 0; i < kKeysOfAProcess; ++i)
        if (SemaphoreOf(first + i) != -1 || errno != ENOENT)
            return true;
    return false;
}

// Process ids have 22 bits at most: no two live processes begin with the same keys.
uint32_t FreeKeys()
{
    uint32_t first = 0x40000000U | static_cast<uint32_t>(getpid()) << 8;
    while (AnyKeyInUse(first))
        first = 0x80000000U | Random() << 8;
    return first;
}

bool Inherit(const char* text)
{
    const char* const space = text != nullptr ? strchr(text, ' ') : nullptr;
    if (space == nullptr || static_cast<size_t>(space - text) >= sizeof(prefix))
        return false;
    memcpy(prefix, text, static_cast<size_t>(space - text));
    char* end = nullptr;
    firstKey = static_cast<uint32_t>(strtoul(space + 1, &end, 10));
    return end != space + 1 && *end == '\0';
}

void RemoveFiles(const char* folder)
{
    DIR* const entries = opendir(folder);
    if (entries == nullptr)
        return;
    while (const dirent* entry = readdir(entries))
        if (strncmp(entry->d_name, prefix, strlen(prefix)) == 0)
            unlinkat(dirfd(entries), entry->d_name, 0);
    closedir(entries);
}

[[noreturn]] void Guard(int lifeline)
{
    setsid();
    for (int signal : {SIGHUP, SIGINT, SIGTERM, SIGQUIT})
        ::signal(signal, SIG_IGN);
    // Nobody waits for the end of a stream because of the guardian.
    dup2(lifeline, 3);
    close_range(4, ~0U, 0);
    for (int fd : {0, 1, 2})
        close(fd);
    char never = 0;
    while (read(3, &never, 1) == -1 && errno == EINTR) {
    }
    RemovePrivateNames();
    _exit(0);
}

// Each process that descends from this one holds the writing end; the guardian reads its end of
// file when none is left. It is nobody's child, so that who kills a test with all its children
// spares it.
bool StartGuardian()
{
    int ends[2];
    if (pipe(ends) != 0)
        return Complain("pipe");
    const pid_t between = fork();
    if (between == -1)
        return Complain("fork");
    if (between == 0) {
        const pid_t guardian = fork();
        if (guardian != 0)
            _exit(guardian == -1 ? 1 : 0);
        close(ends[1]);
        Guard(ends[0]);
    }
    int status = 0;
    waitpid(between, &status, 0);
    const int held = fcntl(ends[1], F_DUPFD, kLifeline);
    close(ends[0]);
    close(ends[1]);
    return (status == 0 && held != -1) || Complain("guardian");
}

}  // namespace

bool TakePrivateNames()
{
    if (Inherit(getenv(kInherited)))
        return true;
    firstKey = FreeKeys();
    snprintf(prefix, sizeof(prefix), "orblink-test-%d-%06x.", static_cast<int>(getpid()),
             Random() & 0xFFFFFF);
    setenv(kInherited, Text("%s %u", prefix, firstKey).c_str(), 1);
    return StartGuardian();
}

void RemovePrivateNames()
{
    for (uint32_t i = 0; i < kKeysOfAProcess; ++i)
        if (const int id = SemaphoreOf(firstKey + i); id != -1)
            semctl(id, 0, IPC_RMID);
    for (const char* folder : kFolders)
        RemoveFiles(folder);
}

std::string PrivatePath(const char* path)
{
    for (const char* folder : kFolders)
        if (strncmp(path, folder, strlen(folder)) == 0)
            return std::string(folder) + prefix + (path + strlen(folder));
    return path;
}

std::string PrivateObject(const char* name)
{
    return name[0] == '/' ? std::string("/") + prefix + (name + 1) : name;
}

key_t PrivateKey(const char* path, int id, key_t machineKey)
{
    if (prefix[0] == '\0')
        return machineKey;
    uint32_t slot = static_cast<uint32_t>(id);
    for (const char* c = path; *c != '\0'; ++c)
        slot = slot * 31 + static_cast<uint8_t>(*c);
    return static_cast<key_t>(firstKey + slot % kKeysOfAProcess);
}

}  // namespace obtest

// Time of one call of the log sink: below the level, with a log daemon that drains its socket, with
// one that does not read, and with none. In a mount namespace of its own: no line leaves it.
#include <sched.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>

#include "platform/ob_platform.h"

namespace {

constexpr int kRounds = 2000;
constexpr int kCalls = 100;

int BindDaemon()
{
    const sockaddr_un address = {AF_UNIX, "/dev/log"};
    unlink(address.sun_path);
    const int fd = socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    if (bind(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
        perror("bind");
    return fd;
}

pid_t StartReader(int fd)
{
    const pid_t reader = fork();
    if (reader == 0) {
        char line[4096];
        while (recv(fd, line, sizeof(line), 0) >= 0) {
        }
        _exit(0);
    }
    return reader;
}

double Nanoseconds(clockid_t clock)
{
    timespec now = {};
    clock_gettime(clock, &now);
    return static_cast<double>(now.tv_sec) * 1e9 + static_cast<double>(now.tv_nsec);
}

void LogOnce(uint32_t severity, int value)
{
    const OBPLAT_LogSite site = {severity, 3, OBPLAT_MODULE_SWITCH, 77};
    OBPLAT_Log(&site, "ORBLINK_SetLanPortPcp", 0,
               "%s:%d Pcp %d is already set for LanPortIdx=%d, DevIdx=%d", "ORBLINK_SetLanPortPcp",
               77, 3, 2, value);
}

// The best round: the others say how busy the machine is.
void Measure(const char* what, uint32_t severity)
{
    double cpu = 1e18;
    double wall = 1e18;
    usleep(50'000);  // a sink that found no daemon looks again a little later only
    for (int round = 0; round < kRounds; ++round) {
        const double cpuStart = Nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
        const double wallStart = Nanoseconds(CLOCK_MONOTONIC);
        for (int i = 0; i < kCalls; ++i)
            LogOnce(severity, i & 1);
        cpu = std::min(cpu, (Nanoseconds(CLOCK_PROCESS_CPUTIME_ID) - cpuStart) / kCalls);
        wall = std::min(wall, (Nanoseconds(CLOCK_MONOTONIC) - wallStart) / kCalls);
    }
    printf("%-34s %7.0f ns CPU %7.0f ns\n", what, cpu, wall);
}

}  // namespace

int main()
{
    if (unshare(CLONE_NEWNS) != 0 ||
        mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        mount("tmpfs", "/dev", "tmpfs", 0, nullptr) != 0) {
        perror("a mount namespace of its own (run as root)");
        return 1;
    }
    Measure("below the level", OBPLAT_SEVERITY_TRACE);
    Measure("notice, no daemon", OBPLAT_SEVERITY_NOTICE);
    const int daemon = BindDaemon();
    Measure("notice, daemon does not read", OBPLAT_SEVERITY_NOTICE);
    const pid_t reader = StartReader(daemon);
    Measure("notice, daemon drains its socket", OBPLAT_SEVERITY_NOTICE);
    kill(reader, SIGKILL);
    waitpid(reader, nullptr, 0);
    return 0;
}

// A program that makes the platform calls of the library one at a time, as its words say, and
// prints what came of each. It knows nothing of a virtual board.

#include <fcntl.h>
#include <net/if.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/ipc.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>

namespace {

const char* const kAttributes[] = {
    "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset",
    "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset",
    "/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state",
};
unsigned char buffer[4096];

int Failed(const char* call)
{
    printf("%s: %s\n", call, strerrorname_np(errno));
    return 1;
}

long Number(const char* text)
{
    return strtol(text, nullptr, 0);
}

uint16_t Half(const char* text)
{
    return static_cast<uint16_t>(Number(text));
}

// mii INTERFACE BUS PHYID REG [VALUE]
int Mii(int argc, char** argv)
{
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    ifreq request{};
    strncpy(request.ifr_name, argv[0], IFNAMSIZ - 1);
    uint16_t words[5] = {Half(argv[2]), Half(argv[3]), 0, 0, Half(argv[1])};
    bool write = argc > 4;
    if (write)
        words[2] = Half(argv[4]);
    memcpy(&request.ifr_ifru, words, sizeof words);
    int result = ioctl(fd, write ? 0x8949UL : 0x8948UL, &request);
    int error = errno;
    close(fd);
    errno = error;
    if (result < 0)
        return Failed("ioctl");
    memcpy(words, &request.ifr_ifru, sizeof words);
    printf(write ? "written\n" : "0x%04x\n", words[3]);
    return 0;
}

// gmac OUTER INNER COMMAND SPEED DUPLEX
int Gmac(char** argv)
{
    struct {
        char name[16];
        uint32_t command;
        uint32_t speed;
        uint32_t duplex;
        int32_t result;
    } reconfig{};
    strncpy(reconfig.name, argv[1], sizeof reconfig.name - 1);
    reconfig.command = static_cast<uint32_t>(Number(argv[2]));
    reconfig.speed = static_cast<uint32_t>(Number(argv[3]));
    reconfig.duplex = static_cast<uint32_t>(Number(argv[4]));
    reconfig.result = 77;
    ifreq request{};
    strncpy(request.ifr_name, argv[0], IFNAMSIZ - 1);
    request.ifr_data = reinterpret_cast<char*>(&reconfig);
    int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const bool failed = ioctl(fd, 0x89F0UL, &request) < 0;
    close(fd);
    if (failed)
        return Failed("ioctl");
    printf("result %d\n", reconfig.result);
    return 0;
}

int Lane(const char* client)
{
    int fd = open("/dev/modphy_drv", O_RDONLY);
    if (fd < 0)
        return Failed("open");
    auto id = static_cast<uint32_t>(Number(client));
    const bool failed = ioctl(fd, 0x4004BE05UL, &id) < 0;
    close(fd);
    if (failed)
        return Failed("ioctl");
    puts("reset");
    return 0;
}

int WriteAttribute(const char* index, const char* text)
{
    FILE* file = fopen(kAttributes[Number(index)], "w");
    if (file == nullptr)
        return Failed("fopen");
    fprintf(file, "%s", text);
    int result = fflush(file);
    if (result != 0)
        Failed("fflush");
    fclose(file);
    puts(result == 0 ? "written" : "not written");
    return result != 0;
}

int ReadAttribute(const char* index)
{
    FILE* file = fopen(kAttributes[Number(index)], "r");
    if (file == nullptr)
        return Failed("fopen");
    int value = -1;
    // NOLINTNEXTLINE(cert-err34-c): what it makes of the attribute is printed
    int count = fscanf(file, "%d", &value);
    fclose(file);
    printf("%d of value %d\n", count, value);
    return 0;
}

int OpenMailbox(int type, int appid)
{
    int fd = socket(43, type, 0);
    if (fd < 0) {
        Failed("socket");
        return -1;
    }
    unsigned char address[16] = {43, 0, 0, static_cast<unsigned char>(appid)};
    if (bind(fd, reinterpret_cast<sockaddr*>(address), sizeof address) != 0) {
        Failed("bind");
        close(fd);
        return -1;
    }
    return fd;
}

void NoticeAlarm(int) {}

// A receive that a timer interrupts every 50 ms: how often, and whether it works all the same.
ssize_t ReceiveInterrupted(int fd, int& interruptions)
{
    struct sigaction action {};
    action.sa_handler = NoticeAlarm;
    sigaction(SIGALRM, &action, nullptr);
    itimerval every{{0, 50000}, {0, 50000}};
    setitimer(ITIMER_REAL, &every, nullptr);
    ssize_t size = 0;
    while ((size = recv(fd, buffer, sizeof buffer, MSG_TRUNC)) < 0 && errno == EINTR)
        ++interruptions;
    itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    return size;
}

int Acknowledge(int fd, const char* answer)
{
    static const unsigned char right[8] = {0, 0, 0, 12, 0, 0, 0, 0};
    if (strcmp(answer, "silent") == 0)
        return 0;
    ssize_t sent = strcmp(answer, "ack") == 0 ? send(fd, right, 8, 0) : send(fd, "wrong", 5, 0);
    if (sent < 0)
        return Failed("send");
    printf("sent %d\n", static_cast<int>(sent));
    return 0;
}

// The message comes after the receive has timed out, and while something is being sent.
ssize_t ReceiveLate(int fd)
{
    const timeval limit{0, 100'000};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    if (recv(fd, buffer, sizeof buffer, MSG_TRUNC) < 0 && errno == EAGAIN)
        puts("timed out");
    fflush(stdout);
    sleep(1);
    printf("sent %d\n", static_cast<int>(send(fd, "late", 4, 0)));
    return recv(fd, buffer, sizeof buffer, MSG_TRUNC);
}

// mailbox ack|wrong|silent [interrupted|short|now|late]
int Mailbox(const char* answer, const char* how)
{
    int fd = OpenMailbox(1, 12);
    if (fd < 0)
        return 1;
    int interruptions = 0;
    ssize_t size = 0;
    if (strcmp(how, "interrupted") == 0)
        size = ReceiveInterrupted(fd, interruptions);
    else if (strcmp(how, "late") == 0)
        size = ReceiveLate(fd);
    else if (strcmp(how, "short") == 0)
        size = recv(fd, buffer, 10, 0);
    else
        size = recv(fd, buffer, sizeof buffer, strcmp(how, "now") == 0 ? MSG_DONTWAIT : MSG_TRUNC);
    if (size < 0)
        return Failed("recv");
    printf("received %d of type %d length %d\n", static_cast<int>(size), buffer[3], buffer[7]);
    if (interruptions > 0)
        puts("was interrupted");
    int result = Acknowledge(fd, answer);
    close(fd);
    return result;
}

int Wait(const char* call, const char* amount)
{
    timespec before{};
    timespec after{};
    clock_gettime(CLOCK_MONOTONIC, &before);
    auto count = static_cast<unsigned>(Number(amount));
    if (strcmp(call, "sleep") == 0)
        sleep(count);
    else
        usleep(count);
    clock_gettime(CLOCK_MONOTONIC, &after);
    double ms = static_cast<double>(after.tv_sec - before.tv_sec) * 1e3 +
                static_cast<double>(after.tv_nsec - before.tv_nsec) / 1e6;
    printf("%.3f\n", ms);
    return 0;
}

int MakeShared(const char* name, const char* key)
{
    int fd = open(name, O_CREAT | O_EXCL | O_RDWR, 0600);
    if (fd < 0)
        return Failed("open");
    close(fd);
    if (semget(static_cast<key_t>(Number(key)), 1, IPC_CREAT | IPC_EXCL | 0600) < 0)
        return Failed("semget");
    puts("made");
    return 0;
}

int Ring()
{
    char parameters[256] = {};
    const long fd = syscall(425, 1, parameters);
    if (fd < 0)
        return Failed("io_uring_setup");
    puts("a ring");
    return 0;
}

int System(const char* command)
{
    int status = system(command);
    if (status < 0)
        return Failed("system");
    printf("status %d\n", status);
    return 0;
}

// stream INDEX TEXT
int WriteStream(const char* index, const char* text)
{
    std::ofstream file{kAttributes[Number(index)]};
    if (!file)
        return Failed("ofstream");
    file << text << std::flush;
    if (!file)
        return Failed("flush");
    puts("written");
    return 0;
}

int Run(int argc, char** argv);

// undumpable CALL...
int Undumpable(int argc, char** argv)
{
    if (prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) != 0)
        return Failed("prctl");
    return Run(argc, argv);
}

int Run(int argc, char** argv)
{
    const char* verb = argc > 1 ? argv[1] : "";
    if (strcmp(verb, "undumpable") == 0)
        return Undumpable(argc - 1, argv + 1);
    if (strcmp(verb, "mii") == 0 && argc >= 6)
        return Mii(argc - 2, argv + 2);
    if (strcmp(verb, "gmac") == 0 && argc == 7)
        return Gmac(argv + 2);
    if (strcmp(verb, "lane") == 0 && argc == 3)
        return Lane(argv[2]);
    if (strcmp(verb, "write") == 0 && argc == 4)
        return WriteAttribute(argv[2], argv[3]);
    if (strcmp(verb, "stream") == 0 && argc == 4)
        return WriteStream(argv[2], argv[3]);
    if (strcmp(verb, "read") == 0 && argc == 3)
        return ReadAttribute(argv[2]);
    if (strcmp(verb, "mailbox") == 0 && argc >= 3)
        return Mailbox(argv[2], argc > 3 ? argv[3] : "");
    if (strcmp(verb, "bind") == 0 && argc == 4)
        return OpenMailbox(static_cast<int>(Number(argv[2])), static_cast<int>(Number(argv[3]))) <
               0;
    if ((strcmp(verb, "sleep") == 0 || strcmp(verb, "usleep") == 0) && argc == 3)
        return Wait(verb, argv[2]);
    if (strcmp(verb, "shared") == 0 && argc == 4)
        return MakeShared(argv[2], argv[3]);
    if (strcmp(verb, "system") == 0 && argc == 3)
        return System(argv[2]);
    if (strcmp(verb, "ring") == 0)
        return Ring();
    fputs("client: no such call\n", stderr);
    return 2;
}

}  // namespace

int main(int argc, char** argv)
{
    int result = Run(argc, argv);
    fflush(stdout);
    return result;
}

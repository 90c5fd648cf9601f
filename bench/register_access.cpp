// What a program on the virtual board pays for a register access, and for a call in which the board
// is only asked whether it is its own. Microseconds per call.

#include <fcntl.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstring>

namespace {

constexpr int kRounds = 20000;
constexpr unsigned long kReadMii = 0x8948;

template <typename Call>
bool Measure(const char* name, Call call)
{
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    for (int round = 0; round < kRounds; ++round)
        if (!call()) {
            perror(name);
            return false;
        }
    const std::chrono::duration<double, std::micro> time = Clock::now() - start;
    printf("%-24s %8.2f us\n", name, time.count() / kRounds);
    return true;
}

bool ReadRegister(int fd)
{
    ifreq request{};
    const unsigned short words[5] = {16, 0, 0, 0, 0};
    strncpy(request.ifr_name, "nsgmii0", IFNAMSIZ - 1);
    memcpy(&request.ifr_ifru, words, sizeof words);
    return ioctl(fd, kReadMii, &request) == 0;
}

}  // namespace

int main()
{
    const int fd = socket(AF_INET, SOCK_DGRAM, 0);
    const int null = open("/dev/null", O_WRONLY);
    const bool done = Measure("register read", [&] { return ReadRegister(fd); }) &&
                      Measure("open of another file",
                              [] {
                                  const int other = open("/dev/null", O_RDONLY);
                                  close(other);
                                  return other >= 0;
                              }) &&
                      Measure("write of one octet", [&] { return write(null, "x", 1) == 1; }) &&
                      Measure("getppid, never asked", [] { return getppid() >= 0; });
    close(null);
    close(fd);
    return done ? 0 : 1;
}

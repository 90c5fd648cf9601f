// What a program on the virtual board pays for a register access, and for a call in which the board
// is only asked whether it is its own. Microseconds: the median of the calls, and 99 % of them.
#include <fcntl.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

namespace {

constexpr int kRounds = 20000;
constexpr unsigned long kReadMii = 0x8948;

// Each call by itself: the median is what it costs, the rest how busy the machine is.
template <typename Call>
bool Measure(const char* name, Call call)
{
    using Clock = std::chrono::steady_clock;
    std::vector<double> microseconds;
    microseconds.reserve(kRounds);
    for (int round = 0; round < kRounds; ++round) {
        const auto start = Clock::now();
        if (!call()) {
            perror(name);
            return false;
        }
        microseconds.push_back(
            std::chrono::duration<double, std::micro>(Clock::now() - start).count());
    }
    std::ranges::sort(microseconds);
    printf("%-24s %8.2f %8.2f\n", name, microseconds[kRounds / 2],
           microseconds[size_t{kRounds} / 100 * 99]);
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
    printf("%-24s %8s %8s\n", "microseconds", "median", "99 %");
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

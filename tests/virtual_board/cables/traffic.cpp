#include "tests/virtual_board/cables/traffic.h"

#include <fcntl.h>
#include <linux/if_tun.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace traffic {
namespace {

// In a process of its own, which may leave for another namespace.
int TryTap()
{
    if (unshare(CLONE_NEWNET | (geteuid() == 0 ? 0 : CLONE_NEWUSER)) != 0)
        return 1;
    const int fd = open("/dev/net/tun", O_RDWR | O_CLOEXEC);
    if (fd < 0)
        return 2;
    ifreq request{};
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    return ioctl(fd, TUNSETIFF, &request) == 0 ? 0 : 3;
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

uint32_t Number(const std::string& bytes, size_t at)
{
    uint32_t number = 0;
    memcpy(&number, bytes.data() + at, sizeof number);
    return number;
}

bool HasTestType(const Octets& frame)
{
    size_t at = 12;
    while (at + 4 < frame.size() && ((frame[at] == 0x81 && frame[at + 1] == 0x00) ||
                                     (frame[at] == 0x88 && frame[at + 1] == 0xA8)))
        at += 4;
    return at + 2 <= frame.size() && frame[at] == 0x88 && frame[at + 1] == 0xB5;
}

}  // namespace

std::string WhyNot()
{
    const pid_t pid = fork();
    if (pid == 0)
        _exit(TryTap());
    int status = 0;
    waitpid(pid, &status, 0);
    constexpr const char* kReasons[] = {"", "network namespaces are not allowed here",
                                        "/dev/net/tun cannot be opened here",
                                        "TAP interfaces are not allowed here"};
    return kReasons[WEXITSTATUS(status)];
}

void Traffic::UseLinux()
{
    onLinux_ = true;
    timeScale = "0.2";
}

void Traffic::SetUp()
{
    const std::string reason = onLinux_ ? "" : WhyNot();
    if (!reason.empty())
        GTEST_SKIP() << reason;
    std::string name = "/tmp/traffic-test.XXXXXX";
    directory = mkdtemp(name.data());
}

void Traffic::TearDown()
{
    if (!directory.empty())
        std::filesystem::remove_all(directory);
}

std::string Traffic::Run(const std::string& script)
{
    const std::string bin = std::string(std::getenv("ORBLINK_BUILD")) + "/bin";
    const std::string hosts = onLinux_ ? "hosts_linux.sh" : "hosts_virtual.sh";
    std::ofstream(Path("script")) << "PATH=" << bin << ":$PATH\nS=" << directory
                                  << "\n. " ORBLINK_LAN "/" << hosts
                                  << "\n. " ORBLINK_LAN "/traffic.sh\n"
                                  << script;
    const std::string board = onLinux_ ? "lan_linux.toml" : "lan.toml";
    // A switch of the kernel is made in a network of its own.
    const std::string network =
        onLinux_ ? std::string("ORBLINK_LINUX_SWITCH=" ORBLINK_LAN "/linux_mapping unshare ") +
                       (geteuid() == 0 ? "-n " : "-rn ")
                 : "";
    const std::string line = network + bin + "/orblink-vboard run --board " ORBLINK_LAN "/" +
                             board + " --time-scale " + timeScale + " -- sh " + Path("script") +
                             " >" + Path("out") + " 2>" + Path("err");
    const int status = std::system(line.c_str());
    EXPECT_EQ(status, 0) << ReadFile(Path("out")) << ReadFile(Path("err"));
    return ReadFile(Path("out"));
}

std::vector<Octets> Traffic::Frames(const std::string& host, bool all)
{
    constexpr size_t kFileHeader = 24;
    constexpr size_t kRecordHeader = 16;
    const std::string file = ReadFile(Path(host + ".pcap"));
    EXPECT_GE(file.size(), kFileHeader) << host;
    std::vector<Octets> frames;
    for (size_t at = kFileHeader; at + kRecordHeader <= file.size();) {
        const size_t size = Number(file, at + 8);
        EXPECT_EQ(size, Number(file, at + 12)) << "a frame was cut";
        at += kRecordHeader;
        frames.emplace_back(file.begin() + static_cast<long>(at),
                            file.begin() + static_cast<long>(at + size));
        if (!all && !HasTestType(frames.back()))
            frames.pop_back();
        at += size;
    }
    return frames;
}

size_t Traffic::Count(const std::string& host, bool (*picked)(const Octets& frame))
{
    const std::vector<Octets> heard = Frames(host, true);
    return static_cast<size_t>(std::count_if(heard.begin(), heard.end(), picked));
}

void Traffic::ExpectAServiceTagBefore(const std::string& tag)
{
    Run("ctl bridge-mode 0 on 0x88a8; ctl port 0:2 tagging 1\n"
        "hear b; hear c; hear soc\n"
        "send a " +
        Frame(kAll, kFromA, tag) + "\nheard b; heard c; heard soc\n");
    const Octets tagged = FromHex(Frame(kAll, kFromA, "88a80001" + tag));
    EXPECT_THAT(Frames("b"), ::testing::ElementsAre(tagged));
    EXPECT_THAT(Frames("soc"), ::testing::ElementsAre(tagged));
    EXPECT_THAT(Frames("c"), ::testing::ElementsAre(FromHex(Frame(kAll, kFromA, tag))));
}

nlohmann::json Traffic::Json(const std::string& file)
{
    return nlohmann::json::parse(ReadFile(Path(file)));
}

std::string Frame(const std::string& destination, const std::string& source,
                  const std::string& tags, size_t size)
{
    std::string hex = destination + source + tags + "88b5";
    for (size_t i = 0; i < size; ++i)
        hex += "a" + std::string(1, "0123456789abcdef"[i % 16]);
    return hex;
}

Octets FromHex(const std::string& hex)
{
    Octets octets;
    for (size_t i = 0; i < hex.size(); i += 2)
        octets.push_back(static_cast<uint8_t>(std::stoul(hex.substr(i, 2), nullptr, 16)));
    return octets;
}

}  // namespace traffic

#include "tests/hals/linux_switch/kernel_bench.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <linux/genetlink.h>
#include <linux/if_packet.h>
#include <linux/netlink.h>
#include <net/if.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>
#include <utility>

#include "platform/ob_platform.h"

LinuxSwitch* LinuxSwitch::current = nullptr;

void* OBHAL_GetHalPrivData(uint8_t)
{
    return LinuxSwitch::current->privateData + 1;
}

int OBHAL_GetInternalPortPidx(uint8_t)
{
    return LinuxSwitch::current->internalPort;
}

void OBPLAT_Log(const OBPLAT_LogSite* site, const char*, int, const char* format, ...)
{
    char line[512];
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(line, sizeof line, format, arguments);
    va_end(arguments);
    const std::string text = line;
    if (site->Severity == OBPLAT_SEVERITY_ERROR)
        LinuxSwitch::current->log.push_back(text.substr(text.find(' ') + 1));
}

namespace {

// Generic netlink's only families here are the one that names the others, and ethtool's.
bool IsForADriver(int fd, const uint8_t* bytes)
{
    int protocol = 0;
    socklen_t size = sizeof protocol;
    nlmsghdr header;
    memcpy(&header, bytes, sizeof header);
    return getsockopt(fd, SOL_SOCKET, SO_PROTOCOL, &protocol, &size) == 0 &&
           protocol == NETLINK_GENERIC && header.nlmsg_type != GENL_ID_CTRL;
}

}  // namespace

extern "C" ssize_t send(int fd, const void* bytes, size_t size, int flags)
{
    using Send = ssize_t (*)(int, const void*, size_t, int);
    static const Send next = reinterpret_cast<Send>(dlsym(RTLD_NEXT, "send"));
    LinuxSwitch& test = *LinuxSwitch::current;
    if (++test.requests == test.failAt) {
        errno = ENOBUFS;
        return -1;
    }
    if (test.silentFrom != 0 && test.requests >= test.silentFrom)
        return static_cast<ssize_t>(size);
    const auto* request = static_cast<const uint8_t*>(bytes);
    if (test.driver && IsForADriver(fd, request)) {
        test.driversAnswer = test.driver({request, request + size});
        return static_cast<ssize_t>(size);
    }
    return next(fd, bytes, size, flags);
}

extern "C" ssize_t recv(int fd, void* bytes, size_t size, int flags)
{
    using Recv = ssize_t (*)(int, void*, size_t, int);
    static const Recv next = reinterpret_cast<Recv>(dlsym(RTLD_NEXT, "recv"));
    LinuxSwitch& test = *LinuxSwitch::current;
    if (!test.driversAnswer.empty()) {
        const std::vector<uint8_t> answer = std::exchange(test.driversAnswer, {});
        memcpy(bytes, answer.data(), std::min(size, answer.size()));
        return static_cast<ssize_t>(answer.size());
    }
    const ssize_t got = next(fd, bytes, size, flags);
    if (got < 0 && errno == EAGAIN)
        ++test.waitsInVain;
    const auto fits = [](const nlmsghdr* at, int left) {
        return left >= int{NLMSG_HDRLEN} && static_cast<int>(at->nlmsg_len) <= left;
    };
    int left = static_cast<int>(got);
    for (auto* at = static_cast<nlmsghdr*>(bytes); fits(at, left); at = NLMSG_NEXT(at, left)) {
        int error = 0;
        if (at->nlmsg_type == NLMSG_ERROR)
            memcpy(&error, NLMSG_DATA(at), sizeof error);
        test.refusals += error != 0 ? 1 : 0;
        if (at->nlmsg_type == NLMSG_DONE && test.interruptedLists > 0) {
            --test.interruptedLists;
            at->nlmsg_flags |= NLM_F_DUMP_INTR;
        }
    }
    return got;
}

namespace {

void WriteFile(const std::string& path, const std::string& text)
{
    std::ofstream(path) << text;
}

// Root takes a namespace, anybody else one of users as well.
bool EnterOwnNetwork()
{
    const uid_t uid = geteuid();
    const gid_t gid = getegid();
    if (unshare(CLONE_NEWNET | (uid == 0 ? 0 : CLONE_NEWUSER)) != 0)
        return false;
    if (uid != 0) {
        WriteFile("/proc/self/setgroups", "deny");
        WriteFile("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1");
        WriteFile("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1");
    }
    return true;
}

int RunShell(const std::string& command, std::string& output)
{
    FILE* pipe = popen(("exec 2>&1\n" + command).c_str(), "r");
    std::array<char, 4096> buffer;
    for (size_t got = 0; (got = fread(buffer.data(), 1, buffer.size(), pipe)) > 0;)
        output.append(buffer.data(), got);
    return pclose(pipe);
}

}  // namespace

void LinuxSwitch::SetUp()
{
    current = this;
    std::string name = "/tmp/linux-switch-test.XXXXXX";
    directory = mkdtemp(name.data());
    setenv("ORBLINK_LINUX_SWITCH", directory.c_str(), 1);
    if (!EnterOwnNetwork())
        GTEST_SKIP() << "network namespaces are not allowed here";
    std::string cables;
    for (int port = 1; port <= kLanPorts; ++port) {
        const std::string number = std::to_string(port);
        cables += "link add lan" + number + " type veth peer name host" + number + "\n";
        cables += "link set host" + number + " up\n";
    }
    if (!Try("ip -batch - <<END\n" + cables + "END"))
        GTEST_SKIP() << "veth interfaces are not allowed here";
    WriteMapping(
        "bridge = \"br0\"\n"
        "cpu_port = 0\n"
        "[ports]\n"
        "1 = \"lan1\"\n"
        "2 = \"lan2\"\n"
        "3 = \"lan3\"\n");
}

void LinuxSwitch::TearDown()
{
    std::filesystem::remove_all(directory);
}

void LinuxSwitch::WriteMapping(const std::string& text)
{
    WriteFile(directory + "/linux-switch-0.toml", text);
}

void LinuxSwitch::BringUp()
{
    ASSERT_EQ(Init(), 0);
    ASSERT_EQ(Hal().ResetSwitch(0, nullptr, 0), 0) << ::testing::PrintToString(log);
    // The bridge takes note of its ports' links up to a second later.
    for (int look = 0; look < 60 && Try("bridge -d link | grep -q 'state disabled'"); ++look)
        usleep(50'000);
}

std::string LinuxSwitch::Sh(const std::string& command)
{
    std::string output;
    const int status = RunShell(command, output);
    EXPECT_EQ(status, 0) << command << "\n" << output;
    return output;
}

bool LinuxSwitch::Try(const std::string& command)
{
    std::string output;
    return RunShell(command, output) == 0;
}

nlohmann::json LinuxSwitch::Json(const std::string& command)
{
    const std::string text = Sh(command);
    return nlohmann::json::parse(text.empty() ? "[]" : text, nullptr, false);
}

std::string LinuxSwitch::KernelState()
{
    std::string shows = "qdisc show\n";
    for (const char* interface : {"lan1", "lan2", "lan3", "br0"})
        for (const char* hook : {" ingress", " egress"})
            shows += std::string("filter show dev ") + interface + hook + "\n";
    // Where there is no hook, or no interface, there are no filters.
    const std::string shown =
        Sh("ip -d link; bridge vlan\n"
           "tc -force -batch - 2>/dev/null <<END || true\n" +
           shows + "END");
    // What runs by itself or follows later, and the numbers that the kernel gives to actions.
    return std::regex_replace(
        shown, std::regex("[a-z_]+_timer +[0-9.]+|NO-CARRIER,|state [A-Z]+ |index [0-9]+ (?=ref)"),
        "");
}

std::string LinuxSwitch::StateInTheEnd(const std::string& expected)
{
    std::string state = KernelState();
    for (int look = 0; look < 40 && state != expected; ++look) {
        usleep(50'000);
        state = KernelState();
    }
    return state;
}

void LinuxSwitch::FailEachRequest(const std::function<int()>& slot)
{
    usleep(100'000);
    const std::string before = KernelState();
    for (int fault = 1; fault < 200; ++fault) {
        log.clear();
        requests = 0;
        failAt = fault;
        const int result = slot();
        failAt = 0;
        if (requests < fault) {
            EXPECT_EQ(result, 0) << ::testing::PrintToString(log);
            EXPECT_NE(KernelState(), before);
            EXPECT_GT(fault, 1);
            return;
        }
        ASSERT_NE(result, 0) << "request " << fault;
        EXPECT_EQ(log.size(), 1u) << "request " << fault;
        ASSERT_EQ(StateInTheEnd(before), before) << "request " << fault;
    }
    FAIL() << "the slot does not come to an end";
}

std::string LinuxSwitch::Vlans(const std::string& interface)
{
    std::string words;
    const auto shown = Json("bridge -j vlan show dev " + interface);
    for (const auto& of : shown) {
        for (const auto& vlan : of["vlans"]) {
            words += (words.empty() ? "" : ", ") + vlan["vlan"].dump();
            if (!vlan.contains("flags"))
                continue;
            for (const auto& flag : vlan["flags"])
                words += flag == "PVID" ? " pvid" : " untagged";
        }
    }
    return words;
}

void LinuxSwitch::SendFrames(const char* interface, int count, size_t size)
{
    std::string frame("\xff\xff\xff\xff\xff\xff\x02\0\0\0\0\x01\x88\xb5", 14);
    frame.resize(size);
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_ifindex = static_cast<int>(if_nametoindex(interface));
    const int fd = socket(AF_PACKET, SOCK_RAW, 0);
    for (int i = 0; i < count; ++i)
        EXPECT_EQ(sendto(fd, frame.data(), frame.size(), 0, reinterpret_cast<sockaddr*>(&address),
                         sizeof address),
                  static_cast<ssize_t>(size));
    close(fd);
}

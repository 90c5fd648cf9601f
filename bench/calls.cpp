// A call against what it cannot do without, and against what else one could ask a machine.
#include <benchmark/benchmark.h>
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/neighbour.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <pthread.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "bench/call_classes.h"
#include "platform/ob_platform.h"

namespace {

constexpr const char* kVeth = "obbench0";
constexpr const char* kBridge = "obbench";

void Run(benchmark::State& state, void (*call)())
{
    for (auto _ : state)
        call();
}

void RobustMutex(benchmark::State& state)
{
    void* const at = mmap(nullptr, sizeof(pthread_mutex_t), PROT_READ | PROT_WRITE,
                          // cppcheck-suppress invalidFunctionArg ; what is mapped is no file
                          MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    auto* const mutex = static_cast<pthread_mutex_t*>(at);
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(mutex, &attributes);
    for (auto _ : state) {
        pthread_mutex_lock(mutex);
        pthread_mutex_unlock(mutex);
    }
    munmap(at, sizeof(pthread_mutex_t));
}

void EthtoolIoctl(benchmark::State& state)
{
    const int fd = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    ethtool_value link = {ETHTOOL_GLINK, 0};
    ifreq request = {};
    strncpy(request.ifr_name, kVeth, IFNAMSIZ - 1);
    request.ifr_data = reinterpret_cast<char*>(&link);
    for (auto _ : state)
        if (ioctl(fd, SIOCETHTOOL, &request) != 0)
            return state.SkipWithError("SIOCETHTOOL");
    close(fd);
}

// Requests over netlink, one after the other on one socket.
class Netlink {
public:
    explicit Netlink(int family) : fd_(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, family)) {}
    ~Netlink() { close(fd_); }
    Netlink(const Netlink&) = delete;
    Netlink& operator=(const Netlink&) = delete;

    void Begin(uint16_t type, uint16_t flags)
    {
        memset(request_, 0, sizeof(request_));
        auto& header = Header();
        header.nlmsg_len = NLMSG_HDRLEN;
        header.nlmsg_type = type;
        header.nlmsg_flags = static_cast<uint16_t>(NLM_F_REQUEST | flags);
    }

    template <typename T>
    void Put(const T& fixed)
    {
        memcpy(request_ + Header().nlmsg_len, &fixed, sizeof(fixed));
        Header().nlmsg_len += NLMSG_ALIGN(sizeof(fixed));
    }

    void PutAttribute(uint16_t type, const void* data, size_t size)
    {
        nlattr attribute = {static_cast<uint16_t>(NLA_HDRLEN + size), type};
        Put(attribute);
        memcpy(request_ + Header().nlmsg_len, data, size);
        Header().nlmsg_len += static_cast<uint32_t>(NLA_ALIGN(size));
    }

    // Messages of the answer; -1 when it is an error or none.
    int Ask(bool dump)
    {
        if (send(fd_, request_, Header().nlmsg_len, 0) < 0)
            return -1;
        for (int messages = 0;;) {
            auto left = recv(fd_, answer_, sizeof(answer_), 0);
            if (left <= 0)
                return -1;
            for (auto* m = reinterpret_cast<nlmsghdr*>(answer_); NLMSG_OK(m, left);
                 m = NLMSG_NEXT(m, left)) {
                if (m->nlmsg_type == NLMSG_DONE)
                    return messages;
                if (m->nlmsg_type == NLMSG_ERROR)
                    return -1;
                ++messages;
            }
            if (!dump)
                return messages;
        }
    }

    const char* Answer() const { return answer_; }

private:
    nlmsghdr& Header() { return *reinterpret_cast<nlmsghdr*>(request_); }

    int fd_;
    alignas(nlmsghdr) char request_[256] = {};
    alignas(nlmsghdr) char answer_[65536] = {};
};

void RtnetlinkLink(benchmark::State& state)
{
    Netlink route(NETLINK_ROUTE);
    route.Begin(RTM_GETLINK, 0);
    ifinfomsg which = {};
    which.ifi_index = static_cast<int>(if_nametoindex(kVeth));
    route.Put(which);
    for (auto _ : state)
        if (route.Ask(false) != 1)
            return state.SkipWithError("RTM_GETLINK");
}

// Number of the ethtool family, as the kernel has assigned it; 0 when there is none.
uint16_t EthtoolFamily(Netlink& generic)
{
    generic.Begin(GENL_ID_CTRL, 0);
    generic.Put(genlmsghdr{CTRL_CMD_GETFAMILY, 1, 0});
    generic.PutAttribute(CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME, sizeof(ETHTOOL_GENL_NAME));
    if (generic.Ask(false) != 1)
        return 0;
    const auto* message = reinterpret_cast<const nlmsghdr*>(generic.Answer());
    const char* at = generic.Answer() + NLMSG_HDRLEN + GENL_HDRLEN;
    while (at < generic.Answer() + message->nlmsg_len) {
        const auto* attribute = reinterpret_cast<const nlattr*>(at);
        if (attribute->nla_type == CTRL_ATTR_FAMILY_ID) {
            uint16_t id = 0;
            memcpy(&id, at + NLA_HDRLEN, sizeof(id));
            return id;
        }
        at += NLA_ALIGN(attribute->nla_len);
    }
    return 0;
}

void EthtoolNetlink(benchmark::State& state)
{
    Netlink generic(NETLINK_GENERIC);
    const uint16_t family = EthtoolFamily(generic);
    if (family == 0)
        return state.SkipWithError("no ethtool family");
    const uint32_t index = if_nametoindex(kVeth);
    generic.Begin(family, 0);
    generic.Put(genlmsghdr{ETHTOOL_MSG_LINKSTATE_GET, 1, 0});
    nlattr header = {NLA_HDRLEN + NLA_HDRLEN + sizeof(index),
                     ETHTOOL_A_LINKSTATE_HEADER | NLA_F_NESTED};
    generic.Put(header);
    generic.PutAttribute(ETHTOOL_A_HEADER_DEV_INDEX, &index, sizeof(index));
    for (auto _ : state)
        if (generic.Ask(false) != 1)
            return state.SkipWithError("ETHTOOL_MSG_LINKSTATE_GET");
}

void FdbDump(benchmark::State& state)
{
    Netlink route(NETLINK_ROUTE);
    route.Begin(RTM_GETNEIGH, NLM_F_DUMP);
    const auto bridge = static_cast<int>(if_nametoindex(kBridge));
    ndmsg neighbours = {};
    neighbours.ndm_family = AF_BRIDGE;
    route.Put(neighbours);
    route.PutAttribute(NDA_MASTER, &bridge, sizeof(bridge));
    for (auto _ : state)
        if (route.Ask(true) < OB_MAC_TABLE_ENTRIES)
            return state.SkipWithError("fewer entries than there should be");
}

// A log daemon for as long as it lives: one that drains its socket, or one that never reads.
class LogDaemon {
public:
    explicit LogDaemon(bool reads) : fd_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0))
    {
        const sockaddr_un address = {AF_UNIX, "/dev/log"};
        unlink(address.sun_path);
        if (bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0)
            perror(address.sun_path);
        if (reads && (reader_ = fork()) == 0) {
            char line[4096];
            while (recv(fd_, line, sizeof(line), 0) >= 0) {
            }
            _exit(0);
        }
    }
    ~LogDaemon()
    {
        if (reader_ > 0) {
            kill(reader_, SIGKILL);
            waitpid(reader_, nullptr, 0);
        }
        close(fd_);
        unlink("/dev/log");
    }
    LogDaemon(const LogDaemon&) = delete;
    LogDaemon& operator=(const LogDaemon&) = delete;

private:
    int fd_;
    pid_t reader_ = 0;
};

// A call that logs a notice, through the sink as it is shipped.
void Notice(benchmark::State& state, void (*call)(), bool reads)
{
    const LogDaemon daemon{reads};
    usleep(20'000);  // a sink that has found no daemon looks again a little later
    for (auto _ : state)
        call();
}

}  // namespace

int main(int argc, char** argv)
{
    const bench::ReadyBoard board;
    // A /dev of its own, where no line reaches the machine's log.
    const bool ownLog = access("/dev/orblink-bench", F_OK) == 0;
    for (const auto& [name, call] : bench::CallClasses(board)) {
        const std::string which = name;
        if (ownLog || (which != "setter-already-set" && which != "setter-refused"))
            benchmark::RegisterBenchmark(name, Run, call);
        if (ownLog && which == "setter-already-set") {
            benchmark::RegisterBenchmark("notice-daemon-reads", Notice, call, true);
            benchmark::RegisterBenchmark("notice-daemon-silent", Notice, call, false);
        }
    }
    benchmark::RegisterBenchmark("robust-mutex", RobustMutex);
    if (if_nametoindex(kVeth) != 0 && if_nametoindex(kBridge) != 0) {
        benchmark::RegisterBenchmark("ethtool-ioctl", EthtoolIoctl);
        benchmark::RegisterBenchmark("ethtool-netlink", EthtoolNetlink);
        benchmark::RegisterBenchmark("rtnetlink-link", RtnetlinkLink);
        benchmark::RegisterBenchmark("fdb-dump-256", FdbDump);
    }
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

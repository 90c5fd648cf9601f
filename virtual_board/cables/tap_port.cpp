#include "virtual_board/cables/tap_port.h"

#include <fcntl.h>
#include <linux/ethtool.h>
#include <linux/if_tun.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <net/if_arp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>

#include "virtual_board/board/system_failure.h"
#include "virtual_board/datapath/packet_memory.h"
#include "virtual_board/description/interface_address.h"

namespace vboard::cables {
namespace {

using datapath::Bytes;

constexpr size_t kBeforeFrame = 16;
// Up to this size the copy costs less than what the kernel does to find the pieces.
constexpr size_t kInOnePiece = 2048;

// <linux/virtio_net.h> is not C++. In the machine's byte order.
struct VirtioHeader {
    uint8_t flags;
    uint8_t kind;  // of long packet
    uint16_t headers;
    uint16_t perFrame;
    uint16_t sumFrom;
    uint16_t sumOffset;
};
static_assert(sizeof(VirtioHeader) == 10);
constexpr uint8_t kNeedsSum = 1;
constexpr uint8_t kOneFrame = 0;
constexpr uint8_t kLongTcp4 = 1;
constexpr uint8_t kLongTcp6 = 4;

// <linux/ipv6.h> clashes with the C library's <net/if.h>.
struct Ipv6Request {
    in6_addr address;
    uint32_t prefix;
    int interface;
};

ifreq RequestFor(const std::string& interface)
{
    ifreq request{};
    interface.copy(request.ifr_name, IFNAMSIZ - 1);
    return request;
}

UniqueFd OpenTap(const std::string& interface, bool& headers)
{
    UniqueFd fd{open("/dev/net/tun", O_RDWR | O_NONBLOCK | O_CLOEXEC)};
    if (!fd)
        Fail("ports = \"tap\": cannot open /dev/net/tun");
    ifreq request = RequestFor(interface);
    request.ifr_flags = IFF_TAP | IFF_NO_PI | IFF_VNET_HDR;
    if (ioctl(fd.Get(), TUNSETIFF, &request) == 0)
        return fd;
    headers = false;
    request.ifr_flags = IFF_TAP | IFF_NO_PI;
    if (ioctl(fd.Get(), TUNSETIFF, &request) != 0)
        Fail("ports = \"tap\": cannot make the interface " + interface);
    return fd;
}

// Frames wait there while the board serves something else.
void LengthenQueue(int fd, const std::string& interface)
{
    constexpr int kQueue = 4096;
    ifreq request = RequestFor(interface);
    request.ifr_qlen = kQueue;
    static_cast<void>(ioctl(fd, SIOCSIFTXQLEN, &request));
}

UniqueFd WatchLinks()
{
    UniqueFd fd{socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_ROUTE)};
    sockaddr_nl address{};
    address.nl_family = AF_NETLINK;
    address.nl_groups = RTMGRP_LINK;
    if (!fd || bind(fd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        Fail("cannot watch interfaces");
    return fd;
}

void Request(int fd, unsigned long code, void* request, const std::string& interface)
{
    if (ioctl(fd, code, request) != 0)
        Fail("cannot configure the interface " + interface);
}

size_t SizeOf(std::span<const iovec> pieces)
{
    size_t size = 0;
    for (const iovec& piece : pieces)
        size += piece.iov_len;
    return size;
}

ssize_t WriteWhole(int fd, std::span<const iovec> pieces)
{
    std::array<uint8_t, kInOnePiece> room;
    const Bytes whole = datapath::Gather(pieces, room.data());
    return write(fd, whole.data(), whole.size());
}

ssize_t WritePieces(int fd, std::span<const iovec> pieces)
{
    return writev(fd, pieces.data(), static_cast<int>(pieces.size()));
}

void SetIpv4(ifreq request, unsigned long code, in_addr value, const std::string& interface)
{
    const UniqueFd fd{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr = value;
    memcpy(&request.ifr_addr, &address, sizeof address);
    Request(fd.Get(), code, &request, interface);
}

void SetAddress(const std::string& interface, const InterfaceAddress& given)
{
    if (given.family == AF_INET) {
        const uint32_t mask = given.prefix == 0 ? 0 : ~uint32_t{0} << (32 - given.prefix);
        SetIpv4(RequestFor(interface), SIOCSIFADDR, given.v4, interface);
        SetIpv4(RequestFor(interface), SIOCSIFNETMASK, {htonl(mask)}, interface);
        return;
    }
    const UniqueFd fd{socket(AF_INET6, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    Ipv6Request request{given.v6, given.prefix,
                        static_cast<int>(if_nametoindex(interface.c_str()))};
    Request(fd.Get(), SIOCSIFADDR, &request, interface);
}

void SetMac(int fd, const std::string& interface, const MacAddress& mac)
{
    ifreq request = RequestFor(interface);
    request.ifr_hwaddr.sa_family = ARPHRD_ETHER;
    memcpy(request.ifr_hwaddr.sa_data, mac.data(), mac.size());
    Request(fd, SIOCSIFHWADDR, &request, interface);
}

void TakeUp(int fd, const std::string& interface)
{
    ifreq request = RequestFor(interface);
    Request(fd, SIOCGIFFLAGS, &request, interface);
    request.ifr_flags |= IFF_UP;
    Request(fd, SIOCSIFFLAGS, &request, interface);
}

// A host without an IPv6 address does not speak unasked.
void Silence(const std::string& interface)
{
    std::ofstream{"/proc/sys/net/ipv6/conf/" + interface + "/disable_ipv6"} << "1\n";
}

}  // namespace

void TakeLoopbackUp()
{
    const UniqueFd fd{socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)};
    TakeUp(fd.Get(), "lo");
}

TapPort::TapPort(const PortDescription& spec)
    : interface_(spec.interface), frames_(OpenTap(spec.interface, headers_)), changes_(WatchLinks())
{
    constexpr unsigned kOffload = TUN_F_CSUM | TUN_F_TSO4 | TUN_F_TSO6;
    offloads_ = headers_ && ioctl(frames_.Get(), TUNSETOFFLOAD, kOffload) == 0;
    LengthenQueue(changes_.Get(), interface_);
    const auto address = ParseInterfaceAddress(spec.address);
    if (spec.mac)
        SetMac(changes_.Get(), interface_, *spec.mac);
    if (!address || address->family != AF_INET6)
        Silence(interface_);
    TakeUp(changes_.Get(), interface_);
    if (address)
        SetAddress(interface_, *address);
}

TapPort::Packet TapPort::Read(std::span<uint8_t, kRoom> room)
{
    // The frame begins at a multiple of 16.
    const size_t header = headers_ ? sizeof(VirtioHeader) : 0;
    const auto place = std::span{room}.subspan(kBeforeFrame - header);
    const ssize_t size = read(frames_.Get(), place.data(), place.size());
    gone_ = size < 0 && errno == EBADFD;
    if (size < static_cast<ssize_t>(header))
        return {};
    const Bytes bytes = place.subspan(header, static_cast<size_t>(size) - header);
    VirtioHeader said{};
    memcpy(&said, place.data(), header);
    if ((said.flags & kNeedsSum) == 0)
        return {bytes};
    const size_t perFrame = said.kind == kOneFrame ? 0 : said.perFrame;
    const auto left = datapath::Understand(bytes, said.sumFrom, said.sumOffset, perFrame);
    // A packet that says something else of itself than it is cannot become a frame: its checksum
    // stays wrong, and who it is for refuses it.
    return {bytes, left.value_or(datapath::Offload{})};
}

void TapPort::Write(std::span<const iovec> packet, const datapath::Offload& left)
{
    VirtioHeader header{};
    if (!left.IsDone()) {
        header.flags = kNeedsSum;
        header.sumFrom = left.sumFrom;
        header.sumOffset = static_cast<uint16_t>(left.sumAt - left.sumFrom);
    }
    if (left.IsLong()) {
        const bool ipv6 = datapath::IsIpv6(static_cast<const uint8_t*>(packet[0].iov_base), left);
        header.kind = ipv6 ? kLongTcp6 : kLongTcp4;
        header.perFrame = left.perFrame;
        header.headers = left.data;
    }
    std::array<iovec, datapath::PacketMemory::kMaxPieces + 1> room;
    room[0] = {&header, headers_ ? sizeof header : 0};
    std::ranges::copy(packet, room.begin() + 1);
    const auto pieces = std::span{room}.first(packet.size() + 1);
    // What an interface does not take is lost, as on a cable.
    [[maybe_unused]] const ssize_t taken = SizeOf(pieces) <= kInOnePiece
                                               ? WriteWhole(frames_.Get(), pieces)
                                               : WritePieces(frames_.Get(), pieces);
}

bool TapPort::Find(ifreq& request) const
{
    request = {};
    return ioctl(frames_.Get(), TUNGETIFF, &request) == 0;
}

bool TapPort::IsUp()
{
    char message[8192];
    while (recv(changes_.Get(), message, sizeof message, 0) > 0 || errno == ENOBUFS) {
    }
    ifreq request{};
    return Find(request) && ioctl(changes_.Get(), SIOCGIFFLAGS, &request) == 0 &&
           (request.ifr_flags & IFF_UP) != 0;
}

void TapPort::ShowLink(bool up, uint32_t megabits, bool fullDuplex)
{
    ifreq request{};
    if (!Find(request))
        return;
    int carrier = up ? 1 : 0;
    ethtool_cmd settings{};
    settings.cmd = ETHTOOL_GSET;
    request.ifr_data = reinterpret_cast<char*>(&settings);
    // Kernels before 5.0 know no carrier of a TAP interface and those before 5.8 no settings: there
    // the interface goes on saying what it always says, and frames are dropped all the same.
    static_cast<void>(ioctl(frames_.Get(), TUNSETCARRIER, &carrier));
    if (ioctl(changes_.Get(), SIOCETHTOOL, &request) != 0)
        return;
    settings.cmd = ETHTOOL_SSET;
    ethtool_cmd_speed_set(&settings, up ? megabits : static_cast<uint32_t>(SPEED_UNKNOWN));
    settings.duplex = !up ? DUPLEX_UNKNOWN : fullDuplex ? DUPLEX_FULL : DUPLEX_HALF;
    static_cast<void>(ioctl(changes_.Get(), SIOCETHTOOL, &request));
}

}  // namespace vboard::cables

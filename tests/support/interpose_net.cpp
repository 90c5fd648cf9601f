// Sockets and ioctls: the mailbox, the MII requests, the lane driver.
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

#include "tests/support/interpose.h"
#include "tests/support/played_files.h"
#include "tests/support/scripted_platform.h"

using namespace obtest;

namespace {

constexpr unsigned long kGetMiiReg = 0x8948;
constexpr unsigned long kSetMiiReg = 0x8949;
constexpr unsigned long kPrivate = 0x89F0;
constexpr unsigned long kResetLane = 0x4004BE05;

void RecordLine(const std::string& line)
{
    Platform().transcript.Add(line);
}

int PlayMii(unsigned long request, ifreq* argument)
{
    MiiWords words;
    memcpy(&words, &argument->ifr_ifru, sizeof(words));
    const bool read = request == kGetMiiReg;
    const std::string value = read ? "" : Text(", 0x%04X", words.valueIn);
    RecordLine(Text("sys ioctl(%s, %.16s, phy=0x%X, reg=%u, bus=%u%s)",
                    read ? "SIOCGMIIREG" : "SIOCSMIIREG", argument->ifr_name, words.phyId,
                    words.reg, words.bus, value.c_str()));
    long result = 0;
    if (Platform().TakesFailure("ioctl", result))
        return static_cast<int>(result);
    if (Platform().mii && !Platform().mii(request, words)) {
        errno = EIO;
        return -1;
    }
    memcpy(&argument->ifr_ifru, &words, sizeof(words));
    return 0;
}

int PlayOther(unsigned long request, void* argument)
{
    if (request == kResetLane) {
        uint32_t client = 0;
        memcpy(&client, argument, sizeof(client));
        RecordLine(Text("sys ioctl(MODPHY_RESET_LANE, %u)", client));
    } else if (request == kPrivate) {
        RecordLine(
            Text("sys ioctl(SIOCDEVPRIVATE, %.16s)", static_cast<ifreq*>(argument)->ifr_name));
    } else {
        RecordLine(Text("sys ioctl(0x%lX)", request));
    }
    long result = 0;
    if (Platform().TakesFailure("ioctl", result))
        return static_cast<int>(result);
    return request == kPrivate && Platform().privateIoctl ? Platform().privateIoctl(argument) : 0;
}

}  // namespace

OB_INTERPOSE(int, socket, int family, int type, int protocol)
{
    if (!OB_FROM_LIBRARY)
        return Real<int(int, int, int)>("socket")(family, type, protocol);
    RecordLine(Text("sys socket(%d, %d, %d)", family, type, protocol));
    long result = 0;
    return Platform().TakesFailure("socket", result) ? static_cast<int>(result)
                                                     : PlayedDescriptor();
}

OB_INTERPOSE(int, bind, int fd, const sockaddr* address, socklen_t length)
{
    if (!OB_FROM_LIBRARY)
        return Real<int(int, const sockaddr*, socklen_t)>("bind")(fd, address, length);
    RecordLine(Text("sys bind(%u)", length));
    const auto* bytes = reinterpret_cast<const uint8_t*>(address);
    Platform().boundAddresses.emplace_back(bytes, bytes + length);
    long result = 0;
    return Platform().TakesFailure("bind", result) ? static_cast<int>(result) : 0;
}

OB_INTERPOSE(ssize_t, send, int fd, const void* buffer, size_t size, int flags)
{
    if (!OB_FROM_LIBRARY)
        return Real<ssize_t(int, const void*, size_t, int)>("send")(fd, buffer, size, flags);
    RecordLine(Text("sys send(%zu, %d)", size, flags));
    long result = 0;
    if (Platform().TakesFailure("send", result))
        return result;
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    Platform().sent.emplace_back(bytes, bytes + size);
    return static_cast<ssize_t>(size);
}

OB_INTERPOSE(ssize_t, recv, int fd, void* buffer, size_t size, int flags)
{
    if (!OB_FROM_LIBRARY)
        return Real<ssize_t(int, void*, size_t, int)>("recv")(fd, buffer, size, flags);
    RecordLine(Text("sys recv(%zu, %s)", size, flags == MSG_TRUNC ? "MSG_TRUNC" : "?"));
    long result = 0;
    if (Platform().TakesFailure("recv", result))
        return result;
    auto& messages = Platform().mailbox;
    if (messages.empty()) {
        errno = ECONNREFUSED;
        return -1;
    }
    const auto message = messages.front();
    messages.erase(messages.begin());
    memcpy(buffer, message.data(), std::min(size, message.size()));
    return Platform().mailboxFullLength.value_or(static_cast<long>(message.size()));
}

OB_INTERPOSE(int, ioctl, int fd, unsigned long request, ...)
{
    va_list args;
    va_start(args, request);
    void* argument = va_arg(args, void*);
    va_end(args);
    if (!OB_FROM_LIBRARY)
        return Real<int(int, unsigned long, ...)>("ioctl")(fd, request, argument);
    if (request == kGetMiiReg || request == kSetMiiReg)
        return PlayMii(request, static_cast<ifreq*>(argument));
    return PlayOther(request, argument);
}

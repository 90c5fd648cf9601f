// ioctl on the internal interfaces and on the lane driver, and ifconfig through system().

#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "virtual_board/preload/board_link.h"
#include "virtual_board/preload/descriptors.h"
#include "virtual_board/preload/next.h"

using namespace vboard;
using namespace vboard::preload;

namespace {

constexpr int kNoInterface = -1;

int InterfaceIndex(const char* name)
{
    for (int index = 0; index < 2; ++index)
        if (strncmp(name, wire::kInterfaceNames[index], IFNAMSIZ) == 0)
            return index;
    return kNoInterface;
}

int SocketOption(int fd, int option)
{
    int value = -1;
    socklen_t size = sizeof value;
    long result = syscall(SYS_getsockopt, fd, SOL_SOCKET, option, &value, &size);
    return result == 0 ? value : -1;
}

bool IsInetDatagram(int fd)
{
    int error = errno;
    bool is = SocketOption(fd, SO_DOMAIN) == AF_INET && SocketOption(fd, SO_TYPE) == SOCK_DGRAM;
    errno = error;
    return is;
}

bool IsInterfaceRequest(int fd, unsigned long request, const void* argument)
{
    bool known = request == wire::kReadMii || request == wire::kWriteMii ||
                 request == wire::kReconfigureGmac;
    return known && argument != nullptr && BoardPath() != nullptr && IsInetDatagram(fd) &&
           InterfaceIndex(static_cast<const ifreq*>(argument)->ifr_name) != kNoInterface;
}

int AccessMii(ifreq& request, bool write)
{
    uint16_t words[5];
    memcpy(words, &request.ifr_ifru, sizeof words);
    auto index = static_cast<uint16_t>(InterfaceIndex(request.ifr_name));
    wire::MiiAccess access{write, words[0], words[1], words[2], words[3], words[4], index};
    uint16_t value = 0;
    if (AskOnce(wire::Op::kMii, 0, {&access, sizeof access}, {&value, sizeof value}) < 0)
        return -1;
    if (!write) {
        words[3] = value;
        memcpy(&request.ifr_ifru, words, sizeof words);
    }
    return 0;
}

int ReconfigureGmac(ifreq& request)
{
    auto* reconfig = reinterpret_cast<wire::GmacReconfig*>(request.ifr_data);
    if (reconfig == nullptr) {
        errno = EFAULT;
        return -1;
    }
    wire::GmacRequest message{};
    memcpy(message.outerName, request.ifr_name, sizeof message.outerName);
    message.reconfig = *reconfig;
    int32_t result = 0;
    if (AskOnce(wire::Op::kGmac, 0, {&message, sizeof message}, {&result, sizeof result}) < 0)
        return -1;
    reconfig->result = result;
    return 0;
}

int InterfaceRequest(unsigned long request, ifreq& argument)
{
    if (request == wire::kReconfigureGmac)
        return ReconfigureGmac(argument);
    return AccessMii(argument, request == wire::kWriteMii);
}

int LaneRequest(int fd, unsigned long request, const void* argument)
{
    if (request != wire::kModphyResetLane) {
        errno = ENOTTY;
        return -1;
    }
    if (argument == nullptr) {
        errno = EFAULT;
        return -1;
    }
    uint32_t client = 0;
    memcpy(&client, argument, sizeof client);
    return static_cast<int>(Ask(fd, wire::Op::kLaneReset, client));
}

bool ParseIfconfig(const char* command, uint32_t& arg)
{
    for (arg = 0; arg <= wire::InterfaceArg(1, true); ++arg) {
        char expected[32];
        snprintf(expected, sizeof expected, "ifconfig %s %s",
                 wire::kInterfaceNames[wire::InterfaceIndex(arg)],
                 wire::InterfaceUp(arg) ? "up" : "down");
        if (strcmp(command, expected) == 0)
            return true;
    }
    return false;
}

}  // namespace

extern "C" {

int ioctl(int fd, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void* argument = va_arg(arguments, void*);
    va_end(arguments);
    if (Find(fd, DescriptorKind::kLane) != nullptr)
        return LaneRequest(fd, request, argument);
    if (IsInterfaceRequest(fd, request, argument))
        return InterfaceRequest(request, *static_cast<ifreq*>(argument));
    return VBOARD_NEXT(ioctl)(fd, request, argument);
}

int system(const char* command)
{
    uint32_t arg = 0;
    if (command == nullptr || BoardPath() == nullptr || !ParseIfconfig(command, arg))
        return VBOARD_NEXT(system)(command);
    return static_cast<int>(AskOnce(wire::Op::kInterface, arg));
}

}  // extern "C"

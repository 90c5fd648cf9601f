#include "virtual_board/seam/interface_calls.h"

#include <linux/if.h>
#include <linux/if_arp.h>
#include <linux/sockios.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "virtual_board/seam/interfaces.h"

namespace vboard::seam {
namespace {

constexpr uint64_t kUnionOffset = IFNAMSIZ;
constexpr size_t kUnionSize = 16;

// An interface request as both ABIs begin it.
struct Ifreq {
    char name[IFNAMSIZ];
    uint8_t rest[kUnionSize];
};

struct Asked {
    const Target& target;
    BoardSide& board;
    uint64_t address;
    Ifreq request;
    uint32_t index;
};

template <typename Value>
Verdict AnswerWith(const Asked& asked, const Value& value)
{
    static_assert(sizeof value <= kUnionSize);
    asked.target.Write(asked.address + kUnionOffset, &value, sizeof value);
    return Return(0);
}

Verdict AccessMii(const Asked& asked, bool write)
{
    uint16_t words[5];
    memcpy(words, asked.request.rest, sizeof words);
    const auto interface = static_cast<uint16_t>(asked.index);
    const wire::MiiAccess access{write,    words[0], words[1], words[2],
                                 words[3], words[4], interface};
    const Reply reply =
        asked.board.Ask({asked.target.Process(), wire::Op::kMii, 0, BytesOf(access)});
    if (reply.error != 0 || write)
        return Outcome(reply.error);
    if (!ReadReply(reply, words[3]))
        return Fail(EIO);
    return AnswerWith(asked, words);
}

Verdict FindPhy(const Asked& asked)
{
    const Reply reply =
        asked.board.Ask({asked.target.Process(), wire::Op::kMiiAddress, asked.index});
    if (reply.error != 0)
        return Fail(reply.error);
    return AnswerWith(asked, static_cast<uint16_t>(reply.result));
}

Verdict ReconfigureGmac(const Asked& asked)
{
    const uint64_t data = asked.target.ReadPointer(asked.address + kUnionOffset);
    wire::GmacRequest request{};
    memcpy(request.outerName, asked.request.name, sizeof request.outerName);
    asked.target.Read(data, &request.reconfig, sizeof request.reconfig);
    const Reply reply =
        asked.board.Ask({asked.target.Process(), wire::Op::kGmac, 0, BytesOf(request)});
    if (reply.error != 0)
        return Fail(reply.error);
    int32_t result = 0;
    if (!ReadReply(reply, result))
        return Fail(EIO);
    asked.target.Write(data + offsetof(wire::GmacReconfig, result), &result, sizeof result);
    return Return(0);
}

Verdict GetFlags(const Asked& asked)
{
    const Reply reply = InterfaceFlags(asked.board, asked.target.Process(), asked.index);
    return reply.error != 0 ? Fail(reply.error)
                            : AnswerWith(asked, static_cast<int16_t>(reply.result));
}

Verdict SetFlags(const Asked& asked)
{
    uint16_t flags = 0;
    memcpy(&flags, asked.request.rest, sizeof flags);
    const uint32_t arg = wire::InterfaceArg(asked.index, (flags & IFF_UP) != 0);
    return Outcome(asked.board.Ask({asked.target.Process(), wire::Op::kInterface, arg}).error);
}

Verdict GetHardwareAddress(const Asked& asked)
{
    struct {
        uint16_t family = ARPHRD_ETHER;
        uint8_t octets[14] = {};
    } address;
    std::ranges::copy(HardwareAddress(asked.index), address.octets);
    return AnswerWith(asked, address);
}

// The one member of the union that is longer on x86-64.
Verdict GetMap(const Asked& asked)
{
    constexpr uint8_t kNoResources[24] = {};
    const size_t size = asked.target.Is32Bit() ? kUnionSize : sizeof kNoResources;
    asked.target.Write(asked.address + kUnionOffset, kNoResources, size);
    return Return(0);
}

Verdict Answer(const Asked& asked, uint32_t request)
{
    switch (request) {
        case SIOCGMIIREG:
            return AccessMii(asked, false);
        case SIOCSMIIREG:
            return AccessMii(asked, true);
        case SIOCGMIIPHY:
            return FindPhy(asked);
        case wire::kReconfigureGmac:
            return ReconfigureGmac(asked);
        case SIOCGIFFLAGS:
            return GetFlags(asked);
        case SIOCSIFFLAGS:
            return SetFlags(asked);
        case SIOCGIFINDEX:
            return AnswerWith(asked, kFirstInterface + static_cast<int32_t>(asked.index));
        case SIOCGIFHWADDR:
            return GetHardwareAddress(asked);
        case SIOCGIFMTU:
            return AnswerWith(asked, kInterfaceMtu);
        case SIOCGIFTXQLEN:
            return AnswerWith(asked, kInterfaceQueueLength);
        case SIOCGIFMETRIC:
            return AnswerWith(asked, int32_t{0});
        case SIOCGIFMAP:
            return GetMap(asked);
        case SIOCGIFADDR:
        case SIOCGIFDSTADDR:
        case SIOCGIFBRDADDR:
        case SIOCGIFNETMASK:
            return Fail(EADDRNOTAVAIL);
        default:
            return Fail(EOPNOTSUPP);
    }
}

// From the index to the name.
Verdict GetName(const Target& target)
{
    const auto interface = FindInterface(target.ReadAs<int32_t>(target.Argument(2) + kUnionOffset));
    if (!interface)
        return Continue();
    char name[IFNAMSIZ] = {};
    strncpy(name, wire::kInterfaceNames[*interface], sizeof name - 1);
    target.Write(target.Argument(2), name, sizeof name);
    return Return(0);
}

}  // namespace

bool IsInterfaceRequest(uint32_t request)
{
    return request >= SIOCGIFNAME && request <= SIOCDEVPRIVATE + 15;
}

Verdict RequestOfInterface(const Target& target, BoardSide& board)
{
    const auto request = static_cast<uint32_t>(target.Argument(1));
    const uint64_t address = target.Argument(2);
    if (address == 0)
        return Continue();
    if (request == SIOCGIFNAME)
        return target.IsSocket(target.IntArgument(0)) ? GetName(target) : Continue();
    const auto ifreq = target.ReadAs<Ifreq>(address);
    const auto index = FindInterface({ifreq.name, strnlen(ifreq.name, sizeof ifreq.name)});
    if (!index || !target.IsSocket(target.IntArgument(0)))
        return Continue();
    return Answer({target, board, address, ifreq, *index}, request);
}

}  // namespace vboard::seam

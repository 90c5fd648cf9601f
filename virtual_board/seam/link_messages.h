// Messages of rtnetlink about the SoC's internal interfaces.
#pragma once

#include <linux/netlink.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vboard::seam {

using Message = std::vector<uint8_t>;

// A request as far as it may concern one of the interfaces.
struct LinkRequest {
    nlmsghdr header;
    int32_t index = 0;  // 0: not given
    std::string name = {};
    uint32_t flags = 0;  // of links: what they shall be, and which of them are meant
    uint32_t change = 0;
    bool selects = false;  // a dump of some links only
    bool sets = false;     // more than flags
};

// nullopt: it is about something else than links and their addresses.
std::optional<LinkRequest> ReadLinkRequest(std::span<const uint8_t> packet);

// What the kernel says of a link. The port number of the receiver is put in by SetReceiver.
Message LinkMessage(const nlmsghdr& request, uint32_t interface, uint32_t flags);
// The outcome of a request, 0 or an errno.
Message OutcomeMessage(const nlmsghdr& request, int error);
// The end of a dump.
Message DoneMessage(const nlmsghdr& request);

void SetReceiver(Message& messages, uint32_t port);

}  // namespace vboard::seam

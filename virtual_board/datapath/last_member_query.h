// The question whether a group still has members behind a port.
#pragma once

#include "virtual_board/datapath/membership.h"

namespace vboard::datapath {

inline constexpr size_t kLastMemberQuery = 90;

// Of IGMPv3 or MLDv2, which hosts of older versions understand; to be answered within a second.
// That of IGMP elects no querier; one of MLD must have an address, which is that of the switch. The
// room has kLastMemberQuery octets.
Bytes ComposeLastMemberQuery(Protocol protocol, const GroupAddress& group, uint8_t* room);

}  // namespace vboard::datapath

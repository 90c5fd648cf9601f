// The board-specific data messages as they cross the mailbox, and what both receivers share.
//
// Integers are big-endian on the wire; the parsers swap them in place. Characters and single bytes
// stay as they are.
#pragma once

#include <endian.h>

#include "board/board_services.h"
#include "common/format.h"

namespace orblink {

constexpr uint32_t kMsgSwitchBsd = OB_MESSAGE_SWITCH_DATA;
constexpr uint32_t kMsgPhyBsd = OB_MESSAGE_PHY_DATA;
constexpr uint32_t kMsgAck = 12;

constexpr uint16_t kBsdAppid = 12;
constexpr uint8_t kBsdMid = 0;

constexpr int kMacCount = 5;
constexpr int kMacSize = 6;

struct MainMsg {
    uint32_t msg_type;
    uint32_t payload_len;
};

struct SwitchBsdPayload {
    SwitchBsd bsd;
    uint32_t portIsolationEnabled;
    uint8_t mac[kMacCount][kMacSize];
    uint8_t padding[2];
};

struct PhyBsdPayload {
    EthphyBsd bsd;
    uint32_t ulpModeEnabled;  // stays in wire order: only ever tested against zero
};

OB_FORMAT_AT(MainMsg, msg_type, 0);
OB_FORMAT_AT(MainMsg, payload_len, 4);
OB_FORMAT_SIZE(MainMsg, 8);

OB_FORMAT_AT(SwitchBsdPayload, bsd, 0);
OB_FORMAT_AT(SwitchBsdPayload, portIsolationEnabled, 140);
OB_FORMAT_AT(SwitchBsdPayload, mac[0], 144);
OB_FORMAT_AT(SwitchBsdPayload, mac[1], 150);
OB_FORMAT_AT(SwitchBsdPayload, mac[2], 156);
OB_FORMAT_AT(SwitchBsdPayload, mac[3], 162);
OB_FORMAT_AT(SwitchBsdPayload, mac[4], 168);
OB_FORMAT_AT(SwitchBsdPayload, padding, 174);
OB_FORMAT_SIZE(SwitchBsdPayload, 176);

OB_FORMAT_AT(PhyBsdPayload, bsd, 0);
OB_FORMAT_AT(PhyBsdPayload, ulpModeEnabled, 116);
OB_FORMAT_SIZE(PhyBsdPayload, 120);

inline void ToHostOrder(MainMsg& msg)
{
    msg.msg_type = be32toh(msg.msg_type);
    msg.payload_len = be32toh(msg.payload_len);
}

// A count that cannot be right counts as none.
inline int BoundedDeviceCount(uint8_t count)
{
    return count <= OB_MAX_DEVICES ? count : 0;
}

// MsgBuilder of the acknowledgement that either family sends.
int BuildBsdAck(void* Msg, uint32_t* Size);

}  // namespace orblink

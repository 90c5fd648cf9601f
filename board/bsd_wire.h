// The board-specific data messages as they cross the mailbox, and what both receivers share.
//
// Integers are big-endian on the wire; the parsers swap them in place. Characters and single bytes
// stay as they are.
#pragma once

#include <endian.h>

#include "board/board_services.h"

namespace orblink {

constexpr uint32_t kMsgSwitchBsd = 10;
constexpr uint32_t kMsgPhyBsd = 11;
constexpr uint32_t kMsgAck = 12;

constexpr uint16_t kBsdAppid = 12;
constexpr uint8_t kBsdMid = 0;

constexpr int kMacCount = 5;
constexpr int kMacSize = 6;

#pragma pack(push, 1)

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

#pragma pack(pop)

static_assert(sizeof(MainMsg) == 8);
static_assert(sizeof(SwitchBsdPayload) == 176);
static_assert(offsetof(SwitchBsdPayload, portIsolationEnabled) == 140);
static_assert(offsetof(SwitchBsdPayload, mac) == 144);
static_assert(sizeof(PhyBsdPayload) == 120);
static_assert(offsetof(PhyBsdPayload, ulpModeEnabled) == 116);

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

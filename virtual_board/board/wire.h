// The questions that a board answers, and how they go over its SOCK_SEQPACKET Unix socket: fixed
// layouts, the same on both ABIs; requests and replies are one packet each.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vboard::wire {

inline constexpr uint32_t kMagic = 0x4F425642;
inline constexpr size_t kMaxData = 16384;
inline constexpr char kSocketVariable[] = "ORBLINK_VBOARD";

enum class Op : uint32_t {
    kSocket = 1,      // arg = socket type; result 1: a fault of single transfers is set
    kBind,            // data = the address as given; result = number of the mailbox
    kMailboxEnd,      // arg = number; a descriptor comes along: the board's end of the connection
    kStartReceive,    // arg = number; says only whether a fault strikes
    kSend,            // arg = number, data = the message; result = length taken
    kMii,             // data = MiiAccess; the reply's data is one u16, the value read
    kMiiAddress,      // arg = interface index; result = MDIO address of the device behind it
    kGmac,            // data = GmacRequest; the reply's data is the driver's result word
    kInterface,       // arg = InterfaceArg(index, up)
    kInterfaceState,  // arg = interface index; result 1: up
    kLaneOpen,        //
    kLaneReset,       // arg = client id
    kAttributeOpen,   // arg = Attribute; for writing
    kAttributeRead,   // arg = Attribute; the reply's data is the text
    kAttributeWrite,  // arg = Attribute, data = the text; result = its length
    kPrivateOpen,     // arg = index of the path, data = PrivateOpen; a descriptor comes back
    kPrivateStat,     // arg = index of the path; the reply's data is a struct statx
    kPrivateUnlink,   // arg = index of the path
    kPrivateMode,     // arg = index of the path, data = u32, the mode
    kSemaphoreGet,    // data = SemaphoreGet; result kNotPrivate: the machine's own is meant
    kHello,           // the reply's data is a Hello
    kControl,         // data = JSON; the answer is JSON in plain packets up to the end of file
};

// What a program must know before it joins a board.
struct Hello {
    double timeScale;
    uint32_t privateNames;
    uint32_t reserved;
};

enum class Attribute : uint32_t { kReset0 = 0, kReset1 = 1, kSystemState = 2 };

struct AttributePath {
    Attribute attribute;
    const char* path;
};
inline constexpr AttributePath kAttributePaths[] = {
    {Attribute::kReset0, "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset"},
    {Attribute::kReset1, "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset"},
    {Attribute::kSystemState, "/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state"},
};
// What the library shares between processes.
inline constexpr const char* kPrivatePaths[] = {
    "/dev/shm/obos_orblink_driver",
    "/dev/shm/ethphy_driver",
    "/var/tmp/orblink_sem",
    "/var/tmp/ethphy_sem",
};
struct PrivateOpen {
    int32_t flags;
    uint32_t mode;
};
struct SemaphoreGet {
    int32_t key;
    int32_t count;
    int32_t flags;
};
inline constexpr int32_t kNotPrivate = -2;
inline constexpr char kLaneDriverPath[] = "/dev/modphy_drv";
inline constexpr const char* kInterfaceNames[] = {"nsgmii0", "nsgmii1"};

inline constexpr int kMailboxFamily = 43;
inline constexpr unsigned long kModphyResetLane = 0x4004BE05;
inline constexpr unsigned long kReadMii = 0x8948;
inline constexpr unsigned long kWriteMii = 0x8949;
inline constexpr unsigned long kReconfigureGmac = 0x89F0;

struct Request {
    uint32_t magic;
    Op op;
    uint32_t arg;
    uint32_t dataSize;
    int32_t process;  // whose call it is, for the journal
};

struct Reply {
    int32_t result;
    int32_t error;  // errno, 0 when the call succeeded
    uint32_t dataSize;
};

// The MII words as they lie in the interface request.
struct MiiAccess {
    uint32_t write;
    uint16_t phyId;
    uint16_t reg;
    uint16_t valueIn;
    uint16_t valueOut;
    uint16_t bus;
    uint16_t interfaceIndex;
};

// What the data pointer of the reconfiguration request names.
struct GmacReconfig {
    char ifName[16];
    uint32_t command;
    uint32_t speed;
    uint32_t duplex;
    int32_t result;
};

struct GmacRequest {
    char outerName[16];
    GmacReconfig reconfig;
};

static_assert(sizeof(Request) == 20 && sizeof(Reply) == 12);
static_assert(sizeof(MiiAccess) == 16 && offsetof(MiiAccess, bus) == 12);
static_assert(sizeof(GmacReconfig) == 32 && offsetof(GmacReconfig, result) == 28);
static_assert(sizeof(GmacRequest) == 48 && sizeof(Hello) == 16);

constexpr uint32_t InterfaceArg(uint32_t index, bool up)
{
    return index << 1 | (up ? 1U : 0U);
}
constexpr uint32_t InterfaceIndex(uint32_t arg)
{
    return arg >> 1;
}
constexpr bool InterfaceUp(uint32_t arg)
{
    return (arg & 1) != 0;
}

}  // namespace vboard::wire

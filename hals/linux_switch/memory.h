// What the HAL keeps of each switch in the library's shared memory: the mapping of its ports to
// interfaces, and the settings, from which what the kernel must have can be told at any time.
#pragma once

#include <net/if.h>
#include <stdint.h>

#include "switch/orblink_hal.h"

namespace linux_switch {

constexpr int kPorts = OB_MAX_PORTS;
constexpr int kSteerings = 32;
constexpr uint32_t kNoGroup = 0xFFFFFFFF;
constexpr uint16_t kDefaultVid = 1;
constexpr uint16_t kDefaultAgeing = 300;

enum class OnReset : uint8_t {
    kBuild,     // makes the bridge and takes the interfaces in
    kSettings,  // bridge and ports are somebody else's, only the settings go back
};

enum class Switched : uint8_t { kNever, kOn, kOff };

struct PortMemory {
    char name[IFNAMSIZ];  // empty: the CPU port is the bridge itself
    uint32_t index;       // of the interface when it was last met; 0: never
    uint32_t group;
    uint16_t vid;
    uint16_t megabits;   // forced speed; 0: automatic
    uint16_t mtuBefore;  // what the interface had before the switch was given one; 0: it was not
    uint8_t tagged;
    uint8_t pcp;
    uint8_t mirror;  // OB_NO_MIRROR: none
    uint8_t enabled;
    uint8_t ownsHook;  // the queueing discipline that the filters hang on was made here
    uint8_t fullDuplex;
    Switched eee;
    uint8_t reserved[3];
};

// Stations of a port whose frames go into another VLAN.
struct Steering {
    uint8_t mac[6];
    uint16_t mask;  // bit n = nibble n is compared, nibble 0 being the last one
    uint16_t vid;
    uint8_t port;
    uint8_t used;
};

struct SwitchMemory {
    uint8_t mapped;
    uint8_t ports;
    uint8_t cpuPort;
    OnReset onReset;
    uint16_t tpid;  // of the VLAN tags that the bridge goes by
    uint8_t isolation;
    uint8_t filtering;  // the kernel has VLAN filtering
    uint16_t mtu;       // of the interfaces; 0: it was never set
    uint16_t ageing;    // seconds
    uint32_t index;     // of the bridge
    uint8_t snooping;
    uint8_t reserved[3];
    char bridge[IFNAMSIZ];
    PortMemory port[kPorts];
    Steering steering[kSteerings];

    bool IsPort(int number) const { return number >= 0 && number < ports; }
    bool IsLanPort(int number) const { return IsPort(number) && number != cpuPort; }
    bool CpuIsBridge() const { return port[cpuPort].name[0] == '\0'; }
    const char* NameOf(int number) const
    {
        return port[number].name[0] ? port[number].name : bridge;
    }
};

// Settings as they are after a reset.
void ClearSettings(SwitchMemory& memory);
void ClearSettings(SwitchMemory& memory, int port);

// Init's: nothing mapped.
void FormatMemory(void* privateData, const SwitchMemory (&memories)[OB_MAX_SWITCHES]);
// False, with a line that says why, when no mapping file names the switch. What is read is within
// its limits, whatever the shared memory holds.
bool Recall(int devIdx, SwitchMemory& memory);
bool Remember(int devIdx, const SwitchMemory& memory);

}  // namespace linux_switch

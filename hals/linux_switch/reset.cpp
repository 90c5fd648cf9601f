#include "hals/linux_switch/reset.h"

#include <errno.h>
#include <linux/if_bridge.h>
#include <linux/if_ether.h>
#include <linux/if_link.h>

#include "hals/linux_switch/log.h"
#include "hals/linux_switch/mac_table.h"
#include "hals/linux_switch/session.h"

namespace linux_switch {
namespace {

constexpr uint16_t kLastVid = 4094;
constexpr uint16_t kPlainMember = BRIDGE_VLAN_INFO_PVID | BRIDGE_VLAN_INFO_UNTAGGED;

class Resetting {
public:
    explicit Resetting(int devIdx) : session(devIdx) {}

    int Run(uint8_t isolation);

private:
    bool Check();
    bool CheckPort(int port);
    bool FindOrMakeBridge();
    int ClearBridge();
    int ClearPort(int port);
    int ClearVlans(const VlanMember& member);
    int PutMtus();
    int SetUpAll();
    void GiveBack();

    Session session;
    SwitchMemory before{};
    bool made = false;
    bool taken[kPorts] = {};
};

bool Resetting::CheckPort(int port)
{
    const SwitchMemory& memory = session.Memory();
    const char* name = memory.port[port].name;
    const Link& link = session.Port(port);
    const uint32_t bridge = session.Bridge().index;
    if (name[0] == '\0')
        return true;
    if (!link) {
        session.Refuse("take in port interface", name, ENODEV);
        return false;
    }
    const bool free = link.master == 0 && memory.onReset == OnReset::kBuild;
    if (free || (bridge != 0 && link.master == bridge))
        return true;
    session.Refuse(link.master ? "take in port interface, a part of another bridge or bond,"
                               : "use port interface, which is in no bridge,",
                   name, EBUSY);
    return false;
}

// Before anything is changed.
bool Resetting::Check()
{
    const SwitchMemory& memory = session.Memory();
    const int error = session.FindAll();
    const Link& bridge = session.Bridge();
    if (error != 0 || (!bridge && memory.onReset == OnReset::kSettings)) {
        session.Refuse("use the bridge", memory.bridge, error != 0 ? error : ENODEV);
        return false;
    }
    if (bridge && !bridge.isBridge) {
        session.Refuse("use the bridge, which is none,", memory.bridge, EBUSY);
        return false;
    }
    for (int port = 0; port < memory.ports; ++port) {
        if (!CheckPort(port))
            return false;
    }
    return true;
}

bool Resetting::FindOrMakeBridge()
{
    if (session.Bridge())
        return true;
    const char* name = session.Memory().bridge;
    int error = MakeBridge(session.Route(), name);
    made = error == 0;
    if (error == 0)
        error = session.FindAll();
    if (error != 0)
        session.Refuse("make the bridge", name, error);
    return error == 0;
}

int Resetting::ClearVlans(const VlanMember& member)
{
    if (!session.Bridge().filters)
        return 0;
    Netlink& route = session.Route();
    if (const int error = AddVlan(route, member, kDefaultVid, kPlainMember))
        return error;
    return DeleteVlans(route, member, kDefaultVid + 1, kLastVid);
}

int Resetting::ClearBridge()
{
    const Link& bridge = session.Bridge();
    const BridgeSettings atFirst = {.spanningTree = false,
                                    .snooping = false,
                                    .filtering = true,
                                    .tpid = ETH_P_8021Q,
                                    .ageing = kDefaultAgeing * kSecond};
    if (const int error = PutSettings(session.Route(), bridge, atFirst))
        return error;
    return ClearVlans({bridge.index, true});
}

int Resetting::ClearPort(int port)
{
    Netlink& route = session.Route();
    const Link& link = session.Port(port);
    const bool isBridge = session.Memory().port[port].name[0] == '\0';
    if (!isBridge && link.master == 0) {
        if (const int error = SetMaster(route, link.index, session.Bridge().index))
            return error;
        taken[port] = true;
    }
    if (const int error = DeleteAllFilters(route, link.index))
        return error;
    if (isBridge)
        return 0;
    if (const int error = PutFlags(route, link.index, FlagsAtFirst()))
        return error;
    return ClearVlans({link.index, false});
}

// What the interfaces had before the switch was given one; the bridge last, as everywhere.
int Resetting::PutMtus()
{
    for (int i = 1; i <= before.ports; ++i) {
        const int port = (before.cpuPort + i) % before.ports;
        const uint16_t mtu = before.port[port].mtuBefore;
        if (mtu == 0)
            continue;
        if (const int error = SetMtu(session.Route(), session.Port(port).index, mtu))
            return error;
    }
    return 0;
}

int Resetting::SetUpAll()
{
    Netlink& route = session.Route();
    if (const int error = SetUp(route, session.Bridge().index, true))
        return error;
    for (int port = 0; port < session.Memory().ports; ++port) {
        if (const int error = SetUp(route, session.Port(port).index, true))
            return error;
    }
    return 0;
}

// Results dropped: there is nothing else to fall back to.
void Resetting::GiveBack()
{
    Netlink& route = session.Route();
    const Link& bridge = session.Bridge();
    if (bridge && !made)
        PutSettings(route, bridge, bridge.settings);
    for (int port = 0; port < before.ports; ++port) {
        const Link& link = session.Port(port);
        if (taken[port])
            SetMaster(route, link.index, 0);
        else if (link && !made && before.port[port].name[0] != '\0')
            PutFlags(route, link.index, link.flags);
        if (link && before.port[port].mtuBefore != 0)
            SetMtu(route, link.index, link.mtu);
    }
    if (!made)
        session.PutBack(before);
    for (int port = 0; port < before.ports; ++port) {
        if (session.Port(port))
            SetUp(route, session.Port(port).index, session.Port(port).up);
    }
    if (made)
        DeleteLink(route, before.bridge);
}

int Resetting::Run(uint8_t isolation)
{
    if (!session.Recall() || !Check())
        return -1;
    before = session.Memory();
    if (!FindOrMakeBridge()) {
        GiveBack();
        return -1;
    }
    const SwitchMemory& memory = session.Memory();
    int error = ClearBridge();
    const char* failed = memory.bridge;
    for (int port = 0; error == 0 && port < memory.ports; ++port) {
        failed = memory.NameOf(port);
        error = ClearPort(port);
    }
    if (error == 0)
        error = session.Start(isolation);
    if (error == 0)
        error = PutMtus();
    if (error == 0)
        error = SetUpAll();
    // Last, because nothing brings stations back.
    if (error == 0)
        error = EmptyMacTable(session);
    if (error == 0)
        return session.Remember() ? 0 : -1;
    session.Refuse("reset", failed, error);
    GiveBack();
    return -1;
}

}  // namespace

int Reset(int devIdx, uint8_t isolation)
{
    return Resetting(devIdx).Run(isolation);
}

}  // namespace linux_switch

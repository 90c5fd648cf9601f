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
    explicit Resetting(int devIdx) : session_(devIdx) {}

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

    Session session_;
    SwitchMemory before_{};
    bool made_ = false;
    bool taken_[kPorts] = {};
};

bool Resetting::CheckPort(int port)
{
    const SwitchMemory& memory = session_.Memory();
    const char* name = memory.port[port].name;
    const Link& link = session_.Port(port);
    const uint32_t bridge = session_.Bridge().index;
    if (name[0] == '\0')
        return true;
    if (!link) {
        session_.Refuse("take in port interface", name, ENODEV);
        return false;
    }
    const bool free = link.master == 0 && memory.onReset == OnReset::kBuild;
    if (free || (bridge != 0 && link.master == bridge))
        return true;
    session_.Refuse(link.master ? "take in port interface, a part of another bridge or bond,"
                                : "use port interface, which is in no bridge,",
                    name, EBUSY);
    return false;
}

// Before anything is changed.
bool Resetting::Check()
{
    const SwitchMemory& memory = session_.Memory();
    const int error = session_.FindAll();
    const Link& bridge = session_.Bridge();
    if (error != 0 || (!bridge && memory.onReset == OnReset::kSettings)) {
        session_.Refuse("use the bridge", memory.bridge, error != 0 ? error : ENODEV);
        return false;
    }
    if (bridge && !bridge.isBridge) {
        session_.Refuse("use the bridge, which is none,", memory.bridge, EBUSY);
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
    if (session_.Bridge())
        return true;
    const char* name = session_.Memory().bridge;
    int error = MakeBridge(session_.Route(), name);
    made_ = error == 0;
    if (error == 0)
        error = session_.FindAll();
    if (error != 0)
        session_.Refuse("make the bridge", name, error);
    return error == 0;
}

int Resetting::ClearVlans(const VlanMember& member)
{
    if (!session_.Bridge().filters)
        return 0;
    Netlink& route = session_.Route();
    if (const int error = AddVlan(route, member, kDefaultVid, kPlainMember))
        return error;
    return DeleteVlans(route, member, kDefaultVid + 1, kLastVid);
}

int Resetting::ClearBridge()
{
    const Link& bridge = session_.Bridge();
    const BridgeSettings atFirst = {.spanningTree = false,
                                    .snooping = false,
                                    .filtering = true,
                                    .tpid = ETH_P_8021Q,
                                    .ageing = kDefaultAgeing * kSecond};
    if (const int error = PutSettings(session_.Route(), bridge, atFirst))
        return error;
    return ClearVlans({bridge.index, true});
}

int Resetting::ClearPort(int port)
{
    Netlink& route = session_.Route();
    const Link& link = session_.Port(port);
    const bool isBridge = session_.Memory().port[port].name[0] == '\0';
    if (!isBridge && link.master == 0) {
        if (const int error = SetMaster(route, link.index, session_.Bridge().index))
            return error;
        taken_[port] = true;
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
    for (int i = 1; i <= before_.ports; ++i) {
        const int port = (before_.cpuPort + i) % before_.ports;
        const uint16_t mtu = before_.port[port].mtuBefore;
        if (mtu == 0)
            continue;
        if (const int error = SetMtu(session_.Route(), session_.Port(port).index, mtu))
            return error;
    }
    return 0;
}

int Resetting::SetUpAll()
{
    Netlink& route = session_.Route();
    if (const int error = SetUp(route, session_.Bridge().index, true))
        return error;
    for (int port = 0; port < session_.Memory().ports; ++port) {
        if (const int error = SetUp(route, session_.Port(port).index, true))
            return error;
    }
    return 0;
}

// Results dropped: there is nothing else to fall back to.
void Resetting::GiveBack()
{
    Netlink& route = session_.Route();
    const Link& bridge = session_.Bridge();
    if (bridge && !made_)
        PutSettings(route, bridge, bridge.settings);
    for (int port = 0; port < before_.ports; ++port) {
        const Link& link = session_.Port(port);
        if (taken_[port])
            SetMaster(route, link.index, 0);
        else if (link && !made_ && before_.port[port].name[0] != '\0')
            PutFlags(route, link.index, link.flags);
        if (link && before_.port[port].mtuBefore != 0)
            SetMtu(route, link.index, link.mtu);
    }
    if (!made_)
        session_.PutBack(before_);
    for (int port = 0; port < before_.ports; ++port) {
        if (session_.Port(port))
            SetUp(route, session_.Port(port).index, session_.Port(port).up);
    }
    if (made_)
        DeleteLink(route, before_.bridge);
}

int Resetting::Run(uint8_t isolation)
{
    if (!session_.Recall() || !Check())
        return -1;
    before_ = session_.Memory();
    if (!FindOrMakeBridge()) {
        GiveBack();
        return -1;
    }
    const SwitchMemory& memory = session_.Memory();
    int error = ClearBridge();
    const char* failed = memory.bridge;
    for (int port = 0; error == 0 && port < memory.ports; ++port) {
        failed = memory.NameOf(port);
        error = ClearPort(port);
    }
    if (error == 0)
        error = session_.Start(isolation);
    if (error == 0)
        error = PutMtus();
    if (error == 0)
        error = SetUpAll();
    // Last, because nothing brings stations back.
    if (error == 0)
        error = EmptyMacTable(session_);
    if (error == 0)
        return session_.Remember() ? 0 : -1;
    session_.Refuse("reset", failed, error);
    GiveBack();
    return -1;
}

}  // namespace

int Reset(int devIdx, uint8_t isolation)
{
    return Resetting(devIdx).Run(isolation);
}

}  // namespace linux_switch

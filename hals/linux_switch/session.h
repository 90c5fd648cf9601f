// One slot at work: the memory of its switch, a socket, and the interfaces as the kernel has them now.
#pragma once

#include <linux/rtnetlink.h>

#include "hals/linux_switch/filters.h"
#include "hals/linux_switch/link.h"
#include "hals/linux_switch/memory.h"

namespace linux_switch {

// Logs one line that says what cannot be done, to what, and why; -1.
int Refuse(int devIdx, const char* what, const char* interface, int error, const char* reason);

class Session {
public:
    explicit Session(int devIdx);

    // False, with a line, when the switch has no mapping or its bridge is not there.
    bool Meet();
    // Meet, and a line unless this is a port whose interface is there.
    bool MeetPort(int port);

    const SwitchMemory& Memory() const { return memory_; }
    const Link& Bridge() const { return bridge_; }
    const Link& Port(int port) const { return links_[port]; }
    Netlink& Route() { return route_; }

    // Brings the kernel from the settings that are to those that are wanted, and remembers them.
    // What fails is undone, and logged with what it was for.
    int Settle(const char* what, const char* interface, const SwitchMemory& wanted);
    // Remembers what the kernel has already.
    int Keep(const SwitchMemory& wanted);
    int Refuse(const char* what, const char* interface, int error)
    {
        return linux_switch::Refuse(devIdx_, what, interface, error, route_.Reason());
    }

    // For a reset, which finds or makes what Meet() expects.
    bool Recall();
    int FindAll();
    // Forgets all settings; what isolation comes to is put in place.
    int Start(uint8_t isolation);
    bool Remember();
    // The settings that were, over those that a reset has come to.
    void PutBack(const SwitchMemory& before);

private:
    int Apply(const SwitchMemory& from, const SwitchMemory& to);
    // revive.cpp
    void ReviveReturned();
    void ReviveBridge();
    void Revive(int port);
    int PutBridgeBack();
    int TakeIn(int port);
    int PutDriverSettings(int port);
    int PutFiltersThatName(int port);
    int Put(int port, const Filter& filter);
    VlanMember Member(int port) const;
    int PutVlans(const SwitchMemory& from, const SwitchMemory& to, int port);
    int DropVlans(const SwitchMemory& from, const SwitchMemory& to, int port);
    int PutFilters(const SwitchMemory& from, const SwitchMemory& to, int port);
    int DropFilters(const SwitchMemory& from, const SwitchMemory& to, int port);
    int SetIsolation(const SwitchMemory& from, const SwitchMemory& to, int port);
    int Hook(int port);

    int devIdx_;
    bool undoing_ = false;
    SwitchMemory memory_{};
    Netlink route_{NETLINK_ROUTE};
    Link bridge_;
    Link links_[kPorts];
};

}  // namespace linux_switch

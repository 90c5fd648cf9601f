#include "bench/call_classes.h"

#include <sys/sem.h>

namespace bench {
namespace {

uint8_t count;
uint32_t link, speed, duplex;
MacTable table;
int vid = 1;
int bareSemaphore;

void Nothing() {}

void BarePair()
{
    // Results dropped: whatever is done with them would be part of the figure.
    sembuf change = {0, -1, SEM_UNDO};
    static_cast<void>(semop(bareSemaphore, &change, 1));
    change.sem_op = 1;
    static_cast<void>(semop(bareSemaphore, &change, 1));
}

void Query()
{
    ORBLINK_GetNumOfSwitches(&count);
}

void SetterThatIsSet()
{
    ORBLINK_SetLanPortPcp(kSwitch, kPort, 0);
}

void SetterToASlot()
{
    vid ^= 3;
    ORBLINK_SetLanPortVlan(kSwitch, kPort, vid);
}

void GetPortLink()
{
    ORBLINK_GetPortLink(kSwitch, kPort, &link, &speed, &duplex);
}

void RefusedPort()
{
    ORBLINK_SetLanPortPcp(kSwitch, OB_MAX_PORTS, 1);
}

void GetMacTable()
{
    ORBLINK_GetMacTable(kSwitch, &table);
}

void PhyGetLink()
{
    ETHPHY_GetLink(kPhy, &link, &speed, &duplex);
}

constexpr CallClass kClasses[] = {
    {"nothing", Nothing},
    {"bare-semop-pair", BarePair},
    {"query", Query},
    {"setter-to-empty-slot", SetterToASlot},
    {"setter-already-set", SetterThatIsSet},
    {"setter-refused", RefusedPort},
    {"port-link", GetPortLink},
    {"mac-table-256", GetMacTable},
    {"phy-link", PhyGetLink},
};

}  // namespace

std::span<const CallClass> CallClasses(const ReadyBoard& board)
{
    bareSemaphore = board.BareSemaphore();
    return kClasses;
}

bool CallsReachedTheHal()
{
    return count == 1 && link == 1 && table.count == OB_MAC_TABLE_ENTRIES;
}

}  // namespace bench

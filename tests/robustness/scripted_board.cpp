#include "tests/robustness/scripted_board.h"

#include <sys/ipc.h>
#include <sys/sem.h>

#include <cstring>

#include "tests/robustness/child.h"

namespace obtest {
namespace {

int SemaphoreId(Family family)
{
    const char* path = family == Family::kSwitch ? "/var/tmp/orblink_sem" : "/var/tmp/ethphy_sem";
    const key_t key = ::ftok(path, 97);
    return key == -1 ? -1 : ::semget(key, 1, 0);
}

}  // namespace

void ScriptBoard()
{
    Platform().libraries = {{"liborblink_velmar.so", "a"}, {"libphyk20.so", "phy-a"}};
    Platform().slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        const SwitchCaps caps = DefaultCaps();
        memcpy(reinterpret_cast<void*>(args[1]), &caps, sizeof(caps));
        return 0;
    };
}

int Initialise(Family family)
{
    ScriptBoard();
    Platform().mailbox = {family == Family::kSwitch ? SwitchBoard::With({{}}).Message()
                                                    : PhyBoard{{{}}}.Message()};
    return family == Family::kSwitch ? ORBLINK_InitOnce(1) : ETHPHY_InitOnce();
}

void InitialiseElsewhere()
{
    for (Family family : {Family::kSwitch, Family::kPhy}) {
        const Ended ended = InChild([family] { return std::to_string(Initialise(family)); });
        EXPECT_EQ(ended.text, "0");
    }
    ScriptBoard();
    Record(0).config.state = OB_STATE_ENABLED;
    PhyRegion().phy[0].config.hwState = EP_HW_STATE_ENABLED;
}

int LockValue(Family family)
{
    const int id = SemaphoreId(family);
    return id == -1 ? -1 : ::semctl(id, 0, GETVAL);
}

void FreeLock(Family family)
{
    ASSERT_EQ(::semctl(SemaphoreId(family), 0, SETVAL, 1), 0);
}

void RemoveLock(Family family)
{
    ASSERT_EQ(::semctl(SemaphoreId(family), 0, IPC_RMID), 0);
}

std::string RegionBytes(Family family)
{
    return family == Family::kSwitch
               ? std::string(reinterpret_cast<const char*>(&Region()), sizeof(SwitchDeviceRegion))
               : std::string(reinterpret_cast<const char*>(&PhyRegion()), sizeof(PhyDeviceRegion));
}

}  // namespace obtest

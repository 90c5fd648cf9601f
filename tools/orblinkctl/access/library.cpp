#include "tools/orblinkctl/access/library.h"

#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "tools/orblinkctl/access/diagnosis.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/held_lock.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/access/refusals.h"

namespace ctl {

namespace {

double busyWait = kUsualWait;

[[noreturn]] void RefuseAccess(const FamilyNames& names, const std::string& what, int error)
{
    throw Failure{kPermission, std::string("no permission to use the ") + names.name + " family (" +
                                   what + "): " + std::strerror(error)};
}

bool Forbidden(int error)
{
    return error == EACCES || error == EPERM;
}

// The library opens the key file for reading and writing.
LockState UsableLock(Family family)
{
    const FamilyNames& names = NamesOf(family);
    LockState lock = LookAtLock(family);
    if (lock.Exists() && eaccess(names.keyFile, R_OK | W_OK) != 0)
        lock.error = errno;
    if (Forbidden(lock.error))
        RefuseAccess(names, names.keyFile, lock.error);
    return lock;
}

void RequireRegion(Family family)
{
    const FamilyNames& names = NamesOf(family);
    const RegionState region = LookAtRegion(family);
    if (const auto fault = RegionFault(family, region))
        throw Failure{kDamaged, *fault};
    const std::string path = std::string("/dev/shm") + names.region;
    if (region.exists && eaccess(path.c_str(), R_OK | W_OK) != 0)
        RefuseAccess(names, path, errno);
}

int Attach(Family family)
{
    static int semaphores[] = {-1, -1};
    int& semaphore = semaphores[family == Family::kPhy ? 1 : 0];
    if (semaphore >= 0)
        return semaphore;
    const LockState lock = UsableLock(family);
    if (!lock.Exists())
        throw Failure{kInitState, std::string("the ") + NamesOf(family).name +
                                      " family is not initialised: run 'orblinkctl init' first"};
    RequireRegion(family);
    return semaphore = lock.id;
}

[[noreturn]] void RefuseBusy(Family family)
{
    const Diagnosis found = Diagnose(family);
    const std::string next = NextCommand(found);
    throw Failure{
        kBusy, std::string("the ") + NamesOf(family).name + " family is busy: " +
                   (found.holder == Holder::kNone ? "other calls were faster" : HolderText(found)) +
                   (next.empty() ? "" : ": " + next)};
}

void WaitUntilFree(int semaphore, Family family)
{
    using Steady = std::chrono::steady_clock;
    const auto end = Steady::now() + std::chrono::duration<double>(busyWait);
    while (semctl(semaphore, 0, GETVAL) == 0) {
        if (Steady::now() >= end)
            RefuseBusy(family);
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

void RequireFilled(Family family, bool blank)
{
    if (blank)
        throw Failure{kInitState, std::string("the ") + NamesOf(family).name +
                                      " family is not initialised, its region holds nothing: "
                                      "orblinkctl recover --apply, then orblinkctl init"};
}

void RequireCount(Family family, unsigned count, unsigned most)
{
    if (count > most)
        throw Failure{kDamaged, std::string("the shared state is damaged: the region of the ") +
                                    NamesOf(family).name + " family counts " +
                                    std::to_string(count) + " devices, the most is " +
                                    std::to_string(most) + ": restart the machine"};
}

}  // namespace

void SetBusyWait(double seconds)
{
    busyWait = seconds;
}

bool IsInitialised(Family family)
{
    return UsableLock(family).Exists();
}

void Enter(Family family)
{
    WaitUntilFree(Attach(family), family);
}

namespace {

// "switch N", "port N:P", "PHY N", with whatever follows.
unsigned DeviceOf(std::string_view object)
{
    const size_t digit = object.find_first_of("0123456789");
    return digit == std::string_view::npos ? 0 : static_cast<unsigned>(object[digit] - '0');
}

// The library refuses what needs a chip that is up; whoever reads that wants to know how to get it
// up.
void RequireAwake(std::string_view object)
{
    const unsigned device = DeviceOf(object);
    if (LogSaid("PHY is in disabled state")) {
        DropHeldLogLines();
        throw Failure{kUnsupported, PhyObject(device) + " is in reset: orblinkctl phy " +
                                        std::to_string(device) + " up"};
    }
    if (!LogSaid("Switch is not in enabled state"))
        return;
    DropHeldLogLines();
    const auto region = ReadSwitches();
    throw Failure{kUnsupported, DownText(SwitchOf(region, device), device)};
}

}  // namespace

void Check(int result, std::string_view object, const char* operation)
{
    if (result == 0)
        return;
    RequireAwake(object);
    throw RefusalOf(object, operation);
}

SwitchDeviceRegion ReadSwitches()
{
    SwitchDeviceRegion region;
    Enter(Family::kSwitch);
    Check(ORBLINK_GetSwitchDevices(&region), "board", "ORBLINK_GetSwitchDevices");
    RequireFilled(Family::kSwitch, IsBlank(region));
    RequireCount(Family::kSwitch, region.NumOfSwitches, OB_MAX_SWITCHES);
    return region;
}

const SwitchDeviceRecord& SwitchOf(const SwitchDeviceRegion& region, unsigned device)
{
    if (device >= region.NumOfSwitches)
        throw Failure{kNoSuchObject, "no " + SwitchObject(device) + ": the board has " +
                                         std::to_string(region.NumOfSwitches) +
                                         ": orblinkctl switch"};
    return region.device[device];
}

unsigned PortCount(const SwitchDeviceRecord& record)
{
    return record.capsValid == 0 ? 0U : std::min<unsigned>(record.caps.numOfPorts, OB_MAX_PORTS);
}

bool IsEnabled(const SwitchDeviceRecord& record)
{
    return record.config.state == OB_STATE_ENABLED;
}

std::string DownText(const SwitchDeviceRecord& record, unsigned device)
{
    const char* state =
        record.config.state == OB_STATE_RESET ? " is in reset" : " was never brought up";
    return SwitchObject(device) + state + ": orblinkctl up " + std::to_string(device);
}

void RequirePort(const SwitchDeviceRegion& region, PortId port)
{
    const auto& record = SwitchOf(region, port.device);
    if (record.capsValid == 0)
        throw Failure{kInitState, "the capabilities of " + SwitchObject(port.device) +
                                      " are not known yet: orblinkctl up " +
                                      std::to_string(port.device)};
    if (port.port >= PortCount(record))
        throw Failure{kNoSuchObject, "no " + PortObject(port) + ": the switch has " +
                                         std::to_string(PortCount(record)) + " ports"};
}

PhyDeviceRegion ReadPhys()
{
    PhyDeviceRegion region{};
    Enter(Family::kPhy);
    Check(ETHPHY_GetNumOfPhys(&region.NumOfPhys), "board", "ETHPHY_GetNumOfPhys");
    if (region.NumOfPhys == 0)
        return region;
    RequireCount(Family::kPhy, region.NumOfPhys, EP_MAX_PHYS);
    // The first record is where the region begins.
    void* mapped = nullptr;
    Check(ETHPHY_GetPhyData(0, &mapped), PhyObject(0), "ETHPHY_GetPhyData");
    {
        const HeldLock lock(Family::kPhy, Attach(Family::kPhy), busyWait);
        std::memcpy(&region, mapped, sizeof region);
    }
    return region;
}

const PhyDeviceRecord& PhyOf(const PhyDeviceRegion& region, unsigned device)
{
    if (device >= region.NumOfPhys)
        throw Failure{kNoSuchObject, "no " + PhyObject(device) + ": the board has " +
                                         std::to_string(region.NumOfPhys) + ": orblinkctl phy"};
    return region.phy[device];
}

std::string SwitchObject(unsigned device)
{
    return "switch " + std::to_string(device);
}

std::string PortObject(PortId port)
{
    const std::string label = PortLabel(port.device, port.port);
    return "port " + PortWord(port.device, port.port) + (label.empty() ? "" : " " + label);
}

std::string PhyObject(unsigned device)
{
    const std::string label = PhyLabel(device);
    return "PHY " + std::to_string(device) + (label.empty() ? "" : " " + label);
}

}  // namespace ctl

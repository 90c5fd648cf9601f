#include "tools/orblinkctl/facts/library.h"

#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "tools/orblinkctl/facts/failure.h"
#include "tools/orblinkctl/facts/log_lines.h"
#include "tools/orblinkctl/facts/names.h"

namespace ctl {

namespace {

struct FamilyFiles {
    const char* name;
    const char* keyFile;
    const char* region;
};

const FamilyFiles& FilesOf(Family family)
{
    static constexpr FamilyFiles kFiles[] = {
        {"switch", "/var/tmp/orblink_sem", "/obos_orblink_driver"},
        {"PHY", "/var/tmp/ethphy_sem", "/ethphy_driver"},
    };
    return kFiles[family == Family::kPhy ? 1 : 0];
}

constexpr int kKeyId = 97;

double busyWait = kUsualWait;

// -1 when there is none; errno tells why.
int FindSemaphore(const FamilyFiles& files)
{
    const int file = open(files.keyFile, O_RDWR | O_CLOEXEC);
    if (file < 0)
        return -1;
    close(file);
    const key_t key = ftok(files.keyFile, kKeyId);
    return key == -1 ? -1 : semget(key, 1, 0);
}

[[noreturn]] void RefuseAccess(const FamilyFiles& files, const std::string& what)
{
    throw Failure{kPermission, std::string("no permission to use the ") + files.name + " family (" +
                                   what + "): " + std::strerror(errno)};
}

void RequireRegion(const FamilyFiles& files)
{
    const int file = shm_open(files.region, O_RDWR | O_CLOEXEC, 0);
    if (file >= 0)
        close(file);
    else if (errno == EACCES)
        RefuseAccess(files, std::string("/dev/shm") + files.region);
}

int Attach(Family family)
{
    static int semaphores[] = {-1, -1};
    int& semaphore = semaphores[family == Family::kPhy ? 1 : 0];
    if (semaphore >= 0)
        return semaphore;
    const FamilyFiles& files = FilesOf(family);
    const int found = FindSemaphore(files);
    if (found < 0 && (errno == EACCES || errno == EPERM))
        RefuseAccess(files, files.keyFile);
    if (found < 0)
        throw Failure{kInitState, std::string("the ") + files.name +
                                      " family is not initialised: run 'orblinkctl init' first"};
    RequireRegion(files);
    return semaphore = found;
}

void WaitUntilFree(int semaphore, const FamilyFiles& files)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(busyWait);
    while (semctl(semaphore, 0, GETVAL) == 0) {
        if (Clock::now() >= end)
            throw Failure{kBusy, std::string("the ") + files.name +
                                     " family is busy: another call has been holding it"};
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

}  // namespace

void SetBusyWait(double seconds)
{
    busyWait = seconds;
}

bool IsInitialised(Family family)
{
    const FamilyFiles& files = FilesOf(family);
    if (FindSemaphore(files) >= 0)
        return true;
    if (errno == EACCES || errno == EPERM)
        RefuseAccess(files, files.keyFile);
    return false;
}

void Enter(Family family)
{
    WaitUntilFree(Attach(family), FilesOf(family));
}

void Check(int result, std::string_view object, const char* operation)
{
    if (result == 0)
        return;
    std::string text = std::string(object) + ": " + operation + " failed";
    if (LogSaid("HAL does not exist"))
        throw Failure{kUnsupported, text + ": its HAL library does not offer it"};
    if (ORBLINK_isBatteryMode() != 0)
        text += " (the modem runs on battery)";
    throw Failure{kFailed, text};
}

SwitchDeviceRegion ReadSwitches()
{
    SwitchDeviceRegion region;
    Enter(Family::kSwitch);
    Check(ORBLINK_GetSwitchDevices(&region), "board", "ORBLINK_GetSwitchDevices");
    region.NumOfSwitches = std::min<uint8_t>(region.NumOfSwitches, OB_MAX_SWITCHES);
    return region;
}

const SwitchDeviceRecord& SwitchOf(const SwitchDeviceRegion& region, unsigned device)
{
    if (device >= region.NumOfSwitches)
        throw Failure{kNoSuchObject, "no " + SwitchObject(device) + ": the board has " +
                                         std::to_string(region.NumOfSwitches)};
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

void RequirePort(const SwitchDeviceRegion& region, PortId port)
{
    const auto& record = SwitchOf(region, port.device);
    if (record.capsValid == 0)
        throw Failure{kInitState, "the capabilities of " + SwitchObject(port.device) +
                                      " are not known yet: bring it up first"};
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
    // The first record is where the region begins.
    void* mapped = nullptr;
    Check(ETHPHY_GetPhyData(0, &mapped), PhyObject(0), "ETHPHY_GetPhyData");
    std::memcpy(&region, mapped, sizeof region);
    region.NumOfPhys = std::min<uint8_t>(region.NumOfPhys, EP_MAX_PHYS);
    return region;
}

const PhyDeviceRecord& PhyOf(const PhyDeviceRegion& region, unsigned device)
{
    if (device >= region.NumOfPhys)
        throw Failure{kNoSuchObject, "no " + PhyObject(device) + ": the board has " +
                                         std::to_string(region.NumOfPhys)};
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

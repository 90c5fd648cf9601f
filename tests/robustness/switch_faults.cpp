// The switch family's call sites.
#include "board/board_services.h"
#include "switch_hal_services/orblink_hal_services.h"
#include "tests/robustness/fault_table.h"
#include "tests/robustness/scripted_board.h"

namespace obtest {
namespace {

constexpr Family kSwitch = Family::kSwitch;
constexpr const char* kSemop = "log1 _System5SemOp:# semop() fail, errno={e}";

Lines Failed(const char* step, const char* what)
{
    return {std::string("log1 ") + step + ":# " + what};
}

Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

// What an initialisation logs that could not make its semaphore.
Lines NoSemaphore(const Lines& cause)
{
    return cause + Failed("ORBLINK_InitOnce", "_CreateGlobalSem() failed");
}

// What it logs when the region could not be made.
Lines NoRegion(const Lines& cause)
{
    return cause + Failed("ORBLINK_InitOnce", "_InitSwitchDevices() failed");
}

Lines NotCreated(const char* what)
{
    return NoRegion(Failed("OBOS_CreateSwitchDevices", what) +
                    Failed("_InitSwitchDevices", "OBOS_CreateSwitchDevices() failed"));
}

Lines NotMapped(const char* what)
{
    return Failed("OBOS_MapSwitchDevices", what);
}

// What a call logs whose prolog failed.
Lines NoProlog(const Lines& cause)
{
    return cause + Failed("ORBLINK_GetNumOfSwitches", "_ApiProlog() failed");
}

Lines NoSet(const char* what)
{
    return NoProlog(Failed("_InitGlobalSem", what) +
                    Failed("_ApiProlog", "_InitGlobalSem() failed"));
}

Lines NoLibrary(const char* caller)
{
    return {
        "log1 _LoadHals:# dlopen failed, so='liborblink_velmar.so', errno={e}, "
        "/nonexistent/refused.so: cannot open shared object file: No such file or directory. "
        "Check SDK compilation options.",
        std::string("log1 ") + caller + ":# _LoadHals() failed"};
}

Lines NoTable(const char* caller)
{
    return {
        "log1 _LoadHals:# dlsym failed, sym='OBHAL_HalFuncs', errno={e}. the table was not found",
        std::string("log1 ") + caller + ":# _LoadHals() failed"};
}

// Once the set exists a second initialisation is refused.
constexpr int kRefused = -1;

FaultScenario InitOnce()
{
    return {
        "InitOnce",
        kSwitch,
        Before::kNothing,
        [] { return Initialise(kSwitch); },
        {
            {"open", 1, -1, NoSemaphore(Failed("_CreateGlobalSem", "open() failed, errno={e}")), "",
             -1},
            {"ftok", 1, -1, NoSemaphore(Failed("_CreateGlobalSem", "ftok() failed, errno={e}")), "",
             -1},
            {"semget", 1, -1,
             NoSemaphore(
                 Failed("_CreateGlobalSem", "semget() failed, cannot create sem, errno={e}")),
             "", -1},
            {"semop", 1, -1,
             NoSemaphore(Lines{kSemop} + Failed("_CreateGlobalSem", "_ApiGlobalUnLock() failed")),
             "", 0, kRefused, 0, 0},
            {"semop", 2, -1, Lines{kSemop} + Failed("ORBLINK_InitOnce", "_ApiGlobalLock() failed"),
             "", 1, kRefused},
            {"shm_open", 1, -1, NotCreated("shm_open() failed, errno={e}"), "", 1, kRefused},
            {"ftruncate", 1, -1, NotCreated("ftruncate() failed, errno={e}"), "", 1, kRefused},
            {"shm_open", 2, -1,
             NoRegion(NotMapped("OBOS_MapSwitchDevices:# shm_open() failed, errno={e}") +
                      Failed("_InitSwitchDevices", "OBOS_MapSwitchDevices() failed")),
             "", 1, kRefused},
            {"mmap", 1, -1,
             NoRegion(NotMapped("OBOS_MapSwitchDevices:# mmap() failed, errno={e}") +
                      Failed("_InitSwitchDevices", "OBOS_MapSwitchDevices() failed")),
             "", 1, kRefused},
            // Without board data there are no switches; the initialisation succeeds.
            {"socket", 1, 0, {}, "failed to open socket!!! [ret=-1, errno={e}:", 1, kRefused},
            {"bind", 1, 0, {}, "failed to bind socket!!! [ret=-1, errno={e}:", 1, kRefused, 1},
            {"recv", 1, 0, {}, "failed to recv!!! [ret=-1, errno={e}:", 1, kRefused},
            {"send", 1, 0, {}, "failed to send!!! [ret=-1, errno={e}:", 1, kRefused},
            {"dlopen", 1, -1, NoLibrary("ORBLINK_InitOnce"), "", 1, kRefused},
            {"dlsym", 1, -1, NoTable("ORBLINK_InitOnce"), "", 1, kRefused},
            {"semop", 3, 0, {kSemop}, "", 0, kRefused},
        }};
}

FaultScenario FirstCall()
{
    return {"FirstCallOfAProcess",
            kSwitch,
            Before::kInitialised,
            [] {
                uint8_t count = 0;
                return ORBLINK_GetNumOfSwitches(&count);
            },
            {
                {"open", 1, -1, NoSet("open() failed, errno={e}")},
                {"ftok", 1, -1, NoSet("ftok() failed, errno={e}")},
                {"semget", 1, -1, NoSet("semget() failed, errno={e}")},
                {"semop", 1, -1,
                 NoProlog(Lines{kSemop} + Failed("_ApiProlog", "_ApiGlobalLock() failed"))},
                {"shm_open", 1, -1,
                 NoProlog(NotMapped("OBOS_MapSwitchDevices:# shm_open() failed, errno={e}") +
                          Failed("_ApiProlog", "OBOS_MapSwitchDevices() failed"))},
                {"mmap", 1, -1,
                 NoProlog(NotMapped("OBOS_MapSwitchDevices:# mmap() failed, errno={e}") +
                          Failed("_ApiProlog", "OBOS_MapSwitchDevices() failed"))},
                {"dlopen", 1, -1, NoProlog(NoLibrary("_ApiProlog"))},
                {"dlsym", 1, -1, NoProlog(NoTable("_ApiProlog"))},
                {"semop", 2, 0, {kSemop}, "", 0, kNotTried},
            }};
}

Lines NoReset(const Lines& cause)
{
    return cause +
           Failed("ORBLINK_ResetDisable", "OBOS_SetGpioValue failed, pin=19, val=1, DevIdx=0");
}

// The line's own name is the attribute's path.
Lines NoAttribute()
{
    return Failed("OBOS_SetGpioValue",
                  "Failed to open attribute "
                  "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset");
}

FaultScenario BringUp()
{
    const Lines lane = Failed("ORBLINK_ResetDisable", "OBOS_ResetSerDes failed");
    return {"BringUp",
            kSwitch,
            Before::kAttached,
            [] { return ORBLINK_ResetDisable(0, 1, nullptr, 0); },
            {
                {"semop", 1, -1,
                 Lines{kSemop} + Failed("_ApiProlog", "_ApiGlobalLock() failed") +
                     Failed("ORBLINK_ResetDisable", "_ApiProlog() failed, DevIdx=0")},
                {"fopen", 1, 0},  // no system state: not in battery mode
                {"fopen", 2, -1, NoReset(NoAttribute())},
                {"fwrite", 1, -1, NoReset(Failed("OBOS_SetGpioValue", "Failed to reset"))},
                {"fopen", 3, -1, NoReset(NoAttribute())},
                {"fwrite", 2, -1, NoReset(Failed("OBOS_SetGpioValue", "Failed to reset"))},
                // The chip is out of reset by then: a second call finds it enabled.
                {"open", 1, -1, Failed("_ResetModphy", "open error, errno={e}") + lane},
                {"ioctl", 1, -1, Failed("_ResetModphy", "ioctl error, errno={e}") + lane},
                {"semop", 2, 0, {kSemop}, "", 0, kNotTried},
            }};
}

FaultScenario BackIntoReset()
{
    const Lines refused =
        Failed("ORBLINK_ResetEnable", "OBOS_SetGpioValue failed, DevIdx 0, pin=19, val=0");
    return {"BackIntoReset",
            kSwitch,
            Before::kAttached,
            [] { return ORBLINK_ResetEnable(0); },
            {
                {"semop", 1, -1,
                 Lines{kSemop} + Failed("_ApiProlog", "_ApiGlobalLock() failed") +
                     Failed("ORBLINK_ResetEnable", "_ApiProlog() failed, DevIdx=0")},
                {"fopen", 1, -1, NoAttribute() + refused},
                {"fwrite", 1, -1, Failed("OBOS_SetGpioValue", "Failed to reset") + refused},
                {"semop", 2, 0, {kSemop}, "", 0, kNotTried},
            }};
}

FaultScenario Mdio(const char* name, const char* function, int (*run)())
{
    return {name,
            Family::kNone,
            Before::kAttached,
            run,
            {
                {"socket", 1, -1, Failed(function, "socket failed, errno={e}, DevIdx=0")},
                {"ioctl", 1, -1, Failed(function, "ioctl failed, errno={e}, DevIdx=0")},
            }};
}

FaultScenario Lane()
{
    return {"SerDesLane",
            Family::kNone,
            Before::kAttached,
            [] { return OBOS_ResetSerDes(0, 0); },
            {
                {"open", 1, -1, Failed("_ResetModphy", "open error, errno={e}")},
                {"ioctl", 1, -1, Failed("_ResetModphy", "ioctl error, errno={e}")},
            }};
}

}  // namespace

const std::vector<FaultScenario>& SwitchFaults()
{
    static const std::vector<FaultScenario> scenarios = {
        InitOnce(),
        FirstCall(),
        BringUp(),
        BackIntoReset(),
        Mdio("ReadMdio", "OBHAL_ReadMdio",
             [] {
                 uint16_t value = 0;
                 return OBHAL_ReadMdio(0, 2, &value);
             }),
        Mdio("WriteMdio", "OBHAL_WriteMdio", [] { return OBHAL_WriteMdio(0, 2, 7); }),
        Lane(),
    };
    return scenarios;
}

}  // namespace obtest

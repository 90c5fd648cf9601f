// The PHY family's call sites.
#include "phy/ethphy_hal.h"
#include "tests/robustness/fault_table.h"
#include "tests/robustness/scripted_board.h"

namespace obtest {
namespace {

constexpr Family kPhy = Family::kPhy;
constexpr const char* kSemop = "phy1 [_System5SemOp] semop() fail, errno={e}";
constexpr int kRefused = -1;

Lines Bare(const char* step, const char* what)
{
    return {std::string("phy1 [") + step + "] " + what};
}

Lines Prefixed(const char* step, const char* what)
{
    return {std::string("phy1 ") + step + ":# " + what};
}

Lines NoSemaphore(const Lines& cause)
{
    return cause + Bare("ETHPHY_InitOnce", "_CreateGlobalSem() failed");
}

Lines NotCreated(const char* what)
{
    return Bare("EP_CreatePhyDevices", what) +
           Bare("_InitPhyDevices", "EP_CreatePhyDevices() failed") +
           Bare("ETHPHY_InitOnce", "_InitPhyDevices() failed");
}

Lines NotMapped(const char* what)
{
    return Prefixed("EP_MapEthphyDevices", what) +
           Bare("_InitPhyDevices", "EP_MapEthphyDevices() failed") +
           Bare("ETHPHY_InitOnce", "_InitPhyDevices() failed");
}

Lines NoLibrary(const char* caller)
{
    return Bare("_LoadHals",
                "dlopen failed, so='libphyk20.so', errno={e}, /nonexistent/refused.so: cannot open "
                "shared object file: No such file or directory. Check SDK compilation options.") +
           Bare(caller, "_LoadHals() failed");
}

Lines NoTable(const char* caller)
{
    return Bare("_LoadHals",
                "dlsym failed, sym='ETHPHY_HalFuncs', errno={e}. the table was not found") +
           Bare(caller, "_LoadHals() failed");
}

FaultScenario InitOnce()
{
    return {
        "InitOnce",
        kPhy,
        Before::kNothing,
        [] { return Initialise(kPhy); },
        {
            {"open", 1, -1, NoSemaphore(Bare("_CreateGlobalSem", "open() failed, errno={e}")), "",
             -1},
            {"ftok", 1, -1, NoSemaphore(Bare("_CreateGlobalSem", "ftok() failed, errno={e}")), "",
             -1},
            {"semget", 1, -1,
             NoSemaphore(Bare("_CreateGlobalSem", "semget() failed, cannot create sem, errno={e}")),
             "", -1},
            {"shm_init", 1, -1,
             Bare("_InitPhyDevices", "shm_init() failed, Rc=-1") +
                 Bare("ETHPHY_InitOnce", "_InitPhyDevices() failed"),
             "", 1, kRefused},
            {"shm_open", 1, -1, NotCreated("shm_open() failed, errno={e}"), "", 1, kRefused},
            {"ftruncate", 1, -1, NotCreated("ftruncate() failed, errno={e}"), "", 1, kRefused},
            {"shm_open", 2, -1, NotMapped("shm_open() failed, errno={e}"), "", 1, kRefused},
            {"mmap", 1, -1, NotMapped("mmap() failed, errno={e}"), "", 1, kRefused},
            {"socket", 1, 0, {}, "failed to open socket!!! [ret=-1, errno={e}:", 1, kRefused},
            {"bind", 1, 0, {}, "failed to bind socket!!! [ret=-1, errno={e}:", 1, kRefused, 1},
            {"recv", 1, 0, {}, "failed to recv!!! [ret=-1, errno={e}:", 1, kRefused},
            {"send", 1, 0, {}, "failed to send!!! [ret=-1, errno={e}:", 1, kRefused},
            {"dlopen", 1, 0, NoLibrary("ETHPHY_InitOnce"), "", 1, kRefused},
            {"dlsym", 1, 0, NoTable("ETHPHY_InitOnce"), "", 1, kRefused},
            {"semop", 1, 0, {kSemop}, "", 0, kRefused, 0, 0},
        }};
}

// What a call logs whose prolog failed.
Lines NoProlog(const char* call, const Lines& cause)
{
    return cause + Prefixed(call, "_ApiProlog() failed");
}

Lines NoLock(const char* call)
{
    return NoProlog(call, Lines{kSemop} + Bare("_ApiProlog", "_ApiGlobalLock() failed"));
}

FaultRow LockFails(const char* call)
{
    return {"semop", 1, -1, NoLock(call)};
}

// The call has done its work; nobody but an administrator frees the lock.
FaultRow ReleaseFails()
{
    return {
        "semop",   2, 0, Lines{kSemop} + Prefixed("_LibEpilog", "_ApiGlobalUnLock failed"), "", 0,
        kNotTried, 0, 0};
}

FaultScenario FirstCall()
{
    const auto noSet = [](const char* what) {
        return NoProlog("ETHPHY_Poll", Bare("_InitGlobalSem", what) +
                                           Bare("_ApiProlog", "_InitGlobalSem() failed"));
    };
    const auto noRegion = [](const char* what) {
        return NoProlog("ETHPHY_Poll", Prefixed("EP_MapEthphyDevices", what) +
                                           Bare("_ApiProlog", "shm_get() failed"));
    };
    return {"FirstCallOfAProcess",
            kPhy,
            Before::kInitialised,
            [] { return ETHPHY_Poll(0); },
            {
                {"open", 1, -1, noSet("open() failed, errno={e}")},
                {"ftok", 1, -1, noSet("ftok() failed, errno={e}")},
                {"semget", 1, -1, noSet("semget() failed, errno={e}")},
                LockFails("ETHPHY_Poll"),
                {"shm_init", 1, -1,
                 NoProlog("ETHPHY_Poll", Bare("_ApiProlog", "shm_init() failed, Rc=-1"))},
                {"shm_open", 1, -1, noRegion("shm_open() failed, errno={e}")},
                {"mmap", 1, -1, noRegion("mmap() failed, errno={e}")},
                // Libraries are loaded with the first mapping only: this process stays without.
                {"dlopen", 1, -1, NoProlog("ETHPHY_Poll", NoLibrary("_ApiProlog")), "", 1, -1},
                {"dlsym", 1, -1, NoProlog("ETHPHY_Poll", NoTable("_ApiProlog")), "", 1, -1},
                ReleaseFails(),
            }};
}

Lines NoAttribute()
{
    return {
        "log1 OBOS_SetGpioValue:# Failed to open attribute "
        "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset"};
}

const Lines& NotWritten()
{
    static const Lines lines = {"log1 OBOS_SetGpioValue:# Failed to reset"};
    return lines;
}

// The pulse and the wait for the PHY may fail: the sequence goes on.
FaultScenario ResetDisable()
{
    const auto noAnswer = [](const char* what) {
        return Prefixed("EPHAL_DirectMdioReadAccess", what) +
               Bare("wait_for_phy_ready", "ReadMdio failed");
    };
    return {"ResetDisable",
            kPhy,
            Before::kAttached,
            [] { return ETHPHY_ResetDisable(0, 1); },
            {
                LockFails("ETHPHY_ResetDisable"),
                {"fopen", 1, 0, NoAttribute()},
                {"fwrite", 1, 0, NotWritten()},
                {"fopen", 2, 0, NoAttribute()},
                {"fwrite", 2, 0, NotWritten()},
                {"socket", 1, 0, noAnswer("socket failed, errno={e}")},
                {"ioctl", 1, 0, noAnswer("ioctl failed, errno={e}")},
                ReleaseFails(),
            }};
}

FaultScenario ResetEnable()
{
    const Lines failed = Prefixed("ETHPHY_ResetEnable", "failed Phy=0");
    return {"ResetEnable",
            kPhy,
            Before::kAttached,
            [] { return ETHPHY_ResetEnable(0); },
            {
                LockFails("ETHPHY_ResetEnable"),
                {"fopen", 1, -1, NoAttribute() + failed},
                {"fwrite", 1, -1, NotWritten() + failed},
                ReleaseFails(),
            }};
}

FaultScenario ResetSgmii()
{
    return {"ResetSgmii",
            kPhy,
            Before::kAttached,
            [] { return ETHPHY_ResetSgmii(0); },
            {
                LockFails("ETHPHY_ResetSgmii"),
                {"open", 1, 0, Bare("_ResetSgmii", "open failed, errno={e}")},
                {"ioctl", 1, 0, Bare("_ResetSgmii", "ioctl failed, errno={e}")},
                ReleaseFails(),
            }};
}

// The operation, and the service that does its work.
FaultScenario Mdio(const char* name, const char* operation, const char* service, int (*run)())
{
    return {name,
            kPhy,
            Before::kAttached,
            run,
            {
                LockFails(operation),
                {"socket", 1, -1, Prefixed(service, "socket failed, errno={e}")},
                {"ioctl", 1, -1, Prefixed(service, "ioctl failed, errno={e}")},
                ReleaseFails(),
            }};
}

FaultScenario Reconfigure()
{
    constexpr const char* kService = "EPHAL_ReconfigureGmacPhy";
    return {"ReconfigureGmacPhy",
            Family::kNone,
            Before::kAttached,
            [] { return EPHAL_ReconfigureGmacPhy(0, 1, 4, 1); },
            {
                {"socket", 1, -1, Prefixed(kService, "socket failed, errno={e}")},
                {"ioctl", 1, -1,
                 Prefixed(kService,
                          "ioctl to if=nsgmii1 failed, errno={t} cmd=55 speed=4 Duplex=1 "
                          "errno={e}")},
            }};
}

FaultScenario InterfaceState()
{
    return {"SetInterfaceState",
            Family::kNone,
            Before::kAttached,
            [] { return EPHAL_SetInterfaceState(0, 1); },
            {{"system", 1, -1,
              Bare("EPHAL_SetInterfaceState", "system(ifconfig nsgmii1 up) failed, errno={e}")}}};
}

}  // namespace

const std::vector<FaultScenario>& PhyFaults()
{
    static const std::vector<FaultScenario> scenarios = {
        InitOnce(),
        FirstCall(),
        ResetDisable(),
        ResetEnable(),
        ResetSgmii(),
        Mdio("ReadMdio", "ETHPHY_ReadMdio", "EPHAL_DirectMdioReadAccess",
             [] {
                 uint16_t value = 0;
                 return ETHPHY_ReadMdio(0, 2, &value);
             }),
        Mdio("WriteMdio", "ETHPHY_WriteMdio", "EPHAL_DirectMdioWriteAccess",
             [] { return ETHPHY_WriteMdio(0, 4, 1); }),
        Reconfigure(),
        InterfaceState(),
    };
    return scenarios;
}

}  // namespace obtest

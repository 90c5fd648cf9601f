// A platform for the library under test. The test program defines the platform functions that the
// library calls; the dynamic linker prefers them. A call made by the library is recorded in the
// transcript and answered by the script; calls made by anybody else go to the real function.
//
// Real, but recorded: shm_open ftruncate mmap ftok semget semop, open and close of key files.
// Played: the mailbox, MII and private ioctls, /dev/modphy_drv, the attributes under /sys, waits
// (which take no time), system(), shm_init, the log sink, HAL libraries (by file name).
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/transcript.h"

namespace obtest {

// Arguments of a HAL slot as integers; pointers are castable back.
using SlotArgs = std::vector<intptr_t>;
using SlotHook = std::function<int(const SlotArgs&)>;

// The words of an MII request.
struct MiiWords {
    uint16_t phyId, reg, valueIn, valueOut, bus;
};

class ScriptedPlatform {
public:
    Transcript transcript;

    // Makes the n-th call from now on (1 = the next) of a function fail: errno and result. Names:
    // the C function's, or "mailbox.socket", "kova_memcpy_s" and the like where noted below.
    //   socket bind send recv close open ioctl fopen fwrite usleep sleep system dlopen dlsym
    //   shm_open ftruncate mmap ftok semget semop shm_init kova_memcpy_s kova_strncpy_s
    //   kova_vsnprintf_s
    // For usleep a failure is the result -1; for sleep it is the number of seconds left.
    void Fail(const std::string& call, int errorNumber, int nth = 1, long result = -1);
    // The same for each call from the next on, `times` times (-1 = always).
    void FailEach(const std::string& call, int errorNumber, int times = -1, long result = -1);

    // What the mailbox delivers, one message for each recv; then recv fails with ECONNREFUSED.
    std::vector<std::vector<uint8_t>> mailbox;
    // A recv result larger than the message, as MSG_TRUNC gives it for a cut one.
    std::optional<long> mailboxFullLength;
    // What the library sent.
    std::vector<std::vector<uint8_t>> sent;
    // The 16 bytes of each bind.
    std::vector<std::vector<uint8_t>> boundAddresses;

    // Reads and writes over MDIO; a false result fails the ioctl with EIO.
    std::function<bool(unsigned long request, MiiWords& words)> mii;
    // The private ioctl; the argument is the ifreq.
    std::function<int(void* ifreq)> privateIoctl;

    // Text of the system-state attribute; none = the file is missing.
    std::optional<std::string> systemState;

    // Waits take the time that they say.
    bool realWaits = false;

    // HAL libraries by the name given to dlopen: which of the scripted libraries stands for it
    // ("a", "b", "phy-a", "phy-b", "empty" without the symbol, or a path).
    std::map<std::string, std::string> libraries;

    // Slot behaviour by slot name ("SetLanPortVlan"); without an entry a slot returns 0.
    std::map<std::string, SlotHook> slots;
    // Makes a slot return a code of its own.
    void FailSlot(const std::string& slot, int code = 7);

    // --- called by the interposed functions and the scripted HAL libraries
    bool TakesFailure(const std::string& call, long& result);
    int CallSlot(int library, const std::string& slot, const char* signature, const SlotArgs& args);

private:
    struct Failure {
        int nth;
        int times;
        int errorNumber;
        long result;
    };
    std::multimap<std::string, Failure> failures_;
};

// The one that the interposed functions use.
ScriptedPlatform& Platform();

}  // namespace obtest

#include "tests/support/switch_fixture.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/played_files.h"

namespace obtest {
namespace {

void Put32(std::vector<uint8_t>& out, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(value >> shift));
}

void PutEntry(std::vector<uint8_t>& out, const SwitchBoard::Entry& entry)
{
    char name[OB_HAL_NAME_SIZE] = {};
    entry.halLibName.copy(name, sizeof(name));
    out.insert(out.end(), name, name + sizeof(name));
    for (uint32_t word :
         {entry.serdesId, entry.enableGpioPin, entry.resetGpioPin, entry.internalPortPidx})
        Put32(out, word);
    out.insert(out.end(), {entry.mdioAddr, entry.mdioBus, 0, 0});
    for (uint32_t word : {entry.ifaceSpeed, entry.ifaceMode, entry.preResetArg, entry.reservedWord})
        Put32(out, word);
}

}  // namespace

extern "C" int ObTestHalCall(int library, const char* slot, const char* signature,
                             const intptr_t* args, int count)
{
    return Platform().CallSlot(library, slot, signature, SlotArgs(args, args + count));
}

SwitchBoard SwitchBoard::With(std::vector<Entry> entries)
{
    SwitchBoard board;
    board.count = static_cast<uint8_t>(entries.size());
    board.entries = std::move(entries);
    return board;
}

std::vector<uint8_t> SwitchBoard::Message() const
{
    std::vector<uint8_t> out;
    Put32(out, messageType);
    Put32(out, payloadLength);
    for (size_t i = 0; i < OB_MAX_DEVICES; ++i) {
        if (i < entries.size())
            PutEntry(out, entries[i]);
        else
            out.resize(out.size() + sizeof(SwitchBoardEntry));
    }
    out.insert(out.end(), {count, 0, 0, 0});
    Put32(out, portIsolation);
    for (const auto& mac : macs)
        out.insert(out.end(), mac, mac + sizeof(mac));
    out.insert(out.end(), {0, 0});
    return out;
}

SwitchCaps DefaultCaps()
{
    SwitchCaps caps = {};
    caps.capsFlags = OB_CAPS_EEE | OB_CAPS_MIRRORING;
    caps.numOfPorts = 8;
    for (int port = 1; port <= 6; ++port)
        caps.port[port].portHasPhy = 1;
    caps.port[7].portIfaceType = OB_IFACE_RGMII;
    return caps;
}

SwitchDeviceRegion& Region()
{
    static SwitchDeviceRegion* region = [] {
        const int fd = ::open("/dev/shm/obos_orblink_driver", O_RDWR);
        void* address =
            ::mmap(nullptr, sizeof(SwitchDeviceRegion), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        ::close(fd);
        return static_cast<SwitchDeviceRegion*>(address);
    }();
    return *region;
}

SwitchDeviceRecord& Record(int device)
{
    return Region().device[device];
}

int SemaphoreValue()
{
    const key_t key = ::ftok("/var/tmp/orblink_sem", 97);
    const int id = key == -1 ? -1 : ::semget(key, 1, 0);
    return id == -1 ? -1 : ::semctl(id, 0, GETVAL);
}

struct OBHAL_HalFuncs& HalTable(const std::string& which)
{
    void* library = ::dlopen(ScriptedLibraryPath(which).c_str(), RTLD_NOW);
    return *static_cast<struct OBHAL_HalFuncs*>(::dlsym(library, "OBHAL_HalFuncs"));
}

SwitchTest::SwitchTest()
{
    platform.libraries = {
        {"liborblink_velmar.so", "a"}, {"liborblink_second.so", "b"}, {"libnohal.so", "empty"}};
    platform.slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        const SwitchCaps caps = DefaultCaps();
        memcpy(reinterpret_cast<void*>(args[1]), &caps, sizeof(caps));
        return 0;
    };
}

void SwitchTest::Init(const SwitchBoard& board, uint32_t arg)
{
    platform.mailbox.push_back(board.Message());
    ASSERT_EQ(ORBLINK_InitOnce(arg), 0) << Joined(transcript.All());
    transcript.Clear();
}

void SwitchTest::InitEnabled(const SwitchBoard& board)
{
    Init(board);
    for (int device = 0; device < board.count; ++device)
        Record(device).config.state = OB_STATE_ENABLED;
}

}  // namespace obtest

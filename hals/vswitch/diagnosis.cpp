// Raw registers and the dump of the chip's state.
#include <stdio.h>
#include <string.h>

#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"

namespace vs08 {
namespace {

constexpr int kMaxValue = 0xFFFF;
constexpr int kDumpedPortRegisters = 8;  // PORT_INFO to PORT_MIRROR

bool IsPortRegister(int port, int reg)
{
    return IsPort(port) && reg >= 0 && reg < kPortRegisters;
}

bool IsValue(int value)
{
    return value >= 0 && value <= kMaxValue;
}

bool IsDirect(int reg)
{
    return reg >= 0 && reg < kDirectRegisters;
}

bool IsInternal(int reg)
{
    return reg >= kFirstInternal && reg <= kMaxValue;
}

const char* SpeedWord(int code)
{
    static const char* const kWords[] = {"-", "auto", "10M", "100M", "1G", "2.5G", "?", "?"};
    return kWords[code & 7];
}

void PrintPort(int port, const uint16_t* regs)
{
    const int status = regs[kPortStatus];
    printf("  port %d: %s, link %s %s %s, vlan %d, pcp %d, %s", port,
           regs[kPortCtrl] ? "enabled" : "disabled", status & kStatusLink ? "up" : "down",
           SpeedWord(status >> kStatusSpeedShift), status & kStatusFullDuplex ? "full" : "half",
           regs[kPortVid], regs[kPortPcp], regs[kPortTag] ? "tagged" : "untagged");
    if (regs[kPortGroup] & kGroupValid)
        printf(", group %d", regs[kPortGroup] & kMaxGroup);
    if (regs[kPortMirror] & kMirrorEnable)
        printf(", mirrored to port %d", regs[kPortMirror] & kMirrorDest);
    printf("\n");
}

bool PrintGlobal(const Chip& chip, int devIdx)
{
    uint16_t id = 0;
    uint16_t rev = 0;
    uint16_t status = 0;
    uint16_t regs[8];
    uint16_t macs = 0;
    if (!chip.ReadDirect(kChipId, id) || !chip.ReadDirect(kChipRev, rev) ||
        !chip.ReadDirect(kStatus, status) || !chip.ReadRun(kForwardCtrl, regs, 8) ||
        !chip.Read(kFdbCount, macs))
        return false;
    printf("switch %d: chip 0x%04X revision 0x%04X, %s, receive path %s\n", devIdx, id, rev,
           status & kStatusReady ? "ready" : "not ready",
           status & kStatusRxReady ? "ready" : "not ready");
    printf("  isolation %d, provider bridged %d (TPID 0x%04X), ageing step %d, MTU %d\n", regs[0],
           regs[1], regs[2], regs[3], regs[4]);
    printf("  snooping 0x%X, LED mode %d, link changes 0x%02X, MAC entries %d\n", regs[5], regs[6],
           regs[7], macs);
    return true;
}

}  // namespace

int ReadPortReg(int devIdx, int port, int reg, void* value)
{
    uint16_t read = 0;
    if (!value || !IsPortRegister(port, reg) ||
        !Chip(devIdx).Read(PortAddress(port, static_cast<uint16_t>(reg)), read))
        return -1;
    memcpy(value, &read, sizeof read);
    return 0;
}

int WritePortReg(int devIdx, int port, int reg, int value)
{
    return Result(IsPortRegister(port, reg) && IsValue(value) &&
                  Chip(devIdx).Write(PortAddress(port, static_cast<uint16_t>(reg)),
                                     static_cast<uint16_t>(value)));
}

int SmiRead(int devIdx, int reg, void* value)
{
    const Chip chip(devIdx);
    uint16_t read = 0;
    if (!value || !(IsDirect(reg) ? chip.ReadDirect(reg, read)
                                  : IsInternal(reg) && chip.Read(static_cast<uint16_t>(reg), read)))
        return -1;
    memcpy(value, &read, sizeof read);
    return 0;
}

int SmiWrite(int devIdx, int reg, int value)
{
    if (!IsValue(value))
        return -1;
    const Chip chip(devIdx);
    const auto word = static_cast<uint16_t>(value);
    if (IsDirect(reg))
        return Result(chip.WriteDirect(reg, word));
    return Result(IsInternal(reg) && chip.Write(static_cast<uint16_t>(reg), word));
}

int PrintMachineState(int devIdx)
{
    const Chip chip(devIdx);
    if (!PrintGlobal(chip, devIdx))
        return -1;
    for (int port = 0; port < kPorts; ++port) {
        uint16_t regs[kDumpedPortRegisters];
        if (!chip.ReadRun(PortAddress(port, 0), regs, kDumpedPortRegisters))
            return -1;
        PrintPort(port, regs);
    }
    static_cast<void>(fflush(stdout));  // result dropped: a console that is gone misses nothing
    return 0;
}

}  // namespace vs08

// Access to the chip's registers over MDIO, and the HAL's memory of each switch.
#pragma once

#include <stdint.h>

#include "hals/vswitch/vs08_registers.h"

namespace vs08 {

// One switch. Every access fails on a device index that no switch can have.
class Chip {
public:
    explicit Chip(int deviceIndex) : devIdx_(deviceIndex) {}

    bool ReadDirect(int reg, uint16_t& value) const;
    bool WriteDirect(int reg, uint16_t value) const;

    bool Read(uint16_t address, uint16_t& value) const { return ReadRun(address, &value, 1); }
    bool Write(uint16_t address, uint16_t value) const { return WriteRun(address, &value, 1); }
    bool ReadRun(uint16_t address, uint16_t* values, int count) const;
    bool WriteRun(uint16_t address, const uint16_t* values, int count) const;

    // Waits, for 200 ms at most, until all these bits of STATUS are set.
    bool WaitForStatus(uint16_t bits) const;
    // Starts a command and waits, for 10 ms at most, until it is finished.
    bool Run(uint16_t commandRegister, uint16_t command, uint16_t& result) const;

private:
    bool Valid() const;

    int devIdx_;
};

// What must outlive a call, in the library's shared memory.
struct Memory {
    uint32_t portIsolation;
    uint8_t serdesId;
    uint8_t preResetArg;
    uint8_t unused[2];
};

void FormatMemory(void* privateData);
// False: no private data, or Init has not run.
bool Recall(int devIdx, Memory& memory);
bool Remember(int devIdx, const Memory& memory);

// The result of a slot.
inline int Result(bool done)
{
    return done ? 0 : -1;
}

inline bool IsPort(int port)
{
    return port >= 0 && port < kPorts;
}
bool IsLanPort(int devIdx, int port);
inline bool IsVid(int vid)
{
    return vid >= 1 && vid <= kMaxVid;
}

// Whether PORT_INFO of a port has these bits; false also when it cannot be read.
bool HasPhy(const Chip& chip, int port);

}  // namespace vs08

// Reading and writing runs of 16-bit registers.
#pragma once

#include <functional>

#include "tools/orblinkctl/line/command.h"

namespace ctl {

struct RegisterAccess {
    std::string object;
    // Throw when the access fails.
    std::function<uint16_t(uint16_t)> read;
    std::function<void(uint16_t, uint16_t)> write;
};

// {"registers": [{object, register, value}]} of the call's REGISTERS.
Model ReadRegisters(const Call& call, const RegisterAccess& access);

// Writes the call's VALUE into each of its REGISTERS; with a mask, the other bits are read first
// and written back.
Model WriteRegisters(const Call& call, const RegisterAccess& access);

void PrintRegisters(const Model& model, std::string& out);

}  // namespace ctl

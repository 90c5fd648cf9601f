// The bits of a VS08's registers.
#pragma once

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// Names each register of {"registers": [...]} and its bits; `first` is the internal address of
// register 0, which for those of a port is where the port's block begins.
void DecodeChipRegisters(Model& model, uint32_t first);
// Where the registers of a port begin.
uint32_t PortBlock(unsigned port);

}  // namespace ctl

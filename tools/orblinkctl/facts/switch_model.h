// Models of what the switch records hold and of what the chips report.
#pragma once

#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

std::string StateWord(uint32_t state);

// "Stored" models hold the record only; no chip is asked.
Model StoredSwitch(const SwitchDeviceRecord& record, unsigned device);
Model StoredPort(const SwitchDeviceRecord& record, PortId port);
Model StoredPorts(const SwitchDeviceRegion& region);

// Adds link, link_speed and link_duplex: null while the switch is not enabled. A port that cannot
// be read has nulls and its failure in "error".
void AddLink(Model& model, const SwitchDeviceRecord& record, PortId port);

// All ports of all switches with their links.
Model LivePorts(const SwitchDeviceRegion& region);
bool AnyError(const Model& entries);

Model BoardEntry(const SwitchBoardEntry& entry);
Model MacVlanEntries(const MacToVlanEntry* table, unsigned device);
Model Capabilities(const SwitchCaps& caps, unsigned device);

}  // namespace ctl

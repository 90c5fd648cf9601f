// The registers of a PHY that a reset loses, as a whole.
#pragma once

#include <stdint.h>

namespace ieee8023 {

class Phy;
struct Settings;

// Each false: no answer. The PHY's capabilities are known.
bool ReadSettings(Phy& phy, Settings& settings);
// As the PHY has them right after its reset, with all offered that it can do.
bool ReadDefaults(Phy& phy, Settings& settings);
// Writes what differs, and starts the negotiation anew where it is on.
bool ApplySettings(Phy& phy, const Settings& settings);
// What is written to a PHY whose settings are kept because it is in power-down is kept with them;
// the register as a chip register is numbered.
void NoteWritten(Phy& phy, uint32_t reg, uint16_t value);

}  // namespace ieee8023

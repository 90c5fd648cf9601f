// The registers of a PHY that a reset loses, as a whole.
#pragma once

namespace ieee8023 {

class Phy;
struct Settings;

// Each false: no answer. The PHY's capabilities are known.
bool ReadSettings(const Phy& phy, Settings& settings);
// As the PHY has them right after its reset, with all offered that it can do.
bool ReadDefaults(const Phy& phy, Settings& settings);
// Writes what differs, and starts the negotiation anew where it is on.
bool ApplySettings(const Phy& phy, const Settings& settings);

}  // namespace ieee8023

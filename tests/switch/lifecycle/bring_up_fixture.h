// Bring-up of one switch, seen as one list of lines.
#pragma once

#include "tests/support/switch_fixture.h"

namespace obtest {

Lines operator+(Lines left, const Lines& right);

// The lines once for each port from first to last; "@" of a text becomes the port.
Lines ForPorts(int first, int last, const Lines& texts);

class BringUpTest : public SwitchTest {
protected:
    // Bring-up from the defaults (1), from what is stored (0), ...
    int BringUp(int setDefault = 0) { return ORBLINK_ResetDisable(0, setDefault, nullptr, 0); }

    // From one line on to another, both included; empty when either is missing.
    static Lines Between(const std::string& first, const std::string& last);

    // Severity 1 and 2.
    static Lines Complaints();

    // The error exit, as the last lines of the transcript, and the lock free after it.
    static void ExpectErrorExit();

    // The hal calls of _RestoreConfig and after it: everything behind ResetSwitch.
    static Lines RestoreCalls();
};

inline constexpr const char* kSystemStateOpened =
    "sys fopen(/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state, r)";

}  // namespace obtest

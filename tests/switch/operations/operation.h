// The switch operations as one table: what each says, sends and stores, and where it fails.
//
// In the texts {d} stands for the device, {p} for the port, {h} for the HAL library. Lines are
// those of the transcript, with two abbreviations: "log2 text" belongs to the operation itself, and
// "hal Slot(...)" to the switch's own library.
#pragma once

#include "tests/support/switch_fixture.h"

namespace obtest {

// What the operation logs at its end.
enum class Ending { kSilent, kFinished, kArrows };

struct PortRange {
    uint8_t lowest = 0;
    uint8_t highestAsked = 255;  // higher ones are refused in another way
    std::string invalid = {};    // message; empty = the operation bounds no port
};

struct SlotFailure {
    std::string slot;
    Lines steps = {};     // between taking the semaphore and its release
    bool stored = false;  // the record changes all the same
};

struct Operation {
    std::string name;  // without the prefix
    int (*call)(uint8_t device, uint8_t port);
    Lines before = {};  // up to the prolog
    Ending ending = Ending::kSilent;
    uint8_t port = 2;
    PortRange ports = {};
    // Makes the record such that there is something to do.
    void (*prepare)(SwitchDeviceRecord& record) = nullptr;
    Lines steps = {};  // of a success, between taking the semaphore and its release
    std::vector<SlotFailure> failures = {};
    std::string absent = {};    // what is logged when the slot, an optional one, is not there
    std::string already = {};   // line of the short-cut; empty = none
    bool needsEnabled = false;  // fails on a switch that is not enabled
    Lines offline = {};         // steps on a switch that is not enabled
    void (*store)(SwitchDeviceRecord& record, int port) = nullptr;
};

const std::vector<Operation>& Operations();

// The operations that the condition holds for.
std::vector<Operation> OperationsWith(bool (*condition)(const Operation&));

// For the names of parameterised tests.
std::string NameOf(const testing::TestParamInfo<Operation>& info);
void PrintTo(const Operation& operation, std::ostream* out);

// A line or message of the operation, spelt out.
struct Spelling {
    const Operation& operation;
    uint8_t device = 0;
    uint8_t port = operation.port;
    int library = 0;

    std::string Line(std::string line) const;
    Lines All(const Lines& lines) const;

    // The whole transcript of a call that got past its prolog.
    Lines Call(const Lines& steps, bool ok) const;
    // The whole transcript of a call whose prolog failed at the semaphore.
    Lines FailedProlog(int error) const;

private:
    void AddArrow(Lines& lines) const;
};

// The slots that the steps call.
std::vector<std::string> SlotsOf(const Lines& steps);

// All slots of the HAL table, in its order.
const std::vector<std::string>& SlotNames();

// Clears a slot of the scripted HAL library "a", by name.
void TakeSlotAway(const std::string& slot);

}  // namespace obtest

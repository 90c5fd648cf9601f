// Every exported function of the library as a call with fixed arguments, for what has to be tried
// on all of them.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace obtest {

// Whose lock the call takes.
enum class Family { kNone, kSwitch, kPhy };

struct ExportedCall {
    const char* name;
    Family family;
    int (*run)();
    void (*prepare)() = nullptr;  // makes the shared record such that there is something to do
};

// All but the two initialisations, the mailbox client and the receivers of the board data.
const std::vector<ExportedCall>& ExportedCalls();

std::vector<ExportedCall> CallsOf(Family family);
const ExportedCall& CallNamed(const std::string& name);

void PrintTo(const ExportedCall& call, std::ostream* out);

}  // namespace obtest

// What the workers of the soak change, and the log that they keep of it under the families' locks.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/robustness/calls.h"

namespace obtest {

// A stored setting of one port (or of the whole device) that an operation sets.
struct Setting {
    const char* name;
    Family family;
    size_t ports;     // 1 = of the whole device
    uint32_t values;  // 0 to values - 1 are all valid
    int (*set)(uint8_t port, uint32_t value);
    uint32_t (*stored)(uint8_t port);
};

const std::vector<Setting>& Settings();

constexpr size_t kPorts = 6;  // ports 1 to 6 of switch 0
constexpr size_t kMostSettings = 32;
constexpr size_t kMostWorkers = 8192;  // one after the other

struct LastWriter {
    uint32_t sequence;  // of all writes of the family
    uint32_t worker;
    uint32_t value;
    uint32_t before;  // what was stored then
};

struct WorkerRecord {
    uint32_t calls, failures;
    uint32_t worstWait;       // microseconds, of a whole call
    uint32_t completed[3];    // by family: sequence of the last write whose call has returned
    uint32_t descriptors[2];  // early in its life, and at its end
    uint32_t resident[2];     // kB, likewise
    // What its present call is to write; port 0 = it is in none.
    uint32_t setting, port, value;
};

// The same bytes for both ABIs.
struct SoakLog {
    uint32_t sequence[3];
    LastWriter last[kMostSettings][kPorts + 1];
    WorkerRecord worker[kMostWorkers];
};

// The log in the machine's shared memory, under the test's private names.
SoakLog& Log();

// What a worker does until the time (milliseconds of the monotonic clock) has come.
int Work(uint32_t worker, uint64_t end);

uint64_t Milliseconds();

}  // namespace obtest

// Traffic of the ports between two samples of their counters.
#pragma once

#include <chrono>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

struct CounterSample {
    std::chrono::steady_clock::time_point when;
    // Ports with their links, and with "counters", which are null where they could not be read.
    Model ports;
};

CounterSample TakeSample();

// A list of {switch, port, label, link, link_speed, and four rates}; a rate is null when a counter
// is not known at both ends.
Model Rates(const CounterSample& before, const CounterSample& after);

// How much each counter of the i-th port grew in a second; null after a reset in between, and
// nothing where the counters could not be read.
Model CounterRates(const CounterSample& before, const CounterSample& after, size_t i);

}  // namespace ctl

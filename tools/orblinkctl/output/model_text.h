// Models as text, for commands that need no layout of their own.
#pragma once

#include <string>

#include "tools/orblinkctl/access/model.h"

namespace ctl {

// Any model: tables for lists of objects, "name: value" for the rest.
void PrintModel(const Model& model, std::string& out);
void PrintNothing(const Model& model, std::string& out);

// The "changes" of a setter.
void PrintChanges(const Model& model, std::string& out);

// "unknown" for one that nobody counts.
std::string CounterText(const Model& value);
// The one port or PHY of a model, a counter on each line.
void PrintCounters(const Model& model, std::string& out);

}  // namespace ctl

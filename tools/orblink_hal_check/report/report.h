// A result for people and for programs.
#pragma once

#include <string>

#include "tools/orblink_hal_check/report/result.h"

namespace halcheck {

std::string TextReport(const Result& result);
std::string JsonReport(const Result& result);
std::string TapReport(const Result& result);
std::string JunitReport(const Result& result);

// Ids and meanings of all checks, as --list prints them.
std::string ListOfChecks();

}  // namespace halcheck

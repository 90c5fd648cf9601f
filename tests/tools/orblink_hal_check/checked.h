// orblink-hal-check run as its users run it.
#pragma once

#include <string>
#include <vector>

namespace checked {

struct Outcome {
    int code;
    std::string out;
    std::string err;
};

// Where a library of the build, and one with planted faults, is.
std::string Built(const std::string& file);
std::string Planted(const std::string& file);

// With the fault in the environment, if there is one, and streams that are not captured.
Outcome RunCheck(const std::string& arguments, const std::string& fault = "",
                 const std::string& streams = "");

// The findings, each as its id, a blank and the slot.
std::vector<std::string> Findings(const std::string& arguments, const std::string& fault = "");

// Those of the switch HAL with a planted fault when one slot, or each, is called.
std::vector<std::string> SwitchFault(const std::string& fault, const std::string& slot = "");
std::vector<std::string> PhyFault(const std::string& fault, const std::string& slot = "");

}  // namespace checked

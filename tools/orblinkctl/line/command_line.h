// A command line taken apart: its words, and its options as texts.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace ctl {

struct CommandLine {
    std::vector<std::string> words;
    // By option name; flags have an empty text.
    std::map<std::string, std::string> options;
    int verbosity = 0;
};

// Fails with a usage error for an unknown option and for an argument that is missing or bad.
CommandLine ParseCommandLine(const std::vector<std::string>& arguments);

}  // namespace ctl

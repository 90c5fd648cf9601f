// Runs command lines: parses, queries, prints, and turns failures into text and exit code.
#pragma once

#include <string>
#include <vector>

#include "tools/orblinkctl/line/command.h"
#include "tools/orblinkctl/line/command_line.h"

namespace ctl {

enum class Format { kText, kJson, kKeyValue };

// What the global options of the running command line say.
struct Settings {
    Format format = Format::kText;
    int verbosity = 0;
    bool quiet = false;
    bool jsonErrors = false;
    std::string color = "auto";
    double wait = 0;
};

const Settings& CurrentSettings();

// The command line of the program; the result is the exit code.
ExitCode RunLine(const std::vector<std::string>& arguments);

// One line of a batch. It takes over the global options of the batch that it does not give itself;
// `where` goes in front of complaints.
ExitCode RunBatchLine(const std::vector<std::string>& arguments, const std::string& where,
                      const CommandLine& batch);

// The command line that is running.
const CommandLine& CurrentLine();

// Shows a failure on standard error; as JSON with the library's lines.
void Complain(const Failure& failure, const std::string& where = "");

// The command line found and checked, without running it; it may stand for several commands.
std::vector<Call> Resolve(const CommandLine& line);

// A model in the format of the session, with its envelope.
std::string Rendered(const Call& call, const Model& model);

}  // namespace ctl

// Runs lines of orblinkctl inside this process.
#pragma once

#include <string>

#include "tools/orblink_web/reader/message.h"
#include "tools/orblink_web/reader/schedule.h"
#include "tools/orblinkctl/access/unique_descriptor.h"

namespace web {

// Standard output and standard error of the process end in here for good.
class ToolLine {
public:
    // Of every line; a text that is empty leaves the usual labels.
    explicit ToolLine(std::string namesFile);

    Answer Run(const Words& words);

private:
    std::string namesFile_;
    ctl::UniqueDescriptor out_;
    ctl::UniqueDescriptor err_;
};

}  // namespace web

// A command line of orblinkctl, one word to a line: taken apart, found, completed, explained. No
// command runs.
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/line/command_line.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/session.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    std::vector<std::string> words;
    std::string_view text{reinterpret_cast<const char*>(data), size};
    while (!text.empty() && words.size() < 64) {
        words.emplace_back(text.substr(0, text.find('\n')));
        text.remove_prefix(std::min(words.back().size() + 1, text.size()));
    }
    ctl::Completions(words);
    try {
        ctl::CommandLine line = ctl::ParseCommandLine(words);
        ctl::HelpText(line.words);
        ctl::Resolve(line);
    } catch (const ctl::Failure&) {  // a line that is none
    }
    return 0;
}

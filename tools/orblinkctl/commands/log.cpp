// The library's log: what is shown at which level, and what other processes write.
#include <cerrno>
#include <cstring>
#include <fstream>

#include "platform/ob_platform.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/system_log.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/terminal.h"

namespace ctl {

namespace {

constexpr char kSystemLog[] = "/var/log/syslog";

// How often the file is looked at.
constexpr double kPeriod = 0.1;

struct Level {
    unsigned severity;
    const char* word;
    const char* priority;
    const char* shown;
};

constexpr Level kLevels[] = {
    {OBPLAT_SEVERITY_ERROR, "error", "LOG_ERR", "of a command that failed, and with -v"},
    {OBPLAT_SEVERITY_NOTICE, "notice", "LOG_NOTICE", "of a command that failed, and with -v"},
    {OBPLAT_SEVERITY_INFO, "info", "LOG_INFO", "with -v"},
    {OBPLAT_SEVERITY_TRACE, "trace", "LOG_DEBUG", "with -v -v"},
};

Model ListLevels(Call&)
{
    Model model;
    model["levels"] = Model::array();
    for (const auto& level : kLevels) {
        Model entry;
        entry["severity"] = level.severity;
        entry["level"] = level.word;
        entry["syslog"] = level.priority;
        entry["shown"] = level.shown;
        model["levels"].push_back(std::move(entry));
    }
    return model;
}

void ShowLine(const std::string& line)
{
    if (CurrentSettings().format != Format::kJson)
        return WriteOut(line + "\n");
    Model model;
    model["schema"] = kSchema;
    model["line"] = line;
    WriteOut(model.dump(-1, ' ', false, Model::error_handler_t::replace) + "\n");
}

ExitCode Follow(Call& call)
{
    const std::string path = call.Has("FILE") ? call.Word("FILE") : kSystemLog;
    std::ifstream file(path);
    if (!file)
        throw Failure{kFailed, path + ": " + std::strerror(errno)};
    file.seekg(0, std::ios::end);
    CatchEndSignals();
    std::string unfinished;
    while (!EndRequested()) {
        for (std::string piece; std::getline(file, piece);) {
            unfinished += piece;
            // The writer has not come to the end of the line yet.
            if (file.eof())
                break;
            if (IsLibraryLine(unfinished))
                ShowLine(unfinished);
            unfinished.clear();
        }
        file.clear();
        WaitForKey(kPeriod);
    }
    return kDone;
}

constexpr Command kLogCommands[] = {
    {"log", "", "the levels of the library's log", "", ListLevels, PrintModel},
    {"log level", "", "the levels of the library's log", "", ListLevels, PrintModel},
    {"log follow [FILE]", "", "the library's lines in the system log, from now on", "", nullptr,
     nullptr, Follow},
};

}  // namespace

std::span<const Command> LogCommands()
{
    return kLogCommands;
}

}  // namespace ctl

// The manual page, from the command table.
#include <sstream>

#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/line/command.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/vocabulary.h"

namespace ctl {

namespace {

// A text as roff takes it: hyphens that are copied as such, no accidental requests.
std::string Roff(std::string_view text)
{
    std::string out;
    for (const char c : text)
        out += c == '-' ? "\\-" : c == '\\' ? "\\e" : std::string(1, c);
    if (!out.empty() && (out[0] == '.' || out[0] == '\''))
        out.insert(0, "\\&");
    return out;
}

std::string Synopsis(const Command& command)
{
    std::string line = ".B orblinkctl";
    if (*command.synopsis == '\0')
        return line;
    line = ".B " + Roff(std::string("orblinkctl ") + command.synopsis);
    return line;
}

void AddCommands(std::string& out)
{
    for (const auto& group : CommandGroups()) {
        out += std::string(".SS ") + Roff(group.title) + "\n";
        for (const auto& command : group.commands) {
            out += ".TP\n" + Synopsis(command) + "\n" + Roff(command.summary) + "\n";
            for (const auto& name : SplitWords(command.options))
                out += ".br\n" + Roff(name) + ": " + Roff(OptionNamed(name).help) + "\n";
        }
    }
}

void AddArguments(std::string& out)
{
    for (const auto& argument : Arguments())
        out += std::string(".TP\n.I ") + Roff(argument.name) + "\n" + Roff(argument.allowed) + "\n";
}

void AddOptions(std::string& out)
{
    for (const auto& option : Options())
        if (option.global)
            out += std::string(".TP\n.B ") + Roff(option.name) +
                   (*option.argument == '\0' ? "" : std::string(" ") + option.argument) + "\n" +
                   Roff(option.help) + "\n";
}

constexpr char kHead[] =
    ".SH NAME\norblinkctl \\- control the external Ethernet switches and PHYs of the board\n"
    ".SH SYNOPSIS\n.B orblinkctl\n[\\fIOPTION\\fR]... [\\fICOMMAND\\fR [\\fIWORD\\fR]...]\n"
    ".SH DESCRIPTION\n"
    "Every command asks the library, prints what it found and ends with an exit code that can be "
    "trusted. A word that is missing is useful: without a value a setting is shown, without an "
    "index all objects are listed. Without a command the board is drawn.\n";

constexpr char kTail[] =
    ".SH EXIT STATUS\n"
    ".TP\n.B 0\ndone\n"
    ".TP\n.B 1\nthe library or the board failed, or the output could not be written\n"
    ".TP\n.B 2\nusage: an unknown word or option, a value out of its range\n"
    ".TP\n.B 3\nno such switch, port or PHY on this board\n"
    ".TP\n.B 4\nnot initialised, or already initialised\n"
    ".TP\n.B 5\nnot supported by the switch, the port, the PHY or its HAL library, or not "
    "possible now\n"
    ".TP\n.B 6\nno permission\n"
    ".TP\n.B 7\nbusy: another call holds the family for longer than \\-\\-wait\n"
    ".TP\n.B 8\nthe shared state is damaged: see \\fBorblinkctl recover\\fR\n"
    ".TP\n.B 9\ndifferences found\n"
    ".SH FILES\n.TP\n.I /etc/orblink/names.toml\n"
    "labels: tables [port] with label = \"SWITCH:PORT\", [phy] with label = INDEX\n"
    ".TP\n.I /etc/orblink/startup.toml\nthe configuration of \\-\\-startup\n"
    ".SH SEE ALSO\n.BR orblink\\-config (5),\n.BR orblink (7),\n.BR orblink\\-messages (7)\n";

// Requests as they are, text in lines that an editor shows whole.
std::string Broken(const std::string& page)
{
    constexpr size_t kMost = 80;
    std::string out;
    std::istringstream lines(page);
    for (std::string line; std::getline(lines, line);) {
        while (line.size() > kMost && line[0] != '.') {
            const size_t blank = line.rfind(' ', kMost);
            if (blank == std::string::npos)
                break;
            out += line.substr(0, blank) + "\n";
            line.erase(0, blank + 1);
            if (line[0] == '.' || line[0] == '\'')
                line.insert(0, "\\&");
        }
        out += line + "\n";
    }
    return out;
}

}  // namespace

std::string ManualPage()
{
    std::string out = ".TH ORBLINKCTL 1 2026-11-22 \"orblinkctl " ORBLINKCTL_VERSION "\"\n";
    out += kHead;
    out += ".SH COMMANDS\n";
    AddCommands(out);
    out += ".SH ARGUMENTS\n";
    AddArguments(out);
    out += ".SH OPTIONS\n";
    AddOptions(out);
    return Broken(out + kTail);
}

}  // namespace ctl

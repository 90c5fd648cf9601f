#include "tests/switch/operations/operation.h"

#include <algorithm>

namespace obtest {
namespace {

constexpr const char* kTake = "sys semop(0, -1, UNDO)";
constexpr const char* kRelease = "sys semop(0, +1, UNDO)";

void ReplaceAll(std::string& text, const std::string& mark, const std::string& value)
{
    for (size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at))
        text.replace(at, mark.size(), value);
}

bool Begins(const std::string& text, const char* with)
{
    return text.rfind(with, 0) == 0;
}

}  // namespace

std::vector<Operation> OperationsWith(bool (*condition)(const Operation&))
{
    std::vector<Operation> result;
    std::copy_if(Operations().begin(), Operations().end(), std::back_inserter(result), condition);
    return result;
}

std::string NameOf(const testing::TestParamInfo<Operation>& info)
{
    return info.param.name;
}

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

std::string Spelling::Line(std::string line) const
{
    if (Begins(line, "hal "))
        line.insert(3, "{h}");
    if (Begins(line, "log") && line.find(":#") == std::string::npos)
        line.insert(5, "ORBLINK_" + operation.name + ":# ");
    ReplaceAll(line, "{d}", std::to_string(device));
    ReplaceAll(line, "{p}", std::to_string(port));
    ReplaceAll(line, "{h}", std::to_string(library));
    return line;
}

Lines Spelling::All(const Lines& lines) const
{
    Lines result;
    for (const auto& line : lines)
        result.push_back(Line(line));
    return result;
}

Lines Spelling::Call(const Lines& steps, bool ok) const
{
    Lines lines = All(operation.before);
    lines.push_back(kTake);
    for (const auto& step : All(steps))
        lines.push_back(step);
    lines.push_back(kRelease);
    if (operation.ending != Ending::kSilent)
        lines.push_back(Line(ok ? "log9 finished OK" : "log9 finished with error!"));
    AddArrow(lines);
    return lines;
}

Lines Spelling::FailedProlog(int error) const
{
    Lines lines = All(operation.before);
    lines.push_back(kTake);
    lines.push_back("log1 _System5SemOp:# semop() fail, errno=" + std::to_string(error));
    lines.push_back("log1 _ApiProlog:# _ApiGlobalLock() failed");
    lines.push_back(Line("log1 _ApiProlog() failed, DevIdx={d}"));
    AddArrow(lines);
    return lines;
}

void Spelling::AddArrow(Lines& lines) const
{
    if (operation.ending == Ending::kArrows)
        lines.push_back(Line("log9 <---"));
}

std::vector<std::string> SlotsOf(const Lines& steps)
{
    std::vector<std::string> slots;
    for (const auto& step : steps)
        if (Begins(step, "hal "))
            slots.push_back(step.substr(4, step.find('(') - 4));
    return slots;
}

}  // namespace obtest

#include "tools/orblinkctl/line/several.h"

#include <algorithm>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/line/undo.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

bool Changes(const Call& call)
{
    return call.command->print == PrintChanges;
}

void RequireOneKind(const std::vector<Call>& calls)
{
    for (const auto& call : calls)
        if (call.command->print != calls.front().command->print)
            throw Failure{kUsage, std::string("'") + calls.front().command->synopsis + "' and '" +
                                      call.command->synopsis +
                                      "' do not go together in one call: give them one by one"};
}

void Add(Model& whole, const Model& part)
{
    for (const auto& [key, list] : part.items())
        for (const auto& entry : list)
            whole[key].push_back(entry);
}

std::string TakenBack(std::vector<Model>& before)
{
    if (before.empty())
        return "";
    const std::string count = before.size() == 1 ? "the setting" : "the settings";
    try {
        for (; !before.empty(); before.pop_back())
            ReturnTo(before.back());
    } catch (const Failure& failure) {
        return "; " + count + " before it could not be taken back: " + failure.text;
    }
    return "; " + count + " before it " + (count.back() == 's' ? "were" : "was") + " taken back";
}

}  // namespace

ExitCode RunSeveral(std::vector<Call>& calls)
{
    RequireOneKind(calls);
    Model whole;
    std::vector<Model> before;
    ExitCode code = kDone;
    for (auto& call : calls) {
        Model earlier = Changes(call) ? SettingsNow() : Model();
        DropHeldLogLines();
        try {
            Add(whole, call.command->query(call));
        } catch (Failure& failure) {
            failure.text += TakenBack(before);
            throw;
        }
        if (Changes(call))
            before.push_back(std::move(earlier));
        code = std::max(code, call.exitCode);
    }
    WriteOut(Rendered(calls.front(), whole));
    return code;
}

}  // namespace ctl

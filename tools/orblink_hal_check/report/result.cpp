#include "tools/orblink_hal_check/report/result.h"

#include <algorithm>
#include <nlohmann/json.hpp>

namespace halcheck {

using nlohmann::json;

void Result::Add(const std::string& check, const std::string& slot, const std::string& what)
{
    const auto same = std::ranges::find_if(findings, [&](const Finding& finding) {
        return finding.check == check && finding.slot == slot;
    });
    if (same != findings.end())
        ++same->times;
    else
        findings.push_back({check, slot, what, 1});
}

json ToJson(const Result& result)
{
    json findings = json::array();
    for (const Finding& finding : result.findings)
        findings.push_back({{"check", finding.check},
                            {"slot", finding.slot},
                            {"what", finding.what},
                            {"times", finding.times}});
    json slots = json::array();
    for (const SlotTime& time : result.times)
        slots.push_back({{"family", time.family},
                         {"slot", time.slot},
                         {"calls", time.calls},
                         {"accesses", time.accesses},
                         {"microseconds", time.microseconds}});
    return {{"schema", 1},
            {"library", result.library},
            {"families", result.families},
            {"findings", findings},
            {"slots", slots},
            {"notes", result.notes}};
}

Result FromJson(const json& from)
{
    Result result;
    result.library = from.at("library");
    result.families = from.at("families").get<std::vector<std::string>>();
    result.notes = from.at("notes").get<std::vector<std::string>>();
    for (const json& finding : from.at("findings"))
        result.findings.push_back(
            {finding.at("check"), finding.at("slot"), finding.at("what"), finding.at("times")});
    for (const json& time : from.at("slots"))
        result.times.push_back({time.at("family"), time.at("slot"), time.at("calls"),
                                time.at("accesses"), time.at("microseconds")});
    return result;
}

}  // namespace halcheck

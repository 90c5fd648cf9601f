#include "tools/orblink_hal_check/report/report.h"

#include <algorithm>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/orblink_hal_check/report/checks.h"

namespace halcheck {

namespace {

constexpr size_t kColumns = 80;

// Paragraphs of at most 80 columns, each line after so many blanks.
std::string Wrapped(const std::string& text, size_t indent)
{
    std::istringstream words{text};
    std::string lines;
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && indent + line.size() + 1 + word.size() > kColumns) {
            lines += std::string(indent, ' ') + line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return lines + std::string(indent, ' ') + line + "\n";
}

const char* MeaningOf(const std::string& id)
{
    for (const Check& check : Checks())
        if (id == check.id)
            return check.meaning;
    return "";
}

std::string Families(const Result& result)
{
    std::string text;
    for (const std::string& family : result.families)
        text += (text.empty() ? "" : " and ") + family;
    return text + " HAL";
}

std::string Sentence(const Finding& finding)
{
    return finding.what +
           (finding.times > 1 ? " (" + std::to_string(finding.times) + " times)" : "");
}

std::string Times(const Result& result)
{
    char line[128];
    snprintf(line, sizeof line, "%-28s %7s %10s %12s\n", "slot", "calls", "accesses", "longest");
    std::string text = line;
    for (const SlotTime& time : result.times) {
        snprintf(line, sizeof line, "%-28s %7u %10u %9.1f ms\n", time.slot.c_str(), time.calls,
                 time.accesses, static_cast<double>(time.microseconds) / 1000);
        text += line;
    }
    return text;
}

bool IsSkipped(const Check& check, const Result& result)
{
    return check.applies == Applies::kSwitch &&
           std::ranges::find(result.families, "switch") == result.families.end();
}

std::vector<Finding> FindingsOf(const Check& check, const Result& result)
{
    std::vector<Finding> findings;
    std::ranges::copy_if(result.findings, std::back_inserter(findings),
                         [&](const Finding& finding) { return finding.check == check.id; });
    return findings;
}

// Text inside of XML, without what XML cannot hold.
std::string Escaped(const std::string& text)
{
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '>':
                escaped += "&gt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += static_cast<unsigned char>(c) < ' ' ? '?' : c;
        }
    }
    return escaped;
}

std::string Attribute(const char* name, const std::string& value)
{
    return std::string(" ") + name + "=\"" + Escaped(value) + "\"";
}

std::string TestCase(const Check& check, const Result& result)
{
    const std::vector<Finding> findings = FindingsOf(check, result);
    std::string text =
        "    <testcase" + Attribute("classname", result.library) + Attribute("name", check.id);
    if (IsSkipped(check, result))
        return text + "><skipped/></testcase>\n";
    if (findings.empty())
        return text + "/>\n";
    text += ">\n";
    for (const Finding& finding : findings)
        text += "      <failure" + Attribute("message", check.meaning) +
                Attribute("type", finding.slot) + ">" + Escaped(Sentence(finding)) + "</failure>\n";
    return text + "    </testcase>\n";
}

}  // namespace

std::string TextReport(const Result& result)
{
    const size_t count = result.findings.size();
    std::string text = Wrapped(result.library + ": " + Families(result) + ", " +
                                   (count == 0 ? "no" : std::to_string(count)) + " finding" +
                                   (count == 1 ? "" : "s"),
                               0);
    for (const Finding& finding : result.findings)
        text += "\n" + finding.check + (finding.slot.empty() ? "" : "  " + finding.slot) + "\n" +
                Wrapped(std::string(MeaningOf(finding.check)) + ":", 4) +
                Wrapped(Sentence(finding), 4);
    for (const std::string& note : result.notes)
        text += "\n" + Wrapped("Note: " + note, 0);
    return result.times.empty() ? text : text + "\n" + Times(result);
}

std::string JsonReport(const Result& result)
{
    return ToJson(result).dump(2, ' ', false, nlohmann::json::error_handler_t::replace) + "\n";
}

std::string TapReport(const Result& result)
{
    std::string text = "TAP version 13\n1.." + std::to_string(Checks().size()) + "\n";
    int number = 0;
    for (const Check& check : Checks()) {
        const std::vector<Finding> findings = FindingsOf(check, result);
        text += (findings.empty() ? "ok " : "not ok ") + std::to_string(++number) + " - " +
                check.id + (IsSkipped(check, result) ? " # SKIP no switch table" : "") + "\n";
        if (findings.empty())
            continue;
        text += "  ---\n  findings:\n";
        // A string of JSON is one of YAML.
        const auto quoted = [](const std::string& words) {
            return nlohmann::json(words).dump(-1, ' ', false,
                                              nlohmann::json::error_handler_t::replace);
        };
        for (const Finding& finding : findings)
            text += "    - slot: " + quoted(finding.slot) +
                    "\n      what: " + quoted(Sentence(finding)) + "\n";
        text += "  ...\n";
    }
    return text;
}

std::string JunitReport(const Result& result)
{
    size_t failures = 0;
    size_t skipped = 0;
    std::string cases;
    for (const Check& check : Checks()) {
        failures += FindingsOf(check, result).empty() ? 0 : 1;
        skipped += IsSkipped(check, result) ? 1 : 0;
        cases += TestCase(check, result);
    }
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites>\n  <testsuite" +
           Attribute("name", "orblink-hal-check") +
           Attribute("tests", std::to_string(Checks().size())) +
           Attribute("failures", std::to_string(failures)) +
           Attribute("skipped", std::to_string(skipped)) + ">\n" + cases +
           "  </testsuite>\n</testsuites>\n";
}

std::string ListOfChecks()
{
    std::string text;
    for (const Check& check : Checks())
        text += std::string(check.id) + "\n" + Wrapped(check.meaning, 4);
    return text;
}

}  // namespace halcheck

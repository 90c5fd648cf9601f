#include "tests/tools/orblink_hal_check/checked.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

namespace checked {

namespace {

std::string Build()
{
    return std::getenv("ORBLINK_BUILD");
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file{path};
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Only(const std::string& slot)
{
    return slot.empty() ? "" : " --slot " + slot;
}

}  // namespace

std::string Built(const std::string& file)
{
    return Build() + "/" + file;
}

std::string Planted(const std::string& file)
{
    return Build() + "/tests/lib/" + file;
}

Outcome RunCheck(const std::string& arguments, const std::string& fault, const std::string& streams)
{
    std::string folder = "/tmp/orblink-hal-check-test.XXXXXX";
    EXPECT_NE(mkdtemp(folder.data()), nullptr);
    const std::string line = (fault.empty() ? "" : "FAULT=" + fault + " ") + Build() +
                             "/bin/orblink-hal-check " + arguments + " >" + folder + "/out 2>" +
                             folder + "/err </dev/null " + streams;
    const int status = std::system(line.c_str());
    Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : -1, ReadFile(folder + "/out"),
                    ReadFile(folder + "/err")};
    std::filesystem::remove_all(folder);
    return outcome;
}

std::vector<std::string> Findings(const std::string& arguments, const std::string& fault)
{
    const Outcome outcome = RunCheck("--json " + arguments, fault);
    const auto json = nlohmann::json::parse(outcome.out, nullptr, false);
    if (json.is_discarded())
        return {"no report: " + outcome.err};
    std::vector<std::string> findings;
    for (const auto& finding : json.at("findings"))
        findings.push_back(finding.at("check").get<std::string>() + " " +
                           finding.at("slot").get<std::string>());
    EXPECT_EQ(outcome.code, findings.empty() ? 0 : 1) << outcome.err;
    return findings;
}

std::vector<std::string> SwitchFault(const std::string& fault, const std::string& slot)
{
    return Findings(Planted("libfaulty_switch_hal.so") + Only(slot), fault);
}

std::vector<std::string> PhyFault(const std::string& fault, const std::string& slot)
{
    return Findings(Planted("libfaulty_phy_hal.so") + Only(slot), fault);
}

}  // namespace checked

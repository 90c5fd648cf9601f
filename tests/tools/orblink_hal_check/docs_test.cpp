// docs/writing-a-hal.md against the tables and the program.
#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <regex>

#include "tests/tools/orblink_hal_check/checked.h"

using namespace checked;
using testing::HasSubstr;

namespace {

std::string ReadSource(const std::string& path)
{
    std::ifstream file{ORBLINK_SOURCE "/" + path};
    return {std::istreambuf_iterator<char>(file), {}};
}

std::string Page()
{
    return ReadSource("docs/writing-a-hal.md");
}

// The slots in the order of the struct in a header.
std::vector<std::string> SlotsOf(const std::string& header, const std::string& table)
{
    const std::string text = ReadSource(header);
    const size_t begin = text.find("struct " + table + " {");
    const std::string members = text.substr(begin, text.find("\n};", begin) - begin);
    const std::regex slot{R"(int \(\*([A-Za-z]+)\)\()"};
    std::vector<std::string> names;
    for (std::sregex_iterator it{members.begin(), members.end(), slot}, end; it != end; ++it)
        names.push_back((*it)[1]);
    return names;
}

void ExpectRows(const std::vector<std::string>& slots, const std::string& part)
{
    for (size_t i = 0; i < slots.size(); ++i)
        EXPECT_THAT(part, HasSubstr("\n| " + std::to_string(i) + " | `" + slots[i] + "` | "));
}

std::string Part(const std::string& heading)
{
    const std::string page = Page();
    const size_t begin = page.find("\n## " + heading);
    EXPECT_NE(begin, std::string::npos) << heading;
    return page.substr(begin, page.find("\n## ", begin + 1) - begin);
}

}  // namespace

TEST(WritingAHal, HasARowForEachSlotOfASwitch)
{
    const auto slots = SlotsOf("switch/orblink_hal.h", "OBHAL_HalFuncs");
    ASSERT_EQ(slots.size(), 42U);
    ExpectRows(slots, Part("What a switch HAL is asked"));
}

TEST(WritingAHal, HasARowForEachSlotOfAPhy)
{
    const auto slots = SlotsOf("phy/ethphy_hal.h", "ETHPHY_HalFuncs");
    ASSERT_EQ(slots.size(), 13U);
    ExpectRows(slots, Part("What a PHY HAL is asked"));
}

TEST(WritingAHal, HasTheChecksThatTheProgramLists)
{
    const std::string part = Part("Testing it");
    std::string rows;
    for (size_t at = part.find("\n| `"); at != std::string::npos; at = part.find("\n| `", at + 1)) {
        const std::string row = part.substr(at + 4, part.find(" |\n", at + 1) - at - 4);
        rows += std::regex_replace(row, std::regex{"` \\| "}, " ") + "\n";
    }
    // Without the program's line breaks.
    const std::string list = std::regex_replace(RunCheck("--list").out, std::regex{"\n +"}, " ");
    EXPECT_EQ(rows, list);
}

TEST(WritingAHal, NamesOptionsThatTheProgramHas)
{
    const std::string page = Page();
    const std::string help = RunCheck("--help").out;
    const std::regex line{"orblink-hal-check [^`\n]*"};
    const std::regex option{"--[a-z-]+"};
    int seen = 0;
    for (std::sregex_iterator at{page.begin(), page.end(), line}, end; at != end; ++at) {
        const std::string words = at->str();
        for (std::sregex_iterator it{words.begin(), words.end(), option}; it != end; ++it, ++seen)
            EXPECT_THAT(help, HasSubstr(it->str()));
    }
    EXPECT_GE(seen, 3);
}

TEST(HalCheckManual, HasEachOptionOfTheHelp)
{
    const std::string manual = std::regex_replace(
        ReadSource("tools/orblink_hal_check/orblink-hal-check.1"), std::regex{R"(\\-)"}, "-");
    const std::string help = RunCheck("--help").out;
    const std::regex option{"--[a-z-]+"};
    int seen = 0;
    for (std::sregex_iterator it{help.begin(), help.end(), option}, end; it != end; ++it, ++seen)
        EXPECT_THAT(manual, HasSubstr(it->str()));
    EXPECT_GE(seen, 11);
}

// The manual against the code: no fault and no key of a board file is missing or invented.

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "virtual_board/board/journal.h"
#include "virtual_board/description/board_file.h"

namespace vboard {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

const std::string& Manual()
{
    static const std::string text = [] {
        std::ifstream file{ORBLINK_DOCS "/virtual-board.md"};
        return std::string{std::istreambuf_iterator<char>{file}, {}};
    }();
    return text;
}

std::string Row(const FaultKind& kind)
{
    std::string value;
    if (kind.valueName == "ERRNO")
        value = "ERRNO, " + ErrnoName(static_cast<int>(kind.defaultValue)) + " ";
    else if (!kind.valueName.empty())
        value = std::string(kind.valueName) + ", " + std::to_string(kind.defaultValue) + " ";
    return "\n| `" + std::string(kind.name) + "` | " + value + "| ";
}

TEST(VirtualBoardManual, HasARowForEveryFault)
{
    for (const FaultKind& kind : FaultKinds())
        EXPECT_THAT(Manual(), HasSubstr(Row(kind)));
}

TEST(VirtualBoardManual, HasNoFaultThatDoesNotExist)
{
    std::string faults = Manual().substr(Manual().find("## Faults"));
    static const std::regex kRow{"\n\\| `([^`]+)`"};
    for (std::sregex_iterator row{faults.begin(), faults.end(), kRow}, end; row != end; ++row)
        EXPECT_NE(FindFault((*row)[1].str()), nullptr) << (*row)[1];
}

// The keys that the complaint about an unknown one offers.
std::set<std::string> KeysOffered(const std::string& text)
{
    auto parsed = ParseBoard(text, "b");
    std::set<std::string> keys;
    for (const std::string& error : std::get<BoardFileErrors>(parsed)) {
        size_t list = error.find("expected one of ");
        if (error.find("unknown key") == std::string::npos)
            continue;
        std::string rest = error.substr(list);
        static const std::regex kWord{"[a-z0-9_]+(?=,|$)"};
        for (std::sregex_iterator word{rest.begin(), rest.end(), kWord}, end; word != end; ++word)
            keys.insert(word->str());
    }
    return keys;
}

TEST(VirtualBoardManual, NamesEveryKeyOfABoardFile)
{
    for (const char* text : {"zzz = 1", "[[switch]]\nzzz = 1", "[[phy]]\nzzz = 1",
                             "[[phy]]\npartner = { zzz = 1 }", "[[fault]]\nzzz = 1"}) {
        auto keys = KeysOffered(text);
        EXPECT_GE(keys.size(), 4U) << text;
        for (const std::string& key : keys)
            EXPECT_THAT(Manual(), AnyOf(HasSubstr("`" + key + "`"), HasSubstr("`[[" + key + "]]`")))
                << text;
    }
}

TEST(VirtualBoardManual, NamesEveryKindOfJournalEntry)
{
    std::string kinds = "Kinds: ";
    for (std::string_view kind : kJournalKindNames)
        kinds.append(kind).append(kind == kJournalKindNames[6] ? "." : ", ");
    EXPECT_THAT(Manual(), HasSubstr(kinds));
}

}  // namespace
}  // namespace vboard

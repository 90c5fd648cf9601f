#include "virtual_board/board/faults.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include <cerrno>
#include <set>

namespace vboard {
namespace {

const FaultKind& Kind(std::string_view name)
{
    return *FindFault(name);
}

TEST(Faults, StrikeAtTheNthOccurrenceSoManyTimes)
{
    Faults faults;
    faults.Add({&Kind("mdio-error"), 7, 3, 2});
    std::vector<bool> struck;
    for (int i = 0; i < 6; ++i)
        struck.push_back(faults.Strike(FaultId::kMdioError).has_value());
    EXPECT_THAT(struck, testing::ElementsAre(false, false, true, true, false, false));
    EXPECT_TRUE(faults.Show().empty());
}

TEST(Faults, ZeroTimesIsUntilCleared)
{
    Faults faults;
    faults.Add({&Kind("lane-error"), 5, 1, 0});
    for (int i = 0; i < 100; ++i)
        EXPECT_EQ(faults.Strike(FaultId::kLaneError), 5U);
    EXPECT_EQ(faults.Strike(FaultId::kLaneOpen), std::nullopt);
    EXPECT_EQ(faults.Clear(), 1U);
    EXPECT_EQ(faults.Strike(FaultId::kLaneError), std::nullopt);
}

TEST(Faults, TwoOfAKindTakeTurns)
{
    Faults faults;
    faults.Add({&Kind("socket-error"), 1, 1, 1});
    faults.Add({&Kind("socket-error"), 2, 1, 1});
    EXPECT_EQ(faults.Strike(FaultId::kSocketError), 1U);
    EXPECT_EQ(faults.Strike(FaultId::kSocketError), 2U);
    EXPECT_EQ(faults.Strike(FaultId::kSocketError), std::nullopt);
}

TEST(Faults, ALaterOneCountsWhatAnEarlierOneLetsPass)
{
    Faults faults;
    faults.Add({&Kind("mdio-error"), 1, 2, 1});
    faults.Add({&Kind("mdio-error"), 2, 1, 1});
    EXPECT_EQ(faults.Strike(FaultId::kMdioError), 2U);
    EXPECT_EQ(faults.Strike(FaultId::kMdioError), 1U);
}

TEST(Faults, NamesAndIdsAreUnique)
{
    std::set<std::string_view> names;
    std::set<FaultId> ids;
    for (const FaultKind& kind : FaultKinds()) {
        names.insert(kind.name);
        ids.insert(kind.id);
        EXPECT_LE(kind.defaultValue, kind.valueName.empty() ? UINT32_MAX : kind.maxValue);
    }
    EXPECT_EQ(names.size(), FaultKinds().size());
    EXPECT_EQ(ids.size(), FaultKinds().size());
    EXPECT_EQ(FindFault("nonsense"), nullptr);
}

TEST(Faults, ValuesAreNumbersOrNamesOfErrnos)
{
    EXPECT_EQ(ParseFaultValue(Kind("mdio-error"), "EIO"), uint32_t{EIO});
    EXPECT_EQ(ParseFaultValue(Kind("mdio-error"), "133"), 133U);
    EXPECT_EQ(ParseFaultValue(Kind("device-count"), "0"), 0U);
    EXPECT_EQ(ParseFaultValue(Kind("message-type"), "4294967295"), UINT32_MAX);
    for (const char* wrong : {"", "0", "134", "EWHAT", "-1", "1x", "0x5"})
        EXPECT_EQ(ParseFaultValue(Kind("mdio-error"), wrong), std::nullopt) << wrong;
    EXPECT_EQ(ParseFaultValue(Kind("device-count"), "EIO"), std::nullopt);
    EXPECT_EQ(ParseFaultValue(Kind("message-type"), "4294967296"), std::nullopt);
}

}  // namespace
}  // namespace vboard

#include "tests/switch/lifecycle/bring_up_fixture.h"

#include <algorithm>

namespace obtest {

Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Lines ForPorts(int first, int last, const Lines& texts)
{
    Lines lines;
    for (int port = first; port <= last; ++port)
        for (std::string text : texts) {
            const size_t at = text.rfind('@');
            lines.push_back(at == std::string::npos ? text
                                                    : text.replace(at, 1, std::to_string(port)));
        }
    return lines;
}

Lines BringUpTest::Between(const std::string& first, const std::string& last)
{
    const Lines& all = Platform().transcript.All();
    const auto from = std::find(all.begin(), all.end(), first);
    const auto to = std::find(from, all.end(), last);
    return to == all.end() ? Lines() : Lines(from, to + 1);
}

Lines BringUpTest::Complaints()
{
    return Platform().transcript.Only({"log1", "log2"});
}

void BringUpTest::ExpectErrorExit()
{
    const Lines& all = Platform().transcript.All();
    ASSERT_GE(all.size(), 3U);
    EXPECT_EQ(Lines(all.end() - 3, all.end()),
              Lines({"sys semop(0, +1, UNDO)",
                     "log9 ORBLINK_ResetDisable:# finished with error!, DevIdx=0",
                     "log9 ORBLINK_ResetDisable:# <---"}));
    EXPECT_EQ(SemaphoreValue(), 1);
}

Lines BringUpTest::RestoreCalls()
{
    const Lines hals = Platform().transcript.Only({"hal"});
    const auto reset = std::find_if(hals.begin(), hals.end(), [](const auto& line) {
        return line.find(" ResetSwitch(") != std::string::npos;
    });
    return reset == hals.end() ? Lines() : Lines(reset + 1, hals.end());
}

}  // namespace obtest

#include "tools/orblinkctl/line/nearest.h"

#include <algorithm>

namespace ctl {

namespace {

// How many letters have to be changed, added, taken away or exchanged with their neighbour.
size_t Distance(const std::string& from, const std::string& to)
{
    std::vector<std::vector<size_t>> rows(from.size() + 1, std::vector<size_t>(to.size() + 1));
    for (size_t i = 0; i <= from.size(); ++i)
        rows[i][0] = i;
    for (size_t j = 0; j <= to.size(); ++j)
        rows[0][j] = j;
    for (size_t i = 1; i <= from.size(); ++i) {
        for (size_t j = 1; j <= to.size(); ++j) {
            const size_t replaced = rows[i - 1][j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
            rows[i][j] = std::min({replaced, rows[i - 1][j] + 1, rows[i][j - 1] + 1});
            if (i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1])
                rows[i][j] = std::min(rows[i][j], rows[i - 2][j - 2] + 1);
        }
    }
    return rows[from.size()][to.size()];
}

}  // namespace

std::string MeantText(const std::string& word, const std::vector<std::string>& expected)
{
    // Nothing that is longer than any word here is a slip.
    constexpr size_t kLongest = 64;
    if (word.size() > kLongest)
        return {};
    std::string nearest;
    size_t least = std::max<size_t>(1, word.size() / 3) + 1;
    for (const auto& candidate : expected) {
        const size_t distance = Distance(word, candidate);
        if (distance < least && distance < candidate.size()) {
            least = distance;
            nearest = candidate;
        }
    }
    return nearest.empty() ? nearest : "; did you mean '" + nearest + "'?";
}

}  // namespace ctl

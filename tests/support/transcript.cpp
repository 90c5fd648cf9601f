#include "tests/support/transcript.h"

#include <algorithm>

namespace obtest {

Lines Transcript::Only(std::initializer_list<const char*> words) const
{
    Lines result;
    std::copy_if(lines_.begin(), lines_.end(), std::back_inserter(result), [&](const auto& line) {
        return std::any_of(words.begin(), words.end(),
                           [&](const char* word) { return line.rfind(word, 0) == 0; });
    });
    return result;
}

Lines Transcript::Log() const
{
    Lines result;
    for (const auto& line : Only({"log", "phy"}))
        if (line[3] != '9')
            result.push_back(line);
    return result;
}

bool Transcript::Has(const std::string& text) const
{
    return std::any_of(lines_.begin(), lines_.end(),
                       [&](const auto& line) { return line.find(text) != std::string::npos; });
}

std::string Joined(const Lines& lines)
{
    std::string result;
    for (const auto& line : lines)
        result += line + "\n";
    return result;
}

}  // namespace obtest

#include "toml/text_check.h"

#include <algorithm>

namespace toml_text {
namespace {

// Behind a string that begins at `at`, or behind its quotes where nothing ends it.
size_t BehindString(std::string_view text, size_t at)
{
    const char quote = text[at];
    const std::string_view three = text.substr(at, 3);
    const bool many = three.size() == 3 && three[1] == quote && three[2] == quote;
    const size_t marks = many ? 3 : 1;
    for (size_t i = at + marks; i < text.size() && (many || text[i] != '\n'); ++i) {
        if (text[i] == '\\' && quote == '"')
            ++i;
        else if (text.substr(i, marks) == text.substr(at, marks))
            return i + marks;
    }
    return at + marks;
}

// Where a dotted key gets too deep; npos: nowhere. The parser goes one call deeper for each dot.
size_t FindDeepKey(std::string_view text)
{
    constexpr std::string_view kEndsKey = "\n=,[]{}";
    size_t dots = 0;
    size_t at = 0;
    while (at < text.size() && dots <= kMostDots) {
        const char c = text[at];
        if (c == '#') {
            at = std::min(text.find('\n', at), text.size());
        } else if (c == '"' || c == '\'') {
            at = BehindString(text, at);
        } else {
            dots = kEndsKey.find(c) != std::string_view::npos ? 0 : dots + (c == '.' ? 1 : 0);
            ++at;
        }
    }
    return dots > kMostDots ? at - 1 : std::string_view::npos;
}

}  // namespace

std::optional<Complaint> Check(std::string_view text)
{
    if (text.size() > kLongestFile)
        return Complaint{1, 1, "expected a file of at most 64 KiB"};
    const size_t deep = FindDeepKey(text);
    if (deep == std::string_view::npos)
        return std::nullopt;
    const std::string_view before = text.substr(0, deep);
    return Complaint{static_cast<uint32_t>(std::ranges::count(before, '\n') + 1),
                     static_cast<uint32_t>(deep - (before.rfind('\n') + 1) + 1),
                     "expected at most 16 dots in a key"};
}

}  // namespace toml_text

#include "toml/text_check.h"

#include <algorithm>

namespace toml_text {
namespace {

constexpr std::string_view kBlanks = " \t";
constexpr size_t kNowhere = std::string_view::npos;

// Behind a string that begins at `at`. Where nothing ends it: behind its quote, or, where it could have
// gone on in the next line, nowhere.
size_t BehindString(std::string_view text, size_t at)
{
    constexpr size_t kMostQuotesAtEnd = 5;  // a long string may end with two of its own
    const char quote = text[at];
    const std::string_view three = text.substr(at, 3);
    const bool many = three.size() == 3 && three[1] == quote && three[2] == quote;
    const size_t marks = many ? 3 : 1;
    for (size_t i = at + marks; i < text.size() && (many || text[i] != '\n'); ++i) {
        if (text[i] == '\\' && quote == '"')
            ++i;
        else if (text.substr(i, marks) == text.substr(at, marks))
            return many ? std::min(
                              {text.find_first_not_of(quote, i), i + kMostQuotesAtEnd, text.size()})
                        : i + marks;
    }
    return many ? kNowhere : at + marks;
}

bool IsAscii(char c)
{
    return static_cast<unsigned char>(c) < 0x80;
}

// Where a long string that ends at `end` goes on behind a backslash, and the blanks and ends of
// lines behind it, with a letter that the parser may take for a blank; npos: nowhere.
size_t FindLostLetter(std::string_view text, size_t at, size_t end)
{
    if (!text.substr(at).starts_with("\"\"\""))
        return kNowhere;
    for (size_t i = at; i < end; ++i) {
        if (text[i] != '\\')
            continue;
        const size_t next = text.find_first_not_of(" \t\r\n", ++i);
        if (next < end && !IsAscii(text[next]))
            return next;
    }
    return kNowhere;
}

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

// An empty name is one that the parser refuses by itself.
bool BeginsName(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("-_\"']").find(c) != kNowhere;
}

// Through the text up to what the parser must not be given.
class Scanner {
public:
    explicit Scanner(std::string_view text) : text_(text)
    {
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (text.starts_with(kByteOrderMark))
            at_ = kByteOrderMark.size();
    }

    // What is expected where At() is; null: nothing is wrong.
    const char* FindFault()
    {
        while (at_ < text_.size() && fault_ == nullptr)
            Step(text_[at_]);
        return fault_;
    }

    size_t At() const { return at_; }

private:
    void Step(char c)
    {
        if (c == '#') {
            at_ = std::min(text_.find('\n', at_), text_.size());
        } else if (c == '"' || c == '\'') {
            TakeString();
        } else if (c == '[' && lineIsBlank_ && arrays_ == 0) {
            TakeHeading();
        } else {
            TakePlain(c);
        }
    }

    void TakeString()
    {
        if (InNumber()) {
            fault_ = "expected no quotes in a number";
            return;
        }
        const size_t end = BehindString(text_, at_);
        if (end == kNowhere) {
            fault_ = "expected three more quotes at its end";
            return;
        }
        const size_t lost = FindLostLetter(text_, at_, end);
        lineIsBlank_ = false;
        last_ = text_[at_];
        at_ = std::min(end, lost);
        if (lost < end)
            fault_ = "expected no letter beyond ASCII behind a backslash";
    }

    // The parser takes it for granted that a name begins there.
    void TakeHeading()
    {
        dots_ = 0;
        lineIsBlank_ = false;
        ++at_;
        SkipBlanks();
        if (at_ < text_.size() && text_[at_] == '[') {
            ++at_;
            SkipBlanks();
        }
        if (at_ < text_.size() && !BeginsName(text_[at_]))
            fault_ = "expected the name of a table";
    }

    void TakePlain(char c)
    {
        constexpr std::string_view kEndsKey = "\n=,[]{}";
        if (c == '[')
            ++arrays_;
        else if (c == ']' && arrays_ > 0)
            --arrays_;
        if (c == '\n')
            lineIsBlank_ = true;
        else if (kBlanks.find(c) == kNowhere)
            lineIsBlank_ = false;
        dots_ = kEndsKey.find(c) != kNowhere ? 0 : dots_ + (c == '.' ? 1 : 0);
        fault_ = FaultOf(c);
        if (fault_ != nullptr)
            return;
        FollowValue(c);
        ++at_;
        if (kBlanks.find(c) == kNowhere && c != '\n' && c != '\r')
            last_ = c;
    }

    void FollowValue(char c)
    {
        constexpr std::string_view kBeforeValue = "=[,";
        constexpr std::string_view kNoValue = " \t\r\n,]}";
        constexpr std::string_view kOpens = "[{";
        if (kNoValue.find(c) != kNowhere)
            value_ = kNowhere;
        else if (value_ == kNowhere && kBeforeValue.find(last_) != kNowhere &&
                 kOpens.find(c) == kNowhere)
            value_ = at_;
    }

    // Or in a date. The parser looks at what follows in search of the end, quoted or not.
    bool InNumber() const
    {
        return value_ != kNowhere &&
               (IsDigit(text_[value_]) || text_[value_] == '+' || text_[value_] == '-');
    }

    // Where a date is followed by a blank and a digit the parser expects another digit.
    bool IsBeforeTime(char c) const
    {
        return c == ' ' && InNumber() && IsDigit(text_[value_]) && at_ + 1 < text_.size() &&
               IsDigit(text_[at_ + 1]) &&
               std::ranges::count(text_.substr(value_, at_ - value_), '-') >= 2;
    }

    // The parser goes one call deeper for each dot of a key. It may go astray while it tells letters
    // from blanks, and where a table ends in place of a value.
    const char* FaultOf(char c) const
    {
        if (dots_ > kMostDots)
            return "expected at most 16 dots in a key";
        if (!IsAscii(c))
            return "expected quotes around letters beyond ASCII";
        if (c == '}' && (last_ == '[' || last_ == ','))
            return "expected no '}' behind '[' or ','";
        if (IsBeforeTime(c))
            return "expected no time behind a date";
        return nullptr;
    }

    void SkipBlanks() { at_ = std::min(text_.find_first_not_of(kBlanks, at_), text_.size()); }

    std::string_view text_;
    size_t at_ = 0;
    size_t dots_ = 0;
    size_t arrays_ = 0;  // that have begun and not ended
    bool lineIsBlank_ = true;
    size_t value_ = kNowhere;  // where the one that is read began, but for texts
    char last_ = '\n';         // that is no blank, no end of a line and no comment
    const char* fault_ = nullptr;
};

}  // namespace

std::optional<Complaint> Check(std::string_view text)
{
    if (text.size() > kLongestFile)
        return Complaint{1, 1, "expected a file of at most 64 KiB"};
    Scanner scanner(text);
    const char* const expected = scanner.FindFault();
    if (expected == nullptr)
        return std::nullopt;
    const std::string_view before = text.substr(0, scanner.At());
    return Complaint{static_cast<uint32_t>(std::ranges::count(before, '\n') + 1),
                     static_cast<uint32_t>(scanner.At() - (before.rfind('\n') + 1) + 1), expected};
}

}  // namespace toml_text

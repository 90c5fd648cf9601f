#include "tools/orblinkctl/line/command_line.h"

#include <cctype>
#include <optional>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/line/nearest.h"
#include "tools/orblinkctl/line/vocabulary.h"

namespace ctl {

namespace {

class Parser {
public:
    explicit Parser(const std::vector<std::string>& arguments) : arguments_(arguments) {}

    CommandLine Parse()
    {
        bool optionsEnd = false;
        while (at_ < arguments_.size()) {
            const std::string& argument = arguments_[at_++];
            if (!optionsEnd && argument == "--")
                optionsEnd = true;
            else if (optionsEnd || !IsOption(argument))
                line_.words.push_back(argument);
            else if (argument.starts_with("--"))
                TakeLong(argument);
            else
                TakeShort(argument);
        }
        return std::move(line_);
    }

private:
    // Numbers may be negative.
    static bool IsOption(const std::string& argument)
    {
        return argument.size() > 1 && argument[0] == '-' &&
               std::isdigit(static_cast<unsigned char>(argument[1])) == 0;
    }

    static const OptionDefinition& Find(const std::string& name, const std::string& typed)
    {
        for (const auto& option : Options())
            if (name == option.name)
                return option;
        throw Failure{kUsage, "unknown option '" + typed + "'" +
                                  (name.starts_with("--") ? MeantText(name, Names()) : "")};
    }

    static std::vector<std::string> Names()
    {
        std::vector<std::string> names;
        for (const auto& option : Options())
            names.push_back(option.name);
        return names;
    }

    void TakeLong(const std::string& argument)
    {
        const size_t equals = argument.find('=');
        const auto& option = Find(argument.substr(0, equals), argument);
        // "help --mask" asks for that option.
        if (!option.global && !line_.words.empty() && line_.words.front() == "help")
            return line_.words.push_back(argument);
        if (equals == std::string::npos)
            return Take(option, std::nullopt);
        if (*option.argument == '\0')
            throw Failure{kUsage, std::string("option ") + option.name + " takes no argument"};
        Take(option, argument.substr(equals + 1));
    }

    // Several letters may stand behind one hyphen; the rest of the word is an argument.
    void TakeShort(const std::string& argument)
    {
        for (size_t i = 1; i < argument.size(); ++i) {
            const auto& option = Find(std::string("-") + argument[i], argument);
            if (*option.argument != '\0' && i + 1 < argument.size())
                return Take(option, argument.substr(i + 1));
            Take(option, std::nullopt);
        }
    }

    void Take(const OptionDefinition& option, std::optional<std::string> text)
    {
        const std::string name = option.name;
        if (name == "-v")
            ++line_.verbosity;
        if (*option.argument == '\0') {
            line_.options[name];
            return;
        }
        const Argument& kind = ArgumentNamed(option.argument);
        if (!text && at_ == arguments_.size())
            throw Failure{kUsage,
                          "option " + name + " needs " + option.argument + ": " + kind.allowed};
        if (!text)
            text = arguments_[at_++];
        if (!Accepts(kind, *text))
            throw Failure{kUsage, "bad " + name + " '" + *text + "': allowed is " + kind.allowed};
        line_.options[name] = *text;
    }

    const std::vector<std::string>& arguments_;
    size_t at_ = 0;
    CommandLine line_;
};

}  // namespace

CommandLine ParseCommandLine(const std::vector<std::string>& arguments)
{
    return Parser(arguments).Parse();
}

}  // namespace ctl

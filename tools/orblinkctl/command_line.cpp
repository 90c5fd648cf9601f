#include "tools/orblinkctl/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "tools/orblinkctl/failure.h"
#include "tools/orblinkctl/vocabulary.h"

namespace ctl {

namespace {

// Built once and used again for every line of a batch.
class Parser {
public:
    Parser()
    {
        app.set_help_flag();
        app.allow_extras();
        for (const auto& option : Options())
            Add(option);
    }

    CommandLine Parse(std::vector<std::string> arguments)
    {
        std::reverse(arguments.begin(), arguments.end());
        try {
            app.parse(std::move(arguments));
        } catch (const CLI::ParseError& error) {
            throw Failure{kUsage, error.what()};
        }
        CommandLine line;
        line.words = app.remaining();
        for (const auto& option : Options())
            Take(option, line);
        return line;
    }

private:
    void Add(const OptionDefinition& option)
    {
        if (*option.argument == '\0')
            app.add_flag(option.name);
        else
            app.add_option(option.name)->multi_option_policy(CLI::MultiOptionPolicy::TakeLast);
    }

    void Take(const OptionDefinition& option, CommandLine& line)
    {
        const CLI::Option* given = app.get_option(option.name);
        if (given->count() == 0)
            return;
        if (std::string_view(option.name) == "-v")
            line.verbosity = static_cast<int>(given->count());
        std::string& text = line.options[option.name];
        if (*option.argument == '\0')
            return;
        text = given->results().back();
        const Argument& argument = ArgumentNamed(option.argument);
        if (!Accepts(argument, text))
            throw Failure{kUsage, "bad " + std::string(option.name) + " '" + text +
                                      "': allowed is " + argument.allowed};
    }

    CLI::App app;
};

void RefuseUnknownOptions(const std::vector<std::string>& words)
{
    for (const auto& word : words)
        if (word.size() > 1 && word[0] == '-' && (word[1] < '0' || word[1] > '9'))
            throw Failure{kUsage, "unknown option '" + word + "'"};
}

}  // namespace

CommandLine ParseCommandLine(std::vector<std::string> arguments)
{
    static Parser parser;
    CommandLine line = parser.Parse(std::move(arguments));
    RefuseUnknownOptions(line.words);
    return line;
}

}  // namespace ctl

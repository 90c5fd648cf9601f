// Completion: the shell's script asks the program, which answers from the command table.
#include <algorithm>

#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/line/expansion.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/vocabulary.h"

namespace ctl {

namespace {

// clang-format off

// Bash splits words at the colon, and replaces only what follows the last one.
constexpr char kBash[] = R"SH(_orblinkctl() {
    local line=${COMP_LINE:0:COMP_POINT} word
    local -a words
    read -ra words <<<"$line"
    [[ $line == *[[:space:]] ]] && words+=("")
    word=${words[-1]}
    mapfile -t COMPREPLY < <(orblinkctl --complete "${words[@]:1}" 2>/dev/null)
    if [[ $word == *:* && $COMP_WORDBREAKS == *:* ]]; then
        COMPREPLY=("${COMPREPLY[@]#"${word%"${word##*:}"}"}")
    fi
}
complete -o default -F _orblinkctl orblinkctl
)SH";

constexpr char kZsh[] = R"SH(#compdef orblinkctl
_orblinkctl() {
    local -a found
    found=(${(f)"$(orblinkctl --complete "${(@)words[2,CURRENT]}" 2>/dev/null)"})
    if (( $#found )); then compadd -a found; else _files; fi
}
if [[ $funcstack[1] == _orblinkctl ]]; then _orblinkctl; else compdef _orblinkctl orblinkctl; fi
)SH";

constexpr char kFish[] = R"SH(function __orblinkctl
    set -l words (commandline -opc) (commandline -ct)
    test (count $words) -gt (count (commandline -opc)); or set -a words ""
    orblinkctl --complete $words[2..-1] 2>/dev/null
end
complete -c orblinkctl -f -a '(__orblinkctl)'
complete -c orblinkctl -n 'test -z "$(__orblinkctl)"' -F
)SH";

// clang-format on

const OptionDefinition* FindOption(const std::string& word)
{
    for (const auto& option : Options())
        if (word == option.name)
            return &option;
    return nullptr;
}

// The words without the options and their arguments.
std::vector<std::string> PlainWords(const std::vector<std::string>& words)
{
    std::vector<std::string> plain;
    for (size_t i = 0; i < words.size(); ++i) {
        const auto* option = FindOption(words[i]);
        if (option == nullptr)
            plain.push_back(words[i]);
        else if (*option->argument != '\0')
            ++i;
    }
    return plain;
}

std::vector<std::string> NextWords(const std::vector<std::string>& plain)
{
    std::vector<std::string> next;
    // Another setting may follow.
    if (MayGoOn(plain))
        for (const auto& word : NextWords({plain[0], plain[1]}))
            AddOnce(next, word);
    for (const auto* command : CommandsUnder(plain)) {
        const auto synopsis = SynopsisWords(*command);
        if (synopsis.size() <= plain.size())
            continue;
        const auto& word = synopsis[plain.size()];
        if (word.literal)
            AddOnce(next, word.name);
        else
            for (const auto& candidate : SplitWords(ArgumentNamed(word.name).candidates))
                AddOnce(next, candidate);
    }
    return next;
}

// "help" takes the words of a command.
std::vector<std::string> AskedFor(std::vector<std::string> plain)
{
    if (!plain.empty() && plain.front() == "help")
        plain.erase(plain.begin());
    return plain;
}

std::vector<std::string> OptionWords(const std::vector<std::string>& plain)
{
    std::vector<std::string> names;
    for (const auto* command : CommandsUnder(plain))
        for (const auto& name : SplitWords(command->options))
            AddOnce(names, name);
    for (const auto& option : Options())
        if (option.global)
            AddOnce(names, option.name);
    return names;
}

}  // namespace

std::vector<std::string> Completions(std::vector<std::string> words)
{
    const std::string unfinished = words.empty() ? "" : words.back();
    if (!words.empty())
        words.pop_back();
    const auto* option = words.empty() ? nullptr : FindOption(words.back());
    std::vector<std::string> all;
    if (option != nullptr && *option->argument != '\0')
        all = SplitWords(ArgumentNamed(option->argument).candidates);
    else if (unfinished.starts_with("-"))
        all = OptionWords(PlainWords(words));
    else
        all = NextWords(AskedFor(PlainWords(words)));
    std::erase_if(all, [&](const std::string& word) { return !word.starts_with(unfinished); });
    return all;
}

std::string CompletionScript(const std::string& shell)
{
    if (shell == "fish")
        return kFish;
    return shell == "zsh" ? kZsh : kBash;
}

}  // namespace ctl

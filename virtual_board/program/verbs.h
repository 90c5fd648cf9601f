// Subcommands that name the word they do not know.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace vboard {

// One subcommand must be given; any other word is refused by name.
inline void RequireVerb(CLI::App& app)
{
    app.require_subcommand(0, 1);
    app.allow_extras();
    app.final_callback([&app] {
        std::string verbs;
        for (const CLI::App* verb : app.get_subcommands(nullptr))
            verbs += (verbs.empty() ? "" : ", ") + verb->get_name();
        bool given = !app.get_subcommands().empty();
        if (given && app.remaining_size() > 0)
            throw CLI::ValidationError("unexpected word '" + app.remaining()[0] + "'");
        if (app.remaining_size() > 0)
            throw CLI::ValidationError("unknown word '" + app.remaining()[0] +
                                       "': expected one of " + verbs);
        if (!given)
            throw CLI::ValidationError("a word is missing: expected one of " + verbs);
    });
}

}  // namespace vboard

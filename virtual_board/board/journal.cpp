#include "virtual_board/board/journal.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vboard {

void NamedNumbers::AddTo(Json& facts) const
{
    for (size_t i = 0; i < count; ++i)
        facts[numbers[i].name] = numbers[i].value;
}

int Journal::Note(JournalEntry entry)
{
    if (entries.size() >= capacity) {
        entries.pop_front();
        ++dropped;
    }
    int error = entry.error;
    entries.push_back({next++, clock.Now(), pid, std::move(entry)});
    return error;
}

Json Journal::ShowEntry(const Stamped& stamped)
{
    const JournalEntry& entry = stamped.entry;
    Json facts = entry.facts.is_null() ? Json::object() : entry.facts;
    entry.more.AddTo(facts);
    Json shown = {{"number", stamped.number},
                  {"timeNs", stamped.time.count()},
                  {"pid", stamped.pid},
                  {"kind", kJournalKindNames[static_cast<size_t>(entry.kind)]},
                  {"call", entry.call},
                  {"facts", std::move(facts)},
                  {"result", ErrnoName(entry.error)}};
    if (!entry.note.empty())
        shown["note"] = entry.note;
    return shown;
}

Json Journal::Show(const JournalQuery& query) const
{
    Json shown = Json::array();
    auto wanted = [&](const Stamped& one) { return !query.kind || one.entry.kind == *query.kind; };
    auto matching = static_cast<size_t>(std::count_if(entries.begin(), entries.end(), wanted));
    size_t skip = matching > query.tail ? matching - query.tail : 0;
    for (const Stamped& one : entries) {
        if (!wanted(one))
            continue;
        if (skip > 0)
            --skip;
        else
            shown.push_back(ShowEntry(one));
    }
    return {{"dropped", dropped}, {"entries", std::move(shown)}};
}

std::string ErrnoName(int error)
{
    if (error == 0)
        return "ok";
    const char* name = strerrorname_np(error);
    return name != nullptr ? name : "errno " + std::to_string(error);
}

std::optional<JournalKind> JournalKindFromName(std::string_view name)
{
    const auto* found = std::ranges::find(kJournalKindNames, name);
    if (found == std::end(kJournalKindNames))
        return std::nullopt;
    return static_cast<JournalKind>(found - std::begin(kJournalKindNames));
}

}  // namespace vboard

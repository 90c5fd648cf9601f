#include "virtual_board/board/journal.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace vboard {

void NamedNumbers::AddTo(Json& facts) const
{
    for (size_t i = 0; i < count_; ++i)
        facts[numbers_[i].name] = numbers_[i].value;
}

int Journal::Note(JournalEntry entry)
{
    if (entries_.size() >= capacity_) {
        entries_.pop_front();
        ++dropped_;
    }
    int error = entry.error;
    entries_.push_back({next_++, clock_.Now(), pid_, std::move(entry)});
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
    auto matching = static_cast<size_t>(std::count_if(entries_.begin(), entries_.end(), wanted));
    size_t skip = matching > query.tail ? matching - query.tail : 0;
    for (const Stamped& one : entries_) {
        if (!wanted(one))
            continue;
        if (skip > 0)
            --skip;
        else
            shown.push_back(ShowEntry(one));
    }
    return {{"dropped", dropped_}, {"entries", std::move(shown)}};
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

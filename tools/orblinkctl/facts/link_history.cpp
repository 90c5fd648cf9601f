#include "tools/orblinkctl/facts/link_history.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "tools/orblinkctl/access/words.h"

namespace ctl {

bool LinkHistory::Note(const std::string& object, const Model& link)
{
    if (link.is_null())
        return false;
    auto& history = objects_[object];
    const bool changed = !history.link.is_null() && history.link != link;
    history.link = link;
    if (!changed)
        return false;
    ++history.flaps;
    history.lastChange = TimeWord();
    return true;
}

void LinkHistory::Note(Model& ports)
{
    for (auto& port : ports) {
        const std::string name =
            PortWord(port["switch"].get<unsigned>(), port["port"].get<unsigned>());
        Note(name, port["link"]);
        port["flaps"] = FlapsOf(name);
        port["last_change"] = LastChangeOf(name);
    }
}

unsigned LinkHistory::FlapsOf(const std::string& object) const
{
    const auto found = objects_.find(object);
    return found == objects_.end() ? 0 : found->second.flaps;
}

Model LinkHistory::LastChangeOf(const std::string& object) const
{
    const auto found = objects_.find(object);
    return found == objects_.end() ? Model() : found->second.lastChange;
}

std::string TimeWord()
{
    const auto now = std::chrono::system_clock::now();
    const auto since = now.time_since_epoch();
    const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
    const auto millis = std::chrono::duration_cast<std::chrono::milliseconds>(since).count() % 1000;
    std::tm utc{};
    gmtime_r(&seconds, &utc);
    char text[64];
    const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
    std::snprintf(text + length, sizeof text - length, ".%03dZ", static_cast<int>(millis));
    return text;
}

}  // namespace ctl

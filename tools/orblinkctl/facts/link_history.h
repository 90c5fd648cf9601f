// How often the link of each port came or went while somebody looked.
#pragma once

#include <map>
#include <string>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

class LinkHistory {
public:
    // Takes the link of an object, and is true when it is another one than before; an unknown one
    // (null) leaves all as it is.
    bool Note(const std::string& object, const Model& link);
    // The same for a list of ports, each of which is given its "flaps" and "last_change".
    void Note(Model& ports);

    unsigned FlapsOf(const std::string& object) const;
    // A time, or null.
    Model LastChangeOf(const std::string& object) const;

private:
    // NOLINTNEXTLINE(bugprone-exception-escape): a model that is moved does not throw
    struct History {
        Model link;
        unsigned flaps = 0;
        Model lastChange;
    };
    std::map<std::string, History> objects_;
};

// The time of day in UTC, with milliseconds.
std::string TimeWord();

}  // namespace ctl

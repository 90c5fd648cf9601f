// What is read how often.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace web {

// A line of words for orblinkctl.
using Words = std::vector<std::string>;

class Schedule {
public:
    // Milliseconds between two readings of the PHY registers; 0 for none.
    explicit Schedule(int64_t registerPeriod);

    // The ports and PHYs that are to be read, from the overview in JSON; one that cannot be
    // understood changes nothing.
    void Learn(const std::string& overview);

    // The overview, or the line that is latest by its own period; nothing when none is due.
    const Words* Next(int64_t now);
    // Milliseconds until the next one is due.
    int64_t Wait(int64_t now) const;

private:
    struct Entry {
        Words words;
        int64_t period;
        int64_t due;
    };

    static double Lateness(const Entry& entry, int64_t now);
    void Keep(Words words, int64_t period, std::vector<Entry>& entries) const;

    int64_t registerPeriod_;
    bool overviewWasLast_ = false;
    std::vector<Entry> fixed_;
    std::vector<Entry> devices_;
};

}  // namespace web

#include "tools/orblink_web/reader/schedule.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/words.h"

namespace web {

namespace {

// A link that goes down is to be seen within a second.
constexpr int64_t kLinks = 250;
constexpr int64_t kTraffic = 1000;
constexpr int64_t kTables = 3000;
constexpr int64_t kMetrics = 5000;

// Further registers of a PHY are its maker's: reading one may take an event away from its driver.
constexpr char kStandardRegisters[] = "0-10";

}  // namespace

Schedule::Schedule(int64_t registerPeriod)
    : registerPeriod_(registerPeriod), fixed_{Entry{{}, kLinks, 0}}
{
    for (const char* word :
         {"mac", "port", "phy", "switch", "vlan", "mac-vlan", "bridge-mode", "show", "board"})
        fixed_.push_back({{word}, kTables, 0});
    // They take longest: long due, but not before what was never read.
    fixed_.push_back({{"metrics"}, kMetrics, 1});
}

void Schedule::Keep(Words words, int64_t period, std::vector<Entry>& entries) const
{
    const auto known = std::find_if(devices_.begin(), devices_.end(),
                                    [&](const Entry& entry) { return entry.words == words; });
    entries.push_back({std::move(words), period, known == devices_.end() ? 0 : known->due});
}

void Schedule::Learn(const std::string& overview)
{
    const auto board = ctl::Model::parse(overview, nullptr, false);
    std::vector<Entry> entries;
    try {
        for (const auto& port : board.at("ports"))
            Keep({"port",
                  ctl::PortWord(port.at("switch").get<unsigned>(), port.at("port").get<unsigned>()),
                  "counters"},
                 kTraffic, entries);
        for (const auto& phy : board.at("phys")) {
            const std::string index = std::to_string(phy.at("phy").get<unsigned>());
            Keep({"phy", index, "counters"}, kTables, entries);
            if (registerPeriod_ > 0)
                Keep({"mdio", index, kStandardRegisters}, registerPeriod_, entries);
        }
    } catch (const ctl::Model::exception&) {
        return;
    }
    devices_ = std::move(entries);
}

// What was never read comes before all else.
double Schedule::Lateness(const Entry& entry, int64_t now)
{
    return entry.due == 0
               ? std::numeric_limits<double>::max()
               : static_cast<double>(now - entry.due) / static_cast<double>(entry.period);
}

const Words* Schedule::Next(int64_t now)
{
    Entry* latest = nullptr;
    double most = 0;
    // However slow the board, every other reading is that of the links.
    Entry& overview = fixed_.front();
    if (!std::exchange(overviewWasLast_, false) && overview.due <= now) {
        overviewWasLast_ = true;
        overview.due = now + overview.period;
        return &overview.words;
    }
    for (auto* list : {&fixed_, &devices_}) {
        for (auto& entry : *list) {
            const double late = Lateness(entry, now);
            if (late >= 0 && (latest == nullptr || late > most)) {
                latest = &entry;
                most = late;
            }
        }
    }
    if (latest == nullptr)
        return nullptr;
    latest->due = now + latest->period;
    return &latest->words;
}

int64_t Schedule::Wait(int64_t now) const
{
    int64_t first = std::numeric_limits<int64_t>::max();
    for (const auto* list : {&fixed_, &devices_})
        for (const auto& entry : *list)
            first = std::min(first, entry.due);
    return std::max<int64_t>(0, first - now);
}

}  // namespace web

// Live views: monitor and top.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <deque>
#include <map>

#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/facts/json.h"
#include "tools/orblinkctl/facts/monitor.h"
#include "tools/orblinkctl/facts/rates.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/terminal.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

double IntervalOf(const Call& call)
{
    return call.Has("--interval") ? std::strtod(call.Word("--interval").c_str(), nullptr) : 1.0;
}

// 0 = without end.
uint64_t RoundsOf(const Call& call)
{
    return call.Has("--rounds") ? call.Number("--rounds") : 0;
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

// Numbers the lines, so that a reader notices when one got lost on the way.
class ChangeLog {
public:
    void Say(const std::string& object, const std::string& setting, const Model& value)
    {
        Model line;
        line["schema"] = kSchema;
        line["sequence"] = ++sequence_;
        line["time"] = TimeWord();
        line["object"] = object;
        line["setting"] = setting;
        line["value"] = value;
        if (CurrentSettings().format == Format::kJson)
            return WriteOut(line.dump() + "\n");
        WriteOut(Text(line["time"]) + "  " + std::to_string(sequence_) + "  " + object + ": " +
                 setting + " " + (value.is_boolean() ? YesNo(value) : Text(value)) + "\n");
    }

    void Compare(const WatchedState& before, const WatchedState& now)
    {
        for (const auto& [key, value] : now) {
            const auto old = before.find(key);
            if (old == before.end() || old->second != value)
                Say(key.first, key.second, value);
        }
        for (const auto& [key, value] : before)
            if (now.find(key) == now.end())
                Say(key.first, key.second, nullptr);
    }

private:
    uint64_t sequence_ = 0;
};

ExitCode Monitor(Call& call)
{
    using Clock = std::chrono::steady_clock;
    const double interval = IntervalOf(call);
    const uint64_t rounds = RoundsOf(call);
    CatchEndSignals();
    ChangeLog log;
    WatchedState before;
    auto last = Clock::now();
    for (uint64_t round = 0; (rounds == 0 || round < rounds) && !EndRequested(); ++round) {
        if (round > 0)
            WaitForKey(interval);
        WatchedState now = ReadWatchedState();
        const double passed = std::chrono::duration<double>(Clock::now() - last).count();
        // A change that came and went meanwhile could not be seen.
        if (round > 0 && passed > 2 * interval + 0.1)
            log.Say("monitor", "seconds not watched", passed - interval);
        log.Compare(before, now);
        before = std::move(now);
        last = Clock::now();
    }
    return kDone;
}

constexpr size_t kHistory = 20;

std::string Sparkline(const std::deque<uint64_t>& values)
{
    static constexpr const char* kBars[] = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
    uint64_t most = 1;
    for (const auto value : values)
        most = std::max(most, value);
    std::string line;
    for (const auto value : values)
        line += kBars[value == 0 ? 0 : std::min<uint64_t>(8, 1 + value * 7 / most)];
    return line;
}

uint64_t RateOf(const Model& port, const char* key)
{
    return port[key].is_null() ? 0 : port[key].get<uint64_t>();
}

class PortView {
public:
    void Take(Model rates)
    {
        rates_ = std::move(rates);
        for (const auto& port : rates_) {
            auto& history = history_[Name(port)];
            history.push_back(RateOf(port, "receive_bytes_per_second") +
                              RateOf(port, "transmit_bytes_per_second"));
            if (history.size() > kHistory)
                history.pop_front();
        }
    }

    void NextOrder() { order_ = (order_ + 1) % 3; }

    std::string Screen() const
    {
        Table table({"PORT", "LABEL", "LINK", "SPEED", "RX BYTES/S", "RX FRAMES/S", "TX BYTES/S",
                     "TX FRAMES/S", "HISTORY"});
        for (const auto& port : Sorted())
            table.Row(
                {Name(port), Text(port["label"]), YesNo(port["link"]), Text(port["link_speed"]),
                 Text(port["receive_bytes_per_second"]), Text(port["receive_frames_per_second"]),
                 Text(port["transmit_bytes_per_second"]), Text(port["transmit_frames_per_second"]),
                 Sparkline(history_.at(Name(port)))});
        table.Expendable({"HISTORY", "RX FRAMES/S", "TX FRAMES/S", "LABEL", "SPEED"});
        std::string out;
        table.Print(out);
        return out;
    }

    const char* OrderName() const
    {
        static constexpr const char* kNames[] = {"port", "received", "transmitted"};
        return kNames[order_];
    }

private:
    static std::string Name(const Model& port)
    {
        return PortWord(port["switch"].get<unsigned>(), port["port"].get<unsigned>());
    }

    std::vector<Model> Sorted() const
    {
        std::vector<Model> sorted(rates_.begin(), rates_.end());
        if (order_ == 0)
            return sorted;
        const char* key = order_ == 1 ? "receive_bytes_per_second" : "transmit_bytes_per_second";
        std::stable_sort(sorted.begin(), sorted.end(), [&](const Model& a, const Model& b) {
            return RateOf(a, key) > RateOf(b, key);
        });
        return sorted;
    }

    Model rates_ = Model::array();
    std::map<std::string, std::deque<uint64_t>> history_;
    int order_ = 0;
};

void PrintTop(const Model& model, std::string& out)
{
    PortView view;
    view.Take(model["ports"]);
    out += view.Screen();
}

// On a terminal until "q"; elsewhere one table for each round, or one when no number is given.
ExitCode Top(Call& call)
{
    const double interval = IntervalOf(call);
    const bool live = isatty(STDOUT_FILENO) != 0 && CurrentSettings().format == Format::kText;
    const uint64_t rounds = live || RoundsOf(call) != 0 ? RoundsOf(call) : 1;
    CounterSample before = TakeSample();
    CatchEndSignals();
    const auto screen = live ? std::make_unique<LiveScreen>() : nullptr;
    PortView view;
    for (uint64_t round = 0; rounds == 0 || round < rounds; ++round) {
        const char key = WaitForKey(interval);
        if (key == 'q' || EndRequested())
            break;
        if (key == 's')
            view.NextOrder();
        CounterSample after = TakeSample();
        Model model;
        model["ports"] = Rates(before, after);
        before = std::move(after);
        view.Take(model["ports"]);
        if (live)
            WriteOut("\033[H\033[J" + view.Screen() + "\nsorted by " + view.OrderName() +
                     " - s: sort, q: quit\n");
        else
            WriteOut(Rendered(call, model));
    }
    return kDone;
}

constexpr Command kWatchCommands[] = {
    {"monitor", "--interval --rounds", "the present state, then one line for each change",
     "ORBLINK_GetSwitchDevices ORBLINK_GetPortLink ORBLINK_ForEachMacEntry ETHPHY_GetLink", nullptr,
     nullptr, Monitor},
    {"top", "--interval --rounds", "live traffic of the ports; s sorts, q quits",
     "ORBLINK_GetPortCounters ORBLINK_GetPortLink", nullptr, PrintTop, Top},
};

}  // namespace

std::span<const Command> WatchCommands()
{
    return kWatchCommands;
}

}  // namespace ctl

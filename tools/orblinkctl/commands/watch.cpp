// Live views: monitor, top and watch.
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <deque>
#include <map>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/link_history.h"
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
        AddFlaps(line, object, setting, value);
        if (CurrentSettings().format == Format::kJson)
            return WriteOut(line.dump() + "\n");
        WriteOut(Text(line["time"]) + "  " + std::to_string(sequence_) + "  " + object + ": " +
                 setting + " " + (value.is_boolean() ? YesNo(value) : Text(value)) +
                 FlapText(line) + "\n");
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
    // A link that comes or goes says how often it did, and when it did before.
    void AddFlaps(Model& line, const std::string& object, const std::string& setting,
                  const Model& value)
    {
        if (setting != "link")
            return;
        const Model before = links_.LastChangeOf(object);
        if (!links_.Note(object, value))
            return;
        line["flaps"] = links_.FlapsOf(object);
        line["last_change"] = before;
    }

    static std::string FlapText(const Model& line)
    {
        if (!line.contains("flaps"))
            return {};
        const Model& before = line["last_change"];
        return " (flap " + Text(line["flaps"]) +
               (before.is_null() ? "" : ", the last one at " + Text(before)) + ")";
    }

    uint64_t sequence_ = 0;
    LinkHistory links_;
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
                     "TX FRAMES/S", "FLAPS", "LAST CHANGE", "HISTORY"});
        for (const auto& port : Sorted())
            table.Row({Name(port), Text(port["label"]), YesNo(port["link"]),
                       Text(port["link_speed"]), Text(port["receive_bytes_per_second"]),
                       Text(port["receive_frames_per_second"]),
                       Text(port["transmit_bytes_per_second"]),
                       Text(port["transmit_frames_per_second"]), Text(port["flaps"]),
                       Text(port["last_change"]), Sparkline(history_.at(Name(port)))});
        table.Expendable(
            {"HISTORY", "LAST CHANGE", "RX FRAMES/S", "TX FRAMES/S", "LABEL", "SPEED", "FLAPS"});
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

// Gives `show` the key that was pressed and two samples, on a terminal until "q"; elsewhere one for
// each round, or one when no number is given.
template <typename Show>
ExitCode EachSample(Call& call, Show show)
{
    const double interval = IntervalOf(call);
    const bool live = isatty(STDOUT_FILENO) != 0 && CurrentSettings().format == Format::kText;
    const uint64_t rounds = live || RoundsOf(call) != 0 ? RoundsOf(call) : 1;
    LinkHistory links;
    CounterSample before = TakeSample();
    links.Note(before.ports);
    CatchEndSignals();
    const auto screen = live ? std::make_unique<LiveScreen>() : nullptr;
    for (uint64_t round = 0; rounds == 0 || round < rounds; ++round) {
        const char key = WaitForKey(interval);
        if (key == 'q' || EndRequested())
            break;
        CounterSample after = TakeSample();
        Model model;
        model["ports"] = Rates(before, after);
        links.Note(model["ports"]);
        show(key, live, model, before, after);
        before = std::move(after);
    }
    return kDone;
}

constexpr char kClear[] = "\033[H\033[J";

ExitCode Top(Call& call)
{
    PortView view;
    return EachSample(call, [&](char key, bool live, const Model& model, const auto&, const auto&) {
        if (key == 's')
            view.NextOrder();
        view.Take(model["ports"]);
        if (live)
            WriteOut(kClear + view.Screen() + "\nsorted by " + view.OrderName() +
                     " - s: sort, q: quit\n");
        else
            WriteOut(Rendered(call, model));
    });
}

void PrintWatched(const Model& model, std::string& out)
{
    for (const auto& port : model["ports"]) {
        const std::string label = port["label"].is_null() ? "" : " " + Text(port["label"]);
        const Model& change = port["last_change"];
        Paragraph(out,
                  {"port ", PortWord(port["switch"].get<unsigned>(), port["port"].get<unsigned>()),
                   label, ": link ", YesNo(port["link"]),
                   port["link_speed"].is_null() ? "" : " at " + Text(port["link_speed"]) + " Mb/s",
                   ", flaps ", Text(port["flaps"]),
                   change.is_null() ? "" : ", the last one at " + Text(change)});
        Table table({"COUNTER", "VALUE", "PER SECOND"});
        for (const auto& [name, value] : port["counters"].items())
            if (value != 0)
                table.Row({name, Text(value), Cell(port["counters_per_second"], name.c_str())});
        table.Print(out);
    }
}

// One port with everything that it counts.
ExitCode WatchPort(Call& call)
{
    const PortTarget target(call);
    return EachSample(call, [&](char, bool live, const Model& all, const CounterSample& before,
                                const CounterSample& after) {
        Model model;
        model["ports"] = Model::array();
        for (size_t i = 0; i < all["ports"].size() && i < before.ports.size(); ++i) {
            Model port = all["ports"][i];
            if (port["switch"] != target.id.device || port["port"] != target.id.port)
                continue;
            port["counters"] = after.ports[i]["counters"];
            port["counters_per_second"] = CounterRates(before, after, i);
            model["ports"].push_back(std::move(port));
        }
        WriteOut(live ? kClear + Rendered(call, model) + "\nq: quit\n" : Rendered(call, model));
    });
}

constexpr Command kWatchCommands[] = {
    {"monitor", "--interval --rounds", "the present state, then one line for each change",
     "ORBLINK_GetSwitchDevices ORBLINK_GetPortLink ORBLINK_ForEachMacEntry ETHPHY_GetLink", nullptr,
     nullptr, Monitor},
    {"top", "--interval --rounds", "live traffic of the ports; s sorts, q quits",
     "ORBLINK_GetPortCounters ORBLINK_GetPortLink", nullptr, PrintTop, Top},
    {"watch PORT", "--interval --rounds", "one port live, with all that it counts; q quits",
     "ORBLINK_GetPortCounters ORBLINK_GetPortLink", nullptr, PrintWatched, WatchPort},
};

}  // namespace

std::span<const Command> WatchCommands()
{
    return kWatchCommands;
}

}  // namespace ctl

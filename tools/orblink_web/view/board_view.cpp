#include "tools/orblink_web/view/board_view.h"

#include <algorithm>
#include <ctime>
#include <utility>

#include "tools/orblink_web/view/drawing.h"
#include "tools/orblink_web/view/html.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"

namespace web {

namespace {

constexpr size_t kKeptChanges = 100;
constexpr size_t kKeptLines = 200;
constexpr int64_t kStandstill = 3000;

std::string WallClock()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts = {};
    localtime_r(&now, &parts);
    char text[32];
    std::strftime(text, sizeof text, "%F %T", &parts);
    return text;
}

std::vector<std::string> Split(const std::string& path)
{
    std::vector<std::string> words;
    size_t begin = 0;
    while (begin <= path.size()) {
        const size_t end = std::min(path.find('/', begin), path.size());
        words.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return words;
}

const ctl::Model& Same(const ctl::Model& list, const ctl::Model& entry, const char* first,
                       const char* second)
{
    static const ctl::Model nothing;
    for (const auto& other : list)
        if (At(other, first) == At(entry, first) && At(other, second) == At(entry, second))
            return other;
    return nothing;
}

std::string LabelOf(const ctl::Model& entry)
{
    const std::string label = Plain(At(entry, "label"));
    return label.empty() ? "" : " " + label;
}

}  // namespace

const char* TopicName(Topic topic)
{
    static constexpr const char* kNames[kTopics] = {"state", "drawing",   "ports", "counters",
                                                    "phys",  "registers", "mac",   "changes",
                                                    "log",   "rates"};
    return kNames[static_cast<size_t>(topic)];
}

std::string EventText(const char* name, const std::string& data)
{
    std::string out = std::string("event: ") + name + "\ndata: ";
    for (const char c : data) {
        if (c == '\n')
            out += "\ndata: ";
        else if (c != '\r')
            out += c;
    }
    return out + "\n\n";
}

BoardView::BoardView() : lastAnswer_(MonotonicMilliseconds())
{
    ShowState("wait", "Waiting for the first reading of the board.");
    Set(Topic::kMac, MacSection(mac_, ""));
    Set(Topic::kRegisters, RegisterSection(registers_));
    Set(Topic::kChanges, ChangeSection(changes_));
    Set(Topic::kLog, LogSection(log_));
    Render();
}

void BoardView::Set(Topic topic, std::string content)
{
    Part& part = parts_[static_cast<size_t>(topic)];
    if (part.version != 0 && part.content == content)
        return;
    ++part.version;
    part.content = std::move(content);
    part.event = std::make_shared<const std::string>(EventText(TopicName(topic), part.content));
}

void BoardView::ShowState(const char* style, const std::string& text)
{
    Set(Topic::kState, std::string("<p class=\"state ") + style + "\">" + Escaped(text) + "</p>");
}

void BoardView::Render()
{
    if (!std::exchange(stale_, false))
        return;
    Set(Topic::kDrawing, Drawing(board_, traffic_));
    Set(Topic::kPorts, PortSection(board_, traffic_));
    Set(Topic::kCounters, CounterSection(board_, traffic_));
    Set(Topic::kPhys, PhySection(board_, phyCounters_));
    Set(Topic::kRates, traffic_.Newest());
}

void BoardView::Note(const std::string& object, const char* what, const ctl::Model& before,
                     const ctl::Model& now)
{
    // That a link which went down has no speed any more is no news.
    const bool speed = std::string_view(what) == "link_speed";
    if (before == now || (speed && (before.is_null() || now.is_null())))
        return;
    std::string text = object + ": " + what + " ";
    if (std::string_view(what) == "link" && now.is_boolean())
        text += now == true ? "up" : "down";
    else
        text += now.is_null() ? "unknown" : Plain(now);
    changes_.push_front({WallClock(), std::move(text)});
    if (changes_.size() > kKeptChanges)
        changes_.pop_back();
}

void BoardView::NoteChanges(const ctl::Model& board)
{
    for (const auto& device : At(board, "switches")) {
        const auto& before = Same(At(board_, "switches"), device, "switch", "switch");
        if (!before.is_null())
            Note("switch " + Plain(At(device, "switch")), "state", At(before, "state"),
                 At(device, "state"));
    }
    for (const auto& port : At(board, "ports")) {
        const auto& before = Same(At(board_, "ports"), port, "switch", "port");
        if (before.is_null())
            continue;
        const std::string object = "port " + PortName(port) + LabelOf(port);
        for (const char* what : {"link", "link_speed", "enabled", "vlan", "error"})
            Note(object, what, At(before, what), At(port, what));
    }
    for (const auto& phy : At(board, "phys")) {
        const auto& before = Same(At(board_, "phys"), phy, "phy", "phy");
        if (before.is_null())
            continue;
        const std::string object = "PHY " + Plain(At(phy, "phy")) + LabelOf(phy);
        for (const char* what : {"state", "link", "link_speed", "error"})
            Note(object, what, At(before, what), At(phy, what));
    }
    Set(Topic::kChanges, ChangeSection(changes_));
}

void BoardView::TakeOverview(const ctl::Model& board)
{
    NoteChanges(board);
    board_ = board;
    failed_ = false;
    const ctl::Model& errors = At(board, "errors");
    if (errors.is_array() && !errors.empty())
        ShowState("warn", "Only a part of the board answers: " + Plain(errors));
    else
        ShowState("good", "Live");
    stale_ = true;
}

// Somebody who holds the lock for a while does not make wrong what was read before; anything else
// does.
void BoardView::TakeFailure(const Answer& answer)
{
    const auto model = ctl::Model::parse(answer.text, nullptr, false);
    const std::string text = Plain(At(At(model, "error"), "text"));
    const bool busy = answer.code == ctl::kBusy;
    ShowState(busy || answer.code == ctl::kInitState ? "warn" : "bad",
              (text.empty() ? "The board could not be read" : text) + " (" +
                  std::to_string(answer.code) + ")");
    if (busy || failed_)
        return;
    failed_ = true;
    changes_.push_front({WallClock(), "board: " + text});
    Set(Topic::kChanges, ChangeSection(changes_));
    board_ = nullptr;
    mac_ = nullptr;
    phyCounters_.clear();
    registers_.clear();
    traffic_.Clear();
    stale_ = true;
    Render();
    Set(Topic::kMac, MacSection(mac_, ""));
    Set(Topic::kRegisters, RegisterSection(registers_));
}

void BoardView::TakePortCounters(const Answer& answer, const ctl::Model& model)
{
    const std::string name = Split(answer.path)[1];
    const ctl::Model& answered = At(model, "ports");
    ctl::Model counters;
    if (answered.is_array() && !answered.empty())
        counters = At(answered.front(), "counters");
    for (const auto& port : At(board_, "ports")) {
        if (PortName(port) != name)
            continue;
        ctl::Model known;
        for (const char* key : {"switch", "port", "label", "link", "link_speed"})
            known[key] = At(port, key);
        traffic_.Take(name, known, counters, answer.when);
    }
    stale_ = true;
}

void BoardView::TakeOther(const Answer& answer, const ctl::Model& model)
{
    const auto words = Split(answer.path);
    if (words[0] == "mac" && words.size() == 1) {
        mac_ = model;
        return Set(Topic::kMac, MacSection(mac_, ""));
    }
    if (words[0] == "mdio" && words.size() == 3) {
        registers_[words[1]] = model;
        return Set(Topic::kRegisters, RegisterSection(registers_));
    }
    if (words.size() != 3 || words[2] != "counters")
        return;
    if (words[0] == "port")
        return TakePortCounters(answer, model);
    const ctl::Model& phys = At(model, "phys");
    if (phys.is_array() && !phys.empty())
        phyCounters_[words[1]] = At(phys.front(), "counters");
    stale_ = true;
}

void BoardView::Take(Message message)
{
    stopped_.clear();
    for (auto& line : message.log) {
        log_.push_back(std::move(line));
        if (log_.size() > kKeptLines)
            log_.pop_front();
    }
    if (!message.log.empty())
        Set(Topic::kLog, LogSection(log_));
    if (message.answer) {
        lastAnswer_ = MonotonicMilliseconds();
        ++readings_;
        const Answer& answer = answers_[message.answer->path] = *message.answer;
        const auto model = ctl::Model::parse(answer.text, nullptr, false);
        if (answer.path.empty() && model.is_object() && !model.contains("error"))
            TakeOverview(model);
        else if (answer.path.empty())
            TakeFailure(answer);
        else if (!failed_ && model.is_object())
            TakeOther(answer, model);
    }
    change_();
}

void BoardView::ReaderStopped(const std::string& why)
{
    stopped_ = why;
    // Those of a board that may be another one by now.
    answers_.clear();
    if (!why.empty())
        ShowState("bad", why);
    change_();
}

void BoardView::Tick(int64_t now)
{
    if (stopped_.empty() && now - lastAnswer_ > kStandstill)
        ShowState("warn", "The board has not answered for " +
                              std::to_string((now - lastAnswer_) / 1000) +
                              " s: a call of the library does not return.");
    change_();
}

const Answer* BoardView::Find(const std::string& path) const
{
    const auto answer = answers_.find(path);
    return answer == answers_.end() ? nullptr : &answer->second;
}

std::vector<std::string> BoardView::Paths() const
{
    std::vector<std::string> paths;
    for (const auto& [path, answer] : answers_)
        paths.push_back(path);
    return paths;
}

SharedText BoardView::History() const
{
    return std::make_shared<const std::string>(EventText("history", traffic_.History()));
}

std::string BoardView::Search(const std::string& text) const
{
    return MacSection(mac_, text);
}

}  // namespace web

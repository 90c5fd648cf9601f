// What the server knows of the board: the last answers, and the parts of the page made from them.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/orblink_web/reader/message.h"
#include "tools/orblink_web/view/sections.h"
#include "tools/orblink_web/view/traffic.h"
#include "tools/orblinkctl/access/model.h"

namespace web {

// What is sent when it has changed; the names are those of the events and of the page's elements.
enum class Topic {
    kState,
    kDrawing,
    kPorts,
    kCounters,
    kPhys,
    kRegisters,
    kMac,
    kChanges,
    kLog,
    kRates,
};
inline constexpr size_t kTopics = 10;
const char* TopicName(Topic topic);

// Shared by all clients that are being sent it.
using SharedText = std::shared_ptr<const std::string>;

class BoardView {
public:
    BoardView();

    void Take(Message message);
    // An empty text: it reads.
    void ReaderStopped(const std::string& why);
    // Once a second: tells when answers do not come any more.
    void Tick(int64_t now);
    // Makes the parts anew that depend on answers which came since the last call.
    void Render();

    // Null when it was never asked or never answered.
    const Answer* Find(const std::string& path) const;
    std::vector<std::string> Paths() const;
    int64_t LastAnswer() const { return lastAnswer_; }
    // How many answers have come.
    uint64_t Readings() const { return readings_; }

    // Versions begin with 1.
    uint64_t Version(Topic topic) const { return Of(topic).version; }
    const std::string& Content(Topic topic) const { return Of(topic).content; }
    // The content as an event.
    SharedText Event(Topic topic) const { return Of(topic).event; }
    // All points of the rates as an event.
    SharedText History() const;
    // The MAC table with the entries that hold a text.
    std::string Search(const std::string& text) const;

    // What every answer calls.
    void OnChange(std::function<void()> change) { change_ = std::move(change); }

private:
    struct Part {
        uint64_t version = 0;
        std::string content;
        SharedText event;
    };

    const Part& Of(Topic topic) const { return parts_[static_cast<size_t>(topic)]; }
    void Set(Topic topic, std::string content);
    void TakeOverview(const ctl::Model& board);
    void TakeFailure(const Answer& answer);
    void TakePortCounters(const Answer& answer, const ctl::Model& model);
    void TakeOther(const Answer& answer, const ctl::Model& model);
    void Note(const std::string& object, const char* what, const ctl::Model& before,
              const ctl::Model& now);
    void NoteChanges(const ctl::Model& board);
    void ShowState(const char* style, const std::string& text);

    std::map<std::string, Answer> answers_;
    int64_t lastAnswer_;
    uint64_t readings_ = 0;
    std::string stopped_;
    bool failed_ = false;
    bool stale_ = true;
    ctl::Model board_;
    ctl::Model mac_;
    std::map<std::string, ctl::Model> phyCounters_;
    std::map<std::string, ctl::Model> registers_;
    Traffic traffic_;
    std::deque<Noted> changes_;
    std::deque<std::string> log_;
    std::array<Part, kTopics> parts_;
    std::function<void()> change_ = [] {};
};

// The lines of an event.
std::string EventText(const char* name, const std::string& data);

}  // namespace web

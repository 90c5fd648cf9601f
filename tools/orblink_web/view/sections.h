// The parts of the page, each as HTML of one line's length or more, made from the tool's JSON.
#pragma once

#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tools/orblink_web/view/traffic.h"
#include "tools/orblinkctl/access/model.h"

namespace web {

// "0:1", as the operator types it.
std::string PortName(const ctl::Model& port);

std::string PortSection(const ctl::Model& board, const Traffic& traffic);
std::string CounterSection(const ctl::Model& board, const Traffic& traffic);
// `counters` by PHY index.
std::string PhySection(const ctl::Model& board, const std::map<std::string, ctl::Model>& counters);
// `answers` of register readings by PHY index.
std::string RegisterSection(const std::map<std::string, ctl::Model>& answers);
// Entries that hold the text somewhere; more of them than fit are counted.
std::string MacSection(const ctl::Model& answer, const std::string& search);

struct Noted {
    std::string time;
    std::string text;
};
std::string ChangeSection(const std::deque<Noted>& changes);
std::string LogSection(const std::deque<std::string>& lines);

}  // namespace web

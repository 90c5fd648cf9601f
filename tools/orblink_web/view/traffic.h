// The rates of the ports over the last minutes.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>

#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/facts/rates.h"

namespace web {

class Traffic {
public:
    // The counters of one port as its answer has them; `port` is the port in the overview.
    void Take(const std::string& name, const ctl::Model& port, const ctl::Model& counters,
              int64_t when);
    void Clear() { ports_.clear(); }

    // By port name: {switch, port, label, link, link_speed, and four rates}; null when there is
    // nothing known.
    const ctl::Model& RatesOf(const std::string& name) const;
    // By port name: the counters.
    const ctl::Model& CountersOf(const std::string& name) const;

    // For plots, as JSON: by port name the newest point, or all of them; a point is time in
    // milliseconds and octets per second received and sent, null where they are not known.
    std::string Newest() const;
    std::string History() const;

private:
    struct Point {
        int64_t when;
        ctl::Model received;
        ctl::Model sent;
    };
    struct Port {
        ctl::CounterSample last;
        ctl::Model rates;
        std::deque<Point> points;
    };

    static ctl::Model PointModel(const Point& point);

    std::map<std::string, Port> ports_;
};

}  // namespace web

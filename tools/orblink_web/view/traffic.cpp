#include "tools/orblink_web/view/traffic.h"

#include <chrono>
#include <utility>

namespace web {

namespace {

// At one a second: five minutes.
constexpr size_t kPoints = 300;

const ctl::Model kNothing;

}  // namespace

void Traffic::Take(const std::string& name, const ctl::Model& port, const ctl::Model& counters,
                   int64_t when)
{
    using Time = std::chrono::steady_clock::time_point;
    ctl::CounterSample sample{Time(std::chrono::milliseconds(when)), ctl::Model::array()};
    sample.ports.push_back(port);
    sample.ports.back()["counters"] = counters;
    Port& known = ports_[name];
    if (known.last.ports.is_null())
        known.last.ports = ctl::Model::array();
    known.rates = ctl::Rates(known.last, sample).front();
    known.last = std::move(sample);
    known.points.push_back(
        {when, known.rates["receive_bytes_per_second"], known.rates["transmit_bytes_per_second"]});
    if (known.points.size() > kPoints)
        known.points.pop_front();
}

const ctl::Model& Traffic::RatesOf(const std::string& name) const
{
    const auto port = ports_.find(name);
    return port == ports_.end() ? kNothing : port->second.rates;
}

const ctl::Model& Traffic::CountersOf(const std::string& name) const
{
    const auto port = ports_.find(name);
    return port == ports_.end() ? kNothing : port->second.last.ports.front()["counters"];
}

ctl::Model Traffic::PointModel(const Point& point)
{
    return ctl::Model::array({point.when, point.received, point.sent});
}

std::string Traffic::Newest() const
{
    ctl::Model model = ctl::Model::object();
    for (const auto& [name, port] : ports_)
        model[name] = ctl::Model::array({PointModel(port.points.back())});
    return model.dump();
}

std::string Traffic::History() const
{
    ctl::Model model = ctl::Model::object();
    for (const auto& [name, port] : ports_) {
        ctl::Model& points = model[name] = ctl::Model::array();
        for (const auto& point : port.points)
            points.push_back(PointModel(point));
    }
    return model.dump();
}

}  // namespace web

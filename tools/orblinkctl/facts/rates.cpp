#include "tools/orblinkctl/facts/rates.h"

#include <cmath>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/switch_model.h"

namespace ctl {

namespace {

struct Rate {
    const char* name;
    const char* counter;
};

constexpr Rate kRates[] = {
    {"receive_bytes_per_second", "etherStatsOctets"},
    {"receive_frames_per_second", "etherStatsPkts"},
    {"transmit_bytes_per_second", "aOctetsTransmittedOK"},
    {"transmit_frames_per_second", "aFramesTransmittedOK"},
};

Model Counters(const SwitchDeviceRecord& record, PortId id)
{
    try {
        return IsEnabled(record) ? PortCounters(record, id) : Model();
    } catch (const Failure& failure) {
        if (failure.code != kFailed)
            throw;
        DropHeldLogLines();
        return nullptr;
    }
}

bool HasBoth(const Model& before, const Model& after, const char* counter)
{
    return before.is_object() && after.is_object() && before.contains(counter) &&
           after.contains(counter) && before[counter].is_number() && after[counter].is_number();
}

Model OneRate(const Model& before, const Model& after, const char* counter, double seconds)
{
    if (!HasBoth(before, after, counter) || seconds <= 0)
        return nullptr;
    const auto first = before[counter].get<uint64_t>();
    const auto last = after[counter].get<uint64_t>();
    if (last < first)
        return nullptr;
    return static_cast<uint64_t>(std::llround(static_cast<double>(last - first) / seconds));
}

// Somebody set the counters to 0 in between. One that has already passed its old value again looks
// as if nothing had happened.
bool WentBack(const Model& before, const Model& after)
{
    for (const auto& rate : kRates)
        if (HasBoth(before, after, rate.counter) &&
            after[rate.counter].get<uint64_t>() < before[rate.counter].get<uint64_t>())
            return true;
    return false;
}

}  // namespace

CounterSample TakeSample()
{
    const auto region = ReadSwitches();
    CounterSample sample{std::chrono::steady_clock::now(), LivePorts(region)};
    for (auto& port : sample.ports) {
        const PortId id{port["switch"].get<unsigned>(), port["port"].get<unsigned>()};
        port["counters"] = Counters(region.device[id.device], id);
    }
    return sample;
}

Model Rates(const CounterSample& before, const CounterSample& after)
{
    const double seconds = std::chrono::duration<double>(after.when - before.when).count();
    Model list = Model::array();
    for (size_t i = 0; i < after.ports.size(); ++i) {
        const Model& port = after.ports[i];
        Model entry;
        for (const char* key : {"switch", "port", "label", "link", "link_speed"})
            entry[key] = port[key];
        const Model none;
        const Model& counted = i < before.ports.size() ? before.ports[i]["counters"] : none;
        const Model& old = WentBack(counted, port["counters"]) ? none : counted;
        for (const auto& rate : kRates)
            entry[rate.name] = OneRate(old, port["counters"], rate.counter, seconds);
        list.push_back(std::move(entry));
    }
    return list;
}

Model CounterRates(const CounterSample& before, const CounterSample& after, size_t i)
{
    Model rates = Model::object();
    if (i >= before.ports.size() || i >= after.ports.size())
        return rates;
    const double seconds = std::chrono::duration<double>(after.when - before.when).count();
    const Model& old = before.ports[i]["counters"];
    for (const auto& [name, value] : after.ports[i]["counters"].items())
        if (value.is_number())
            rates[name] = OneRate(old, after.ports[i]["counters"], name.c_str(), seconds);
    return rates;
}

}  // namespace ctl

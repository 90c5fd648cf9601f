// The counters of all ports at a glance.
#include <cstdlib>
#include <utility>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/rates.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/terminal.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

bool IsOf(const Call& call, const Model& port)
{
    if (!call.Has("SWITCH"))
        return true;
    return port["switch"] == call.As<unsigned>("SWITCH");
}

void DropZeros(Model& counters)
{
    Model rest = Model::object();
    for (const auto& [name, value] : counters.items())
        if (value != 0 && !value.is_null())
            rest[name] = value;
    counters = std::move(rest);
}

void TakeRates(Call& call, CounterSample& sample)
{
    const double interval =
        call.Has("--interval") ? std::strtod(call.Word("--interval").c_str(), nullptr) : 1.0;
    const CounterSample before = std::exchange(sample, {});
    WaitForKey(interval);
    sample = TakeSample();
    Model rates = Model::array();
    for (size_t i = 0; i < sample.ports.size(); ++i)
        rates.push_back(CounterRates(before, sample, i));
    for (size_t i = 0; i < sample.ports.size(); ++i)
        sample.ports[i]["counters"] = rates[i];
}

Model ShowAll(Call& call)
{
    if (call.Has("SWITCH"))
        SwitchOf(ReadSwitches(), call.As<unsigned>("SWITCH"));
    CounterSample sample = TakeSample();
    if (call.Has("--per-second"))
        TakeRates(call, sample);
    Model model;
    model["ports"] = Model::array();
    for (auto& port : sample.ports) {
        if (!IsOf(call, port))
            continue;
        Model entry;
        for (const char* key : {"switch", "port", "label", "counters"})
            entry[key] = port[key];
        if (!call.Has("--all") && entry["counters"].is_object())
            DropZeros(entry["counters"]);
        model["ports"].push_back(std::move(entry));
    }
    return model;
}

void PrintAll(const Model& model, std::string& out)
{
    Table table({"PORT", "LABEL", "COUNTER", "VALUE"});
    for (const auto& port : model["ports"])
        for (const auto& [name, value] : port["counters"].items())
            table.Row({PortWord(port["switch"].get<unsigned>(), port["port"].get<unsigned>()),
                       Text(port["label"]), name, CounterText(value)});
    table.Print(out);
}

Model ClearAll(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["changes"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        for (unsigned port = 0; port < PortCount(region.device[device]); ++port) {
            const std::string object = PortObject({device, port});
            Check(
                ORBLINK_ResetPortCounters(static_cast<uint8_t>(device), static_cast<uint8_t>(port)),
                object, "ORBLINK_ResetPortCounters");
            model["changes"].push_back(Change(object, "counters", 0, true)["changes"].front());
        }
    }
    return model;
}

constexpr Command kCounterCommands[] = {
    {"counters [SWITCH]", "--all --per-second --interval",
     "the counters of all ports that are not zero", "ORBLINK_GetPortCounters", ShowAll, PrintAll},
    {"counters clear [SWITCH]", "", "set the counters of all ports to 0; they count from here",
     "ORBLINK_ResetPortCounters", ClearAll, PrintChanges},
};

}  // namespace

std::span<const Command> CounterCommands()
{
    return kCounterCommands;
}

}  // namespace ctl

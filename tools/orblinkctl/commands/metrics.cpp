// Measured values in the text format of Prometheus.
#include <cctype>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/phy_counters.h"
#include "tools/orblinkctl/facts/phy_model.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

class Metrics {
public:
    void Add(const std::string& name, const char* type, const std::string& help, Model labels,
             Model value)
    {
        if (value.is_null())
            return;
        Model sample;
        sample["labels"] = std::move(labels);
        sample["value"] = std::move(value);
        Named(name, type, help)["samples"].push_back(std::move(sample));
    }

    Model Take() { return std::move(metrics_); }

private:
    Model& Named(const std::string& name, const char* type, const std::string& help)
    {
        for (auto& metric : metrics_)
            if (metric["name"] == name)
                return metric;
        Model metric;
        metric["name"] = name;
        metric["type"] = type;
        metric["help"] = help;
        metric["samples"] = Model::array();
        metrics_.push_back(std::move(metric));
        return metrics_.back();
    }

    Model metrics_ = Model::array();
};

Model FamilyLabel(const char* family)
{
    Model labels;
    labels["family"] = family;
    return labels;
}

Model AsNumber(const Model& flag)
{
    return flag.is_null() ? Model() : Model(flag == true ? 1 : 0);
}

Model BitsPerSecond(const Model& megabits)
{
    return megabits.is_number() ? Model(megabits.get<uint64_t>() * 1000000) : Model();
}

// etherStatsCRCAlignErrors becomes ether_stats_crc_align_errors.
std::string SnakeCase(std::string_view name)
{
    const auto upper = [&](size_t i) {
        return i < name.size() && std::isupper(static_cast<unsigned char>(name[i])) != 0;
    };
    std::string out;
    for (size_t i = 0; i < name.size(); ++i) {
        const bool wordBegins =
            upper(i) && i > 0 && (!upper(i - 1) || (i + 1 < name.size() && !upper(i + 1)));
        out += wordBegins ? "_" : "";
        out += static_cast<char>(std::tolower(static_cast<unsigned char>(name[i])));
    }
    return out;
}

Model PortLabels(const Model& port)
{
    Model labels;
    labels["switch"] = Text(port["switch"]);
    labels["port"] = Text(port["port"]);
    labels["label"] = port["label"].is_null() ? "" : Text(port["label"]);
    return labels;
}

void AddCounters(Metrics& metrics, const SwitchDeviceRecord& record, const Model& port)
{
    const PortId id{port["switch"].get<unsigned>(), port["port"].get<unsigned>()};
    const Model counters = PortCounters(record, id);
    for (const auto& [name, value] : counters.items())
        if (value.is_number())
            metrics.Add("orblink_port_" + SnakeCase(name) + "_total", "counter",
                        "Counter " + name + " of the port.", PortLabels(port), value);
}

void AddPort(Metrics& metrics, const SwitchDeviceRecord& record, const Model& port, Call& call)
{
    bool failed = !port["error"].is_null();
    const Model labels = PortLabels(port);
    metrics.Add("orblink_port_enabled", "gauge", "1 when the port is to be enabled.", labels,
                AsNumber(port["enabled"]));
    metrics.Add("orblink_port_link_up", "gauge", "1 when the link is up.", labels,
                AsNumber(port["link"]));
    metrics.Add("orblink_port_speed_bits_per_second", "gauge", "Speed of the link.", labels,
                BitsPerSecond(port["link_speed"]));
    try {
        if (IsEnabled(record))
            AddCounters(metrics, record, port);
    } catch (const Failure& failure) {
        if (failure.code != kFailed)
            throw;
        failed = true;
    }
    metrics.Add("orblink_port_scrape_error", "gauge", "1 when the port could not be read.", labels,
                failed ? 1 : 0);
    if (failed)
        call.exitCode = kFailed;
}

void AddSwitches(Metrics& metrics, Call& call)
{
    const auto region = ReadSwitches();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        Model labels;
        labels["switch"] = std::to_string(device);
        metrics.Add("orblink_switch_enabled", "gauge", "1 when the switch is out of reset.", labels,
                    IsEnabled(region.device[device]) ? 1 : 0);
    }
    for (const auto& port : LivePorts(region))
        AddPort(metrics, region.device[port["switch"].get<unsigned>()], port, call);
}

void AddPhyCounters(Metrics& metrics, const PhyDeviceRegion& region, const Model& phy,
                    const Model& labels)
{
    const auto device = phy["phy"].get<unsigned>();
    if (phy["state"] != "enabled" || !IsIeee8023(region.phy[device]))
        return;
    const Model counters = PhyCounters(region, device);
    for (const char* name : {"idle_errors", "high_ber", "errored_blocks", "eee_wake_errors",
                             "link_drops", "master_faults"})
        metrics.Add(std::string("orblink_phy_") + name + "_total", "counter",
                    std::string("Counter ") + name + " of the PHY.", labels, counters[name]);
}

void AddPhys(Metrics& metrics, Call& call)
{
    const auto region = ReadPhys();
    for (const auto& phy : LivePhys(region)) {
        Model labels;
        labels["phy"] = Text(phy["phy"]);
        labels["label"] = phy["label"].is_null() ? "" : Text(phy["label"]);
        bool failed = !phy["error"].is_null();
        metrics.Add("orblink_phy_enabled", "gauge", "1 when the PHY is out of reset.", labels,
                    phy["state"] == "enabled" ? 1 : 0);
        metrics.Add("orblink_phy_link_up", "gauge", "1 when the link is up.", labels,
                    AsNumber(phy["link"]));
        metrics.Add("orblink_phy_speed_bits_per_second", "gauge", "Speed of the link.", labels,
                    BitsPerSecond(phy["link_speed"]));
        try {
            AddPhyCounters(metrics, region, phy, labels);
        } catch (const Failure& failure) {
            if (failure.code != kFailed)
                throw;
            failed = true;
        }
        metrics.Add("orblink_phy_scrape_error", "gauge", "1 when the PHY could not be read.",
                    labels, failed ? 1 : 0);
        if (failed)
            call.exitCode = kFailed;
    }
}

std::string LabelText(const Model& labels)
{
    std::string text;
    for (const auto& [name, value] : labels.items())
        text += (text.empty() ? "" : ",") + name + "=" + Model(Text(value)).dump();
    return text.empty() ? "" : "{" + text + "}";
}

void PrintMetrics(const Model& model, std::string& out)
{
    for (const auto& metric : model["metrics"]) {
        const std::string name = Text(metric["name"]);
        Line(out, {"# HELP ", name, " ", Text(metric["help"])});
        Line(out, {"# TYPE ", name, " ", Text(metric["type"])});
        for (const auto& sample : metric["samples"])
            Line(out, {name, LabelText(sample["labels"]), " ", Text(sample["value"])});
    }
}

ExitCode RunMetrics(Call& call)
{
    Metrics metrics;
    const bool switches = IsInitialised(Family::kSwitch);
    const bool phys = IsInitialised(Family::kPhy);
    metrics.Add("orblink_initialised", "gauge", "1 when the family is initialised.",
                FamilyLabel("switch"), switches ? 1 : 0);
    metrics.Add("orblink_initialised", "gauge", "", FamilyLabel("phy"), phys ? 1 : 0);
    metrics.Add("orblink_battery_state", "gauge", "System state; not 0 on battery.",
                Model::object(), ORBLINK_isBatteryMode());
    if (switches)
        AddSwitches(metrics, call);
    if (phys)
        AddPhys(metrics, call);
    Model model;
    model["metrics"] = metrics.Take();
    const std::string text = Rendered(call, model);
    if (call.Has("--textfile"))
        WriteFile(call.Word("--textfile"), text);
    else
        WriteOut(text);
    return call.exitCode;
}

constexpr Command kMetricsCommands[] = {
    {"metrics", "--textfile", "measured values in the text format of Prometheus",
     "ORBLINK_GetPortLink ORBLINK_GetPortCounters ETHPHY_GetLink", nullptr, PrintMetrics,
     RunMetrics},
};

}  // namespace

std::span<const Command> MetricsCommands()
{
    return kMetricsCommands;
}

}  // namespace ctl

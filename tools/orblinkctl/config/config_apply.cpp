#include "tools/orblinkctl/config/config_apply.h"

#include <algorithm>
#include <map>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/line/command.h"
#include "tools/orblinkctl/line/grammar.h"
#include "tools/orblinkctl/line/session.h"

namespace ctl {

namespace {

// Within a device: what concerns all its ports, then what brings ports up, then the ports'
// settings, then what takes them down. The port to the SoC follows after all others.
enum Order { kWide, kEnable, kSetting, kGroup, kDisable, kSocOffset = 100 };

class Planner {
public:
    explicit Planner(const Model& board) : board_(board), region_(ReadSwitchesIfAny()) {}

    std::vector<ConfigStep> Plan(const std::vector<ConfigDifference>& differences)
    {
        for (const auto& difference : differences)
            Add(difference);
        std::stable_sort(steps_.begin(), steps_.end(),
                         [](const auto& a, const auto& b) { return a.order < b.order; });
        return std::move(steps_);
    }

private:
    static SwitchDeviceRegion ReadSwitchesIfAny()
    {
        return IsInitialised(Family::kSwitch) ? ReadSwitches() : SwitchDeviceRegion{};
    }

    void Step(int order, std::string command)
    {
        for (const auto& step : steps_)
            if (step.command == command)
                return;
        steps_.push_back({order, std::move(command)});
    }

    void Add(const ConfigDifference& difference)
    {
        const auto& path = difference.path;
        const unsigned device = static_cast<unsigned>(std::stoul(path[1]));
        if (path[0] == "phy") {
            RequireThere(difference, board_["phy"].contains(path[1]));
            return Step(kSetting,
                        "phy " + path[1] + (difference.wanted == true ? " enable" : " disable"));
        }
        SwitchOf(region_, device);
        if (path.size() == 3)
            AddWide(difference);
        else if (path[2] == "mac_vlan")
            AddMac(difference);
        else
            AddPort(difference, device);
    }

    static void RequireThere(const ConfigDifference& difference, bool there)
    {
        if (!there)
            throw Failure{kNoSuchObject,
                          PathText(difference.path) + ": the board has no such object"};
    }

    void AddWide(const ConfigDifference& difference)
    {
        const std::string& key = difference.path[2];
        const std::string& device = difference.path[1];
        const std::string value = Text(difference.wanted);
        const std::string onOff = difference.wanted == true ? "on" : "off";
        if (key == "bridge_mode" || key == "bridge_tpid")
            return AddBridge(difference);
        if (difference.board.is_null())
            throw Failure{kUnsupported,
                          PathText(difference.path) + ": the switch has no such setting"};
        if (key == "mtu" && !IsEnabled(region_.device[std::stoul(device)]))
            throw Failure{kFailed, PathText(difference.path) + ": needs the switch enabled"};
        if (key == "service")
            Step(kWide, "switch " + device + " service " + value);
        else
            Step(kWide, key + " " + device + " " + (key == "igmp" ? onOff : value));
    }

    void AddBridge(const ConfigDifference& difference)
    {
        const std::string& device = difference.path[1];
        if (difference.path[2] == "bridge_tpid")
            Step(kWide, "bridge-mode " + device + " on " + Text(difference.wanted));
        else if (difference.wanted == false)
            Step(kWide, "bridge-mode " + device + " off");
        else
            Step(kWide, "bridge-mode " + device + " on " +
                            std::to_string(region_.device[std::stoul(device)].config.STagTpid));
    }

    void AddMac(const ConfigDifference& difference)
    {
        const auto& path = difference.path;
        const auto words = SplitWords(path[3]);
        const std::string target = path[1] + ":" + words[0] + " " + words[1];
        if (difference.wanted.is_null())
            return Step(kWide, "mac-vlan remove " + target + " --mask 0xfff");
        const Model& entry = wanted_[path[1] + " " + path[3]] = WantedEntry(difference);
        if (entry.contains("vlan") && entry.contains("mask"))
            Step(kSetting, "mac-vlan add " + target + " " + Text(entry["vlan"]) + " --mask " +
                               Text(entry["mask"]));
    }

    // A mapped address is one operation but two settings; what does not differ stays.
    Model WantedEntry(const ConfigDifference& difference)
    {
        const auto& path = difference.path;
        Model entry = wanted_[path[1] + " " + path[3]];
        if (entry.is_null()) {
            const auto& macs = board_["switch"][path[1]]["mac_vlan"];
            entry = macs.contains(path[3]) ? macs[path[3]] : Model::object();
        }
        entry[path[4]] = difference.wanted;
        return entry;
    }

    void AddPort(const ConfigDifference& difference, unsigned device)
    {
        const PortId id{device, static_cast<unsigned>(std::stoul(difference.path[3]))};
        RequirePort(region_, id);
        const auto& record = region_.device[device];
        const int late = record.board.internalPortPidx == id.port ? kSocOffset : 0;
        if (difference.board.is_null())
            throw Failure{kUnsupported,
                          PathText(difference.path) + ": the port has no such setting"};
        const std::string port = "port " + PortWord(device, id.port);
        const std::string& key = difference.path[4];
        const std::string value = Text(difference.wanted);
        const std::string onOff = difference.wanted == true ? "on" : "off";
        if (key == "enabled")
            Step(late + (difference.wanted == true ? kEnable : kDisable),
                 port + (difference.wanted == true ? " enable" : " disable" + Force(late)));
        else if (key == "speed" || key == "duplex")
            AddSpeed(difference, port, late, record.config.enabledPorts >> id.port & 1);
        else if (key == "group" || key == "group_locked")
            AddGroup(difference, port, late);
        else if (key == "mirror_to")
            Step(late + kSetting, port + " mirror " + value);
        else if (key == "eee" || key == "delay")
            Step(late + kSetting, port + " " + key + " " + onOff);
        else
            Step(late + kSetting, port + " " + key + " " + value);
    }

    // The value that the port is to have in the end.
    Model Final(const ConfigDifference& difference, const char* key)
    {
        const std::string place = difference.path[1] + ":" + difference.path[3] + " ";
        final_[place + difference.path[4]] = difference.wanted;
        const auto found = final_.find(place + key);
        return found != final_.end()
                   ? found->second
                   : board_["switch"][difference.path[1]]["port"][difference.path[3]][key];
    }

    // Speed and duplex are one operation, which the library refuses on a disabled port.
    void AddSpeed(const ConfigDifference& difference, const std::string& port, int late,
                  bool enabled)
    {
        const std::string speed = Text(Final(difference, "speed"));
        const std::string duplex = Text(Final(difference, "duplex"));
        Drop(port + " speed ");
        if (!enabled) {
            Step(late + kEnable, port + " enable");
            Step(late + kDisable, port + " disable" + Force(late));
        }
        Step(late + kSetting, port + " speed " + speed + " " + duplex);
    }

    // A file that cuts the SoC off says so itself.
    static std::string Force(int late) { return late != 0 ? " --force" : ""; }

    void AddGroup(const ConfigDifference& difference, const std::string& port, int late)
    {
        const std::string group = Text(Final(difference, "group"));
        const bool locked = Final(difference, "group_locked") == true;
        Drop(port + " group ");
        Step(kGroup, port + " group " + group + (locked ? " --lock" : " --unlock") + Force(late));
    }

    void Drop(const std::string& beginning)
    {
        std::erase_if(steps_,
                      [&](const ConfigStep& step) { return step.command.starts_with(beginning); });
    }

    const Model& board_;
    SwitchDeviceRegion region_;
    std::vector<ConfigStep> steps_;
    std::map<std::string, Model> wanted_;
    std::map<std::string, Model> final_;
};

// A port that is to be enabled in the end is not disabled again after its speed was set.
void DropContradictions(std::vector<ConfigStep>& steps,
                        const std::vector<ConfigDifference>& differences)
{
    for (const auto& difference : differences) {
        if (difference.path.back() != "enabled" || difference.wanted != true)
            continue;
        const std::string disable =
            "port " + difference.path[1] + ":" + difference.path[3] + " disable";
        std::erase_if(steps,
                      [&](const ConfigStep& step) { return step.command.starts_with(disable); });
    }
}

}  // namespace

std::vector<ConfigStep> StepsFor(const Model& board,
                                 const std::vector<ConfigDifference>& differences)
{
    auto steps = Planner(board).Plan(differences);
    DropContradictions(steps, differences);
    return steps;
}

void RunSteps(const std::vector<ConfigStep>& steps)
{
    for (const auto& step : steps)
        for (auto& call : Resolve(ParseCommandLine(SplitWords(step.command))))
            call.command->query(call);
}

}  // namespace ctl

// Every command's JSON against the schema that is shipped, with none, one and many objects.
#include <fstream>
#include <string_view>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using nlohmann::json;

// The words of JSON Schema that the shipped schema uses; any other fails the test.
class Validator {
public:
    explicit Validator(json schema) : root_(std::move(schema)) {}

    std::vector<std::string> Check(const json& value)
    {
        complaints_.clear();
        Check(value, root_, "");
        return complaints_;
    }

private:
    void Check(const json& value, const json& schema, const std::string& at)
    {
        for (const auto& [word, rule] : schema.items())
            Apply(word, rule, value, schema, at);
    }

    void Apply(const std::string& word, const json& rule, const json& value, const json& schema,
               const std::string& at)
    {
        if (word == "$ref")
            Check(value, root_.at(json::json_pointer(rule.get<std::string>().substr(1))), at);
        else if (word == "type")
            Require(HasType(value, rule), at, "type " + rule.dump());
        else if (word == "const")
            Require(value == rule, at, "const " + rule.dump());
        else if (word == "enum")
            Require(std::find(rule.begin(), rule.end(), value) != rule.end(), at, rule.dump());
        else if (word == "minimum")
            Require(!value.is_number() || value >= rule, at, "minimum");
        else if (word == "maximum")
            Require(!value.is_number() || value <= rule, at, "maximum");
        else if (word == "items" && value.is_array())
            for (size_t i = 0; i < value.size(); ++i)
                Check(value[i], rule, at + "/" + std::to_string(i));
        else if (word == "required" && value.is_object())
            for (const auto& name : rule)
                Require(value.contains(name.get<std::string>()), at, name.dump());
        else if (word == "properties" && value.is_object())
            CheckProperties(value, schema, at);
        else if (word == "additionalProperties" && value.is_object())
            CheckOthers(value, schema, at);
        else
            Require(kSilentWords.find(" " + word + " ") != std::string::npos ||
                        !(value.is_object() || value.is_array()),
                    at, "known schema word " + word);
    }

    void CheckProperties(const json& value, const json& schema, const std::string& at)
    {
        for (const auto& [name, entry] : value.items())
            if (schema["properties"].contains(name))
                Check(entry, schema["properties"][name], at + "/" + name);
    }

    void CheckOthers(const json& value, const json& schema, const std::string& at)
    {
        for (const auto& [name, entry] : value.items()) {
            if (schema.contains("properties") && schema["properties"].contains(name))
                continue;
            const json& rule = schema["additionalProperties"];
            if (rule.is_boolean())
                Require(rule.get<bool>(), at + "/" + name, "a known property");
            else
                Check(entry, rule, at + "/" + name);
        }
    }

    static bool HasType(const json& value, const json& types)
    {
        if (types.is_array())
            return std::any_of(types.begin(), types.end(),
                               [&](const json& type) { return HasType(value, type); });
        const std::string type = types;
        return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
               (type == "string" && value.is_string()) || (type == "null" && value.is_null()) ||
               (type == "boolean" && value.is_boolean()) ||
               (type == "number" && value.is_number()) ||
               (type == "integer" && value.is_number_integer());
    }

    void Require(bool good, const std::string& at, const std::string& what)
    {
        if (!good)
            complaints_.push_back((at.empty() ? "/" : at) + ": expected " + what);
    }

    static constexpr std::string_view kSilentWords =
        " $schema title description $defs items required properties additionalProperties ";
    json root_;
    std::vector<std::string> complaints_;
};

json Schema()
{
    std::ifstream file(ORBLINK_SOURCE "/tools/orblinkctl/orblinkctl.schema.json");
    return json::parse(file);
}

const std::vector<std::string> kQueries = {"",
                                           "show",
                                           "board",
                                           "board battery",
                                           "board built-in",
                                           "switch",
                                           "port",
                                           "vlan",
                                           "bridge-mode",
                                           "mac-vlan",
                                           "igmp",
                                           "mtu",
                                           "led",
                                           "aging",
                                           "mac",
                                           "mac --count",
                                           "phy",
                                           "metrics",
                                           "log",
                                           "config save",
                                           "config diff",
                                           "config verify",
                                           "top --interval 0.01",
                                           "qos",
                                           "reg",
                                           "smi",
                                           "ioctl",
                                           "mdio",
                                           "mmd",
                                           "recover",
                                           "help"};

const std::vector<std::string> kOfOneSwitch = {"doctor",
                                               "switch 0",
                                               "switch 0 caps",
                                               "switch 0 config",
                                               "switch 0 service",
                                               "switch 0 service 1",
                                               "switch 0 machine-state",
                                               "switch 0 isolation",
                                               "port 1",
                                               "port 1 link",
                                               "port 1 enabled",
                                               "port 1 speed",
                                               "port 1 speed 100",
                                               "port 1 speed auto",
                                               "port 1 eee",
                                               "port 1 eee off",
                                               "port 1 mirror",
                                               "port 1 mirror 3",
                                               "port 1 delay",
                                               "port 1 test-mode",
                                               "port 1 test-mode 0",
                                               "port 1 dvt",
                                               "port 1 dvt 1",
                                               "port 1 dvt off",
                                               "port 1 counters",
                                               "port 1 counters reset",
                                               "port 1 vlan",
                                               "port 1 vlan 5",
                                               "port 1 pcp 2",
                                               "port 1 tagging 1",
                                               "port 1 group 3 --unlock",
                                               "port 1 group none --lock",
                                               "port 1 disable",
                                               "port 1 enable",
                                               "port 7 delay on",
                                               "mac-vlan add 0:1 00:00:5e:00:53:01 5",
                                               "mac-vlan",
                                               "mac-vlan remove 0:1 00:00:5e:00:53:01",
                                               "bridge-mode 0 on 0x88a8",
                                               "bridge-mode 0 off",
                                               "igmp 0 on",
                                               "mtu 0 1600",
                                               "led 0 1",
                                               "aging 0 2",
                                               "mac 0 table",
                                               "counters",
                                               "counters --all",
                                               "counters clear",
                                               "mac add 0:2 00:00:5e:00:53:02 5",
                                               "mac 00:00:5e:00:53:02",
                                               "mac remove 0:2 00:00:5e:00:53:02 5",
                                               "mac flush",
                                               "explain 0:2",
                                               "port 0:1-2,0:3 vlan 7 pcp 1",
                                               "qos 0 reserve 1 2",
                                               "reg 0 1 0-5",
                                               "reg 0 1 0-5 --decode",
                                               "watch 0:1 --interval 0.01",
                                               "reg 0 1 3 7",
                                               "smi 0 0-2",
                                               "ioctl 0 16",
                                               "down 0",
                                               "up 0",
                                               "switch 0 reset",
                                               "board pin 18 1",
                                               "board lane-reset 0",
                                               "bundle b.tar.gz",
                                               "monitor --rounds 1"};

const std::vector<std::string> kOfPhys = {"phy 0",
                                          "phy 0 up",
                                          "phy 0 link",
                                          "phy 0 caps",
                                          "phy 0 config",
                                          "phy 0 board",
                                          "phy 0 counters",
                                          "phy 0 counters reset",
                                          "phy 0 speed 100 full",
                                          "phy 0 eee on",
                                          "phy 0 poll",
                                          "phy 0 lane-reset",
                                          "phy 0 disable",
                                          "phy 0 enable",
                                          "mdio 0",
                                          "mdio 0 0-3",
                                          "mdio 0 0-3 --decode",
                                          "mdio 0 4 0x0de1",
                                          "mmd 0 7 60 --decode",
                                          "phy 0 speed",
                                          "phy 0 eee",
                                          "phy 0 caps",
                                          "phy 0 reg 2",
                                          "phy 0 down"};

void ExpectValid(const Outcome& outcome)
{
    static Validator validator(Schema());
    EXPECT_TRUE(outcome.code == 0 || outcome.code == 9) << outcome.command << outcome.err;
    EXPECT_FALSE(outcome.out.empty()) << outcome.command;
    // monitor prints one object on each line, every other command one object.
    std::istringstream lines(outcome.out);
    const bool oneEach = outcome.command.find("monitor") != std::string::npos;
    for (std::string text; std::getline(lines, text, oneEach ? '\n' : '\0');) {
        const json value = json::parse(text, nullptr, false);
        ASSERT_FALSE(value.is_discarded()) << outcome.command << ": " << text;
        EXPECT_THAT(validator.Check(value), testing::IsEmpty()) << outcome.command << text;
    }
}

std::vector<std::string> AsJson(const std::vector<std::string>& lines)
{
    std::vector<std::string> commands;
    for (const auto& line : lines)
        commands.push_back("ctl --json " + line);
    return commands;
}

TEST(Schema, HoldsForNoDevices)
{
    auto commands = AsJson(kQueries);
    commands.insert(commands.begin(), "ctl --json init");
    for (const auto& outcome : OnBoard("no_devices", commands))
        ExpectValid(outcome);
}

TEST(Schema, HoldsForOneSwitch)
{
    for (const auto& outcome : OnBoardUp("one_switch", AsJson(kQueries)))
        ExpectValid(outcome);
}

TEST(Schema, HoldsForTheCommandsOfASwitch)
{
    for (const auto& outcome : OnBoardUp("one_switch", AsJson(kOfOneSwitch)))
        ExpectValid(outcome);
}

TEST(Schema, HoldsForManyDevices)
{
    for (const auto& outcome : OnBoardUp("two_switches", AsJson(kQueries)))
        ExpectValid(outcome);
}

TEST(Schema, HoldsForPhys)
{
    auto commands = AsJson(kOfPhys);
    for (const auto& query : AsJson(kQueries))
        commands.push_back(query);
    for (const auto& outcome : OnBoardUp("phy", commands))
        ExpectValid(outcome);
}

TEST(Schema, HoldsBeforeAnythingWasBroughtUp)
{
    const auto r = OnBoard(
        "two_switches",
        {"ctl init --no-defaults >/dev/null", "ctl --json show", "ctl --json", "ctl --json switch",
         "ctl --json port", "ctl --json metrics", "ctl --json qos", "ctl --json reg",
         "ctl --json smi", "ctl --json ioctl", "ctl --json mdio", "ctl --json mmd"});
    for (size_t i = 1; i < r.size(); ++i)
        ExpectValid(r[i]);
}

TEST(Schema, HoldsForErrors)
{
    Validator validator(Schema());
    const auto r = OnBoard("no_devices", {"ctl --json-errors port 9"});
    EXPECT_THAT(validator.Check(json::parse(r[0].err)), testing::IsEmpty());
}

// The validator itself: what the schema forbids must not pass.
TEST(Schema, FindsWhatIsWrong)
{
    Validator validator(Schema());
    const char* wrong[] = {
        R"({})",
        R"({"schema": 3})",
        R"({"schema": 2, "unheard-of": 1})",
        R"({"schema": 2, "ports": {"switch": 0}})",
        R"({"schema": 2, "ports": [{"switch": 2}]})",
        R"({"schema": 2, "ports": [{"duplex": "both"}]})",
        R"({"schema": 2, "ports": [{"vlan": "1"}]})",
        R"({"schema": 2, "ports": [{"link_speed": "1000"}]})",
        R"({"schema": 2, "changes": [{"object": "x"}]})",
        R"({"schema": 2, "phys": [{"register_2": 65536}]})",
        R"({"schema": 2, "switches": [{"port_numbers": [8]}]})",
        R"({"schema": 2, "switches": [{"values": [{"word": "QUEUE"}]}]})",
    };
    for (const char* text : wrong)
        EXPECT_THAT(validator.Check(json::parse(text)), testing::Not(testing::IsEmpty())) << text;
}

}  // namespace
}  // namespace onboard

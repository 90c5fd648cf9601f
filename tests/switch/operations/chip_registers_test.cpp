// Random operations through the real HAL on the model of the VS08 chip.
#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "tests/switch/operations/random_calls.h"
#include "virtual_board/chips/vs08/chip.h"

using namespace obtest;
using nlohmann::json;

namespace {

constexpr int kOperations = 2000;
constexpr int kLookEvery = 20;

// Values that the chip takes.
constexpr DrawLimits kChipLimits = {.lastTagging = 1,
                                    .lastGroup = 255,
                                    .firstSpeed = OB_SPEED_AUTONEG,
                                    .lastSpeed = OB_SPEED_1G,
                                    .firstMtu = 64,
                                    .lastMtu = 10240,
                                    .lastVlan = 4094,
                                    .firstVlan = 1,
                                    .lastLedMode = 7,
                                    .lastMask = 0xFFF,
                                    .lastBuffers = 63,
                                    .firstTpid = 0x0600,
                                    .addresses = 8};

// The settings that a state of the chip shows.
json ShownPort(const json& port)
{
    json shown = {{"enabled", port["enabled"]}, {"vlan", port["vlan"]},
                  {"pcp", port["pcp"]},         {"tagging", port["egressTagging"]},
                  {"group", port["group"]},     {"mirror", port["mirrorTo"]}};
    if (port.contains("phy"))
        for (const char* word : {"speed", "fullDuplex", "eee", "dvt"})
            shown[word] = port["phy"][word];
    if (port.contains("rgmiiDelay"))
        shown["delay"] = port["rgmiiDelay"];
    return shown;
}

json ShownMappings(const json& entries)
{
    json shown = json::object();
    for (const auto& entry : entries)
        shown[std::to_string(entry["port"].get<int>()) + " " + entry["mac"].get<std::string>()] =
            std::to_string(entry["mask"].get<int>()) + " " +
            std::to_string(entry["vlan"].get<int>());
    return shown;
}

json Shown(const json& state)
{
    const bool bridged = state["providerBridged"]["enabled"];
    json shown = {{"bridged", bridged ? state["providerBridged"]["tpid"] : json()},
                  {"ageing", state["ageing"]["step"]},
                  {"mtu", state["mtu"]},
                  {"igmp", state["snooping"]["igmp"]},
                  {"mld", state["snooping"]["mld"]},
                  {"led", state["led"]["mode"]},
                  {"mappings", ShownMappings(state["macToVlan"])},
                  {"ports", json::array()}};
    for (const auto& port : state["ports"])
        shown["ports"].push_back(ShownPort(port));
    return shown;
}

// The same, as it follows from what the chip was told and from its reset values.
json ExpectedPort(const ToldChip& told, int number)
{
    const std::string port = " " + std::to_string(number);
    const std::string group = told.Value("group" + port, "4294967295");
    const long mirror = told.Number("mirror" + port, -1);
    json shown = {{"enabled", told.Value("port" + port, "up") == "up"},
                  {"vlan", told.Number("vlan" + port, 1)},
                  {"pcp", told.Number("pcp" + port, 0)},
                  {"tagging", told.Number("tagging" + port, 0) != 0},
                  {"group", group == "4294967295" ? json() : json(std::stoi(group))},
                  {"mirror", mirror < 0 ? json() : json(mirror)}};
    if (number >= 1 && number <= 6) {
        const std::string speed = told.Value("speed" + port, "1 1");
        shown["speed"] = speed[0] - '0';
        shown["fullDuplex"] = speed.substr(2) != "0";
        shown["eee"] = told.Value("eee" + port, "off") == "on";
        shown["dvt"] = told.Number("dvt" + port, 0);
    }
    if (number == 7)
        shown["delay"] = told.Value("delay" + port, "off") == "on";
    return shown;
}

json Expected(const ToldChip& told)
{
    const std::string bridged = told.Value("bridged", "off");
    const bool snooping = told.Value("snooping", "off") == "on";
    json shown = {{"bridged", bridged == "off" ? json() : json(std::stoi(bridged))},
                  {"ageing", told.Number("ageing", 3)},
                  {"mtu", told.Number("mtu", 2000)},
                  {"igmp", snooping},
                  {"mld", snooping},
                  {"led", told.Number("led", 3)},
                  {"mappings", json::object()},
                  {"ports", json::array()}};
    for (const auto& [setting, value] : told.Values())
        if (setting.rfind("mac ", 0) == 0)
            shown["mappings"][setting.substr(4)] = value;
    for (int port = 0; port < 8; ++port)
        shown["ports"].push_back(ExpectedPort(told, port));
    return shown;
}

class ChipRegisters : public SwitchTest {
protected:
    ChipRegisters()
    {
        platform.libraries["liborblink_velmar.so"] = VSWITCH_HAL;
        platform.mii = [this](unsigned long request, MiiWords& words) {
            return !busDead && words.phyId == 16 && words.bus == 1 && Access(request, words);
        };
        chip.Advance(now += std::chrono::milliseconds(20));
    }

    // One frame; the chip's waits are over by the next.
    bool Access(unsigned long request, MiiWords& words)
    {
        chip.Advance(now += std::chrono::milliseconds(3));
        const auto reg = static_cast<uint8_t>(words.reg);
        if (request != 0x8948)
            return chip.Write22(reg, words.valueIn);
        const auto value = chip.Read22(reg);
        words.valueOut = value.value_or(0);
        return value.has_value();
    }

    // The chip has no EEE, forced speed or verification test but on its PHY ports.
    static bool LacksPhy(const std::string& call)
    {
        const char port = call[call.find(", ") + 2];
        return call.find("Eee(") != std::string::npos && (port == '0' || port == '7');
    }

    // The chip has room for 32 mappings; one that it could not be told to remove still takes some.
    bool LacksRoom(const std::string& call) const
    {
        const std::string slot = "MapSetMacToVlan(0, ";
        if (call.rfind(slot, 0) != 0 || call.substr(call.size() - 4) == ", 0)")
            return false;
        const std::string port = call.substr(slot.size(), 1);
        const std::string setting = "mac " + port + " " + call.substr(slot.size() + 3, 17);
        const auto& told = model->chip.Values();
        const auto used = std::count_if(told.begin(), told.end(), [](const auto& value) {
            return value.first.rfind("mac ", 0) == 0;
        });
        return used >= OB_MAC_VLAN_ENTRIES && told.count(setting) == 0;
    }

    void Run(const RandomCall& call)
    {
        transcript.Clear();
        ASSERT_EQ(call.api(), model->Run(call.model)) << Joined(transcript.Log());
        ASSERT_EQ(memcmp(&Record(0), &model->record, sizeof(SwitchDeviceRecord)), 0);
    }

    void ExpectAsTold()
    {
        const json shown = Shown(chip.State());
        const json expected = Expected(model->chip);
        ASSERT_EQ(shown, expected) << json::diff(expected, shown).dump(1);
    }

    std::chrono::nanoseconds now{};
    vboard::VswitchChip chip{0};
    bool busDead = false;
    std::optional<SwitchModel> model;
};

TEST_F(ChipRegisters, HoldWhatWasSetBeforeAndAfterEveryRestore)
{
    const unsigned seed = TestSeed();
    CallSource source(seed, kChipLimits);
    Init();
    model.emplace(Record(0));
    model->refuses = [this](const std::string& call) {
        return busDead || LacksPhy(call) || LacksRoom(call);
    };
    int looks = 0;
    for (int i = 0; i < kOperations; ++i) {
        const RandomCall call = source.Next();
        SCOPED_TRACE("ORBLINK_TEST_SEED=" + std::to_string(seed) + ", operation " +
                     std::to_string(i) + ": " + call.text);
        const bool bringUp = call.text.rfind("ResetDisable", 0) == 0;
        busDead = !bringUp && source.OneIn(25);
        Run(call);
        ASSERT_FALSE(HasFatalFailure());
        busDead = false;
        if (model->Enabled() && (bringUp || i % kLookEvery == 0)) {
            ExpectAsTold();
            ASSERT_FALSE(HasFatalFailure());
            ++looks;
        }
    }
    EXPECT_GT(looks, 100);
    Run({.text = "ResetEnable",
         .api = [] { return ORBLINK_ResetEnable(0); },
         .model = [](SwitchModel& each) { return each.ResetEnable(); }});
    Run({.text = "ResetDisable",
         .api = [] { return ORBLINK_ResetDisable(0, 0, nullptr, 0); },
         .model = [](SwitchModel& each) { return each.ResetDisable(0); }});
    ExpectAsTold();
}

}  // namespace

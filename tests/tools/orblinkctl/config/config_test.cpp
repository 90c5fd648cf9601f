// The configuration saved, compared, applied and verified.
#include <random>

#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;

TEST(Config, IsSavedCanonically)
{
    const auto r = OnBoardUp("one_switch", {"ctl config save", "ctl config save saved.toml",
                                            "cat saved.toml", "ctl config save --json"});
    EXPECT_THAT(r[0].out,
                testing::StartsWith("# Configuration of the board as orblinkctl saved it.\n"
                                    "# [switch.N] a switch, [switch.N.port.P] a port of it,\n"
                                    "# [switch.N.mac_vlan.\"P MAC\"] the VLAN of a source address, "
                                    "[phy.N] a PHY.\n"
                                    "\n"
                                    "schema = 1\n"
                                    "\n"
                                    "[switch.0]\n"
                                    "aging = \"300s\"\n"
                                    "bridge_mode = false\n"
                                    "igmp = false\n"
                                    "led = \"link+activity\"\n"
                                    "mtu = 2000\n"
                                    "service = 0\n"
                                    "\n"
                                    "[switch.0.port.0]\n"
                                    "enabled = true\n"
                                    "mirror_to = \"off\"\n"
                                    "\n"
                                    "[switch.0.port.1]\n"
                                    "duplex = \"full\"\n"
                                    "eee = true\n"
                                    "enabled = true\n"
                                    "group = \"none\"\n"
                                    "group_locked = true\n"
                                    "mirror_to = \"off\"\n"
                                    "pcp = 0\n"
                                    "speed = \"auto\"\n"
                                    "tagging = \"untagged\"\n"
                                    "vlan = 1\n"));
    EXPECT_THAT(r[1], Prints(""));
    EXPECT_EQ(r[2].out, r[0].out);
    EXPECT_EQ(Json(r[3])["config"]["switch"]["0"]["port"]["7"]["delay"], false);
}

TEST(Config, OnlyDifferencesAreApplied)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl config save x.toml; ctl config diff x.toml",
                                 "ctl config diff", "ctl config apply x.toml",
                                 "ctl port 2 vlan 100 >/dev/null; ctl config diff x.toml",
                                 "ctl config apply x.toml --dry-run", "ctl config diff",
                                 "ctl config apply x.toml", "ctl config diff x.toml"});
    EXPECT_THAT(r[0], Prints("no differences\n"));
    EXPECT_THAT(r[1], Prints("no differences\n"));
    EXPECT_THAT(r[2], Prints("nothing to do\n"));
    const char* difference =
        "SETTING               BOARD  WANTED\n"
        "switch.0.port.2.vlan    100       1\n";
    EXPECT_EQ(r[3].code, 9);
    EXPECT_EQ(r[3].out, difference);
    EXPECT_TRUE(r[3].err.empty());
    EXPECT_THAT(r[4], Prints("would do: port 0:2 vlan 1\n"));
    EXPECT_EQ(r[5].out, difference);
    EXPECT_THAT(r[6], Prints("done: port 0:2 vlan 1\n"));
    EXPECT_THAT(r[7], Prints("no differences\n"));
}

TEST(Config, ProviderBridgingKeepsTheStoredTpid)
{
    const auto r =
        OnBoardUp("one_switch",
                  {"ctl bridge-mode 0 on 0x9100", "ctl bridge-mode 0 off",
                   "printf '[switch.0]\\nbridge_mode = true\\n' >x.toml; ctl config apply x.toml",
                   "ctl bridge-mode"});
    EXPECT_THAT(r[2], Prints("done: bridge-mode 0 on 37120\n"));
    EXPECT_THAT(r[3], Prints("SWITCH  BRIDGE MODE  BRIDGE TPID\n     0  provider     0x9100\n"));
}

TEST(Config, ThePortToTheSocComesLast)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '[switch.0]\\nmtu = 1600\\n[switch.0.port.0]\\nenabled = false\\nmirror_to = 4\\n"
         "[switch.0.port.1]\\nenabled = false\\n[switch.0.port.2]\\nvlan = 9\\nspeed = \"100\"\\n"
         "[switch.0.mac_vlan.\"3 00:00:5e:00:53:01\"]\\nmask = 4095\\nvlan = 5\\n' >x.toml; "
         "ctl config apply x.toml"});
    EXPECT_THAT(r[0], Prints("done: mtu 0 1600\n"
                             "done: mac-vlan add 0:3 00:00:5e:00:53:01 5 --mask 4095\n"
                             "done: port 0:2 speed 100 full\n"
                             "done: port 0:2 vlan 9\n"
                             "done: port 0:1 disable\n"
                             "done: port 0:0 mirror 4\n"
                             "done: port 0:0 disable --force\n"));
}

TEST(Config, ChangesAreTakenBackUnlessConfirmed)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '[switch.0.port.2]\\nvlan = 9\\n' >x.toml; "
         "sleep 1 | ctl config apply x.toml --confirm-within 0.2",
         "ctl config diff", "echo | ctl config apply x.toml --confirm-within 5", "ctl config diff",
         "printf '[switch.0]\\naging = 1\\nmtu = 20\\n' >y.toml; ctl config apply y.toml",
         "ctl aging 0"});
    EXPECT_EQ(r[0].code, 1);
    const std::string shown =
        "SETTING               BOARD  WANTED\n"
        "switch.0.port.2.vlan      1       9\n"
        "To keep the changes, press Enter or run 'orblinkctl config confirm' within ";
    EXPECT_EQ(r[0].out, shown +
                            "0.2 s.\n"
                            "done: port 0:2 vlan 9\n"
                            "not confirmed: the changes were taken back\n");
    EXPECT_THAT(r[1], Prints("no differences\n"));
    EXPECT_THAT(r[2], Prints(shown + "5 s.\ndone: port 0:2 vlan 9\n"));
    EXPECT_EQ(r[3].code, 9);
    EXPECT_THAT(r[4],
                Refuses(5,
                        "mtu 20 is not offered by switch 0 (64 to 10240 octets); the changes were "
                        "taken back"));
    EXPECT_THAT(r[5], Prints("SWITCH  AGING\n     0  300s\n"));
}

TEST(Config, OfASwitchInResetIsStored)
{
    const auto r = OnBoardUp(
        "phy", {"printf '[switch.0.port.2]\\nvlan = 9\\n[phy.0]\\nadmin = false\\n' >x.toml; "
                "ctl down 0 >/dev/null; ctl config apply x.toml",
                "printf '[switch.0]\\naging = 1\\nmtu = 1500\\n' >y.toml; ctl config apply y.toml",
                "ctl aging 0", "ctl up 0 >/dev/null; ctl reg 0 2 3", "ctl config verify",
                "ctl phy 0 config -o kv | grep admin"});
    EXPECT_THAT(r[0], Prints("done: phy 0 disable\ndone: port 0:2 vlan 9\n"));
    EXPECT_THAT(r[1], Refuses(1, "switch.0.mtu: needs the switch enabled"));
    EXPECT_THAT(r[2], Prints("SWITCH  AGING\n     0  300s\n"));
    EXPECT_THAT(r[3], Prints("0x0003: 0x0009\n"));
    EXPECT_THAT(r[4], Prints("checked: 64\n"
                             "not checked: PHY 0: what a PHY was told is not read back\n"
                             "not checked: PHY 1: what a PHY was told is not read back\n"
                             "no differences\n"));
    EXPECT_THAT(r[5], Prints("phys.0.admin=false\n"));
}

// A configuration with settings drawn at random, written as the program itself writes it.
class RandomConfig {
public:
    explicit RandomConfig(unsigned seed) : random_(seed) {}

    std::string Text()
    {
        std::string text =
            "# Configuration of the board as orblinkctl saved it.\n"
            "# [switch.N] a switch, [switch.N.port.P] a port of it,\n"
            "# [switch.N.mac_vlan.\"P MAC\"] the VLAN of a source address, [phy.N] a PHY.\n"
            "\nschema = 1\n";
        text += "\n[switch.0]\naging = " + OneOf({"15s", "75s", "300s", "1200s", "4800s"}) +
                "\nbridge_mode = ";
        text += Chance() ? "true\nbridge_tpid = " + Number(0x8100, 0x9100) : "false";
        text += "\nigmp = " + Bool() + "\nled = " + OneOf({"off", "link", "speed", "blinking"}) +
                "\nmtu = " + Number(64, 10240) + "\nservice = " + Number(0, 9) + "\n";
        const bool mapped = Chance();
        if (mapped)
            for (int i = 1; i < 6; ++i)
                text += "\n[switch.0.mac_vlan.\"" + std::to_string(i) + " 00:00:5e:00:53:0" +
                        std::to_string(i) + "\"]\nmask = 4095\nvlan = " + Number(1, 4094) + "\n";
        for (int port = 0; port < 8; ++port)
            text += Port(port);
        return mapped ? text : text + "\n[switch.0.mac_vlan]\n";
    }

private:
    std::string Port(int port)
    {
        const bool phy = port > 0 && port < 7;
        std::string text = "\n[switch.0.port." + std::to_string(port) + "]\n";
        if (port == 7)
            text += "delay = " + Bool() + "\n";
        if (phy)
            text += Chance() ? "duplex = \"full\"\n" : "duplex = \"half\"\n";
        text += (phy ? "eee = " + Bool() + "\n" : "") + "enabled = " + Bool() + "\n";
        if (port > 0)
            text += Chance() ? "group = " + Number(0, 255) + "\n" : "group = \"none\"\n";
        if (port > 0)
            text += "group_locked = " + Bool() + "\n";
        text += Chance() ? "mirror_to = \"off\"\n"
                         : "mirror_to = " + std::to_string((port + 1) % 8) + "\n";
        if (port > 0)
            text += "pcp = " + Number(0, 7) + "\n";
        if (phy)
            text += Chance() ? "speed = 100\n" : "speed = 1000\n";
        if (port > 0)
            text +=
                "tagging = " + OneOf({"untagged", "tagged"}) + "\nvlan = " + Number(1, 4094) + "\n";
        return text;
    }

    bool Chance() { return random_() % 2 == 0; }
    std::string OneOf(const std::vector<std::string>& words)
    {
        return "\"" + words[random_() % words.size()] + "\"";
    }
    std::string Bool() { return Chance() ? "true" : "false"; }
    std::string Number(unsigned least, unsigned most)
    {
        return std::to_string(least + random_() % (most - least + 1));
    }

    std::mt19937 random_;
};

class RandomConfigs : public testing::TestWithParam<unsigned> {};

TEST_P(RandomConfigs, WhatIsAppliedIsWhatIsSaved)
{
    constexpr unsigned kRounds = 5;
    const Scratch files;
    std::vector<std::string> commands;
    for (unsigned i = GetParam(); i < GetParam() + kRounds; ++i) {
        const std::string file = files.Path(std::to_string(i) + ".toml");
        files.Write(std::to_string(i) + ".toml", RandomConfig(i).Text());
        commands.push_back("ctl config apply " + file + " >/dev/null && ctl config save | diff " +
                           file + " - && ctl config verify >/dev/null");
    }
    for (const auto& outcome : OnBoardUp("one_switch", commands))
        EXPECT_THAT(outcome, Prints(""));
}

INSTANTIATE_TEST_SUITE_P(Config, RandomConfigs, testing::Range(0U, 25U, 5U));

TEST(Config, VerifyFindsWhatTheRecordDoesNotSay)
{
    const auto r = OnBoardUp("one_switch", {"ctl config verify",
                                            "ctl reg 0 2 3 0x22; "
                                            "ctl smi 0 0x113 5; ctl config verify"});
    EXPECT_THAT(r[0], Prints("checked: 64\nno differences\n"));
    EXPECT_EQ(r[1].code, 9);
    EXPECT_THAT(r[1].out, HasSubstr("OBJECT    SETTING  RECORD  CHIP\n"
                                    "switch 0  aging    300s    4800s\n"
                                    "port 0:2  vlan     1       34\n"));
}

struct BadFile {
    const char* text;
    const char* complaint;
};

const BadFile kBadFiles[] = {
    {"vlan = 1\n", "x.toml: bad vlan: allowed is schema, switch or phy"},
    {"schema = 2\n", "x.toml: bad schema: allowed is 1"},
    {"[switch.2]\n", "x.toml: bad switch.2: allowed is 0 or 1"},
    {"[switch.0]\nmtu = 65536\n", "x.toml: bad switch.0.mtu: allowed is 0 to 65535"},
    {"[switch.0]\naging = 0\n",
     "x.toml: bad switch.0.aging: allowed is 15s, 75s, 300s, 1200s, 4800s (1 to 5)"},
    {"[switch.0]\nigmp = 1\n", "x.toml: bad switch.0.igmp: allowed is true or false"},
    {"[switch.0]\nbridge_tpid = 5\n",
     "x.toml: bad switch.0.bridge_tpid: allowed is none without bridge_mode = true"},
    {"[switch.0]\nmut = 5\n",
     "x.toml: bad switch.0.mut: allowed is mtu, led, aging, service, "
     "bridge_mode, bridge_tpid, igmp"},
    {"[switch.0.port.1]\nvlan = 4095\n", "x.toml: bad switch.0.port.1.vlan: allowed is 1 to 4094"},
    {"[switch.0.port.1]\nvlan = \"5\"\n", "x.toml: bad switch.0.port.1.vlan: allowed is 1 to 4094"},
    {"[switch.0.port.1]\nduplex = \"both\"\n",
     "x.toml: bad switch.0.port.1.duplex: allowed is full or half"},
    {"[switch.0.mac_vlan.\"9 00:00:5e:00:53:01\"]\nmask = 1\nvlan = 1\n",
     "x.toml: bad switch.0.mac_vlan.\"9 00:00:5e:00:53:01\": allowed is \"PORT MAC\" with port 1 "
     "to 7"},
    {"[switch.0.mac_vlan.\"1 00:00:5e:00:53:01\"]\nmask = 1\n",
     "x.toml: bad switch.0.mac_vlan.\"1 00:00:5e:00:53:01\": allowed is a table with mask and "
     "vlan"},
    {"[phy.0]\nadmin = 1\n", "x.toml: bad phy.0.admin: allowed is true or false"},
};

TEST(Config, ABadFileIsRefusedByKey)
{
    const Scratch files;
    std::vector<std::string> commands;
    for (size_t i = 0; i < std::size(kBadFiles); ++i) {
        files.Write(std::to_string(i), kBadFiles[i].text);
        commands.push_back("cp " + files.Path(std::to_string(i)) +
                           " x.toml; ctl config apply x.toml");
    }
    const auto r = OnBoardUp("one_switch", commands);
    for (size_t i = 0; i < std::size(kBadFiles); ++i)
        EXPECT_THAT(r[i], Refuses(2, kBadFiles[i].complaint));
}

TEST(Config, WhatTheBoardCannotHaveIsRefusedBeforeAnyChange)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"printf '[switch.0.port.1]\\nvlan = 5\\n[switch.0.port.7]\\nspeed = \"100\"\\n' >x.toml; "
         "ctl config apply x.toml",
         "printf '[switch.1]\\nmtu = 1500\\n' >x.toml; ctl config apply x.toml",
         "printf '[phy.0]\\nadmin = true\\n' >x.toml; ctl config apply x.toml", "ctl config diff"});
    EXPECT_THAT(r[0], Refuses(5, "switch.0.port.7.speed: the port has no such setting"));
    EXPECT_THAT(r[1], Refuses(3, "no switch 1: the board has 1: orblinkctl switch"));
    EXPECT_THAT(r[2], Refuses(3, "phy.0.admin: the board has no such object"));
    EXPECT_THAT(r[3], Prints("no differences\n"));
}

}  // namespace
}  // namespace onboard

// Every failure in the operator's words: the object, what was not done, why, and what is next. No
// name of a C function.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::HasSubstr;
using testing::Not;

struct Failing {
    const char* line;
    const char* complaint;
};

// With a bus on which no access succeeds.
const Failing kWithoutABus[] = {
    {"port 0:1 link", "port 0:1: the link could not be read"},
    {"port 0:1 speed 100", "port 0:1: the speed was not set"},
    {"port 0:1 eee", "port 0:1: the EEE state could not be read"},
    {"port 0:1 eee off", "port 0:1: EEE was not switched off"},
    {"port 0:1 mirror 3", "port 0:1: the mirror was not set"},
    {"port 0:7 delay on", "port 0:7: the RGMII delay was not switched on"},
    {"port 0:1 test-mode", "port 0:1: the test mode could not be read"},
    {"port 0:1 test-mode waveform", "port 0:1: the test mode was not set"},
    {"port 0:1 dvt packets", "port 0:1: the verification test was not started"},
    {"port 0:1 counters", "port 0:1: the counters could not be read"},
    {"port 0:1 counters reset", "port 0:1: the counters were not reset"},
    {"port 0:1 vlan 100", "port 0:1: the VLAN was not set"},
    {"port 0:1 pcp 4", "port 0:1: the priority was not set"},
    {"port 0:1 tagging tagged", "port 0:1: the tagging was not set"},
    {"port 0:1 group 4 --lock", "port 0:1: the group was not set"},
    {"bridge-mode 0 provider", "switch 0: provider bridged mode was not switched on"},
    {"mac-vlan add 0:1 00:00:5e:00:53:01 5", "port 0:1: the MAC-to-VLAN table was not changed"},
    {"igmp 0 on", "switch 0: snooping was not switched on"},
    {"mtu 0 1600", "switch 0: the MTU was not set"},
    {"aging 0 15s", "switch 0: the ageing was not set"},
    {"led 0", "switch 0: the LED mode could not be read"},
    {"led 0 speed", "switch 0: the LED mode was not set"},
    {"qos 0 wred 1 1 2 1 2 1 2", "switch 0: the thresholds of the queue were not set"},
    {"qos 0 global-wred 1 4 50 1 2 1 2 1 2", "switch 0: the global thresholds were not set"},
    {"qos 0 reserve 1 2", "switch 0: the buffers were not reserved"},
    {"qos flow-control 0:1 200 100", "port 0:1: flow control was not set"},
    {"mac", "switch 0: the MAC table could not be read"},
    {"mac 0 table", "switch 0: the MAC table could not be read"},
    {"reg 0 1 0", "switch 0 port 1 register 0x0000 could not be read"},
    {"reg 0 1 3 5", "switch 0 port 1 register 0x0003 could not be written"},
    {"smi 0 0x114", "switch 0 register 0x0114 could not be read"},
    {"smi 0 0x114 1600", "switch 0 register 0x0114 could not be written"},
    {"mac flush", "switch 0: the chip's own command was refused"},
    // The last one: the port is then stored as disabled.
    {"port 0:1 disable", "port 0:1 was not disabled"},
};

TEST(Failures, NameObjectReasonAndNextCommand)
{
    std::vector<std::string> commands = {"board fault mdio-error --times 0"};
    for (const auto& row : kWithoutABus)
        commands.push_back(std::string("ctl ") + row.line);
    const auto r = OnBoardUp("one_switch", commands);
    for (size_t i = 1; i < r.size(); ++i) {
        const std::string what = kWithoutABus[i - 1].complaint;
        EXPECT_THAT(r[i], Refuses(1, what + ": MDIO bus 0 address 16: Input/output error: "
                                            "orblinkctl doctor"));
    }
}

// With a chip in reset, whatever needs it says so, and how to get it up.
TEST(Failures, OfASwitchInResetNameTheCommandThatBringsItUp)
{
    const char* lines[] = {"port 0:1 link",
                           "port 0:1 test-mode off",
                           "port 0:1 counters",
                           "reg 0 1 0",
                           "smi 0 0",
                           "mtu 0 1600",
                           "mac 0",
                           "mac flush",
                           "qos 0 reserve 1 2",
                           "mac 0 table"};
    std::vector<std::string> commands = {"ctl down 0"};
    for (const char* line : lines)
        commands.push_back(std::string("ctl ") + line);
    const auto r = OnBoardUp("one_switch", commands);
    for (size_t i = 1; i < r.size(); ++i)
        EXPECT_THAT(r[i], Refuses(5, "switch 0 is in reset: orblinkctl up 0"));
}

const Failing kBeyondTheChip[] = {
    {"mtu 0 10", "mtu 10 is not offered by switch 0 (64 to 10240 octets)"},
    {"mtu 0 10241", "mtu 10241 is not offered by switch 0 (64 to 10240 octets)"},
    {"led 0 99",
     "led 99 is not offered by switch 0 (off, link, activity, link+activity, speed, "
     "duplex+collision, on, blinking)"},
    {"port 0:1 tagging 77", "tagging 77 is not offered by port 0:1 (untagged, tagged)"},
    {"port 0:1 group 4000000000", "group 4000000000 is not offered by port 0:1 (0 to 255)"},
    {"port 0:1 group 256", "group 256 is not offered by port 0:1 (0 to 255)"},
    {"port 0:1 speed 2500", "speed 2500 is not offered by port 0:1 (10, 100, 1000)"},
    {"port 0:1 speed 10000", "speed 10000 is not offered by port 0:1 (10, 100, 1000)"},
    {"port 0:1 test-mode 5",
     "test mode 5 is not offered by port 0:1 (off, waveform, jitter-master, jitter-slave, "
     "distortion)"},
    {"bridge-mode 0 on 0x5ff", "bridge tpid 0x05ff is not offered by switch 0 (0x0600 to 0xffff)"},
    {"qos 0 reserve 64 1",
     "queue 64 is not offered by switch 0 (0 to 63, 8 x port + queue of the port)"},
    {"qos 0 reserve 1 64", "reservation 64 is not offered by switch 0 (0 to 63 buffers)"},
    {"qos flow-control 0:1 4096 1",
     "threshold 4096 is not offered by port 0:1 (0 to 4095 buffers)"},
    {"qos 0 global-wred 1 16 1 1 1 1 1 1 1", "weight 16 is not offered by switch 0 (0 to 15)"},
    {"qos 0 global-wred 1 1 101 1 1 1 1 1 1",
     "max p 101 is not offered by switch 0 (0 to 100 percent)"},
};

TEST(Failures, NameTheLimitsOfTheChip)
{
    std::vector<std::string> commands;
    for (const auto& row : kBeyondTheChip)
        commands.push_back(std::string("ctl ") + row.line);
    const auto r = OnBoardUp("one_switch", commands);
    for (size_t i = 0; i < r.size(); ++i)
        EXPECT_THAT(r[i], Refuses(5, kBeyondTheChip[i].complaint));
}

TEST(Failures, OfAPhyNameItsRegister)
{
    const auto r = OnBoard(
        "phy", {"ctl init >/dev/null; ctl phy 0 up >/dev/null; board fault mdio-error --times 0",
                "ctl mdio 0 2", "ctl -v mdio 0 2", "ctl mdio 0 2 --json",
                "board fault clear; ctl phy 0 down >/dev/null; ctl mdio 0 2"});
    EXPECT_THAT(r[1], Refuses(1,
                              "PHY 0 register 0x0002 could not be read: MDIO bus 0 address 4 "
                              "register 2: Input/output error: orblinkctl doctor"));
    EXPECT_THAT(r[2].err, testing::EndsWith("doctor (ETHPHY_ReadMdio)\n"));
    const auto error = nlohmann::json::parse(r[3].err)["error"];
    EXPECT_EQ(error["code"], 1);
    EXPECT_THAT(std::string(error["text"]), Not(HasSubstr("ETHPHY_")));
    EXPECT_THAT(r[4], Refuses(5, "PHY 0 is in reset: orblinkctl phy 0 up"));
}

}  // namespace
}  // namespace onboard

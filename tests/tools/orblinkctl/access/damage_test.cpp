// Regions whose contents the library cannot have written.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// Bytes as printf takes them, at an offset of the switch region.
std::string Write(const std::string& bytes, unsigned offset)
{
    return "printf '" + bytes +
           "' | dd of=/dev/shm/obos_orblink_driver bs=1 seek=" + std::to_string(offset) +
           " conv=notrunc status=none";
}

constexpr unsigned kVlanOfPort2 = 188;
constexpr unsigned kSpeedOfPort1 = 248;
constexpr unsigned kHalName = 848;
constexpr unsigned kCount = 1936;

TEST(Damage, IsReportedAndNotShownAsFacts)
{
    std::vector<std::string> commands = {Write("\\311\\030", kVlanOfPort2)};
    const std::vector<std::string> readers = {
        "port",   "port 2", "port 2 vlan", "vlan",          "show",        "board",
        "switch", "",       "config save", "config verify", "--json port", "mac-vlan"};
    for (const auto& reader : readers)
        commands.push_back("ctl " + reader);
    const auto r = OnBoardUp("one_switch", commands);
    for (size_t i = 1; i < r.size(); ++i)
        EXPECT_THAT(r[i].code == 8 && r[i].out.empty() &&
                        r[i].err.find("port 0:2 has VLAN 6345, the most is 4094; 'orblinkctl down "
                                      "0' and 'orblinkctl up 0 --defaults' write the defaults") !=
                            std::string::npos,
                    true)
            << r[i].command << " ended with " << r[i].code << ": " << r[i].out << r[i].err;
}

TEST(Damage, IsMendedAsTheComplaintSays)
{
    const auto r = OnBoardUp(
        "one_switch", {Write("\\143", kSpeedOfPort1), "ctl port 1", "ctl down 0 >/dev/null",
                       "ctl up 0 --defaults >/dev/null", "ctl port 1 speed -o kv | tail -2"});
    EXPECT_EQ(r[1].code, 8);
    EXPECT_THAT(r[2], Succeeds());
    EXPECT_THAT(r[3], Succeeds());
    EXPECT_THAT(r[4], Prints("ports.0.speed=auto\nports.0.duplex=full\n"));
}

TEST(Damage, OfTheCountIsNoListOfSwitches)
{
    const auto r = OnBoardUp("one_switch", {Write("\\003", kCount), "ctl port"});
    EXPECT_EQ(r[1].code, 8) << r[1].out << r[1].err;
    EXPECT_EQ(r[1].out, "");
}

// The second record was never filled: its objects know less than those of the first.
TEST(Damage, ObjectsThatKnowLessBreakNoTable)
{
    const auto r = OnBoardUp("one_switch", {Write("\\002", kCount), "ctl board", "ctl switch"});
    for (size_t i = 1; i < r.size(); ++i)
        EXPECT_LE(r[i].code, 8) << r[i].command << " was ended by a signal";
}

TEST(Damage, AZeroedRegionIsNotInitialised)
{
    const auto r =
        OnBoardUp("one_switch", {"head -c 5740 /dev/zero | dd of=/dev/shm/obos_orblink_driver "
                                 "conv=notrunc status=none",
                                 "ctl port", "ctl recover --switch --apply"});
    EXPECT_THAT(r[1], Refuses(4,
                              "the switch family is not initialised, its region holds nothing: "
                              "orblinkctl recover --apply, then orblinkctl init"));
    EXPECT_EQ(r[2].code, 0) << r[2].err;
}

TEST(Damage, ControlCharactersNeverReachTheTerminal)
{
    const auto r = OnBoardUp("one_switch", {Write("\\033[31m\\007\\302\\233", kHalName),
                                            "ctl -v port", "ctl -v board", "ctl --json switch"});
    for (size_t i = 1; i < r.size(); ++i) {
        const std::string all = r[i].out + r[i].err;
        EXPECT_THAT(all, HasSubstr("x1b[31m")) << r[i].command;
        EXPECT_THAT(all,
                    AllOf(Not(HasSubstr("\033")), Not(HasSubstr("\a")), Not(HasSubstr("\302\233"))))
            << r[i].command;
    }
}

TEST(Guarded, TheInternalPortIsDisabledByForceOnly)
{
    const auto r =
        OnBoardUp("one_switch", {"ctl port 0 disable", "ctl port 0 enabled -o kv | tail -1",
                                 "ctl port 0 disable --force", "ctl port 1 disable"});
    EXPECT_THAT(r[0], Refuses(5, "port 0:0 is the port to the SoC: --force disables it"));
    EXPECT_THAT(r[1], Prints("ports.0.enabled=true\n"));
    EXPECT_THAT(r[2], Prints("port 0:0: enabled off\n"));
    EXPECT_THAT(r[3], Prints("port 0:1: enabled off\n"));
}

TEST(Guarded, MacVlanTakesStationsAndRemovesWhatIsThere)
{
    const auto r = OnBoardUp(
        "one_switch",
        {"ctl mac-vlan add 1 ff:ff:ff:ff:ff:ff 5", "ctl mac-vlan add 1 01:00:5e:00:00:01 5",
         "ctl mac-vlan remove 1 00:00:5e:00:53:01", "ctl mac-vlan add 1 00:00:5e:00:53:01 5",
         "ctl mac-vlan remove 2 00:00:5e:00:53:01", "ctl mac-vlan remove 1 00:00:5e:00:53:01",
         "ctl mac-vlan remove 1 00:00:5e:00:53:01"});
    EXPECT_THAT(r[0],
                Refuses(2, "ff:ff:ff:ff:ff:ff is the broadcast address: no frame comes from it"));
    EXPECT_THAT(r[1], Refuses(2, "01:00:5e:00:00:01 is a group address: no frame comes from it"));
    const std::string none =
        "no MAC-to-VLAN entry 00:00:5e:00:53:01, mask 0xfff: orblinkctl mac-vlan";
    EXPECT_THAT(r[2], Refuses(3, "port 0:1: " + none));
    EXPECT_EQ(r[3].code, 0) << r[3].err;
    EXPECT_THAT(r[4], Refuses(3, "port 0:2: " + none));
    EXPECT_EQ(r[5].code, 0) << r[5].err;
    EXPECT_THAT(r[6], Refuses(3, "port 0:1: " + none));
}

TEST(Guarded, TheMacTableOfASwitchInResetIsNoEmptyOne)
{
    const auto r = OnBoardUp(
        "one_switch", {"ctl down 0 >/dev/null", "ctl mac", "ctl mac 0", "ctl config verify"});
    const char* down = "switch 0 is in reset: orblinkctl up 0";
    EXPECT_THAT(r[1], Refuses(5, down));
    EXPECT_THAT(r[2], Refuses(5, down));
    EXPECT_EQ(r[3].code, 5);
    EXPECT_EQ(r[3].out,
              std::string("checked: 0\nnot checked: switch 0: ") + down + "\nno differences\n");
}

}  // namespace
}  // namespace onboard

// Every argument and option: what is just outside its range is refused by name, before the library
// is asked.
#include "tests/tools/orblinkctl/on_board.h"

namespace onboard {
namespace {

struct Refusal {
    const char* line;
    const char* complaint;
};

constexpr char kPorts[] =
    "allowed is PORT or SWITCH:PORT with switch 0 or 1 and port 0 to 7, or a name of the names "
    "file";

const Refusal kRefusals[] = {
    {"switch -1", "bad SWITCH '-1': allowed is 0 or 1"},
    {"switch x", "bad SWITCH 'x': allowed is 0 or 1"},
    {"up 0x", "bad SWITCH '0x': allowed is 0 or 1"},
    {"port 0:", "bad PORT '0:'"},
    {"board lane-reset 2", "bad GMAC '2': allowed is 0 or 1"},
    {"board pin 17 0", "bad PIN '17': allowed is 18 or 19"},
    {"board pin 20 0", "bad PIN '20': allowed is 18 or 19"},
    {"board pin 18 2", "bad LEVEL '2': allowed is 0 or 1"},
    {"port 1 vlan 0", "bad VID '0': allowed is 1 to 4094"},
    {"port 1 vlan 4095", "bad VID '4095': allowed is 1 to 4094"},
    {"port 1 pcp 8", "bad PCP '8': allowed is 0 to 7"},
    {"port 1 tagging 4294967296",
     "bad TAGGING '4294967296': allowed is untagged, tagged, or the chip's number 0 to "
     "4294967295"},
    {"port 1 group -1", "bad GROUP '-1': allowed is 0 to 4294967295 or none"},
    {"port 1 speed 1234", "bad SPEED '1234': allowed is auto, 10, 100, 1000, 2500 or 10000 (Mb/s)"},
    {"port 1 speed 100 both", "bad DUPLEX 'both': allowed is full or half"},
    {"port 1 duplex 1", "bad DUPLEX '1': allowed is full or half"},
    {"port 1 eee yes", "bad ON-OFF 'yes': allowed is on or off"},
    {"port 1 delay 1", "bad ON-OFF '1': allowed is on or off"},
    {"igmp 0 maybe", "bad ON-OFF 'maybe': allowed is on or off"},
    {"port 1 mirror 8",
     "bad DESTINATION '8': allowed is a port of the same switch, 0 to 7 or as PORT, or off"},
    {"port 1 dvt 0",
     "bad TEST '0': allowed is mac-loopback, line-loopback, packets, bit-stream (1 to 4) or "
     "off"},
    {"port 1 dvt 5",
     "bad TEST '5': allowed is mac-loopback, line-loopback, packets, bit-stream (1 to 4) or "
     "off"},
    {"port 1 test-mode 256",
     "bad TEST-MODE '256': allowed is off, waveform, jitter-master, jitter-slave, distortion, or "
     "the chip's number 0 to 255"},
    {"led 0 256",
     "bad LED-MODE '256': allowed is off, link, activity, link+activity, speed, duplex+collision, "
     "on, blinking, or the chip's number 0 to 255"},
    {"aging 0 0", "bad STEP '0': allowed is 15s, 75s, 300s, 1200s, 4800s (1 to 5)"},
    {"aging 0 6", "bad STEP '6': allowed is 15s, 75s, 300s, 1200s, 4800s (1 to 5)"},
    {"mtu 0 65536", "bad BYTES '65536': allowed is 0 to 65535"},
    {"bridge-mode 0 on 0", "bad TPID '0': allowed is 1 to 65535"},
    {"bridge-mode 0 on 0x10000", "bad TPID '0x10000': allowed is 1 to 65535"},
    {"mac-vlan add 0:1 00:00:5e:00:53 5",
     "bad MAC '00:00:5e:00:53': allowed is six hexadecimal pairs separated by colons"},
    {"mac-vlan add 0:1 00:00:5e:00:53:0g 5",
     "bad MAC '00:00:5e:00:53:0g': allowed is six hexadecimal pairs separated by colons"},
    {"mac-vlan add 0:1 00:00:5e:00:53:01 4095", "bad VID '4095': allowed is 1 to 4094"},
    {"mac-vlan add 0:1 00:00:5e:00:53:01 5 --mask 0x1000",
     "bad --mask '0x1000': allowed is 0 to 0xfff, one bit for each hexadecimal digit of the "
     "address"},
    {"switch 0 service 4294967296", "bad STATUS '4294967296': allowed is 0 to 4294967295"},
    {"switch 0 up --vendor-params abc",
     "bad --vendor-params 'abc': allowed is up to 32 bytes as hexadecimal pairs"},
    {"up 0 --vendor-params "
     "000102030405060708090a0b0c0d0e0f000102030405060708090a0b0c0d0e0f00",
     "bad --vendor-params '000102030405060708090a0b0c0d0e0f000102030405060708090a0b0c0d0e0f00': "
     "allowed is up to 32 bytes as hexadecimal pairs"},
    {"mac --vlan 0", "bad --vlan '0': allowed is 1 to 4094"},
    {"mac --port 8", "bad --port '8'"},
    {"mac --prefix xy",
     "bad --prefix 'xy': allowed is the beginning of an address, hexadecimal digits and colons"},
    {"reg 0 65536 0", "bad PORT-NUMBER '65536': allowed is 0 to 65535"},
    {"reg 0 1 0x10000",
     "bad REGISTERS '0x10000': allowed is a register or a range FIRST-LAST, 0 to 0xffff"},
    {"reg 0 1 5-4",
     "bad REGISTERS '5-4': allowed is a register or a range FIRST-LAST, 0 to 0xffff"},
    {"reg 0 1 5 0x10000",
     "bad VALUE '0x10000': allowed is 0 to 0xffff, or VALUE/MASK with no bit outside the mask"},
    {"smi 0 5 2/1",
     "bad VALUE '2/1': allowed is 0 to 0xffff, or VALUE/MASK with no bit outside the mask"},
    {"smi 0 5 0/0",
     "bad VALUE '0/0': allowed is 0 to 0xffff, or VALUE/MASK with no bit outside the mask"},
    {"ioctl 0 2147483648", "bad COMMAND-NUMBER '2147483648': allowed is -2147483648 to 2147483647"},
    {"ioctl 0 -2147483649",
     "bad COMMAND-NUMBER '-2147483649': allowed is -2147483648 to 2147483647"},
    {"ioctl 0 16 0", "bad PARAMETER '0': allowed is up to 256 bytes as hexadecimal pairs"},
    {"mdio 0 32", "bad REGISTERS '32': allowed is a clause-22 register or a range, 0 to 31"},
    {"mmd 0 32 0", "bad PARTITION '32': allowed is 0 to 31"},
    {"phy 0 speed 10000", "bad PHY-SPEED '10000': allowed is 10, 100, 1000 or 2500 (Mb/s)"},
    {"phy 0 speed 10 duplex", "bad DUPLEX 'duplex': allowed is full or half"},
    {"phy 0 eee 1", "bad ON-OFF '1': allowed is on or off"},
    {"qos 0 wred 256 1 1 1 1 1 1", "bad QUEUE '256': allowed is 0 to 255"},
    {"qos 0 wred 1 65536 1 1 1 1 1", "bad GREEN-MIN '65536': allowed is 0 to 65535"},
    {"qos 0 wred 1 1 65536 1 1 1 1", "bad GREEN-MAX '65536': allowed is 0 to 65535"},
    {"qos 0 wred 1 1 1 65536 1 1 1", "bad YELLOW-MIN '65536': allowed is 0 to 65535"},
    {"qos 0 wred 1 1 1 1 65536 1 1", "bad YELLOW-MAX '65536': allowed is 0 to 65535"},
    {"qos 0 wred 1 1 1 1 1 65536 1", "bad RED-MIN '65536': allowed is 0 to 65535"},
    {"qos 0 wred 1 1 1 1 1 1 65536", "bad RED-MAX '65536': allowed is 0 to 65535"},
    {"qos 0 global-wred 256 1 1 1 1 1 1 1 1", "bad ENABLE '256': allowed is 0 to 255"},
    {"qos 0 global-wred 1 256 1 1 1 1 1 1 1", "bad WEIGHT '256': allowed is 0 to 255"},
    {"qos 0 global-wred 1 1 256 1 1 1 1 1 1", "bad MAX-P '256': allowed is 0 to 255"},
    {"qos 0 reserve 1 65536", "bad BUFFERS '65536': allowed is 0 to 65535"},
    {"qos flow-control 1 65536 1", "bad XOFF '65536': allowed is 0 to 65535"},
    {"qos flow-control 1 1 65536", "bad XON '65536': allowed is 0 to 65535"},
    {"-o xml show", "bad -o 'xml': allowed is text, json or kv"},
    {"--wait -1 show", "bad --wait '-1': allowed is 0 to 86400"},
    {"--wait 86401 show", "bad --wait '86401': allowed is 0 to 86400"},
    {"--color blue show", "bad --color 'blue': allowed is auto, always or never"},
    {"show --defaults", "option --defaults does not belong to 'show'"},
    {"port 1 vlan 5 --lock", "option --lock does not belong to 'port PORT vlan VID'"},
    {"show --nonsense", "unknown option '--nonsense'"},
    {"show --jsno", "unknown option '--jsno'; did you mean '--json'?"},
    {"show more", "unexpected 'more' after 'show': expected nothing"},
    {"mac-vlan add 0:1", "incomplete after 'mac-vlan add 0:1': expected MAC"},
    {"init --phy --no-defaults", "--no-defaults is for the switch family"},
    {"mdio decode absent", "absent: No such file or directory"},
};

TEST(Refusal, AnIndexThatNoBoardHasIsNoSuchObject)
{
    const auto r = OnBoardUp("one_switch", {"ctl switch 2", "ctl up 5", "ctl port 8",
                                            "ctl port 2:0", "ctl port 0:9 vlan", "ctl phy 2"});
    const std::string ports = std::string("': ") + kPorts;
    EXPECT_THAT(r[0], Refuses(3, "no SWITCH '2': allowed is 0 or 1"));
    EXPECT_THAT(r[1], Refuses(3, "no SWITCH '5': allowed is 0 or 1"));
    EXPECT_THAT(r[2], Refuses(3, "no PORT '8" + ports));
    EXPECT_THAT(r[3], Refuses(3, "no PORT '2:0" + ports));
    EXPECT_THAT(r[4], Refuses(3, "no PORT '0:9" + ports));
    EXPECT_THAT(r[5], Refuses(3, "no PHY '2': allowed is 0 or 1, or a name of the names file"));
}

TEST(Refusal, NamesTheWordAndWhatIsAllowed)
{
    std::vector<std::string> commands;
    for (const auto& refusal : kRefusals)
        commands.push_back(std::string("ctl ") + refusal.line);
    const auto outcomes = OnBoard("no_devices", commands);
    for (size_t i = 0; i < outcomes.size(); ++i) {
        std::string complaint = kRefusals[i].complaint;
        if (complaint.starts_with("bad PORT '") || complaint.starts_with("bad --port '"))
            complaint += std::string(": ") + kPorts;
        EXPECT_THAT(outcomes[i], Refuses(2, complaint));
    }
}

TEST(Refusal, AnOptionWithoutItsArgumentIsNamed)
{
    const auto r = OnBoard("no_devices",
                           {"ctl show -o", "ctl mac --vlan", "ctl show --json=1", "ctl show -z"});
    EXPECT_THAT(r[0], Refuses(2, "option -o needs FORMAT: text, json or kv"));
    EXPECT_THAT(r[1], Refuses(2, "option --vlan needs VID: 1 to 4094"));
    EXPECT_THAT(r[2], Refuses(2, "option --json takes no argument"));
    EXPECT_THAT(r[3], Refuses(2, "unknown option '-z'"));
}

TEST(Refusal, ADumpWithABadLineIsRefusedByLine)
{
    const auto r = OnBoard("no_devices", {"printf '0x1: 0x796d\\nnonsense\\n' >dump; "
                                          "ctl mdio decode dump"});
    EXPECT_THAT(r[0], Refuses(2, "dump:2: expected REGISTER: VALUE, not 'nonsense'"));
}

}  // namespace
}  // namespace onboard

// The switch ports in the board file.
#include <gmock/gmock.h>

#include "virtual_board/description/board_file.h"

using namespace vboard;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

constexpr char kSwitch[] = "[[switch]]\nhal = \"x.so\"\nserdes = 0\ninternal_port = 2\n";

BoardDescription Parsed(const std::string& text)
{
    auto parsed = ParseBoard(text, "b");
    auto* errors = std::get_if<BoardFileErrors>(&parsed);
    EXPECT_EQ(errors, nullptr) << (errors != nullptr ? errors->front() : "");
    return errors != nullptr ? BoardDescription{} : std::get<BoardDescription>(parsed);
}

std::string Complaint(const std::string& port)
{
    auto parsed = ParseBoard(kSwitch + std::string("[[switch.port]]\n") + port, "b");
    auto* errors = std::get_if<BoardFileErrors>(&parsed);
    return errors != nullptr ? errors->front() : "none";
}

}  // namespace

TEST(BoardPorts, AreNoInterfacesUnlessTheFileSaysSo)
{
    EXPECT_FALSE(Parsed("").tapPorts);
    EXPECT_FALSE(Parsed("ports = \"none\"").tapPorts);
    EXPECT_TRUE(Parsed("ports = \"tap\"").tapPorts);
    auto parsed = ParseBoard("ports = \"tun\"", "b");
    EXPECT_THAT(std::get<BoardFileErrors>(parsed),
                ElementsAre(HasSubstr("ports: expected one of \"none\", \"tap\"")));
}

TEST(BoardPorts, HaveNamesAndHostsOfTheirOwn)
{
    const BoardDescription spec = Parsed(kSwitch);
    EXPECT_EQ(spec.switches[0].ports[1].interface, "sw0p1");
    EXPECT_EQ(spec.switches[0].ports[1].host, "sw0p1");
    EXPECT_EQ(spec.switches[0].ports[2].interface, "sw0soc");
    EXPECT_FALSE(spec.switches[0].ports[1].mac);
}

TEST(BoardPorts, AreAsTheirTableDescribesThem)
{
    const BoardDescription spec = Parsed(kSwitch + std::string(R"(
[[switch.port]]
port = 7
interface = "eth7"
address = "2001:db8::7/64"
mac = "02:00:00:00:00:07"
[[switch.port]]
port = 6
host = "none"
)"));
    const PortDescription& port = spec.switches[0].ports[7];
    EXPECT_EQ(port.interface, "eth7");
    EXPECT_EQ(port.host, "eth7");
    EXPECT_EQ(port.address, "2001:db8::7/64");
    EXPECT_EQ(port.mac, (MacAddress{2, 0, 0, 0, 0, 7}));
    EXPECT_EQ(spec.switches[0].ports[6].host, "");
    EXPECT_EQ(spec.switches[0].ports[6].interface, "sw0p6");
}

TEST(BoardPorts, PortsOfOneSwitchMayShareAHost)
{
    const BoardDescription spec =
        Parsed(kSwitch + std::string("[[switch.port]]\nport = 0\nhost = \"h\"\n"
                                     "[[switch.port]]\nport = 1\nhost = \"h\"\n"));
    EXPECT_EQ(spec.switches[0].ports[0].host, spec.switches[0].ports[1].host);
}

TEST(BoardPorts, MistakesAreNamed)
{
    EXPECT_THAT(Complaint("interface = \"x\""), HasSubstr("key 'port' is missing here"));
    EXPECT_THAT(Complaint("port = 8"), HasSubstr("b:6:8: port: expected"));
    EXPECT_THAT(Complaint("port = 1\ninterface = \"sixteen-letters-\""),
                HasSubstr("b:7:13: interface: expected a string of 1 to 15 characters"));
    EXPECT_THAT(Complaint("port = 1\ninterface = \"a/b\""), HasSubstr("expected letters, digits"));
    EXPECT_THAT(Complaint("port = 1\ninterface = \"sw0p3\""), HasSubstr("names of their own"));
    for (const char* address : {"10.0.0.1", "10.0.0.1/33", "10.0.0.256/8", "2001:db8::/129",
                                "10.0.0.1/", "10.0.0.1/8x", "/8"})
        EXPECT_THAT(Complaint("port = 1\naddress = \"" + std::string(address) + "\""),
                    HasSubstr("address: expected an address with prefix length"))
            << address;
    for (const char* mac : {"02:00:00:00:00", "03:00:00:00:00:01", "00:00:00:00:00:00"})
        EXPECT_THAT(Complaint("port = 1\nmac = \"" + std::string(mac) + "\""),
                    HasSubstr("mac: expected an address of one station"))
            << mac;
    EXPECT_THAT(Complaint("port = 1\ncolour = 1"), HasSubstr("unknown key 'colour'"));
    EXPECT_THAT(Complaint("port = 1\n[[switch.port]]\nport = 1"),
                HasSubstr("b:8:8: port: expected a port without a table before"));
}

TEST(BoardPorts, HostsBelongToOneSwitch)
{
    const std::string port = "[[switch.port]]\nport = 0\nhost = \"h\"\n";
    auto parsed = ParseBoard(kSwitch + port + kSwitch + port, "b");
    EXPECT_THAT(std::get<BoardFileErrors>(parsed), ElementsAre(HasSubstr("names of their own")));
}

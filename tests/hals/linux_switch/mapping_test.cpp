// The file that says which interface is which port.
#include "hals/linux_switch/mapping.h"

#include <gtest/gtest.h>

#include <string>

using namespace linux_switch;

namespace {

struct Parsed {
    SwitchMemory memory{};
    std::string fault;  // "LINE: WHAT"
};

Parsed Parse(const std::string& text)
{
    Parsed parsed;
    const MappingFault fault = ParseMapping(text.data(), text.size(), parsed.memory);
    if (fault.what)
        parsed.fault = std::to_string(fault.line) + ": " + fault.what;
    return parsed;
}

const std::string kHead = "bridge = \"br0\"\ncpu_port = 0\n";

}  // namespace

TEST(LinuxSwitchMapping, TakesBridgeCpuPortAndPorts)
{
    const Parsed parsed = Parse("# a gateway\n" + kHead +
                                "on_reset = \"settings\"  # of networkd\n\n"
                                "[ports]\n1 = \"lan1\"\n  2=\"lan#2\"\t\r\n");
    EXPECT_EQ(parsed.fault, "");
    EXPECT_STREQ(parsed.memory.bridge, "br0");
    EXPECT_EQ(parsed.memory.cpuPort, 0);
    EXPECT_EQ(parsed.memory.ports, 3);
    EXPECT_EQ(parsed.memory.onReset, OnReset::kSettings);
    EXPECT_STREQ(parsed.memory.port[0].name, "");
    EXPECT_STREQ(parsed.memory.port[1].name, "lan1");
    EXPECT_STREQ(parsed.memory.port[2].name, "lan#2");
    EXPECT_EQ(parsed.memory.mapped, 1);
}

TEST(LinuxSwitchMapping, BuildsTheBridgeUnlessItIsToldNotTo)
{
    EXPECT_EQ(Parse(kHead + "[ports]\n1 = \"lan1\"\n").memory.onReset, OnReset::kBuild);
    EXPECT_EQ(Parse(kHead + "on_reset = \"build\"\n[ports]\n1 = \"lan1\"\n").memory.onReset,
              OnReset::kBuild);
    EXPECT_EQ(Parse(kHead + "on_reset = settings\n[ports]\n1 = \"lan1\"\n").fault,
              "3: expected \"build\" or \"settings\"");
}

TEST(LinuxSwitchMapping, TakesAnInterfaceAsTheCpuPort)
{
    const Parsed parsed = Parse("bridge = \"br0\"\ncpu_port = 1\n[ports]\n0 = \"a\"\n1 = \"b\"\n");
    EXPECT_EQ(parsed.fault, "");
    EXPECT_FALSE(parsed.memory.CpuIsBridge());
    EXPECT_STREQ(parsed.memory.NameOf(1), "b");
}

TEST(LinuxSwitchMapping, NamesTheLineAndWhatItExpects)
{
    EXPECT_EQ(Parse("bridge \"br0\"\n").fault, "1: expected KEY = VALUE");
    EXPECT_EQ(Parse("bridge = br0\n").fault, "1: expected the name of an interface, in quotes");
    EXPECT_EQ(Parse("\nbrige = \"br0\"\n").fault,
              "2: expected bridge, cpu_port, on_reset or [ports]");
    EXPECT_EQ(Parse(kHead + "[ports]\n8 = \"lan8\"\n").fault, "4: expected a port, 0 to 7");
    EXPECT_EQ(Parse("cpu_port = 8\n").fault, "1: expected a port, 0 to 7");
    EXPECT_EQ(Parse(kHead + "[port]\n").fault, "3: expected [ports], once");
    EXPECT_EQ(Parse(kHead + "[ports]\n[ports]\n").fault, "4: expected [ports], once");
}

TEST(LinuxSwitchMapping, RefusesWhatIsThereTwice)
{
    EXPECT_EQ(Parse(kHead + "bridge = \"br1\"\n").fault, "3: is there twice");
    EXPECT_EQ(Parse(kHead + "cpu_port = 1\n").fault, "3: is there twice");
    EXPECT_EQ(Parse(kHead + "[ports]\n1 = \"a\"\n1 = \"b\"\n").fault, "5: is there twice");
    EXPECT_EQ(Parse(kHead + "[ports]\n1 = \"a\"\n2 = \"a\"\n").fault,
              "5: an interface is two ports");
    EXPECT_EQ(Parse(kHead + "[ports]\n1 = \"br0\"\n").fault, "4: an interface is two ports");
}

TEST(LinuxSwitchMapping, RefusesWhatIsMissing)
{
    EXPECT_EQ(Parse("").fault, "0: bridge is missing");
    EXPECT_EQ(Parse("bridge = \"br0\"\n").fault, "1: cpu_port is missing");
    EXPECT_EQ(Parse(kHead).fault, "2: a switch has a port beside the CPU port");
    EXPECT_EQ(Parse(kHead + "[ports]\n2 = \"a\"\n").fault, "4: the port numbers have a gap");
}

TEST(LinuxSwitchMapping, RefusesWhatNoInterfaceIsCalled)
{
    for (const std::string name :
         {"", ".", "..", "a b", "a/b", "a:b", "sixteen-letters-", "a\\tb", "a\"b"})
        EXPECT_EQ(Parse("bridge = \"" + name + "\"\n").fault,
                  "1: expected the name of an interface, in quotes")
            << name;
    EXPECT_EQ(Parse("bridge = \"fifteen-letters\"\n").fault, "1: cpu_port is missing");
}

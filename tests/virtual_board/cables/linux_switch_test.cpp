// What the program shows of the kernel's own switch.
#include "tests/support/kernel_parts.h"
#include "tests/virtual_board/cables/traffic.h"

using namespace traffic;
using ::testing::HasSubstr;

class ShownLinuxSwitch : public Traffic {
protected:
    void SetUp() override
    {
        if (!support::KernelHasCables())
            GTEST_SKIP() << "network namespaces or veth interfaces are not allowed here";
        UseLinux();
        Traffic::SetUp();
    }
};

TEST_F(ShownLinuxSwitch, HasCountersByNameAndSaysWhichNobodyKeeps)
{
    const std::string shown =
        Run("reach a 10.0.0.2\n"
            "orblinkctl port 0:1 counters --json >$S/counters; orblinkctl port 0:1 counters\n"
            "orblinkctl counters >$S/all; grep -c unknown $S/all || true\n"
            "orblinkctl counters --all | grep -c unknown\n"
            "orblinkctl counters --per-second --interval 0.1 >$S/rates && echo rates\n");
    const auto counters = Json("counters")["ports"][0]["counters"];
    EXPECT_EQ(counters.size(), 30u);
    EXPECT_GE(counters["aFramesReceivedOK"], 2);
    EXPECT_GE(counters["aFramesTransmittedOK"], 2);
    EXPECT_TRUE(counters["dot1qTpVlanPortInDiscards"].is_null());
    EXPECT_THAT(shown, ::testing::ContainsRegex("dot1qTpVlanPortInDiscards +unknown\n"));
    EXPECT_THAT(shown, ::testing::ContainsRegex("\n0\n[1-9][0-9]+\nrates\n$"));
}

TEST_F(ShownLinuxSwitch, HasStationsThatAreBoundAndForgotten)
{
    EXPECT_EQ(Run("mac() { orblinkctl mac 0 | awk -v m=02:00:00:00:00:$1 '$3 == m { print $2, $4, "
                  "$5 }'; }\n"
                  "reach a 10.0.0.2; mac 01; mac 02\n"
                  "ctl mac flush; mac 01\n"
                  "ctl mac add 0:3 02:00:00:00:00:77 1; mac 77\n"
                  "ctl mac remove 0:3 02:00:00:00:00:77 1; mac 77\n"
                  "orblinkctl mac 0 table --json >$S/table\n"),
              "yes\n1 1 no\n2 1 no\n3 1 yes\n");
    EXPECT_EQ(Json("table")["more"], false);
}

TEST_F(ShownLinuxSwitch, SaysWhatTheKernelHasNothingFor)
{
    EXPECT_THAT(Run("orblinkctl port 0:1 counters reset 2>&1 || echo $?\n"),
                HasSubstr("the counters were not reset"));
}

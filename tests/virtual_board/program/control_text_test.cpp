#include <gmock/gmock.h>

#include "virtual_board/program/control_client.h"

namespace vboard {
namespace {

TEST(ControlText, AJournalLineSaysEverything)
{
    Json answer = {{"dropped", 3},
                   {"entries",
                    {{{"number", 12},
                      {"timeNs", 3200000123},
                      {"pid", 77},
                      {"kind", "mdio"},
                      {"call", "read"},
                      {"facts", {{"bus", 0}, {"reg", 4}, {"value", 255}}},
                      {"result", "EIO"},
                      {"note", "held in reset"}}}}};
    EXPECT_EQ(JournalText(answer),
              "(3 older entries dropped)\n"
              "    12     3.200000      77 mdio    read bus=0 reg=0x0004 value=0x00ff -> EIO "
              "(held in reset)\n");
}

TEST(ControlText, StateIsATreeWithShortListsOnOneLine)
{
    Json answer = Json::parse(R"({"schema": 1, "ok": true, "board": "b",
        "lanes": {"3": 0, "4": 1}, "empty": [],
        "devices": {"sw0": {"chip": "x", "counters": {"a": 0, "b": 2},
                            "queues": [{"q": 0, "w": [1, 2]}, {"q": 1, "w": [3]}],
                            "ports": [{"vlan": 1, "link": {"up": true}}]}}})");
    EXPECT_EQ(StateText(answer),
              "board: b\n"
              "lanes: 3=0 4=1\n"
              "empty: \n"
              "devices:\n"
              "  sw0:\n"
              "    chip: x\n"
              "    counters: b=2\n"
              "    queues:\n"
              "      - q=0 w=1,2\n"
              "      - q=1 w=3\n"
              "    ports:\n"
              "      -\n"
              "        vlan: 1\n"
              "        link: up=true\n");
}

TEST(ControlText, RegistersAreHexadecimal)
{
    EXPECT_EQ(RegistersText({{"registers", {{{"reg", 17}, {"value", 43981}}}}}), "0x11 0xabcd\n");
}

}  // namespace
}  // namespace vboard

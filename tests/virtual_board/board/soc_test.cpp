#include "virtual_board/board/soc.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include "phy/ethphy_hal.h"

namespace vboard {
namespace {

using testing::ElementsAre;
using wire::Attribute;

// The request as the library lays it out.
static_assert(sizeof(wire::GmacReconfig) == sizeof(GmacReconfigRequest));
static_assert(offsetof(wire::GmacReconfig, command) == offsetof(GmacReconfigRequest, Command));
static_assert(offsetof(wire::GmacReconfig, speed) == offsetof(GmacReconfigRequest, Speed));
static_assert(offsetof(wire::GmacReconfig, duplex) == offsetof(GmacReconfigRequest, Duplex));
static_assert(offsetof(wire::GmacReconfig, result) == offsetof(GmacReconfigRequest, Result));

// Remembers what its reset line did.
class LineChip : public MdioDevice {
public:
    explicit LineChip(std::vector<bool>& line) : line_{line} {}

    std::optional<uint16_t> Read22(uint8_t) override { return 0; }
    bool Write22(uint8_t, uint16_t) override { return true; }
    void SetResetLine(bool held) override { line_.push_back(held); }
    void Advance(std::chrono::nanoseconds) override {}
    bool SetLink(unsigned, bool, unsigned, bool) override { return true; }
    nlohmann::json State() const override { return {}; }

private:
    std::vector<bool>& line_;
};

class SocTest : public testing::Test {
protected:
    SocTest()
    {
        for (size_t i = 0; i < std::size(wirings); ++i)
            devices.push_back({"x", &wirings[i], std::make_unique<LineChip>(lines[i])});
    }
    Soc Make(bool held = false)
    {
        spec.resetHeldAtPowerOn = held;
        return Soc{spec, devices, faults, journal, clock};
    }
    void Set(std::string_view name)
    {
        faults.Add({FindFault(name), FindFault(name)->defaultValue, 1, 1});
    }
    static wire::GmacRequest Gmac(const char* outer, const char* inner, uint32_t command)
    {
        wire::GmacRequest request{};
        strcpy(request.outerName, outer);
        strcpy(request.reconfig.ifName, inner);
        request.reconfig.command = command;
        request.reconfig.speed = 4;
        request.reconfig.duplex = 1;
        return request;
    }

    Wiring wirings[3] = {{.halLibName = "", .chip = "", .resetGpioPin = 18},
                         {.halLibName = "", .chip = "", .resetGpioPin = 19},
                         {.halLibName = "", .chip = ""}};
    std::vector<bool> lines[3];
    std::vector<Device> devices;
    BoardDescription spec;
    BoardClock clock{1};
    Journal journal{clock};
    Faults faults;
};

TEST_F(SocTest, EachPinHoldsItsOwnDevice)
{
    Soc soc = Make();
    for (auto& line : lines)
        line.clear();
    EXPECT_EQ(soc.WriteAttribute(Attribute::kReset0, "0"), 0);
    EXPECT_EQ(soc.WriteAttribute(Attribute::kReset0, "1\n"), 0);
    EXPECT_EQ(soc.WriteAttribute(Attribute::kReset1, "0\n"), 0);
    EXPECT_THAT(lines[0], ElementsAre(true, false));
    EXPECT_THAT(lines[1], ElementsAre(true));
    EXPECT_THAT(lines[2], ElementsAre());
    EXPECT_EQ(soc.State()["resetLines"], (Json{{"18", 1}, {"19", 0}}));
}

TEST_F(SocTest, LinesAtPowerOn)
{
    Make();
    EXPECT_FALSE(lines[0].back());
    Make(true);
    EXPECT_TRUE(lines[0].back());
    EXPECT_TRUE(lines[1].back());
    EXPECT_FALSE(lines[2].back());
}

TEST_F(SocTest, AnAttributeTakesOnlyZeroAndOne)
{
    Soc soc = Make();
    for (const char* text : {"", "2", "01", "-1", "1 ", "on", "1\n\n"})
        EXPECT_EQ(soc.WriteAttribute(Attribute::kReset0, text), EINVAL) << text;
    EXPECT_EQ(soc.State()["resetLines"]["18"], 1);
    Set("attr-error");
    EXPECT_EQ(soc.WriteAttribute(Attribute::kReset0, "0"), EIO);
    EXPECT_EQ(soc.State()["resetLines"]["18"], 1);
}

TEST_F(SocTest, AttributesReadBack)
{
    spec.battery = 4;
    Soc soc = Make();
    std::string text;
    EXPECT_EQ(soc.ReadAttribute(Attribute::kSystemState, text), 0);
    EXPECT_EQ(text, "4\n");
    soc.SetBattery(0);
    soc.ReadAttribute(Attribute::kSystemState, text);
    EXPECT_EQ(text, "0\n");
    soc.WriteAttribute(Attribute::kReset1, "0");
    soc.ReadAttribute(Attribute::kReset1, text);
    EXPECT_EQ(text, "0\n");
    Set("attr-open");
    EXPECT_EQ(soc.ReadAttribute(Attribute::kReset1, text), ENOENT);
    EXPECT_EQ(soc.OpenAttributeForWriting(Attribute::kSystemState), EACCES);
    EXPECT_EQ(soc.OpenAttributeForWriting(Attribute::kReset0), 0);
}

TEST_F(SocTest, LanesHaveClientsThreeToSix)
{
    Soc soc = Make();
    EXPECT_EQ(soc.ResetLane(2), EINVAL);
    EXPECT_EQ(soc.ResetLane(7), EINVAL);
    for (uint32_t client = 3; client <= 6; ++client)
        EXPECT_EQ(soc.ResetLane(client), 0);
    Set("lane-error");
    EXPECT_EQ(soc.ResetLane(3), EIO);
    EXPECT_EQ(soc.State()["laneResets"], (Json{{"3", 1}, {"4", 1}, {"5", 1}, {"6", 1}}));
}

TEST_F(SocTest, GmacRequestsAreChecked)
{
    Soc soc = Make();
    int32_t result = 5;
    EXPECT_EQ(soc.ReconfigureGmac(Gmac("nsgmii0", "nsgmii1", 55), result), EINVAL);
    EXPECT_EQ(soc.ReconfigureGmac(Gmac("nsgmii0", "nsgmii0", 56), result), EINVAL);
    EXPECT_EQ(result, 5);
    EXPECT_EQ(soc.ReconfigureGmac(Gmac("nsgmii1", "nsgmii1", 55), result), 0);
    EXPECT_EQ(result, 0);
    Set("gmac-result");
    EXPECT_EQ(soc.ReconfigureGmac(Gmac("nsgmii1", "nsgmii1", 55), result), 0);
    EXPECT_EQ(result, -1);
    EXPECT_EQ(soc.State()["interfaces"]["nsgmii1"],
              (Json{{"up", true}, {"speed", 4}, {"duplex", 1}, {"reconfigurations", 1}}));
    EXPECT_EQ(soc.State()["interfaces"]["nsgmii0"]["reconfigurations"], 0);
}

TEST_F(SocTest, InterfacesGoUpAndDown)
{
    Soc soc = Make();
    EXPECT_EQ(soc.SetInterface(1, false), 0);
    EXPECT_EQ(soc.SetInterface(2, false), EINVAL);
    EXPECT_EQ(soc.State()["interfaces"]["nsgmii0"]["up"], true);
    EXPECT_EQ(soc.State()["interfaces"]["nsgmii1"]["up"], false);
}

}  // namespace
}  // namespace vboard

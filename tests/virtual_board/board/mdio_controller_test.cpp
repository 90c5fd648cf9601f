#include "virtual_board/board/mdio_controller.h"

#include <gmock/gmock.h>

#include <cerrno>

namespace vboard {
namespace {

using testing::_;
using testing::InSequence;
using testing::Return;

class MockChip : public MdioDevice {
public:
    MOCK_METHOD(std::optional<uint16_t>, Read22, (uint8_t), (override));
    MOCK_METHOD(bool, Write22, (uint8_t, uint16_t), (override));
    MOCK_METHOD(std::optional<uint16_t>, Read45, (uint8_t, uint16_t), (override));
    MOCK_METHOD(bool, Write45, (uint8_t, uint16_t, uint16_t), (override));
    MOCK_METHOD(void, SetResetLine, (bool), (override));
    MOCK_METHOD(void, Advance, (std::chrono::nanoseconds), (override));
    MOCK_METHOD(bool, SetLink, (unsigned, bool, unsigned, bool), (override));
    MOCK_METHOD(nlohmann::json, State, (), (const, override));
    std::string_view Complaint() const override { return "not today"; }
};

class MdioControllerTest : public testing::Test {
protected:
    MdioControllerTest()
    {
        auto owned = std::make_unique<testing::StrictMock<MockChip>>();
        chip = owned.get();
        devices.push_back({"sw0", &wiring, std::move(owned)});
        devices.push_back({"sw1", &empty, nullptr});
    }
    int Access(bool write, uint16_t phyId, uint16_t reg, uint16_t bus, uint16_t value = 0)
    {
        access = {write, phyId, reg, value, 0, bus, 0};
        return mdio.Access(access);
    }
    Json Last() { return journal.Show({{}, 1})["entries"][0]; }

    Wiring wiring{.halLibName = "", .chip = "", .mdioBus = 1, .mdioAddr = 16};
    Wiring empty{.halLibName = "", .chip = "none", .mdioBus = 0, .mdioAddr = 16};
    testing::StrictMock<MockChip>* chip;
    std::vector<Device> devices;
    BoardClock clock{1};
    Journal journal{clock};
    Faults faults;
    MdioController mdio{devices, 2, faults, journal, clock};
    wire::MiiAccess access{};
};

TEST_F(MdioControllerTest, Clause22ReachesTheChipAfterItsTimeHasAdvanced)
{
    InSequence order;
    EXPECT_CALL(*chip, Advance(_));
    EXPECT_CALL(*chip, Read22(31)).WillOnce(Return(0xBEEF));
    EXPECT_CALL(*chip, Advance(_));
    EXPECT_CALL(*chip, Write22(0, 0x1234)).WillOnce(Return(true));
    EXPECT_EQ(Access(false, 16, 31, 1), 0);
    EXPECT_EQ(access.valueOut, 0xBEEF);
    EXPECT_EQ(Access(true, 16, 0, 1, 0x1234), 0);
    EXPECT_EQ(Last()["facts"], (Json{{"bus", 1}, {"address", 16}, {"reg", 0}, {"value", 0x1234}}));
}

TEST_F(MdioControllerTest, Clause45CarriesDeviceAndRegister)
{
    EXPECT_CALL(*chip, Advance(_)).Times(2);
    EXPECT_CALL(*chip, Read45(31, 0x0E23)).WillOnce(Return(1));
    EXPECT_CALL(*chip, Write45(7, 0xFFFF, 0x4002)).WillOnce(Return(true));
    EXPECT_EQ(Access(false, 0x8000 | 16 << 5 | 31, 0x0E23, 1), 0);
    EXPECT_EQ(access.valueOut, 1);
    EXPECT_EQ(Last()["facts"]["mmd"], 31);
    EXPECT_EQ(Access(true, 0x8000 | 16 << 5 | 7, 0xFFFF, 1, 0x4002), 0);
}

TEST_F(MdioControllerTest, NobodyAtAnAddressReadsAllOnesAndTakesWrites)
{
    EXPECT_EQ(Access(false, 17, 2, 1), 0);
    EXPECT_EQ(access.valueOut, 0xFFFF);
    EXPECT_EQ(Last()["note"], "no device at this address");
    EXPECT_EQ(Access(true, 16, 2, 0, 5), 0);
    EXPECT_EQ(Access(false, 0x8000 | 3 << 5 | 1, 0, 0), 0);
    EXPECT_EQ(access.valueOut, 0xFFFF);
}

TEST_F(MdioControllerTest, WhatIsNoRequestIsRefused)
{
    EXPECT_EQ(Access(false, 16, 32, 1), EINVAL);
    EXPECT_EQ(Access(false, 32, 0, 1), EINVAL);
    EXPECT_EQ(Access(false, 0x8000 | 0x400, 0, 1), EINVAL);
    EXPECT_EQ(Access(false, 16, 0, 2), ENODEV);
    EXPECT_EQ(Last()["result"], "ENODEV");
    EXPECT_FALSE(Last()["facts"].contains("value"));
}

TEST_F(MdioControllerTest, ARefusalOfTheChipIsEioWithItsReason)
{
    EXPECT_CALL(*chip, Advance(_)).Times(2);
    EXPECT_CALL(*chip, Read22(9)).WillOnce(Return(std::nullopt));
    EXPECT_CALL(*chip, Write22(9, 1)).WillOnce(Return(false));
    EXPECT_EQ(Access(false, 16, 9, 1), EIO);
    EXPECT_EQ(Last()["note"], "not today");
    EXPECT_EQ(Access(true, 16, 9, 1, 1), EIO);
    EXPECT_EQ(Last()["result"], "EIO");
}

TEST_F(MdioControllerTest, AFaultStrikesTheNthAccessAndTheChipNeverSeesIt)
{
    faults.Add({FindFault("mdio-error"), ETIMEDOUT, 3, 1});
    EXPECT_CALL(*chip, Advance(_)).Times(3);
    EXPECT_CALL(*chip, Read22(1)).Times(3).WillRepeatedly(Return(0));
    EXPECT_EQ(Access(false, 16, 1, 1), 0);
    EXPECT_EQ(Access(false, 16, 1, 1), 0);
    EXPECT_EQ(Access(false, 16, 1, 1), ETIMEDOUT);
    EXPECT_EQ(Last()["note"], "fault");
    EXPECT_EQ(Access(false, 16, 1, 1), 0);
}

}  // namespace
}  // namespace vboard

// What ORBLINK_InitOnce leaves in the records: bytes at the offsets that other programs rely on.
#include <cstring>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

class Provisioning : public SwitchTest {
protected:
    const uint8_t* Bytes(int device = 0)
    {
        constexpr ptrdiff_t kRecord = 932;
        return reinterpret_cast<const uint8_t*>(&Region()) + kRecord * device;
    }

    uint32_t U32(int offset, int device = 0)
    {
        uint32_t value = 0;
        memcpy(&value, Bytes(device) + offset, sizeof(value));
        return value;
    }

    uint16_t U16(int offset, int device = 0)
    {
        uint16_t value = 0;
        memcpy(&value, Bytes(device) + offset, sizeof(value));
        return value;
    }
};

TEST_F(Provisioning, WritesTheDefaultOfEverySetting)
{
    Init();
    EXPECT_EQ(Bytes()[0], 1) << "capsValid";
    EXPECT_EQ(Bytes()[108], 1) << "configValid";
    EXPECT_EQ(U32(112), 0U) << "state";
    EXPECT_EQ(U32(116), 0U) << "InProviderBridgedMode";
    EXPECT_EQ(Bytes()[304], 0xFF) << "enabledPorts";
    EXPECT_EQ(Bytes()[305], 0) << "rgmiiDelayPorts";
    EXPECT_EQ(U16(306), 0x8100) << "STagTpid";
    EXPECT_EQ(U32(308), 0U) << "igmpSnooping";
    EXPECT_EQ(Bytes()[312], 0x3F) << "eeePorts";
    EXPECT_EQ(Bytes()[321], 3) << "ledMode";
    EXPECT_EQ(U32(324), 3U) << "macAging";
    EXPECT_EQ(U16(328), 2000) << "mtuSize";
    EXPECT_EQ(U32(924), 0U) << "serviceStatus";
    EXPECT_EQ(Bytes()[928], 0) << "dvtPorts";
}

TEST_F(Provisioning, WritesThePortDefaultsOfAllEightPorts)
{
    Init();
    for (int port = 0; port < 8; ++port) {
        EXPECT_EQ(U32(120 + 4 * port), 0xFFFFFFFFU) << "groupId " << port;
        EXPECT_EQ(U32(152 + 4 * port), 1U) << "groupIdLock " << port;
        EXPECT_EQ(U16(184 + 2 * port), 1) << "lanPortVlan " << port;
        EXPECT_EQ(Bytes()[200 + port], 0) << "lanPortPcp " << port;
        EXPECT_EQ(U32(208 + 4 * port), 0U) << "egressTagging " << port;
        EXPECT_EQ(U32(240 + 8 * port), 1U) << "linkSpeed " << port;
        EXPECT_EQ(U32(244 + 8 * port), 1U) << "linkFullDuplex " << port;
        EXPECT_EQ(Bytes()[313 + port], 0xFF) << "mirrorDst " << port;
    }
}

TEST_F(Provisioning, LeavesEveryMacToVlanEntryFree)
{
    Init();
    for (int entry = 0; entry < 32; ++entry)
        EXPECT_EQ(U32(332 + 16 * entry + 12), 0U) << entry;
}

TEST_F(Provisioning, LetsTheHalFillTheCapabilityBlockInPlace)
{
    platform.slots["GetSwitchCaps"] = [](const SlotArgs& args) {
        memset(reinterpret_cast<void*>(args[1]), 0x5A, 104);
        return 0;
    };
    Init();
    for (int offset = 4; offset < 108; ++offset)
        EXPECT_EQ(Bytes()[offset], 0x5A) << offset;
    EXPECT_EQ(Bytes()[108], 1);
}

TEST_F(Provisioning, ReachesEverySwitchOfTheBoard)
{
    Init(SwitchBoard::With({{}, {}}));
    for (int device = 0; device < 2; ++device) {
        EXPECT_EQ(Bytes(device)[0], 1);
        EXPECT_EQ(Bytes(device)[4 + 6], 8) << "numOfPorts";
        EXPECT_EQ(U16(328, device), 2000);
        EXPECT_EQ(U32(112, device), 0U) << "state";
    }
}

TEST_F(Provisioning, LeavesTheRecordOfASwitchThatIsNotThereEmpty)
{
    Init();
    SwitchDeviceRecord empty = {};
    empty.halIdx = 255;
    EXPECT_EQ(memcmp(&Record(1), &empty, sizeof(empty)), 0);
}

TEST_F(Provisioning, ReplacesWhateverTheSettingsHeldButNotTheState)
{
    const auto readCaps = platform.slots["GetSwitchCaps"];
    platform.slots["GetSwitchCaps"] = [&](const SlotArgs& args) {
        if (args[0] == 1) {
            memset(&Record(1).config, 0x77, sizeof(SwitchProvConfig));
            Record(1).serviceStatus = 5;
            Record(1).dvtPorts = 6;
        }
        return readCaps(args);
    };
    Init(SwitchBoard::With({{}, {}}));
    SwitchDeviceRecord& spoilt = Record(1);
    EXPECT_EQ(spoilt.config.state, 0x77777777U);
    EXPECT_EQ(spoilt.dvtPorts, 6);
    spoilt.config.state = 0;
    spoilt.dvtPorts = 0;
    for (auto& entry : spoilt.config.macToVlanTable) {
        EXPECT_EQ(entry.EnableMapping, 0U);
        entry = {};  // of a free entry only the mark counts
    }
    // Bytes between the members belong to nobody.
    for (auto* padding : {&spoilt.config.padding, &spoilt.config.padding2})
        memset(padding, 0, sizeof(*padding));
    EXPECT_EQ(memcmp(&Record(0), &spoilt, sizeof(spoilt)), 0);
}

TEST_F(Provisioning, IsSkippedWithArgumentZero)
{
    Init(SwitchBoard::With({{}}), 0);
    SwitchDeviceRecord record = Record(0);
    EXPECT_EQ(record.bsdValid, 1);
    EXPECT_EQ(record.halIdx, 0);
    record.bsdValid = 0;
    record.halIdx = 0;
    record.rxResetAfterSerdes = 0;
    record.board = {};
    const SwitchDeviceRecord empty = {};
    EXPECT_EQ(memcmp(&record, &empty, sizeof(empty)), 0);
}

struct ArgCase {
    uint32_t arg;
    uint8_t capsValid;
};

class ProvisioningArg : public Provisioning, public testing::WithParamInterface<ArgCase> {};

TEST_P(ProvisioningArg, CountsByItsLowByteOnly)
{
    Init(SwitchBoard::With({{}}), GetParam().arg);
    EXPECT_EQ(Record(0).capsValid, GetParam().capsValid);
    EXPECT_EQ(Record(0).configValid, GetParam().capsValid);
}

INSTANTIATE_TEST_SUITE_P(
    Args, ProvisioningArg,
    testing::ValuesIn(std::vector<ArgCase>{
        {0, 0}, {1, 1}, {0x80, 1}, {0xFF, 1}, {0x100, 0}, {0xFFFFFF00, 0}, {0x101, 1}}),
    [](const auto& info) { return std::to_string(info.param.arg); });

TEST_F(Provisioning, StoresTheIsolationFlagInTheFirstVendorRecordOnly)
{
    SwitchBoard board = SwitchBoard::With({{}, {}});
    board.portIsolation = 0x80000000;
    Init(board);
    EXPECT_EQ(U32(1864), 8U);
    EXPECT_EQ(U32(1868), 1U);
    EXPECT_EQ(U32(1872), 0U);
    EXPECT_EQ(U32(1900), 0U);
    EXPECT_EQ(Bytes()[1936], 2) << "NumOfSwitches";
}

}  // namespace

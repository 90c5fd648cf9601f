// Which vendor parameters bring-up hands to the chip, and which it stores.
#include <cstring>

#include "tests/switch/lifecycle/bring_up_fixture.h"

using namespace obtest;

namespace {

using Bytes = std::vector<uint8_t>;

class VendorParams : public BringUpTest {
protected:
    VendorParams()
    {
        platform.slots["ResetSwitch"] = [this](const SlotArgs& args) {
            called = true;
            wasNull = args[1] == 0;
            size = static_cast<uint32_t>(args[2]);
            const auto* bytes = reinterpret_cast<const uint8_t*>(args[1]);
            if (!wasNull)
                handed.assign(bytes, bytes + std::min(size, 32U));
            return 0;
        };
    }

    void Store(const Bytes& bytes)
    {
        Region().vendor[0].vendorParamSize = static_cast<uint32_t>(bytes.size());
        memcpy(Region().vendor[0].vendorParams, bytes.data(), bytes.size());
    }

    Bytes Stored()
    {
        const auto& vendor = Region().vendor[0];
        return Bytes(vendor.vendorParams, vendor.vendorParams + vendor.vendorParamSize);
    }

    int BringUpWith(int setDefault, Bytes params)
    {
        return ORBLINK_ResetDisable(0, setDefault, params.data(),
                                    static_cast<uint32_t>(params.size()));
    }

    bool called = false;
    bool wasNull = false;
    uint32_t size = 0;
    Bytes handed;
};

TEST_F(VendorParams, NullWithDefaultsStandsForTheStoredOnes)
{
    Init();
    Store({9, 8, 7});
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 30), 0);
    EXPECT_EQ(handed, Bytes({9, 8, 7}));
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(Stored(), Bytes({9, 8, 7}));
}

TEST_F(VendorParams, NullWithAnotherSetDefaultStandsForTheStoredOnesToo)
{
    Init();
    Store({9, 8});
    EXPECT_EQ(ORBLINK_ResetDisable(0, 2, nullptr, 0), 0);
    EXPECT_EQ(handed, Bytes({9, 8}));
}

TEST_F(VendorParams, NullWithDefaultsStandsForThoseOfTheSwitchItself)
{
    Init(SwitchBoard::With({{}, {}}));
    Store({9, 8, 7});
    Region().vendor[1].vendorParamSize = 2;
    Region().vendor[1].vendorParams[0] = 5;
    Region().vendor[1].vendorParams[1] = 6;
    EXPECT_EQ(ORBLINK_ResetDisable(1, 1, nullptr, 0), 0);
    EXPECT_EQ(handed, Bytes({5, 6}));
}

TEST_F(VendorParams, NullWithRestoreIsHandedOnWithTheCallersSize)
{
    Init();
    Store({9, 8, 7});
    EXPECT_EQ(ORBLINK_ResetDisable(0, 0, nullptr, 77), 0);
    EXPECT_TRUE(wasNull);
    EXPECT_EQ(size, 77U);
    EXPECT_EQ(Stored(), Bytes({9, 8, 7}));
}

class VendorParamsGiven : public VendorParams, public testing::WithParamInterface<int> {};

TEST_P(VendorParamsGiven, AreHandedOnAndStored)
{
    Init();
    const Bytes params = {1, 2, 3, 4, 5};
    EXPECT_EQ(BringUpWith(GetParam(), params), 0);
    EXPECT_EQ(handed, params);
    EXPECT_EQ(Stored(), params);
    EXPECT_EQ(Region().vendor[0].vendorParams[5], 0);
}

TEST_P(VendorParamsGiven, MayFillTheStoredBuffer)
{
    Init(SwitchBoard::With({{}, {}}));
    const Bytes params(32, 0x5C);
    EXPECT_EQ(BringUpWith(GetParam(), params), 0);
    EXPECT_EQ(handed, params);
    EXPECT_EQ(Stored(), params);
    EXPECT_EQ(Region().vendor[1].vendorParamSize, 0U);
}

TEST_P(VendorParamsGiven, MustNotExceedIt)
{
    Init();
    for (size_t tooMany : {33, 34, 4096}) {
        transcript.Clear();
        EXPECT_EQ(BringUpWith(GetParam(), Bytes(tooMany, 1)), -1);
        EXPECT_EQ(Complaints(), Lines{"log1 ORBLINK_ResetDisable:# Vendor param size " +
                                      std::to_string(tooMany) + " too big , DevIdx=0"});
        EXPECT_FALSE(called);
        EXPECT_FALSE(transcript.Has("hal0"));
        EXPECT_EQ(Stored(), Bytes(8, 0));
        ExpectErrorExit();
    }
}

TEST_P(VendorParamsGiven, MayBeNone)
{
    Init();
    uint8_t byte = 1;
    EXPECT_EQ(ORBLINK_ResetDisable(0, GetParam(), &byte, 0), 0);
    EXPECT_FALSE(wasNull);
    EXPECT_EQ(size, 0U);
    EXPECT_EQ(Stored(), Bytes());
}

TEST_P(VendorParamsGiven, FailWhenTheyCannotBeCopied)
{
    Init();
    platform.Fail("kova_memcpy_s", 0, 1, 22);
    EXPECT_EQ(BringUpWith(GetParam(), {1, 2}), -1);
    EXPECT_EQ(Complaints(), Lines{"log1 ORBLINK_ResetDisable:# Runtime-constraint violation error "
                                  "in function kova_memcpy_s"});
    EXPECT_EQ(Region().vendor[0].vendorParamSize, 8U);
    EXPECT_FALSE(called);
    ExpectErrorExit();
}

INSTANTIATE_TEST_SUITE_P(SetDefault, VendorParamsGiven, testing::Values(0, 1, 2),
                         [](const auto& info) { return std::to_string(info.param); });

TEST_F(VendorParams, StayStoredWhenALaterStepFails)
{
    Init();
    platform.FailSlot("VendorSpecificIoctl");
    EXPECT_EQ(BringUpWith(0, {6, 6, 6}), -1);
    EXPECT_EQ(Stored(), Bytes({6, 6, 6}));
}

TEST_F(VendorParams, SurviveAResetAndAreUsedByTheNextBringUpFromDefaults)
{
    Init();
    ASSERT_EQ(BringUpWith(0, {4, 5, 6}), 0);
    ASSERT_EQ(ORBLINK_ResetEnable(0), 0);
    handed.clear();
    EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
    EXPECT_EQ(handed, Bytes({4, 5, 6}));
}

TEST_F(VendorParams, WithAStoredSizeThatCannotBeCountAs32)
{
    Init();
    for (uint32_t stored : {33U, 0x80000000U, 0xFFFFFFFFU}) {
        Record(0).config.state = 1;
        Region().vendor[0].vendorParamSize = stored;
        EXPECT_EQ(ORBLINK_ResetDisable(0, 1, nullptr, 0), 0);
        EXPECT_EQ(size, 32U);
    }
}

}  // namespace

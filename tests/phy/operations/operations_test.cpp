// What every operation has in common, row by row: prolog, index, state, slot, release.
#include <cerrno>

#include "tests/phy/phy_fixture.h"

using namespace obtest;

namespace {

uint32_t gLink;
uint32_t gWord;
uint16_t gValue;
uint8_t gBytes[64];
void* gPointer;

struct Operation {
    const char* name;
    std::function<int(uint8_t)> call;
    bool checksState;
    const char* entry = nullptr;     // its entry line, after the index
    bool prologLine = true;          // a line of its own when the prolog fails
    const char* slotLine = nullptr;  // the slot that it is passed to
};

const Operation kOperations[] = {
    {"ETHPHY_GetLink", [](uint8_t d) { return ETHPHY_GetLink(d, &gLink, &gWord, nullptr); }, false,
     nullptr, true, "hal0 GetLink(0, ptr, ptr, null)"},
    {"ETHPHY_SetAdminState", [](uint8_t d) { return ETHPHY_SetAdminState(d, 3); }, false,
     " Enable=3", true, "hal0 SetAdminState(0, 3)"},
    {"ETHPHY_ResetDisable", [](uint8_t d) { return ETHPHY_ResetDisable(d, 2); }, false,
     " DefConfig=2"},
    {"ETHPHY_ResetEnable", [](uint8_t d) { return ETHPHY_ResetEnable(d); }, false, ""},
    {"ETHPHY_GetProvisionedConfig",
     [](uint8_t d) { return ETHPHY_GetProvisionedConfig(d, gBytes); }, false, nullptr, false},
    {"ETHPHY_GetBsdConfig", [](uint8_t d) { return ETHPHY_GetBsdConfig(d, gBytes); }, false,
     nullptr, false},
    {"ETHPHY_GetPhyData", [](uint8_t d) { return ETHPHY_GetPhyData(d, &gPointer); }, false, nullptr,
     false},
    {"ETHPHY_GetCaps", [](uint8_t d) { return ETHPHY_GetCaps(d, &gWord); }, false},
    {"ETHPHY_ReadMdio", [](uint8_t d) { return ETHPHY_ReadMdio(d, 1, &gValue); }, true},
    {"ETHPHY_WriteMdio", [](uint8_t d) { return ETHPHY_WriteMdio(d, 1, 2); }, true},
    {"ETHPHY_ReadMmd", [](uint8_t d) { return ETHPHY_ReadMmd(d, 3, 1, &gValue); }, true},
    {"ETHPHY_WriteMmd", [](uint8_t d) { return ETHPHY_WriteMmd(d, 3, 1, 2); }, true},
    {"ETHPHY_ReadChipReg", [](uint8_t d) { return ETHPHY_ReadChipReg(d, 0xDEADBEEF, &gValue); },
     true, nullptr, true, "hal0 ReadChipReg(0, 3735928559, ptr)"},
    {"ETHPHY_WriteChipReg", [](uint8_t d) { return ETHPHY_WriteChipReg(d, 70000, 0xFFFF); }, true,
     nullptr, true, "hal0 WriteChipReg(0, 70000, 65535)"},
    {"ETHPHY_GetCounters", [](uint8_t d) { return ETHPHY_GetCounters(d, gBytes); }, true, nullptr,
     true, "hal0 GetCounters(0, ptr)"},
    {"ETHPHY_ResetCounters", [](uint8_t d) { return ETHPHY_ResetCounters(d); }, true, nullptr, true,
     "hal0 ResetCounters(0)"},
    {"ETHPHY_SetEeeState", [](uint8_t d) { return ETHPHY_SetEeeState(d, 0xFE); }, true, nullptr,
     true, "hal0 SetEeeState(0, 254)"},
    {"ETHPHY_Poll", [](uint8_t d) { return ETHPHY_Poll(d); }, false, nullptr, true, "hal0 Poll(0)"},
};

void PrintTo(const Operation& operation, std::ostream* out)
{
    *out << operation.name;
}

std::string NameOf(const testing::TestParamInfo<Operation>& info)
{
    return std::string(info.param.name).substr(sizeof("ETHPHY_") - 1);
}

class PhyOperation : public PhyTest, public testing::WithParamInterface<Operation> {
protected:
    const Operation& op = GetParam();

    std::string Named(const std::string& line) const
    {
        return "phy1 " + std::string(op.name) + line;
    }

    // The entry line, if the operation has one, and the rest.
    Lines Expected(int index, const Lines& rest) const
    {
        Lines lines;
        if (op.entry != nullptr)
            lines.push_back("phy9 " + std::string(op.name) +
                            ":# DevIndex=" + std::to_string(index) + op.entry);
        lines.insert(lines.end(), rest.begin(), rest.end());
        return lines;
    }
};

class PhyStateOperation : public PhyOperation {};
class PhySlotOperation : public PhyOperation {};

std::vector<Operation> Those(bool (*condition)(const Operation&))
{
    std::vector<Operation> result;
    std::copy_if(std::begin(kOperations), std::end(kOperations), std::back_inserter(result),
                 condition);
    return result;
}

}  // namespace

TEST_P(PhyOperation, FailsWithItsProlog)
{
    InitEnabled();
    platform.Fail("semop", EIDRM);
    EXPECT_EQ(op.call(0), -1);
    Lines rest = {kLock, "phy1 [_System5SemOp] semop() fail, errno=43",
                  "phy1 [_ApiProlog] _ApiGlobalLock() failed"};
    if (op.prologLine)
        rest.push_back(Named(":# _ApiProlog() failed"));
    EXPECT_EQ(transcript.All(), Expected(0, rest));
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_P(PhyOperation, RejectsAnIndexThatIsNotBelowTheCount)
{
    InitEnabled();
    for (int index : {1, 2, 255}) {
        transcript.Clear();
        EXPECT_EQ(op.call(static_cast<uint8_t>(index)), -1);
        EXPECT_EQ(
            transcript.All(),
            Expected(index,
                     {kLock, "phy1 [ValidateDevIndex] Invalid DevIndex=" + std::to_string(index),
                      kUnlock}));
    }
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_P(PhyOperation, RejectsEveryIndexWhenTheCountIsGarbage)
{
    InitEnabled();
    for (int count : {3, 255}) {
        PhyRegion().NumOfPhys = static_cast<uint8_t>(count);
        transcript.Clear();
        EXPECT_EQ(op.call(0), -1);
        EXPECT_EQ(transcript.All(),
                  Expected(0, {kLock, "phy1 [ValidateDevIndex] Invalid DevIndex=0", kUnlock}));
    }
}

TEST_P(PhyOperation, LogsAFailingRelease)
{
    InitEnabled();
    platform.Fail("semop", EINVAL, 2);
    EXPECT_EQ(op.call(1), -1);
    EXPECT_EQ(transcript.All(), Expected(1, {kLock, "phy1 [ValidateDevIndex] Invalid DevIndex=1",
                                             kUnlock, "phy1 [_System5SemOp] semop() fail, errno=22",
                                             "phy1 _LibEpilog:# _ApiGlobalUnLock failed"}));
}

INSTANTIATE_TEST_SUITE_P(All, PhyOperation, testing::ValuesIn(kOperations), NameOf);

TEST_P(PhyStateOperation, FailsWhileThePhyIsHeldInReset)
{
    InitEnabled();
    Record().config.hwState = EP_HW_STATE_DISABLED;
    EXPECT_EQ(op.call(0), -1);
    EXPECT_EQ(transcript.All(),
              Expected(0, {kLock, "phy1 [ValidateHwState] PHY is in disabled state", kUnlock}));
}

TEST_P(PhyStateOperation, WorksBeforeTheFirstReset)
{
    Init();
    ASSERT_EQ(Record().config.hwState, 0U);
    EXPECT_EQ(op.call(0), 0);
    EXPECT_EQ(transcript.All().back(), kUnlock);
}

INSTANTIATE_TEST_SUITE_P(All, PhyStateOperation,
                         testing::ValuesIn(Those([](const Operation& o) { return o.checksState; })),
                         NameOf);

TEST_P(PhySlotOperation, PassesItsArgumentsToTheSlotWithTheLockHeld)
{
    InitEnabled();
    const std::string line = op.slotLine;
    const std::string slot = line.substr(5, line.find('(') - 5);
    int held = -1;
    platform.slots[slot] = [&](const SlotArgs&) {
        held = PhySemaphoreValue();
        return 0;
    };
    EXPECT_EQ(op.call(0), 0);
    EXPECT_EQ(transcript.All(), Expected(0, {kLock, line, kUnlock}));
    EXPECT_EQ(held, 0);
    EXPECT_EQ(PhySemaphoreValue(), 1);
}

TEST_P(PhySlotOperation, TurnsAFailingSlotIntoMinusOne)
{
    InitEnabled();
    const std::string line = op.slotLine;
    platform.FailSlot(line.substr(5, line.find('(') - 5), 7);
    EXPECT_EQ(op.call(0), -1);
    EXPECT_EQ(transcript.All(), Expected(0, {kLock, line, Named(":# failed Phy=0"), kUnlock}));
}

TEST_P(PhySlotOperation, TakesANullSlotForAFailingOne)
{
    InitEnabled();
    struct ETHPHY_HalFuncs& hal = PhyHalTable("phy-a");
    hal = {};
    EXPECT_EQ(op.call(0), -1);
    EXPECT_EQ(transcript.All(), Expected(0, {kLock, Named(":# failed Phy=0"), kUnlock}));
}

TEST_P(PhySlotOperation, CallsNothingThroughAHalIndexThatIsGarbage)
{
    InitEnabled();
    for (int halIdx : {2, 200, 255}) {
        Record().halIdx = static_cast<uint8_t>(halIdx);
        transcript.Clear();
        EXPECT_EQ(op.call(0), -1);
        EXPECT_EQ(transcript.All(), Expected(0, {kLock, Named(":# failed Phy=0"), kUnlock}));
    }
}

TEST_P(PhySlotOperation, ReachesTheSecondHalOfTheSecondPhy)
{
    PhyBoard board{{{}, {}}};
    board.entries[1].halLibName = "libsecond.so";
    InitEnabled(board);
    EXPECT_EQ(op.call(1), 0);
    std::string line = op.slotLine;
    line.replace(line.find("hal0"), 4, "hal1");
    line.replace(line.find("(0"), 2, "(1");
    EXPECT_EQ(transcript.All(), Expected(1, {kLock, line, kUnlock}));
}

INSTANTIATE_TEST_SUITE_P(All, PhySlotOperation, testing::ValuesIn(Those([](const Operation& o) {
                             return o.slotLine != nullptr;
                         })),
                         NameOf);

// ---- Register access: a service instead of a slot.

TEST_F(PhyTest, NullOutPointersFailWithoutTheLock)
{
    InitEnabled();
    Record().capsValid = 1;
    const std::pair<const char*, std::function<int()>> calls[] = {
        {"ETHPHY_GetNumOfPhys", [] { return ETHPHY_GetNumOfPhys(nullptr); }},
        {"ETHPHY_GetLink", [] { return ETHPHY_GetLink(0, nullptr, &gWord, &gWord); }},
        {"ETHPHY_GetPhyData", [] { return ETHPHY_GetPhyData(0, nullptr); }},
        {"ETHPHY_GetCaps", [] { return ETHPHY_GetCaps(0, nullptr); }},
        {"ETHPHY_ReadMdio", [] { return ETHPHY_ReadMdio(0, 1, nullptr); }},
        {"ETHPHY_ReadMmd", [] { return ETHPHY_ReadMmd(0, 1, 1, nullptr); }},
        {"ETHPHY_ReadChipReg", [] { return ETHPHY_ReadChipReg(0, 1, nullptr); }},
        {"ETHPHY_GetCounters", [] { return ETHPHY_GetCounters(0, nullptr); }},
        {"EPHAL_DirectMdioReadAccess", [] { return EPHAL_DirectMdioReadAccess(1, 1, 1, nullptr); }},
        {"EPHAL_GetHwState", [] { return EPHAL_GetHwState(0, nullptr); }},
        {"EPHAL_GetUlpModeEnabled", [] { return EPHAL_GetUlpModeEnabled(0, nullptr); }},
    };
    for (const auto& [name, call] : calls) {
        transcript.Clear();
        EXPECT_EQ(call(), -1) << name;
        EXPECT_STEPS("phy1 " + std::string(name) + ":# NULL ptr");
    }
}

#include "tests/hals/phy/hal_fixture.h"

#include <dlfcn.h>

#include <algorithm>
#include <cerrno>

namespace vboard {

HalWorld halWorld;
const char kGeneralHal[] = GENERAL_HAL;
const char kDefaultHal[] = DEFAULT_HAL;

namespace {

constexpr uint16_t kNobody = 0xFFFF;

// -1 when the access is one that fails.
int Note(const HalAccess& access)
{
    size_t number = halWorld.accesses.size();
    halWorld.accesses.push_back(access);
    bool struck = number >= halWorld.failFrom && number <= halWorld.failUntil;
    bool cut = number >= halWorld.cutFrom && number <= halWorld.cutUntil;
    errno = cut ? EINTR : EIO;
    return cut || struck || (halWorld.clause45Fails && access.mmd >= 0) ? -1 : 0;
}

PhyModel* Reached(uint8_t devIdx)
{
    bool silent = halWorld.accesses.size() > halWorld.silentFrom;
    if (devIdx >= EP_MAX_PHYS || !halWorld.phys[devIdx] || silent)
        return nullptr;
    halWorld.phys[devIdx]->Advance(halWorld.now);
    return halWorld.phys[devIdx].get();
}

// Asked for in a frame of clause 45, or selected in registers 13 and 14.
bool IsMissing(int mmd, uint16_t reg)
{
    if (mmd >= 0)
        return halWorld.missing == std::pair{mmd, reg};
    return reg == 14 && halWorld.selectedMmd == (0x4000 | halWorld.missing.first) &&
           halWorld.dataRegister == halWorld.missing.second;
}

int Read(uint8_t devIdx, int mmd, uint16_t reg, uint16_t* value)
{
    if (Note({false, mmd, reg, 0}) != 0)
        return -1;
    PhyModel* phy = Reached(devIdx);
    auto overridden = halWorld.overrides.find({mmd, reg});
    std::optional<uint16_t> read = kNobody;
    if (IsMissing(mmd, reg))
        read = halWorld.missingReads;
    else if (mmd < 0 && reg == 14 && halWorld.dataRegisterEchoes)
        read = halWorld.dataRegister;
    else if (overridden != halWorld.overrides.end())
        read = overridden->second;
    else if (phy != nullptr)
        read = mmd < 0 ? phy->Read22(static_cast<uint8_t>(reg))
                       : phy->Read45(static_cast<uint8_t>(mmd), reg);
    EXPECT_TRUE(read || !halWorld.refusalsAreFailures)
        << "read of " << mmd << '.' << reg << ": "
        << (phy != nullptr ? phy->Complaint() : "nobody there");
    if (!read)
        return -1;
    *value = *read;
    return 0;
}

int Write(uint8_t devIdx, int mmd, uint16_t reg, uint16_t value)
{
    if (Note({true, mmd, reg, value}) != 0)
        return -1;
    PhyModel* phy = Reached(devIdx);
    if (mmd < 0 && reg == 13)
        halWorld.selectedMmd = value;
    if (mmd < 0 && reg == 14)
        halWorld.dataRegister = value;
    if (phy == nullptr)
        return 0;
    bool done = mmd < 0 ? phy->Write22(static_cast<uint8_t>(reg), value)
                        : phy->Write45(static_cast<uint8_t>(mmd), reg, value);
    EXPECT_TRUE(done || !halWorld.refusalsAreFailures)
        << "write of " << value << " to " << mmd << '.' << reg << ": " << phy->Complaint();
    return done ? 0 : -1;
}

}  // namespace

const struct ETHPHY_HalFuncs& LoadHal(const char* path)
{
    void* library = dlopen(path, RTLD_NOW);
    if (library == nullptr)
        throw std::runtime_error{dlerror()};
    return *static_cast<const struct ETHPHY_HalFuncs*>(dlsym(library, "ETHPHY_HalFuncs"));
}

HalTest::HalTest() : hal_{LoadHal(kGeneralHal)}
{
    halWorld = {};
    EXPECT_EQ(hal_.Init(halWorld.privateData), 0);
}

PhyModel& HalTest::Make(const PhyConfig& config, int devIdx)
{
    halWorld.phys[devIdx] = std::make_unique<PhyModel>(config);
    PhyModel& phy = *halWorld.phys[devIdx];
    phy.Advance(halWorld.now);
    phy.SetResetLine(false);
    Wait(config.resetTime);
    EXPECT_EQ(hal_.Init(halWorld.privateData), 0);
    return phy;
}

PhyModel& HalTest::MakeUp(const PhyConfig& config, int devIdx)
{
    PhyModel& phy = Make(config, devIdx);
    EXPECT_EQ(hal_.ResetDisable(devIdx, 1), 0);
    Wait(config.negotiationTime);
    return phy;
}

void HalTest::Wait(std::chrono::nanoseconds time)
{
    halWorld.now += time;
    for (auto& phy : halWorld.phys)
        if (phy)
            phy->Advance(halWorld.now);
}

HalLink HalTest::Link(int devIdx)
{
    HalLink link;
    EXPECT_EQ(hal_.GetLink(devIdx, &link.up, &link.speed, &link.full), 0);
    return link;
}

EthphyIeee8023Counters HalTest::Counters(int devIdx)
{
    EthphyIeee8023Counters counters{99, 99, 99, 99, 99, 99, 99, 99};
    EXPECT_EQ(hal_.GetCounters(devIdx, &counters), 0);
    return counters;
}

uint16_t HalTest::Register(uint8_t mmd, uint16_t reg)
{
    halWorld.phys[0]->Write22(13, mmd);
    halWorld.phys[0]->Write22(14, reg);
    halWorld.phys[0]->Write22(13, 0x4000 | mmd);
    return halWorld.phys[0]->Read22(14).value_or(kNobody);
}

size_t HalTest::Writes()
{
    return static_cast<size_t>(std::ranges::count_if(halWorld.accesses, &HalAccess::write));
}

bool HalTest::Touched(int mmd, uint16_t reg)
{
    return std::ranges::any_of(halWorld.accesses, [=](const HalAccess& access) {
        return access.mmd == mmd && access.reg == reg;
    });
}

}  // namespace vboard

using vboard::halWorld;

extern "C" {

int EPHAL_ReadMdio(uint8_t devIdx, uint32_t reg, uint16_t* value)
{
    if ((reg & EPHAL_MDIO_CLAUSE45) != 0)
        return vboard::Read(devIdx, static_cast<int>(reg >> 16 & 31), static_cast<uint16_t>(reg),
                            value);
    return vboard::Read(devIdx, -1, static_cast<uint16_t>(reg), value);
}

int EPHAL_WriteMdio(uint8_t devIdx, uint32_t reg, uint16_t data)
{
    if ((reg & EPHAL_MDIO_CLAUSE45) != 0)
        return vboard::Write(devIdx, static_cast<int>(reg >> 16 & 31), static_cast<uint16_t>(reg),
                             data);
    return vboard::Write(devIdx, -1, static_cast<uint16_t>(reg), data);
}

int EPHAL_ReadMmd(uint8_t devIdx, uint8_t mmd, uint16_t reg, uint16_t* value)
{
    return vboard::Read(devIdx, mmd, reg, value);
}

int EPHAL_WriteMmd(uint8_t devIdx, uint8_t mmd, uint16_t reg, uint16_t data)
{
    return vboard::Write(devIdx, mmd, reg, data);
}

int EPHAL_GetHwState(uint8_t, uint32_t* enabled)
{
    *enabled = halWorld.enabled ? 1 : 0;
    return 0;
}

uint32_t EPHAL_GetPortIfaceMode(uint8_t)
{
    return halWorld.portIfaceMode;
}

int EPHAL_ReconfigureGmacPhy(uint8_t devIdx, int setSpeed, int speed, int duplex)
{
    halWorld.toldMac.push_back({devIdx, setSpeed, speed, duplex});
    return halWorld.gmacResult;
}

void* EPHAL_GetHalPrivData(uint8_t)
{
    return halWorld.hasPrivateData ? halWorld.privateData : nullptr;
}

int usleep(useconds_t microseconds)
{
    if (halWorld.interruptedWaits > 0) {
        --halWorld.interruptedWaits;
        errno = EINTR;
        return -1;
    }
    halWorld.now += std::chrono::microseconds{microseconds};
    return 0;
}
}

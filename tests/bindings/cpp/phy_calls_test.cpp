// The C++ layer of the PHY family over the scripted platform: each function does what its C function
// does.
#include "tests/bindings/cpp/pair.h"
#include "tests/phy/phy_fixture.h"

using namespace obtest;
using namespace orblink;

namespace {

constexpr PhyIndex kPhy{0};

#define SAME(name, arguments, ...)                                   \
    Pair                                                             \
    {                                                                \
        "ETHPHY_" #name, [] { return Of(ETHPHY_##name arguments); }, \
            [] { return Of(__VA_ARGS__); }                           \
    }

Outcome LinkByC()
{
    uint32_t up = 0;
    uint32_t speed = 0;
    uint32_t full = 0;
    return ETHPHY_GetLink(0, &up, &speed, &full) == 0 ? Outcome{0, up, speed, full} : kRefused;
}

Outcome LinkByCpp()
{
    return Of(phy::GetLink(kPhy), [](const Link& link) {
        return Outcome{0, link.IsUp(), Number(link.Speed()), Number(link.Duplex())};
    });
}

Outcome CountByC()
{
    uint8_t count = 0;
    return ETHPHY_GetNumOfPhys(&count) == 0 ? Outcome{0, count} : kRefused;
}

Outcome PlaceByC()
{
    void* place = nullptr;
    return ETHPHY_GetPhyData(0, &place) == 0 ? Outcome{0, reinterpret_cast<uintptr_t>(place)}
                                             : kRefused;
}

Outcome PlaceByCpp()
{
    return Of(phy::GetPhyData(kPhy), [](const PhyDeviceRecord* record) {
        return Outcome{0, reinterpret_cast<uintptr_t>(record)};
    });
}

const Pair kPairs[] = {
    SAME(ResetDisable, (0, 1), phy::ResetDisable(kPhy, phy::Configuration::kDefaults)),
    SAME(ResetEnable, (0), phy::ResetEnable(kPhy)),
    SAME(ResetSgmii, (0), phy::ResetSgmii(kPhy)),
    SAME(SetAdminState, (0, 0), phy::SetAdminState(kPhy, false)),
    SAME(Poll, (0), phy::Poll(kPhy)),
    SAME(ResetCounters, (0), phy::ResetCounters(kPhy)),
    SAME(SetEeeState, (0, 200), phy::SetEeeState(kPhy, 200)),
    SAME(WriteMdio, (0, 4, 0x1E1), phy::WriteMdio(kPhy, 4, 0x1E1)),
    SAME(WriteMmd, (0, 7, 60, 6), phy::WriteMmd(kPhy, 7, 60, 6)),
    SAME(WriteChipReg, (0, 0x10000, 8), phy::WriteChipReg(kPhy, 0x10000, 8)),
    SAME(PhyZ88_SetSpeedDuplexMode, (0, 2, 1),
         phy::SetSpeedDuplexMode(kPhy, ForcedSpeed::k100M, Duplex::kFull)),
    // The family is initialised already.
    SAME(InitOnce, (), phy::InitOnce()),
    {"ETHPHY_GetNumOfPhys", CountByC, [] { return Of(phy::GetNumOfPhys()); }},
    {"EP_CreatePhyDevices", [] { return Of(EP_CreatePhyDevices()); },
     [] { return Of(phy::CreatePhyDevices()); }},
    {"EP_MapEthphyDevices", [] { return Outcome{EP_MapEthphyDevices() != nullptr}; },
     [] { return Outcome{phy::MapEthphyDevices() != nullptr}; }},
    {"ETHPHY_GetLink", LinkByC, LinkByCpp},
    {"ETHPHY_GetProvisionedConfig",
     [] { return Copied<PhyProvConfig>(ETHPHY_GetProvisionedConfig); },
     [] { return BytesOf(phy::GetProvisionedConfig(kPhy)); }},
    {"ETHPHY_GetBsdConfig", [] { return Copied<PhyBoardEntry>(ETHPHY_GetBsdConfig); },
     [] { return BytesOf(phy::GetBsdConfig(kPhy)); }},
    {"ETHPHY_GetPhyData", PlaceByC, PlaceByCpp},
    {"ETHPHY_GetCaps", [] { return Taken(ETHPHY_GetCaps); }, [] { return Of(phy::GetCaps(kPhy)); }},
    {"ETHPHY_GetCounters",
     [] { return Got<uint64_t>([](uint64_t* out) { return ETHPHY_GetCounters(0, out); }); },
     [] { return Of(phy::GetCounters<uint64_t>(kPhy)); }},
    {"ETHPHY_ReadMdio",
     [] { return Got<uint16_t>([](uint16_t* out) { return ETHPHY_ReadMdio(0, 2, out); }); },
     [] { return Of(phy::ReadMdio(kPhy, 2)); }},
    {"ETHPHY_ReadMmd",
     [] { return Got<uint16_t>([](uint16_t* out) { return ETHPHY_ReadMmd(0, 7, 60, out); }); },
     [] { return Of(phy::ReadMmd(kPhy, 7, 60)); }},
    {"ETHPHY_ReadChipReg",
     [] {
         return Got<uint16_t>([](uint16_t* out) { return ETHPHY_ReadChipReg(0, 0x10000, out); });
     },
     [] { return Of(phy::ReadChipReg(kPhy, 0x10000)); }},
};

class PhyCalls : public PhyTest {
protected:
    PhyCalls()
    {
        InitEnabled();
        platform.mii = [](unsigned long, MiiWords& words) {
            words.valueOut = static_cast<uint16_t>(words.reg * 256 + 5);
            return true;
        };
        platform.slots["GetLink"] = [](const SlotArgs& args) {
            if (args[1] != 0)
                *reinterpret_cast<uint32_t*>(args[1]) = 1;
            if (args[2] != 0)
                *reinterpret_cast<uint32_t*>(args[2]) = OB_SPEED_2G5;
            if (args[3] != 0)
                *reinterpret_cast<uint32_t*>(args[3]) = 1;
            return 0;
        };
        platform.slots["GetCounters"] = [](const SlotArgs& args) {
            *reinterpret_cast<uint64_t*>(args[1]) = 0x123456789ABCULL;
            return 0;
        };
        platform.slots["ReadChipReg"] = [](const SlotArgs& args) {
            *reinterpret_cast<uint16_t*>(args[2]) = 0x4321;
            return 0;
        };
        Record().capsValid = 1;
        Record().caps = 0xA5;
    }

    void ExpectTheSame()
    {
        for (const auto& pair : kPairs)
            ExpectSame(pair, PhyRegion());
    }
};

TEST_F(PhyCalls, DoWhatTheCFunctionsDo)
{
    ExpectTheSame();
}

TEST_F(PhyCalls, FailWhenTheCFunctionsFail)
{
    PhyRegion().NumOfPhys = 0;
    ExpectTheSame();
}

}  // namespace

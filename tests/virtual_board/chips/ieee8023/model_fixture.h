// A PHY model, out of reset at a time that the test advances.
#pragma once

#include <gtest/gtest.h>

#include "virtual_board/chips/ieee8023/phy_model.h"

namespace vboard {

using namespace std::chrono_literals;

using Bytes = std::initializer_list<uint8_t>;
using Words = std::initializer_list<uint16_t>;

class ModelTest : public testing::Test {
protected:
    // A PHY as configured that has left reset, with the negotiation not done.
    PhyModel& Make(const PhyConfig& config = {})
    {
        phy_.emplace(config);
        now_ = 0ns;
        phy_->SetResetLine(false);
        Wait(config.resetTime);
        return *phy_;
    }
    // The same with the negotiation done.
    PhyModel& MakeSettled(const PhyConfig& config = {})
    {
        Make(config);
        Wait(config.negotiationTime);
        return *phy_;
    }
    void Wait(std::chrono::nanoseconds time) { phy_->Advance(now_ += time); }

    uint16_t Read(uint8_t reg)
    {
        auto value = phy_->Read22(reg);
        EXPECT_TRUE(value) << "register " << unsigned{reg} << ": " << phy_->Complaint();
        return value.value_or(0);
    }
    uint16_t Read(uint8_t mmd, uint16_t reg)
    {
        auto value = phy_->Read45(mmd, reg);
        EXPECT_TRUE(value) << unsigned{mmd} << '.' << reg << ": " << phy_->Complaint();
        return value.value_or(0);
    }
    bool Write(uint8_t reg, uint16_t value) { return phy_->Write22(reg, value); }
    bool Write(uint8_t mmd, uint16_t reg, uint16_t value) { return phy_->Write45(mmd, reg, value); }
    // The link as it is now: the latched bit is read away.
    bool LinkUp()
    {
        Read(1);
        return (Read(1) & 0x0004) != 0;
    }

    std::optional<PhyModel> phy_;
    std::chrono::nanoseconds now_{};
};

// A partner that has these modes only.
inline LinkPartner PartnerWith(PhyModes modes, bool negotiates = true, bool eee = false)
{
    return {.connected = true,
            .negotiates = negotiates,
            .eee = eee,
            .half10 = (modes & kPhy10Half) != 0,
            .full10 = (modes & kPhy10Full) != 0,
            .half100 = (modes & kPhy100Half) != 0,
            .full100 = (modes & kPhy100Full) != 0,
            .half1000 = (modes & kPhy1000Half) != 0,
            .full1000 = (modes & kPhy1000Full) != 0,
            .full2500 = (modes & kPhy2500Full) != 0};
}

inline PhyConfig WithPartner(PhyModes modes, bool negotiates = true, bool eee = false)
{
    PhyConfig config;
    config.partner = PartnerWith(modes, negotiates, eee);
    return config;
}

// A PHY of 10 and 100 Mb/s with nothing optional.
inline PhyConfig PlainPhy()
{
    PhyConfig config;
    config.modes = kPhy10Half | kPhy10Full | kPhy100Half | kPhy100Full;
    config.eee = 0;
    config.clause45 = false;
    config.indirect = false;
    return config;
}

inline LinkPartner NoPartner()
{
    LinkPartner partner;
    partner.connected = false;
    return partner;
}

}  // namespace vboard

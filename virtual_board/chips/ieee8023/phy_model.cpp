#include "virtual_board/chips/ieee8023/phy_model.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "virtual_board/chips/ieee8023/phy_bits.h"

namespace vboard {

using namespace phy;

namespace {

constexpr std::chrono::milliseconds kForcedLinkTime{10};
constexpr PhyModes kEeeModes = kPhy100Full | kPhy1000Full | kPhy2500Full;

void Check(const PhyConfig& config)
{
    PhyModes fast = config.modes & (kPhyGigabit | kPhy2500Full);
    bool mmds = config.clause45 || config.indirect;
    if (config.modes == 0 || (config.modes & ~kPhyAllModes) != 0)
        throw std::invalid_argument("a PHY needs a mode of those there are");
    if (fast != 0 && !config.negotiates)
        throw std::invalid_argument("a gigabit PHY negotiates");
    if (!mmds && ((config.modes & kPhy2500Full) != 0 || config.eee != 0))
        throw std::invalid_argument("a PHY without MMDs has neither 2.5 Gb/s nor EEE");
    if ((config.eee & ~(config.modes & kEeeModes)) != 0)
        throw std::invalid_argument("EEE belongs to full-duplex modes of the PHY, 100 Mb/s up");
}

uint16_t DefaultControl(const PhyConfig& config)
{
    if (config.negotiates)
        return kNegotiate;
    PhyMode fastest = FastestOf(config.modes);
    unsigned control = SpeedCodeOf(fastest) == 3 ? kSpeedLow : 0U;
    return static_cast<uint16_t>(control | (IsFullDuplex(fastest) ? kFullDuplex : 0U));
}

PhyEnd EndOf(const LinkPartner& partner)
{
    return {partner.negotiates, ModesOf(partner)};
}

}  // namespace

PhyModel::PhyModel(const PhyConfig& given)
    : config_{given}, connected_{given.partner.connected}, far_{EndOf(given.partner)}
{
    Check(given);
    LoadDefaults();
}

bool PhyModel::Answers() const
{
    return !held_ && now_ >= answersAt_;
}

bool PhyModel::InSoftReset() const
{
    return softResetUntil_.has_value();
}

bool PhyModel::PoweredDown() const
{
    return (control_ & kPowerDown) != 0;
}

bool PhyModel::Negotiating() const
{
    return (control_ & kNegotiate) != 0;
}

bool PhyModel::Done(Refusal refusal)
{
    if (refusal != nullptr)
        complaint_ = refusal;
    return refusal == nullptr;
}

void PhyModel::LoadDefaults()
{
    DropLink();
    control_ = DefaultControl(config_);
    PhyModes basePage = config_.modes & (kPhy10Half | kPhy10Full | kPhy100Half | kPhy100Full);
    advertisement_ = static_cast<uint16_t>(kSelector | basePage << kTechnologyShift);
    nextPage_ = 0x2001;
    gigabitControl_ = static_cast<uint16_t>((config_.modes & kPhyGigabit) << 4);
    mmdSelect_ = 0;
    mmdAddress_ = {};
    multiGigControl_ = Has(kPhy2500Full) ? kOffers2500 : 0;
    eeeAdvertisement_ = 0;
    eeeAdvertisement2_ = 0;
    counters_ = {};
    wasDown_.fill(true);
    pageReceived_ = false;
    lowPowerSeen_ = false;
}

void PhyModel::SetResetLine(bool low)
{
    if (held_ == low)
        return;
    held_ = low;
    softResetUntil_.reset();
    LoadDefaults();
    answersAt_ = now_ + config_.resetTime;
    if (!held_)
        Relink();
}

void PhyModel::Advance(std::chrono::nanoseconds boardTime)
{
    if (softResetUntil_ && boardTime >= *softResetUntil_) {
        now_ = *softResetUntil_;
        softResetUntil_.reset();
        LoadDefaults();
        Relink();
    }
    now_ = boardTime;
    if (concludesAt_ && now_ >= *concludesAt_)
        Conclude();
}

bool PhyModel::SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex)
{
    PhyMode mode = ModeFor(speedCode, fullDuplex);
    bool best = speedCode == 1;
    if (port != 0 || (up && !best && !Has(mode)))
        return false;
    connected_ = up;
    if (up)
        far_ = best ? EndOf(config_.partner) : PhyEnd{config_.partner.negotiates, mode};
    Relink();
    return true;
}

void PhyModel::DropLink()
{
    concludesAt_.reset();
    link_ = {};
    wasDown_.fill(true);
}

void PhyModel::Relink()
{
    DropLink();
    if (held_ || InSoftReset() || PoweredDown() || !connected_)
        return;
    pending_ = Negotiate(NearEnd(), config_.modes, far_);
    auto start = std::max(now_, answersAt_);
    concludesAt_ = start + (Negotiating() ? config_.negotiationTime : kForcedLinkTime);
}

void PhyModel::Conclude()
{
    concludesAt_.reset();
    link_ = pending_;
    pageReceived_ = pageReceived_ || link_.exchanged;
    lowPowerSeen_ = lowPowerSeen_ || EeeActive();
}

PhyEnd PhyModel::NearEnd() const
{
    if (Negotiating())
        return {true, Advertised()};
    return {false, ForcedMode(control_)};
}

PhyModes PhyModel::Advertised() const
{
    unsigned modes = advertisement_ >> kTechnologyShift & 0x0FU;
    modes |= gigabitControl_ >> 4 & kPhyGigabit;
    modes |= (multiGigControl_ & kOffers2500) != 0 ? kPhy2500Full : kPhyNoMode;
    return static_cast<PhyModes>(modes);
}

PhyMode PhyModel::ForcedMode(uint16_t written) const
{
    unsigned code =
        ((written & kSpeedHigh) != 0 ? 2U : 0U) + ((written & kSpeedLow) != 0 ? 1U : 0U);
    if (code == 3)
        return kPhyNoMode;
    return ModeFor(2 + code, (written & kFullDuplex) != 0);
}

bool PhyModel::EeeActive() const
{
    if (!link_.exchanged)
        return false;
    unsigned modes = (eeeAdvertisement_ & kEee100) != 0 ? kPhy100Full : kPhyNoMode;
    modes |= (eeeAdvertisement_ & kEee1000) != 0 ? kPhy1000Full : kPhyNoMode;
    modes |= (eeeAdvertisement2_ & kEee2500) != 0 ? kPhy2500Full : kPhyNoMode;
    return config_.partner.eee && (modes & link_.mode) != 0;
}

bool PhyModel::AddCounter(unsigned port, std::string_view name, uint64_t value)
{
    struct Row {
        std::string_view name;
        Counter counter;
        uint16_t max;
        bool exists;
    };
    const Row rows[] = {{"idle_errors", kIdleErrors, 0xFF, Has(kPhyGigabit)},
                        {"master_faults", kMasterFaults, 1, Has(kPhyGigabit)},
                        {"ber", kBer, 0x3F, Has(kPhy2500Full)},
                        {"errored_blocks", kErroredBlocks, 0xFF, Has(kPhy2500Full)},
                        {"wake_errors", kWakeErrors, 0xFFFF, config_.eee != 0}};
    const Row* row = std::ranges::find(rows, name, &Row::name);
    if (port != 0 || row == std::end(rows) || !row->exists)
        return false;
    uint64_t room = row->max - counters_[row->counter];
    counters_[row->counter] += static_cast<uint16_t>(std::min(value, room));
    return true;
}

nlohmann::json PhyModel::State() const
{
    return {
        {"answers", Answers()},
        {"poweredDown", PoweredDown()},
        {"autoneg", Negotiating()},
        {"link",
         {{"up", LinkUp()},
          {"speed", SpeedCodeOf(link_.mode)},
          {"megabits", MegabitsOf(link_.mode)},
          {"fullDuplex", IsFullDuplex(link_.mode)},
          {"parallelDetection", link_.detected}}},
        {"eeeActive", EeeActive()},
        {"laneGood", config_.laneGood},
        {"partner",
         {{"connected", connected_}, {"autoneg", far_.negotiates}, {"eee", config_.partner.eee}}}};
}

}  // namespace vboard

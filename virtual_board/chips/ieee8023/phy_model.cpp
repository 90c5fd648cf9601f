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
    : config{given}, connected{given.partner.connected}, far{EndOf(given.partner)}
{
    Check(given);
    LoadDefaults();
}

bool PhyModel::Answers() const
{
    return !held && now >= answersAt;
}

bool PhyModel::InSoftReset() const
{
    return softResetUntil.has_value();
}

bool PhyModel::PoweredDown() const
{
    return (control & kPowerDown) != 0;
}

bool PhyModel::Negotiating() const
{
    return (control & kNegotiate) != 0;
}

bool PhyModel::Done(Refusal refusal)
{
    if (refusal != nullptr)
        complaint = refusal;
    return refusal == nullptr;
}

void PhyModel::LoadDefaults()
{
    DropLink();
    control = DefaultControl(config);
    PhyModes basePage = config.modes & (kPhy10Half | kPhy10Full | kPhy100Half | kPhy100Full);
    advertisement = static_cast<uint16_t>(kSelector | basePage << kTechnologyShift);
    nextPage = 0x2001;
    gigabitControl = static_cast<uint16_t>((config.modes & kPhyGigabit) << 4);
    mmdSelect = 0;
    mmdAddress = {};
    multiGigControl = Has(kPhy2500Full) ? kOffers2500 : 0;
    eeeAdvertisement = 0;
    eeeAdvertisement2 = 0;
    counters = {};
    wasDown.fill(true);
    pageReceived = false;
    lowPowerSeen = false;
}

void PhyModel::SetResetLine(bool low)
{
    if (held == low)
        return;
    held = low;
    softResetUntil.reset();
    LoadDefaults();
    answersAt = now + config.resetTime;
    if (!held)
        Relink();
}

void PhyModel::Advance(std::chrono::nanoseconds boardTime)
{
    if (softResetUntil && boardTime >= *softResetUntil) {
        now = *softResetUntil;
        softResetUntil.reset();
        LoadDefaults();
        Relink();
    }
    now = boardTime;
    if (concludesAt && now >= *concludesAt)
        Conclude();
}

bool PhyModel::SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex)
{
    PhyMode mode = ModeFor(speedCode, fullDuplex);
    bool best = speedCode == 1;
    if (port != 0 || (up && !best && !Has(mode)))
        return false;
    connected = up;
    if (up)
        far = best ? EndOf(config.partner) : PhyEnd{config.partner.negotiates, mode};
    Relink();
    return true;
}

void PhyModel::DropLink()
{
    concludesAt.reset();
    link = {};
    wasDown.fill(true);
}

void PhyModel::Relink()
{
    DropLink();
    if (held || InSoftReset() || PoweredDown() || !connected)
        return;
    pending = Negotiate(NearEnd(), config.modes, far);
    auto start = std::max(now, answersAt);
    concludesAt = start + (Negotiating() ? config.negotiationTime : kForcedLinkTime);
}

void PhyModel::Conclude()
{
    concludesAt.reset();
    link = pending;
    pageReceived = pageReceived || link.exchanged;
    lowPowerSeen = lowPowerSeen || EeeActive();
}

PhyEnd PhyModel::NearEnd() const
{
    if (Negotiating())
        return {true, Advertised()};
    return {false, ForcedMode(control)};
}

PhyModes PhyModel::Advertised() const
{
    unsigned modes = advertisement >> kTechnologyShift & 0x0FU;
    modes |= gigabitControl >> 4 & kPhyGigabit;
    modes |= (multiGigControl & kOffers2500) != 0 ? kPhy2500Full : kPhyNoMode;
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
    if (!link.exchanged)
        return false;
    unsigned modes = (eeeAdvertisement & kEee100) != 0 ? kPhy100Full : kPhyNoMode;
    modes |= (eeeAdvertisement & kEee1000) != 0 ? kPhy1000Full : kPhyNoMode;
    modes |= (eeeAdvertisement2 & kEee2500) != 0 ? kPhy2500Full : kPhyNoMode;
    return config.partner.eee && (modes & link.mode) != 0;
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
                        {"wake_errors", kWakeErrors, 0xFFFF, config.eee != 0}};
    const Row* row = std::ranges::find(rows, name, &Row::name);
    if (port != 0 || row == std::end(rows) || !row->exists)
        return false;
    uint64_t room = row->max - counters[row->counter];
    counters[row->counter] += static_cast<uint16_t>(std::min(value, room));
    return true;
}

nlohmann::json PhyModel::State() const
{
    return {{"answers", Answers()},
            {"poweredDown", PoweredDown()},
            {"autoneg", Negotiating()},
            {"link",
             {{"up", LinkUp()},
              {"speed", SpeedCodeOf(link.mode)},
              {"megabits", MegabitsOf(link.mode)},
              {"fullDuplex", IsFullDuplex(link.mode)},
              {"parallelDetection", link.detected}}},
            {"eeeActive", EeeActive()},
            {"laneGood", config.laneGood},
            {"partner",
             {{"connected", connected}, {"autoneg", far.negotiates}, {"eee", config.partner.eee}}}};
}

}  // namespace vboard

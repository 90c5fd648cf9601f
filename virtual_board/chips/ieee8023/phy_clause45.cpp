// The clause-45 registers (MMDs) of the PHY model.
#include "virtual_board/chips/ieee8023/phy_bits.h"
#include "virtual_board/chips/ieee8023/phy_model.h"

namespace vboard {

using namespace phy;

namespace {

enum Mmd : uint8_t { kPma = 1, kPcs = 3, kAn = 7, kVendor = 31 };

constexpr uint16_t kVendorSpace = 0x8000;
constexpr uint16_t kLaneStatus = 0x0E23;

// Registers 5 and 6 of every MMD: clause 22, PMA, PCS, AN; vendor-specific 2.
constexpr uint16_t kDevices = 0x008B;
constexpr uint16_t kDevices2 = 0x8000;
// Register 8 of MMD 1, 3 and 31: a device answers here.
constexpr uint16_t kDevicePresent = 0x8000;

constexpr uint16_t kLowPowerAbility = 0x0002;
constexpr uint16_t kLowPowerSeen = 0x0C00;  // 3.1: sent and received, latched
constexpr uint16_t kLowPowerNow = 0x0300;
constexpr uint16_t kPmaExtendedAbilities = 0x0200;

constexpr uint16_t kPageReceived = 0x0040;  // 7.1
constexpr uint16_t kNegotiationComplete = 0x0020;
constexpr uint16_t kNegotiationAbility = 0x0008;
constexpr uint16_t kPartnerNegotiates = 0x0001;

// 7.32 of a 2.5 Gb/s PHY: master and slave, the speed, fast retrain, PMA training, loop timing.
constexpr uint16_t kMultiGigControlBits = 0xE0A7;
constexpr uint16_t kMultiGigReceiversGood = 0x3000;  // 7.33
constexpr uint16_t kPartnerOffers2500 = 0x0020;

// 1.0: both speed bits make bits 5 to 2 count.
constexpr uint16_t kExtendedSpeed = kSpeedLow | kSpeedHigh;
constexpr uint16_t kExtended2500 = kExtendedSpeed | 0x0018;

constexpr uint16_t kBlockLock = 0x1001;         // 3.32: receive link status, block lock
constexpr uint16_t kBlockLockLatched = 0x8000;  // 3.33

bool IsControl(uint8_t mmd, uint16_t reg)
{
    return reg == 0 && (mmd == kPma || mmd == kPcs || mmd == kAn);
}

}  // namespace

bool PhyModel::HasMmd(uint8_t mmd) const
{
    return HasMmds() && (mmd == kPma || mmd == kPcs || mmd == kAn || mmd == kVendor);
}

std::optional<uint16_t> PhyModel::Read45(uint8_t mmd, uint16_t reg)
{
    if (!Answers() || !config_.clause45)
        return kNobodyAnswers;
    if (InSoftReset() && !IsControl(mmd, reg)) {
        complaint_ = "read during the software reset";
        return std::nullopt;
    }
    return ReadMmd(mmd, reg);
}

std::optional<uint16_t> PhyModel::ReadMmd(uint8_t mmd, uint16_t reg)
{
    if (!HasMmd(mmd))
        return kNobodyAnswers;
    auto value = PeekMmd(mmd, reg);
    if (!value)
        complaint_ = kNoRegister;
    else
        HaveReadMmd(mmd, reg);
    return value;
}

bool PhyModel::Write45(uint8_t mmd, uint16_t reg, uint16_t value)
{
    if (!Answers() || !config_.clause45)
        return Done("written where nothing answers clause 45");
    if (InSoftReset())
        return Done("written during the software reset");
    return Done(WriteMmd(mmd, reg, value));
}

std::optional<uint16_t> PhyModel::PeekMmd(uint8_t mmd, uint16_t reg) const
{
    if (auto common = PeekCommon(mmd, reg))
        return common;
    if (mmd == kVendor)
        return PeekVendor(reg);
    if (reg >= kVendorSpace)
        return std::nullopt;
    if (mmd == kPma)
        return PeekPma(reg);
    return mmd == kPcs ? PeekPcs(reg) : PeekAn(reg);
}

// The registers that all MMDs have alike.
std::optional<uint16_t> PhyModel::PeekCommon(uint8_t mmd, uint16_t reg) const
{
    switch (reg) {
        case 2:
        case 14:
            return static_cast<uint16_t>(config_.identifier >> 16);
        case 3:
        case 15:
            return static_cast<uint16_t>(config_.identifier);
        case 5:
            if (mmd != kVendor)
                return kDevices;
            break;
        case 6:
            if (mmd != kVendor)
                return kDevices2;
            break;
        default:
            break;
    }
    return std::nullopt;
}

std::optional<uint16_t> PhyModel::PeekVendor(uint16_t reg) const
{
    if (reg == 8)
        return kDevicePresent;
    if (reg == kLaneStatus)
        return static_cast<uint16_t>(config_.laneGood ? 1 : 0);
    return std::nullopt;
}

uint16_t PhyModel::PmaControl() const
{
    unsigned speed = control_ & kExtendedSpeed;
    if (speed == kExtendedSpeed || link_.mode == kPhy2500Full)
        speed = kExtended2500;
    return static_cast<uint16_t>(speed | (control_ & kPowerDown) | (InSoftReset() ? kReset : 0U));
}

uint16_t PhyModel::PeekPma(uint16_t reg) const
{
    switch (reg) {
        case 0:
            return PmaControl();
        case 1:
            return LinkStatus(kPmaLatch) | kLowPowerAbility;
        case 4:
            return static_cast<uint16_t>((Has(kPhy2500Full) ? 0x2000 : 0) |
                                         (Has(kPhyGigabit) ? 0x0010 : 0) |
                                         (Has(kPhy100Half | kPhy100Full) ? 0x0020 : 0) |
                                         (Has(kPhy10Half | kPhy10Full) ? 0x0040 : 0));
        case 8:
            return kDevicePresent | kPmaExtendedAbilities;
        case 11:
            return static_cast<uint16_t>((Has(kPhy2500Full) ? 0x4000 : 0) |
                                         (Has(kPhyGigabit) ? 0x0020 : 0) |
                                         (Has(kPhy100Half | kPhy100Full) ? 0x0080 : 0) |
                                         (Has(kPhy10Half | kPhy10Full) ? 0x0100 : 0));
        case 21:
            return Has(kPhy2500Full) ? 1 : 0;
        default:
            return 0;
    }
}

uint16_t PhyModel::PeekPcs(uint16_t reg) const
{
    bool locked = link_.mode == kPhy2500Full;
    bool lockKept = locked && !wasDown_[kBlockLockLatch];
    switch (reg) {
        case 0:
            return static_cast<uint16_t>((InSoftReset() ? kReset : 0U) | (control_ & kPowerDown));
        case 1:
            return static_cast<uint16_t>(LinkStatus(kPcsLatch) | kLowPowerAbility |
                                         (lowPowerSeen_ ? kLowPowerSeen : 0) |
                                         (EeeActive() ? kLowPowerNow : 0));
        case 4:
            return Has(kPhy2500Full) ? 0x0040 : 0;
        case 8:
            return kDevicePresent;
        case 20:
            return EeeBits();
        case 21:
            return (config_.eee & kPhy2500Full) != 0 ? kEee2500 : 0;
        case 22:
            return counters_[kWakeErrors];
        case 32:
            return locked ? kBlockLock : 0;
        case 33:
            return static_cast<uint16_t>((lockKept ? kBlockLockLatched : 0) | counters_[kBer] << 8 |
                                         counters_[kErroredBlocks]);
        default:
            return 0;
    }
}

uint16_t PhyModel::PeekAn(uint16_t reg) const
{
    switch (reg) {
        case 0:
            return static_cast<uint16_t>((InSoftReset() ? kReset : 0U) | (control_ & kNegotiate));
        case 1:
            return AnStatus();
        case 16:
            return advertisement_;
        case 19:
            return PartnerAbility();
        case 32:
            return multiGigControl_;
        case 33:
            return MultiGigStatus();
        case 60:
            return eeeAdvertisement_;
        case 61:
            return EeePartner(kPhy100Full | kPhy1000Full);
        case 62:
            return eeeAdvertisement2_;
        case 63:
            return EeePartner(kPhy2500Full);
        default:
            return 0;
    }
}

uint16_t PhyModel::AnStatus() const
{
    unsigned status = LinkStatus(kAnLatch);
    status |= pageReceived_ ? kPageReceived : 0U;
    status |= Negotiating() && LinkUp() ? kNegotiationComplete : 0U;
    status |= config_.negotiates ? kNegotiationAbility : 0U;
    status |= link_.exchanged ? kPartnerNegotiates : 0U;
    return static_cast<uint16_t>(status);
}

uint16_t PhyModel::MultiGigStatus() const
{
    if (!Has(kPhy2500Full) || !link_.exchanged)
        return 0;
    unsigned status = (far_.modes & kPhy2500Full) != 0 ? kPartnerOffers2500 : 0U;
    status |= link_.mode == kPhy2500Full ? kMultiGigReceiversGood : 0U;
    return static_cast<uint16_t>(status);
}

uint16_t PhyModel::EeeBits() const
{
    return static_cast<uint16_t>(((config_.eee & kPhy100Full) != 0 ? kEee100 : 0) |
                                 ((config_.eee & kPhy1000Full) != 0 ? kEee1000 : 0));
}

uint16_t PhyModel::EeePartner(PhyModes modes) const
{
    if (!config_.partner.eee || !link_.exchanged)
        return 0;
    unsigned both = far_.modes & modes;
    return static_cast<uint16_t>(((both & kPhy100Full) != 0 ? kEee100 : 0) |
                                 ((both & kPhy1000Full) != 0 ? kEee1000 : 0) |
                                 ((both & kPhy2500Full) != 0 ? kEee2500 : 0));
}

void PhyModel::HaveReadMmd(uint8_t mmd, uint16_t reg)
{
    if (mmd == kPma && reg == 1)
        wasDown_[kPmaLatch] = !LinkUp();
    if (mmd == kAn && reg == 1) {
        wasDown_[kAnLatch] = !LinkUp();
        pageReceived_ = false;
    }
    if (mmd != kPcs)
        return;
    if (reg == 1) {
        wasDown_[kPcsLatch] = !LinkUp();
        lowPowerSeen_ = EeeActive();
    }
    if (reg == 22)
        counters_[kWakeErrors] = 0;
    if (reg == 33) {
        wasDown_[kBlockLockLatch] = link_.mode != kPhy2500Full;
        counters_[kBer] = 0;
        counters_[kErroredBlocks] = 0;
    }
}

PhyModel::Refusal PhyModel::WriteMmd(uint8_t mmd, uint16_t reg, uint16_t value)
{
    auto store = [value](uint16_t& word, uint16_t bits) -> Refusal {
        if ((value & ~bits) != 0)
            return kNoAbility;
        word = value;
        return nullptr;
    };
    if (!HasMmd(mmd))
        return "no such MMD";
    if (mmd != kAn)
        return IsControl(mmd, reg) ? WriteMmdControl(*PeekMmd(mmd, 0), value) : kReadOnly;
    switch (reg) {
        case 0:
            return WriteAnControl(value);
        case 16:
            return config_.negotiates ? WriteAdvertisement(value) : kNoAbility;
        case 32:
            return store(multiGigControl_, MultiGigBits());
        case 60:
            return store(eeeAdvertisement_, EeeBits());
        case 62:
            return store(eeeAdvertisement2_, (config_.eee & kPhy2500Full) != 0 ? kEee2500 : 0);
        default:
            return kReadOnly;
    }
}

uint16_t PhyModel::MultiGigBits() const
{
    return Has(kPhy2500Full) ? kMultiGigControlBits : 0;
}

// 1.0 and 3.0 reset and power down the whole PHY, through register 0.
PhyModel::Refusal PhyModel::WriteMmdControl(uint16_t present, uint16_t value)
{
    if ((value & kReset) != 0)
        return WriteControl(control_ | kReset);
    if (((value ^ present) & ~kPowerDown) != 0)
        return "only reset and low power can be written here";
    return WriteControl(static_cast<uint16_t>((control_ & ~kPowerDown) | (value & kPowerDown)));
}

PhyModel::Refusal PhyModel::WriteAnControl(uint16_t value)
{
    constexpr uint16_t kBits = kReset | kNegotiate | kRestart;
    if ((value & ~kBits) != 0)
        return kNoAbility;
    return WriteControl(static_cast<uint16_t>((control_ & ~kNegotiate) | value));
}

}  // namespace vboard

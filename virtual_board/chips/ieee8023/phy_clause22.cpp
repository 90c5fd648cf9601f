// The clause-22 registers of the PHY model.
#include "virtual_board/chips/ieee8023/phy_bits.h"
#include "virtual_board/chips/ieee8023/phy_model.h"

namespace vboard {

using namespace phy;

namespace {

// Register 0.
constexpr uint16_t kControlReserved = 0x001F;
constexpr uint16_t kUnidirectional = 0x0020;
constexpr uint16_t kControlStored = 0x7DC0;

// Register 1.
constexpr uint16_t kExtendedStatus = 0x0100;
constexpr uint16_t kPreambleSuppression = 0x0040;
constexpr uint16_t kNegotiationComplete = 0x0020;
constexpr uint16_t kNegotiationAbility = 0x0008;
constexpr uint16_t kExtendedCapability = 0x0001;
constexpr unsigned kStatusModesShift = 11;

// Register 4: next page, remote fault, pause; the extended next page of a 2.5 Gb/s PHY.
constexpr uint16_t kAdvertisementExtras = 0xAC00;
constexpr uint16_t kExtendedNextPage = 0x1000;
constexpr uint16_t kSelectorField = 0x001F;

// Register 6.
constexpr uint16_t kNextPageAble = 0x0004;
constexpr uint16_t kPartnerNextPageAble = 0x0008;
constexpr uint16_t kPageReceived = 0x0002;
constexpr uint16_t kPartnerNegotiates = 0x0001;

constexpr uint16_t kNextPageBits = 0xB7FF;

// Registers 9 and 10.
constexpr uint16_t kTestMode = 0xE000;
constexpr uint16_t kMasterFault = 0x8000;
constexpr uint16_t kIsMaster = 0x4000;
constexpr uint16_t kReceiversGood = 0x3000;

// Register 13.
constexpr uint16_t kSelectReserved = 0x3FE0;
enum MmdFunction { kAddress, kData, kDataIncrement, kDataIncrementOnWrite };

MmdFunction FunctionOf(uint16_t select)
{
    return MmdFunction(select >> 14);
}

}  // namespace

std::optional<uint16_t> PhyModel::Read22(uint8_t reg)
{
    if (!Answers())
        return kNobodyAnswers;
    if (InSoftReset() && reg != 0) {
        complaint_ = "read during the software reset";
        return std::nullopt;
    }
    if (reg == 14)
        return ReadIndirect();
    auto value = Peek22(reg);
    if (!value)
        complaint_ = kNoRegister;
    else
        HaveRead22(reg);
    return value;
}

std::optional<uint16_t> PhyModel::Peek22(uint8_t reg) const
{
    switch (reg) {
        case 0:
            return static_cast<uint16_t>(control_ | (InSoftReset() ? kReset : 0));
        case 1:
            return Status();
        case 2:
            return static_cast<uint16_t>(config_.identifier >> 16);
        case 3:
            return static_cast<uint16_t>(config_.identifier);
        case 13:
            return mmdSelect_;
        case 9:
        case 10:
        case 15:
            return PeekGigabit(reg);
        default:
            return PeekNegotiation(reg);
    }
}

std::optional<uint16_t> PhyModel::PeekNegotiation(uint8_t reg) const
{
    if (!config_.negotiates)
        return std::nullopt;
    switch (reg) {
        case 4:
            return advertisement_;
        case 5:
            return PartnerAbility();
        case 6:
            return Expansion();
        case 7:
            return nextPage_;
        case 8:
            return 0;
        default:
            return std::nullopt;
    }
}

std::optional<uint16_t> PhyModel::PeekGigabit(uint8_t reg) const
{
    if (!Has(kPhyGigabit))
        return std::nullopt;
    if (reg == 9)
        return gigabitControl_;
    if (reg == 10)
        return GigabitStatus();
    return static_cast<uint16_t>((config_.modes & kPhyGigabit) << 8);
}

// The latched bit and the present one.
uint16_t PhyModel::LinkStatus(LinkLatch latch) const
{
    return LinkUp() && !wasDown_[latch] ? kLinkStatus : 0;
}

uint16_t PhyModel::Status() const
{
    unsigned status = kPreambleSuppression | kExtendedCapability | LinkStatus(kStatusLatch);
    status |= (config_.modes & 0x0FU) << kStatusModesShift;
    status |= Has(kPhyGigabit) ? kExtendedStatus : 0U;
    status |= config_.negotiates ? kNegotiationAbility : 0U;
    status |= Negotiating() && LinkUp() ? kNegotiationComplete : 0U;
    return static_cast<uint16_t>(status);
}

uint16_t PhyModel::PartnerAbility() const
{
    if (link_.detected)
        return static_cast<uint16_t>(link_.mode << kTechnologyShift);
    if (!link_.exchanged)
        return 0;
    unsigned modes = (far_.modes & 0x0FU) << kTechnologyShift;
    return static_cast<uint16_t>(modes | kAcknowledge | kSelector);
}

uint16_t PhyModel::Expansion() const
{
    unsigned value = Has(kPhyGigabit | kPhy2500Full) ? kNextPageAble : 0U;
    value |= pageReceived_ ? kPageReceived : 0U;
    value |= link_.exchanged ? kPartnerNegotiates : 0U;
    bool partnerHasPages = (far_.modes & (kPhyGigabit | kPhy2500Full)) != 0;
    value |= link_.exchanged && partnerHasPages ? kPartnerNextPageAble : 0U;
    return static_cast<uint16_t>(value);
}

uint16_t PhyModel::GigabitStatus() const
{
    unsigned value = counters_[kIdleErrors];
    value |= counters_[kMasterFaults] != 0 ? kMasterFault : 0U;
    if (link_.exchanged)
        value |= (far_.modes & kPhyGigabit) << 6;
    if ((link_.mode & kPhyGigabit) == 0)
        return static_cast<uint16_t>(value);
    bool manual = (gigabitControl_ & kManualMaster) != 0;
    uint16_t master = manual ? kMasterValue : kMultiport;
    value |= (gigabitControl_ & master) != 0 ? kIsMaster : 0U;
    return static_cast<uint16_t>(value | kReceiversGood);
}

void PhyModel::HaveRead22(uint8_t reg)
{
    if (reg == 1)
        wasDown_[kStatusLatch] = !LinkUp();
    if (reg == 6)
        pageReceived_ = false;
    if (reg == 10)
        counters_[kIdleErrors] = counters_[kMasterFaults] = 0;
}

bool PhyModel::Write22(uint8_t reg, uint16_t value)
{
    if (!Answers())
        return Done("written while the PHY is held in reset");
    if (InSoftReset())
        return Done("written during the software reset");
    return Done(WriteRegister(reg, value));
}

PhyModel::Refusal PhyModel::WriteRegister(uint8_t reg, uint16_t value)
{
    if (reg == 0)
        return WriteControl(value);
    if (reg == 14)
        return WriteIndirect(value);
    if (!Peek22(reg))
        return kNoRegister;
    if (reg == 4)
        return WriteAdvertisement(value);
    if (reg == 9)
        return WriteGigabitControl(value);
    if (reg != 7 && reg != 13)
        return kReadOnly;
    uint16_t reserved = reg == 13 ? kSelectReserved : static_cast<uint16_t>(~kNextPageBits);
    if ((value & reserved) != 0)
        return kReservedBit;
    if (reg == 7)
        nextPage_ = value;
    else if (config_.indirect)
        mmdSelect_ = value;
    return nullptr;
}

PhyModel::Refusal PhyModel::CheckControl(uint16_t value) const
{
    if ((value & kControlReserved) != 0)
        return kReservedBit;
    if ((value & kUnidirectional) != 0)
        return kNoAbility;
    if ((value & (kNegotiate | kRestart)) != 0 && !config_.negotiates)
        return kNoAbility;
    if ((value & (kNegotiate | kReset)) == 0 && !Has(ForcedMode(value)))
        return kNoMode;
    return nullptr;
}

PhyModel::Refusal PhyModel::WriteControl(uint16_t value)
{
    if (Refusal refusal = CheckControl(value))
        return refusal;
    if ((value & kReset) != 0) {
        DropLink();
        softResetUntil_ = now_ + config_.softResetTime;
        return nullptr;
    }
    uint16_t changed = control_ ^ value;
    control_ = value & kControlStored;
    uint16_t decisive = kNegotiate | kPowerDown;
    if (!Negotiating())
        decisive |= kSpeedHigh | kSpeedLow | kFullDuplex;
    if ((changed & decisive) != 0 || (Negotiating() && (value & kRestart) != 0))
        Relink();
    return nullptr;
}

PhyModel::Refusal PhyModel::WriteAdvertisement(uint16_t value)
{
    auto modes = static_cast<uint16_t>((config_.modes & 0x0FU) << kTechnologyShift);
    uint16_t extras = kAdvertisementExtras;
    if (Has(kPhy2500Full))
        extras |= kExtendedNextPage;
    if ((value & kSelectorField) != kSelector)
        return "selector other than that of IEEE 802.3";
    if ((value & kAcknowledge) != 0)
        return kReservedBit;
    if ((value & ~(modes | extras | kSelectorField)) != 0)
        return kNoAbility;
    advertisement_ = value;
    return nullptr;
}

PhyModel::Refusal PhyModel::WriteGigabitControl(uint16_t value)
{
    auto modes = static_cast<uint16_t>((config_.modes & kPhyGigabit) << 4);
    if ((value & 0x00FF) != 0)
        return kReservedBit;
    if ((value & kTestMode) != 0)
        return "test modes are not modelled";
    if ((value & ~(modes | kManualMaster | kMasterValue | kMultiport)) != 0)
        return kNoAbility;
    gigabitControl_ = value;
    return nullptr;
}

std::optional<uint16_t> PhyModel::ReadIndirect()
{
    if (!config_.indirect)
        return 0;
    uint8_t mmd = mmdSelect_ & 31;
    MmdFunction function = FunctionOf(mmdSelect_);
    if (function == kAddress)
        return mmdAddress_[mmd];
    auto value = ReadMmd(mmd, mmdAddress_[mmd]);
    if (value && function == kDataIncrement)
        ++mmdAddress_[mmd];
    return value;
}

PhyModel::Refusal PhyModel::WriteIndirect(uint16_t value)
{
    if (!config_.indirect)
        return nullptr;
    uint8_t mmd = mmdSelect_ & 31;
    MmdFunction function = FunctionOf(mmdSelect_);
    if (function == kAddress) {
        mmdAddress_[mmd] = value;
        return nullptr;
    }
    Refusal refusal = WriteMmd(mmd, mmdAddress_[mmd], value);
    if (refusal == nullptr && function != kData)
        ++mmdAddress_[mmd];
    return refusal;
}

}  // namespace vboard

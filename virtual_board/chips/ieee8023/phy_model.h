// A twisted-pair PHY at register level: the registers of IEEE 802.3 clause 22 and clause 45 that
// such a PHY has, and a negotiation that takes its time.
//
// What the model does where a PHY on a real bus would just be misused:
//  - while the reset line is held, and for `resetTime` after, the bus is not driven: reads give
//    0xFFFF; writes, which would be lost, are refused. Clause-45 frames to a PHY that answers none,
//    or to an MMD that it lacks, end the same way.
//  - during a software reset only register 0 (1.0, 3.0 and 7.0 of clause 45) can be read; any other
//    access is refused.
//  - refused are: a write with a reserved bit set or to a read-only register, a write of a mode or
//    an ability that the PHY lacks, and a clause-22 register that the standard makes depend on a
//    feature that the PHY lacks, or that it leaves to the vendor (16 to 31).
//  - undefined registers of MMD 1, 3 and 7 below 0x8000 read 0, as clause 45 has it; vendor
//    registers other than 31.0x0E23 are refused.
//  - registers 13 and 14 of a PHY without MMD access read 0 and ignore writes: there is no other
//    way to find out.
// Not modelled: test modes, next pages by software, 100BASE-T4, remote fault.
#pragma once

#include <array>

#include "virtual_board/chips/ieee8023/phy_link.h"
#include "virtual_board/chips/mdio_device.h"

namespace vboard {

struct PhyConfig {
    uint32_t identifier = 0x0A5A8023;  // registers 2 and 3
    PhyModes modes = kPhyAllModes;
    bool negotiates = true;
    PhyModes eee = kPhy100Full | kPhy1000Full | kPhy2500Full;
    bool clause45 = true;  // answers clause-45 frames
    bool indirect = true;  // reaches its MMDs through registers 13 and 14
    std::chrono::nanoseconds resetTime = std::chrono::milliseconds{50};
    std::chrono::nanoseconds softResetTime = std::chrono::milliseconds{20};
    std::chrono::nanoseconds negotiationTime = std::chrono::milliseconds{1500};
    bool laneGood = true;  // MMD 31, register 0x0E23, bit 0
    LinkPartner partner = {};
};

class PhyModel final : public MdioDevice {
public:
    // Throws std::invalid_argument for a PHY that cannot be: without any mode, gigabit without
    // negotiation, 2.5 Gb/s or EEE without MMDs, EEE for a mode that it lacks.
    explicit PhyModel(const PhyConfig& given);

    std::optional<uint16_t> Read22(uint8_t reg) override;
    bool Write22(uint8_t reg, uint16_t value) override;
    std::optional<uint16_t> Read45(uint8_t mmd, uint16_t reg) override;
    bool Write45(uint8_t mmd, uint16_t reg, uint16_t value) override;
    std::string_view Complaint() const override { return complaint_; }
    void SetResetLine(bool held) override;
    void Advance(std::chrono::nanoseconds boardTime) override;
    // The best of both ends leaves the duplex to them. A partner that does not negotiate is forced
    // to the given speed and duplex.
    bool SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex) override;
    // "idle_errors", "master_faults", "ber", "errored_blocks", "wake_errors"; each stops at what its
    // register holds: of master faults that is one.
    bool AddCounter(unsigned port, std::string_view name, uint64_t value) override;
    // All but register 14, whose content depends on a dialogue.
    std::optional<uint16_t> Peek22(uint8_t reg) const override;
    nlohmann::json State() const override;

    void SetLaneGood(bool good) { config_.laneGood = good; }

private:
    using Refusal = const char*;  // null: done
    // The link status bits that stay 0 until they are read, one for each register that has one.
    enum LinkLatch { kStatusLatch, kPmaLatch, kPcsLatch, kAnLatch, kBlockLockLatch, kLatches };
    enum Counter { kIdleErrors, kMasterFaults, kBer, kErroredBlocks, kWakeErrors, kCounters };

    bool Has(PhyModes modes) const { return (config_.modes & modes) != 0; }
    bool HasMmds() const { return config_.clause45 || config_.indirect; }
    bool Answers() const;
    bool InSoftReset() const;
    bool PoweredDown() const;
    bool Negotiating() const;
    bool LinkUp() const { return link_.mode != kPhyNoMode; }
    bool Done(Refusal refusal);
    void LoadDefaults();

    // Starts the link anew with what the registers hold now.
    void Relink();
    void DropLink();
    void Conclude();
    PhyEnd NearEnd() const;
    PhyModes Advertised() const;
    PhyMode ForcedMode(uint16_t control) const;
    bool EeeActive() const;
    uint16_t LinkStatus(LinkLatch latch) const;

    uint16_t Status() const;
    uint16_t PartnerAbility() const;
    uint16_t Expansion() const;
    uint16_t GigabitStatus() const;
    std::optional<uint16_t> PeekNegotiation(uint8_t reg) const;
    std::optional<uint16_t> PeekGigabit(uint8_t reg) const;
    void HaveRead22(uint8_t reg);
    Refusal WriteRegister(uint8_t reg, uint16_t value);
    Refusal WriteControl(uint16_t value);
    Refusal CheckControl(uint16_t value) const;
    Refusal WriteAdvertisement(uint16_t value);
    Refusal WriteGigabitControl(uint16_t value);
    std::optional<uint16_t> ReadIndirect();
    Refusal WriteIndirect(uint16_t value);

    bool HasMmd(uint8_t mmd) const;
    std::optional<uint16_t> ReadMmd(uint8_t mmd, uint16_t reg);
    std::optional<uint16_t> PeekMmd(uint8_t mmd, uint16_t reg) const;
    uint16_t PmaControl() const;
    uint16_t PeekPma(uint16_t reg) const;
    uint16_t PeekPcs(uint16_t reg) const;
    uint16_t PeekAn(uint16_t reg) const;
    uint16_t AnStatus() const;
    uint16_t MultiGigStatus() const;
    uint16_t EeePartner(PhyModes modes) const;
    std::optional<uint16_t> PeekVendor(uint16_t reg) const;
    std::optional<uint16_t> PeekCommon(uint8_t mmd, uint16_t reg) const;
    void HaveReadMmd(uint8_t mmd, uint16_t reg);
    Refusal WriteMmd(uint8_t mmd, uint16_t reg, uint16_t value);
    Refusal WriteMmdControl(uint16_t present, uint16_t value);
    Refusal WriteAnControl(uint16_t value);
    uint16_t EeeBits() const;
    uint16_t MultiGigBits() const;

    PhyConfig config_;
    std::string_view complaint_ = "refused by the chip";
    std::chrono::nanoseconds now_{};
    bool held_ = true;
    std::chrono::nanoseconds answersAt_{};
    std::optional<std::chrono::nanoseconds> softResetUntil_;

    uint16_t control_ = 0;
    uint16_t advertisement_ = 0;
    uint16_t nextPage_ = 0;
    uint16_t gigabitControl_ = 0;
    uint16_t mmdSelect_ = 0;
    std::array<uint16_t, 32> mmdAddress_{};
    uint16_t multiGigControl_ = 0;
    uint16_t eeeAdvertisement_ = 0;
    uint16_t eeeAdvertisement2_ = 0;
    std::array<uint16_t, kCounters> counters_{};

    bool connected_;
    PhyEnd far_;
    std::optional<std::chrono::nanoseconds> concludesAt_;
    PhyOutcome pending_;
    PhyOutcome link_;
    std::array<bool, kLatches> wasDown_{};
    bool pageReceived_ = false;
    bool lowPowerSeen_ = false;
};

}  // namespace vboard

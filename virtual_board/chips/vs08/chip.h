// Register-level model of the VS08 switch chip; docs/vswitch-registers.md describes the chip.
#pragma once

#include <chrono>
#include <cstdint>
#include <vector>

#include "virtual_board/chips/mdio_device.h"
#include "virtual_board/chips/vs08/counters.h"
#include "virtual_board/chips/vs08/fdb.h"
#include "virtual_board/chips/vs08/forwarding.h"
#include "virtual_board/chips/vs08/global.h"
#include "virtual_board/chips/vs08/mac_vlan.h"
#include "virtual_board/chips/vs08/ports.h"
#include "virtual_board/chips/vs08/qos.h"

namespace vboard {

class VswitchChip : public MdioDevice {
public:
    // Throws std::invalid_argument when the chip has no such port.
    explicit VswitchChip(unsigned internalPort);

    std::optional<uint16_t> Read22(uint8_t reg) override;
    bool Write22(uint8_t reg, uint16_t value) override;
    std::string_view Complaint() const override { return complaint_; }
    std::optional<uint16_t> Peek22(uint8_t reg) const override;

    void SetResetLine(bool held) override;
    void Advance(std::chrono::nanoseconds boardTime) override;
    bool SetLink(unsigned port, bool up, unsigned speedCode, bool fullDuplex) override;

    // A frame from this address arrived on a port. False also when the port could not receive it:
    // no link, in verification test, the chip not ready, the table full, no station's address.
    bool Learn(const MacAddress& mac, unsigned port, unsigned vid) override;
    // False while the chip is not ready.
    bool Forget() override;
    bool AddCounter(unsigned port, std::string_view name, uint64_t value) override;

    nlohmann::json State() const override;

    // What moves frames between the ports looks at the registers through the view, which holds
    // until one of them or a link changes, and writes into the MAC table and the counters.
    const vswitch::ForwardingView& Forwarding();
    // Counts the changes of the view.
    uint32_t ForwardingChanges() const { return forwardingChanges_; }
    // The chip, and on the internal port its receive path too, has booted.
    bool Awake(unsigned port) const { return port == internalPort_ ? RxReady() : Ready(); }
    vswitch::MacTable& Stations() { return fdb_.table; }
    vswitch::Counters& PortCounters() { return counters_; }
    void NoteStationRefused() { global_.NoteFdbRefused(); }
    // The device at the far end of a port's cable is switched on or off.
    void SetPartnerPower(unsigned port, bool on);

private:
    bool Ready() const { return !held_ && now_ >= readyAt_; }
    bool RxReady() const { return Ready() && now_ >= rxReadyAt_; }
    uint16_t Status() const;

    void Reset(std::chrono::nanoseconds readyAfter);
    vswitch::Refusal Control(uint16_t value);
    vswitch::Refusal ReadDirect(uint8_t reg, uint16_t& value);
    vswitch::Refusal WriteDirect(uint8_t reg, uint16_t value);
    vswitch::Refusal ReadData(uint16_t address, uint16_t& value);
    vswitch::Refusal PeekData(uint16_t address, uint16_t& value) const;
    vswitch::Refusal WriteData(uint16_t address, uint16_t value);
    vswitch::Refusal WriteBlock(uint16_t address, uint16_t value);
    uint16_t LinkMask() const;
    void FollowLinks();
    void FollowRegisters();

    nlohmann::json GlobalState() const;
    nlohmann::json PortState(unsigned port) const;
    nlohmann::json QueueState() const;
    nlohmann::json MacVlanState() const;
    nlohmann::json FdbState() const;

    unsigned internalPort_;
    vswitch::GlobalRegisters global_;
    vswitch::Fdb fdb_;
    vswitch::Counters counters_;
    vswitch::MacVlanTable macVlan_;
    std::vector<vswitch::Port> ports_;
    vswitch::Queues queues_;

    bool held_ = false;
    std::chrono::nanoseconds now_{};
    std::chrono::nanoseconds readyAt_{};
    std::chrono::nanoseconds rxReadyAt_{};
    uint16_t addr_ = 0;
    uint16_t linkMask_ = 0;  // as last seen by FollowLinks
    std::string_view complaint_;

    vswitch::ForwardingView view_{};
    bool viewStale_ = true;
    uint32_t forwardingChanges_ = 0;
};

}  // namespace vboard

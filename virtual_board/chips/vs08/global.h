// The switch-wide registers of the VS08 model.
#pragma once

#include <chrono>
#include <cstdint>

#include "virtual_board/chips/vs08/registers.h"

namespace vboard::vswitch {

inline constexpr uint16_t kGlobalFirst = 0x0100;
inline constexpr uint16_t kGlobalLast = 0x0126;

enum GlobalRegister : uint16_t {
    kCaps = 0x0100,
    kFdbSize = 0x0101,
    kQueueCount = 0x0102,
    kBuffers = 0x0103,
    kCounterCount = 0x0104,
    kMacVlanSize = 0x0105,
    kForwardCtrl = 0x0110,
    kProviderCtrl = 0x0111,
    kProviderTpid = 0x0112,
    kAgeing = 0x0113,
    kMtu = 0x0114,
    kSnooping = 0x0115,
    kLedMode = 0x0116,
    kLinkChange = 0x0117,
    kFdbRefused = 0x0118,
    kWredCtrl = 0x0120,
    kWredThresholds = 0x0121,
};

class GlobalRegisters {
public:
    explicit GlobalRegisters(unsigned internalPort);

    void Reset();
    // Read has the side effects of a bus read, Peek has none.
    Refusal Read(uint16_t address, uint16_t& value);
    Refusal Peek(uint16_t address, uint16_t& value) const;
    Refusal Write(uint16_t address, uint16_t value);

    uint16_t Get(GlobalRegister address) const;
    uint16_t WredThreshold(unsigned index) const;
    std::chrono::seconds AgeLimit() const;
    void NoteLinkChange(uint16_t ports);
    void NoteFdbRefused();

private:
    unsigned internalPort_;
    RegisterBank identity_;
    RegisterBank settings_;
    RegisterBank wred_;
};

}  // namespace vboard::vswitch

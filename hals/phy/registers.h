// The standard registers that the HAL uses (IEEE 802.3 clauses 22, 28, 40 and 45).
#pragma once

#include <stdint.h>

namespace ieee8023 {

// What a bus reads where nobody answers. No register that the HAL decides by can hold it.
constexpr uint16_t kNobody = 0xFFFF;

constexpr uint8_t kControl = 0;
constexpr uint16_t kReset = 0x8000;       // 0.15
constexpr uint16_t kSpeedLow = 0x2000;    // 0.13
constexpr uint16_t kNegotiate = 0x1000;   // 0.12
constexpr uint16_t kPowerDown = 0x0800;   // 0.11
constexpr uint16_t kIsolate = 0x0400;     // 0.10
constexpr uint16_t kRestart = 0x0200;     // 0.9
constexpr uint16_t kFullDuplex = 0x0100;  // 0.8
constexpr uint16_t kSpeedHigh = 0x0040;   // 0.6
constexpr uint16_t kSelfClearing = kReset | kRestart;

constexpr uint8_t kStatus = 1;
constexpr unsigned kStatusModesShift = 11;          // 1.15 to 1.11
constexpr uint16_t kExtendedStatusExists = 0x0100;  // 1.8
constexpr uint16_t kNegotiationComplete = 0x0020;   // 1.5
constexpr uint16_t kNegotiationAble = 0x0008;       // 1.3
constexpr uint16_t kLinkUp = 0x0004;                // 1.2
constexpr uint16_t kExtendedRegisters = 0x0001;     // 1.0

constexpr uint8_t kIdentifier1 = 2;
constexpr uint8_t kIdentifier2 = 3;

// Registers 4 and 5; the five technologies lie as in 1.15 to 1.11.
constexpr uint8_t kAdvertisement = 4;
constexpr uint8_t kPartnerAbility = 5;
constexpr unsigned kTechnologyShift = 5;
constexpr uint16_t kTechnologies = 0x03E0;
constexpr uint16_t kTech100Full = 0x0100;
constexpr uint16_t kTech100Half = 0x0280;  // TX and T4
constexpr uint16_t kTech10Full = 0x0040;
constexpr uint16_t kTech10Half = 0x0020;
constexpr uint16_t kAdvertisementKept = 0x9C1F;  // next pages, pause, selector

constexpr uint8_t kExpansion = 6;
constexpr uint16_t kPartnerNegotiates = 0x0001;  // 6.0

constexpr uint8_t kGigabitControl = 9;
constexpr uint16_t kGigabitModes = 0x0300;  // 9.9 full, 9.8 half
constexpr uint16_t kGigabitFull = 0x0200;
constexpr uint16_t kGigabitKept = 0x1C00;  // master and slave; not the test modes
constexpr uint8_t kGigabitStatus = 10;
constexpr unsigned kGigabitPartnerShift = 2;  // 10.11 and 10.10 against 9.9 and 9.8
constexpr uint16_t kMasterFault = 0x8000;     // 10.15
constexpr uint16_t kIdleErrors = 0x00FF;

constexpr uint8_t kMmdSelect = 13;
constexpr uint8_t kMmdData = 14;
constexpr uint16_t kMmdDataFunction = 0x4000;

constexpr uint8_t kExtendedStatus = 15;
constexpr uint16_t kExtendedGigabitFull = 0x2000;  // 15.13
constexpr uint16_t kExtendedGigabitHalf = 0x1000;  // 15.12

constexpr uint8_t kPma = 1;
constexpr uint8_t kPcs = 3;
constexpr uint8_t kAn = 7;
constexpr uint16_t kDevicesInPackage = 5;  // of each MMD; bit n = MMD n

constexpr uint16_t kPmaStatus2 = 8;
constexpr uint16_t kPmaExtendedAbilitiesExist = 0x0200;  // 1.8.9
constexpr uint16_t kPmaExtendedAbilities = 11;
constexpr uint16_t kPma10000 = 0x0004;                   // 1.11.2
constexpr uint16_t kPmaMultiGigAbilitiesExist = 0x4000;  // 1.11.14
constexpr uint16_t kPmaMultiGigAbilities = 21;
constexpr uint16_t kPma2500 = 0x0001;
constexpr uint16_t kPma5000 = 0x0002;

constexpr uint16_t kPcsStatus1 = 1;
constexpr uint16_t kTxSleeps = 0x0200;  // 3.1.9
constexpr uint16_t kRxSleeps = 0x0100;  // 3.1.8
constexpr uint16_t kEeeAbilities = 20;
constexpr uint16_t kEee100 = 0x0002;
constexpr uint16_t kEee1000 = 0x0004;
constexpr uint16_t kEee10000 = 0x0008;
constexpr uint16_t kEeeTwistedPair = kEee100 | kEee1000 | kEee10000;
constexpr uint16_t kEeeAbilities2 = 21;
constexpr uint16_t kEee2500 = 0x0001;
constexpr uint16_t kEee5000 = 0x0002;
constexpr uint16_t kEeeWakeErrors = 22;
constexpr uint16_t kBlockErrors = 33;
constexpr unsigned kHighBerShift = 8;
constexpr uint16_t kHighBer = 0x003F;
constexpr uint16_t kErroredBlocks = 0x00FF;

constexpr uint16_t kMultiGigControl = 32;
constexpr uint16_t kMultiGigStatus = 33;
constexpr uint16_t kOffers10000 = 0x1000;
constexpr uint16_t kOffers5000 = 0x0100;
constexpr uint16_t kOffers2500 = 0x0080;
constexpr uint16_t kPartner10000 = 0x0800;
constexpr uint16_t kPartner5000 = 0x0040;
constexpr uint16_t kPartner2500 = 0x0020;
constexpr uint16_t kEeeOffer = 60;
constexpr uint16_t kEeePartner = 61;
constexpr uint16_t kEeeOffer2 = 62;
constexpr uint16_t kEeePartner2 = 63;

}  // namespace ieee8023

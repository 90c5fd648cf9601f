#include "tools/orblinkctl/facts/phy_offers.h"

#include <optional>
#include <span>

#include "hals/phy/ethphy_ieee8023.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/facts/phy_counters.h"

namespace ctl {

namespace {

constexpr int kClause22 = -1;
constexpr unsigned kNegotiationMmd = 7;

// A bit of a register that stands for an offer.
struct Offer {
    int mmd;
    uint16_t number;
    unsigned bit;
    const char* word;
};

constexpr Offer kOwnSpeeds[] = {
    {kClause22, 4, 5, "10/half"},
    {kClause22, 4, 6, "10/full"},
    {kClause22, 4, 7, "100/half"},
    {kClause22, 4, 8, "100/full"},
    {kClause22, 9, 8, "1000/half"},
    {kClause22, 9, 9, "1000/full"},
    {kNegotiationMmd, 32, 7, "2500/full"},
    {kNegotiationMmd, 32, 8, "5000/full"},
    {kNegotiationMmd, 32, 12, "10000/full"},
};
constexpr Offer kPartnerSpeeds[] = {
    {kClause22, 5, 5, "10/half"},
    {kClause22, 5, 6, "10/full"},
    {kClause22, 5, 7, "100/half"},
    {kClause22, 5, 8, "100/full"},
    {kClause22, 10, 10, "1000/half"},
    {kClause22, 10, 11, "1000/full"},
    {kNegotiationMmd, 33, 5, "2500/full"},
    {kNegotiationMmd, 33, 6, "5000/full"},
    {kNegotiationMmd, 33, 11, "10000/full"},
};
constexpr Offer kOwnEee[] = {
    {kNegotiationMmd, 60, 1, "100"},   {kNegotiationMmd, 60, 2, "1000"},
    {kNegotiationMmd, 62, 0, "2500"},  {kNegotiationMmd, 62, 1, "5000"},
    {kNegotiationMmd, 60, 3, "10000"},
};
constexpr Offer kPartnerEee[] = {
    {kNegotiationMmd, 61, 1, "100"},   {kNegotiationMmd, 61, 2, "1000"},
    {kNegotiationMmd, 63, 0, "2500"},  {kNegotiationMmd, 63, 1, "5000"},
    {kNegotiationMmd, 61, 3, "10000"},
};

struct Capability {
    uint32_t flag;
    const char* word;
};

constexpr Capability kCapabilities[] = {
    {ETHPHY_IEEE8023_10_HALF, "10/half"},
    {ETHPHY_IEEE8023_10_FULL, "10/full"},
    {ETHPHY_IEEE8023_100_HALF, "100/half"},
    {ETHPHY_IEEE8023_100_FULL, "100/full"},
    {ETHPHY_IEEE8023_100_T4, "100-t4"},
    {ETHPHY_IEEE8023_1000_HALF, "1000/half"},
    {ETHPHY_IEEE8023_1000_FULL, "1000/full"},
    {ETHPHY_IEEE8023_2500_FULL, "2500/full"},
    {ETHPHY_IEEE8023_5000_FULL, "5000/full"},
    {ETHPHY_IEEE8023_10000_FULL, "10000/full"},
    {ETHPHY_IEEE8023_NEGOTIATES, "negotiation"},
    {ETHPHY_IEEE8023_MMD_FRAMES, "clause-45"},
    {ETHPHY_IEEE8023_MMD_INDIRECT, "clause-45-indirect"},
    {ETHPHY_IEEE8023_EEE_100, "eee-100"},
    {ETHPHY_IEEE8023_EEE_1000, "eee-1000"},
    {ETHPHY_IEEE8023_EEE_2500, "eee-2500"},
    {ETHPHY_IEEE8023_EEE_5000, "eee-5000"},
    {ETHPHY_IEEE8023_EEE_10000, "eee-10000"},
};

uint16_t StandardRegister(unsigned device, uint16_t number)
{
    uint16_t value = 0;
    Enter(Family::kPhy);
    Check(ETHPHY_ReadMdio(static_cast<uint8_t>(device), number, &value),
          PhyObject(device) + " register " + std::to_string(number), "ETHPHY_ReadMdio");
    return value;
}

// A register that a PHY does not have offers nothing; it fails, or reads as an empty bus.
uint16_t OfferRegister(unsigned device, const Offer& offer)
{
    uint16_t value = 0;
    Enter(Family::kPhy);
    const int result = offer.mmd == kClause22
                           ? ETHPHY_ReadMdio(static_cast<uint8_t>(device), offer.number, &value)
                           : ETHPHY_ReadMmd(static_cast<uint8_t>(device),
                                            static_cast<uint8_t>(offer.mmd), offer.number, &value);
    if (result == 0)
        return value == 0xFFFF ? 0 : value;
    DropHeldLogLines();
    return 0;
}

Model Offered(unsigned device, std::span<const Offer> offers)
{
    Model words = Model::array();
    const Offer* last = nullptr;
    uint16_t value = 0;
    for (const auto& offer : offers) {
        if (last == nullptr || last->mmd != offer.mmd || last->number != offer.number)
            value = OfferRegister(device, offer);
        last = &offer;
        if ((value >> offer.bit & 1) != 0)
            words.push_back(offer.word);
    }
    return words;
}

// The speed that register 0 forces.
unsigned ForcedSpeed(uint16_t control)
{
    constexpr uint16_t kHigh = 1 << 6;
    constexpr uint16_t kLow = 1 << 13;
    if ((control & kHigh) != 0)
        return 1000;
    return (control & kLow) != 0 ? 100 : 10;
}

void AddNegotiatedLink(Model& model, unsigned device)
{
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    Enter(Family::kPhy);
    Check(ETHPHY_GetLink(static_cast<uint8_t>(device), &link, &speed, &duplex), PhyObject(device),
          "ETHPHY_GetLink");
    model["link"] = link != 0;
    model["link_speed"] = link != 0 ? SpeedModel(speed) : Model();
    model["link_duplex"] = link != 0 ? Model(duplex != 0 ? "full" : "half") : Model();
}

// Reading register 10 clears the errors that it counts: they are collected first.
void KeepIdleErrors(const PhyDeviceRegion& region, unsigned device)
{
    if (IsIeee8023(region.phy[device]))
        (void)PhyCounters(region, device);
}

bool Shares(const Model& words, const Model& others, const std::string& word)
{
    const auto has = [&word](const Model& list) {
        for (const auto& entry : list)
            if (entry == word)
                return true;
        return false;
    };
    return has(words) && has(others);
}

}  // namespace

Model SpeedOffers(const PhyDeviceRegion& region, unsigned device)
{
    constexpr uint16_t kNegotiation = 1 << 12;
    constexpr uint16_t kFullDuplex = 1 << 8;
    const uint16_t control = StandardRegister(device, 0);
    const bool negotiates = (control & kNegotiation) != 0;
    Model model;
    model["phy"] = device;
    model["negotiation"] = negotiates;
    model["speed"] = negotiates ? Model("auto") : Model(ForcedSpeed(control));
    model["duplex"] = negotiates ? Model() : Model((control & kFullDuplex) != 0 ? "full" : "half");
    AddNegotiatedLink(model, device);
    model["offers"] = negotiates ? Offered(device, kOwnSpeeds) : Model();
    KeepIdleErrors(region, device);
    model["partner_offers"] =
        negotiates && model["link"] == true ? Offered(device, kPartnerSpeeds) : Model();
    return model;
}

Model EeeOffers(unsigned device)
{
    Model model;
    model["phy"] = device;
    AddNegotiatedLink(model, device);
    model["offers"] = Offered(device, kOwnEee);
    model["eee"] = !model["offers"].empty();
    model["partner_offers"] = model["link"] == true ? Offered(device, kPartnerEee) : Model();
    model["active"] = Shares(model["offers"], model["partner_offers"], Text(model["link_speed"]));
    return model;
}

Model CapabilityNames(const PhyDeviceRecord& record, uint32_t capabilities)
{
    if (!IsIeee8023(record))
        return nullptr;
    Model names = Model::array();
    for (const auto& [flag, word] : kCapabilities)
        if ((capabilities & flag) != 0)
            names.push_back(word);
    return names;
}

}  // namespace ctl

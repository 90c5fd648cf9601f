#include "tools/orblinkctl/facts/phy_model.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/record_check.h"
#include "tools/orblinkctl/access/refusals.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/phy_offers.h"

namespace ctl {

std::string PhyStateWord(uint32_t hwState)
{
    if (hwState == EP_HW_STATE_ENABLED)
        return "enabled";
    return hwState == EP_HW_STATE_DISABLED ? "in reset"
           : hwState == 0                  ? "never brought up"
                                           : "unknown";
}

Model PhyBoardModel(const PhyBoardEntry& entry)
{
    Model model;
    model["hal"] = Printable(NameIn(entry.halLibName));
    model["lane"] = entry.serdesId;
    model["interface"] = ModeWord(entry.portIfaceMode);
    model["interface_speed"] = SpeedWord(entry.portIfaceSpeed);
    model["mdio_bus"] = Optional(entry.mdioBus, 0xFF);
    model["mdio_address"] = Optional(entry.mdioAddr, 0xFF);
    // Only the low byte of a PHY's reset pin counts.
    model["reset_pin"] = Optional(entry.resetGpioPin & 0xFF, 0xFF);
    model["enable_pin"] = Optional(entry.enableGpioPin, OB_NO_GPIO_PIN);
    return model;
}

Model StoredPhy(const PhyDeviceRegion& region, unsigned device)
{
    const PhyDeviceRecord& record = region.phy[device];
    RequireSane(record, device);
    const std::string label = PhyLabel(device);
    Model model;
    model["phy"] = device;
    model["label"] = label.empty() ? Model() : Model(label);
    model["state"] = PhyStateWord(record.config.hwState);
    model["admin"] = record.config.adminState != 0;
    model["board"] = record.bsdValid != 0 ? PhyBoardModel(record.board) : Model();
    model["hal_index"] = Optional(record.halIdx, EP_NO_HAL_INDEX);
    model["capabilities"] = record.capsValid != 0 ? Model(record.caps) : Model();
    model["capability_names"] =
        record.capsValid != 0 ? CapabilityNames(record, record.caps) : Model();
    model["ultra_low_power"] = region.vendor[device].size != 0
                                   ? Model(region.vendor[device].ulpModeEnabled != 0)
                                   : Model();
    return model;
}

Model StoredPhys(const PhyDeviceRegion& region)
{
    Model phys = Model::array();
    for (unsigned device = 0; device < region.NumOfPhys; ++device)
        phys.push_back(StoredPhy(region, device));
    return phys;
}

void AddPhyLink(Model& model, unsigned device)
{
    uint32_t link = 0;
    uint32_t speed = 0;
    uint32_t duplex = 0;
    for (const char* key : {"link", "link_speed", "link_duplex", "error"})
        model[key] = nullptr;
    Enter(Family::kPhy);
    if (ETHPHY_GetLink(static_cast<uint8_t>(device), &link, &speed, &duplex) != 0) {
        model["error"] = RefusalOf(PhyObject(device), "ETHPHY_GetLink").text;
        DropHeldLogLines();
        return;
    }
    model["link"] = link != 0;
    if (link == 0)
        return;
    model["link_speed"] = SpeedModel(speed);
    model["link_duplex"] = duplex != 0 ? "full" : "half";
}

Model LivePhys(const PhyDeviceRegion& region)
{
    Model phys = StoredPhys(region);
    for (auto& phy : phys)
        AddPhyLink(phy, phy["phy"].get<unsigned>());
    return phys;
}

}  // namespace ctl

#include "tools/orblinkctl/facts/mac_table.h"

#include <cstring>
#include <vector>

#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/vswitch/vswitch_hal.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/counters.h"

namespace ctl {

namespace {

// The walk hands its callback no context.
std::vector<MacEntry> walked;

uint32_t Collect(MacEntry* entry)
{
    walked.push_back(*entry);
    return 1;
}

template <typename Known>
void AddKnown(Model& model, const MacEntry& entry)
{
    Known known;
    std::memcpy(&known, &entry, sizeof known);
    model["port"] = known.port;
    model["mac"] = MacWord(known.mac);
    model["vlan"] = known.vlanId;
    model["static"] = known.isStatic != 0;
    model["age_seconds"] = known.isStatic != 0 ? Model() : Model(known.ageSeconds);
}

}  // namespace

Model MacEntryModel(const SwitchDeviceRecord& record, unsigned device, const MacEntry& entry)
{
    Model model;
    model["switch"] = device;
    if (IsVs08(record))
        AddKnown<VswitchMacEntry>(model, entry);
    else if (IsLinuxSwitch(record))
        AddKnown<LinuxSwitchMacEntry>(model, entry);
    else
        model["raw"] = BytesWord(entry.data, sizeof entry.data);
    return model;
}

Model MacEntries(const SwitchDeviceRecord& record, unsigned device)
{
    walked.clear();
    Enter(Family::kSwitch);
    Check(ORBLINK_ForEachMacEntry(static_cast<uint8_t>(device), Collect), SwitchObject(device),
          "ORBLINK_ForEachMacEntry");
    Model entries = Model::array();
    for (const auto& entry : walked)
        entries.push_back(MacEntryModel(record, device, entry));
    return entries;
}

}  // namespace ctl

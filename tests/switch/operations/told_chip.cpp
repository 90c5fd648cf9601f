#include "tests/switch/operations/told_chip.h"

#include <algorithm>
#include <cstdio>

namespace obtest {
namespace {

struct Effect {
    const char* slot;
    const char* setting;
    bool perPort;
    const char* value;  // null: the remaining arguments
    const char* none;   // the value that takes the setting away, if any
};

constexpr Effect kEffects[] = {
    {"EnableProviderBridgedMode", "bridged", false, nullptr, nullptr},
    {"DisableProviderBridgedMode", "bridged", false, "off", nullptr},
    {"SetLanPortVlan", "vlan", true, nullptr, nullptr},
    {"SetLanPortPcp", "pcp", true, nullptr, nullptr},
    {"SetLanPortEgressTagging", "tagging", true, nullptr, nullptr},
    {"SetLanPortGroupId", "group", true, nullptr, nullptr},
    {"SetPhyPortSpeedDuplex", "speed", true, nullptr, nullptr},
    {"EnablePort", "port", true, "up", nullptr},
    {"DisablePort", "port", true, "down", nullptr},
    {"EnableRgmiiDelay", "delay", true, "on", nullptr},
    {"DisableRgmiiDelay", "delay", true, "off", nullptr},
    {"EnablePhyPortEee", "eee", true, "on", nullptr},
    {"DisablePhyPortEee", "eee", true, "off", nullptr},
    {"EnableIgmpSnooping", "snooping", false, "on", nullptr},
    {"DisableIgmpSnooping", "snooping", false, "off", nullptr},
    {"SetPortMirror", "mirror", true, nullptr, "255"},
    {"SetPhyPortDvt", "dvt", true, nullptr, "0"},
    {"SetMacAging", "ageing", false, nullptr, nullptr},
    {"SetMtuSize", "mtu", false, nullptr, nullptr},
    {"SetLEDConfig", "led", false, nullptr, nullptr},
};

// The arguments behind the device.
std::vector<std::string> ArgumentsOf(const std::string& call)
{
    std::vector<std::string> args;
    for (size_t at = call.find(", "); at != std::string::npos;) {
        const size_t next = call.find(", ", at + 2);
        const size_t end = next == std::string::npos ? call.size() - 1 : next;
        args.push_back(call.substr(at + 2, end - at - 2));
        at = next;
    }
    return args;
}

std::string Rest(const std::vector<std::string>& args, size_t from)
{
    std::string text;
    for (size_t i = from; i < args.size(); ++i)
        text += (i > from ? " " : "") + args[i];
    return text;
}

}  // namespace

std::string MacText(const uint8_t* mac)
{
    char text[18];
    snprintf(text, sizeof(text), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2], mac[3],
             mac[4], mac[5]);
    return text;
}

void ToldChip::Take(const std::string& call)
{
    const std::string slot = call.substr(0, call.find('('));
    const auto args = ArgumentsOf(call);
    if (slot == "ResetSwitch")
        values_.clear();
    if (slot == "MapSetMacToVlan")
        TakeMapping(args);
    const auto effect = std::find_if(std::begin(kEffects), std::end(kEffects),
                                     [&](const Effect& each) { return slot == each.slot; });
    if (effect == std::end(kEffects))
        return;
    const std::string setting =
        effect->perPort ? effect->setting + (" " + args[0]) : effect->setting;
    const std::string value =
        effect->value != nullptr ? effect->value : Rest(args, effect->perPort ? 1 : 0);
    if (effect->none != nullptr && value == effect->none)
        values_.erase(setting);
    else
        values_[setting] = value;
}

void ToldChip::TakeMapping(const std::vector<std::string>& args)
{
    const std::string setting = "mac " + args[0] + " " + args[1];
    if (args[4] == "0")
        values_.erase(setting);
    else
        values_[setting] = args[2] + " " + args[3];
}

std::string ToldChip::Value(const std::string& setting, const std::string& otherwise) const
{
    const auto found = values_.find(setting);
    return found == values_.end() ? otherwise : found->second;
}

long ToldChip::Number(const std::string& setting, long otherwise) const
{
    const auto found = values_.find(setting);
    return found == values_.end() ? otherwise : std::stol(found->second);
}

std::string Difference(const ToldChip& one, const ToldChip& other)
{
    std::string text;
    for (const auto& [setting, value] : one.Values())
        if (other.Value(setting, "-") != value)
            text += setting + ": " + value + ", not " + other.Value(setting, "-") + "\n";
    for (const auto& [setting, value] : other.Values())
        if (one.Values().count(setting) == 0)
            text += setting + ": -, not " + value + "\n";
    return text;
}

}  // namespace obtest

#include "virtual_board/board/soc.h"

#include <cerrno>
#include <cstring>

namespace vboard {
namespace {

constexpr uint32_t kReconfigureCommand = 55;

std::string_view AttributeName(wire::Attribute attribute)
{
    std::string_view path = wire::kAttributePaths[static_cast<size_t>(attribute)].path;
    return path.substr(path.rfind('/') + 1);
}

bool IsResetAttribute(wire::Attribute attribute)
{
    return attribute != wire::Attribute::kSystemState;
}

JournalKind KindOf(wire::Attribute attribute)
{
    return IsResetAttribute(attribute) ? JournalKind::kGpio : JournalKind::kAttr;
}

std::string_view NameIn(const char (&name)[16])
{
    return {name, strnlen(name, sizeof name)};
}

}  // namespace

Soc::Soc(const BoardDescription& spec, const std::vector<Device>& boardDevices,
         Faults& activeFaults, Journal& boardJournal, const BoardClock& boardClock)
    : devices_{boardDevices},
      faults_{activeFaults},
      journal_{boardJournal},
      clock_{boardClock},
      battery_{spec.battery}
{
    for (const Device& device : devices_)
        if (device.chip)
            device.chip->SetResetLine(false);
    for (uint32_t line = 0; line < released_.size(); ++line)
        SetResetLine(kFirstPin + line, !spec.resetHeldAtPowerOn);
}

int Soc::OpenLaneDriver()
{
    JournalEntry entry{JournalKind::kLane, "open"};
    entry.error = static_cast<int>(faults_.Strike(FaultId::kLaneOpen).value_or(0));
    return journal_.Note(std::move(entry));
}

int Soc::ResetLane(uint32_t client)
{
    JournalEntry entry{JournalKind::kLane, "reset", {{"client", client}}};
    if (auto error = faults_.Strike(FaultId::kLaneError))
        entry.error = static_cast<int>(*error);
    else if (client < kFirstLaneClient || client > kLastLaneClient)
        entry.error = EINVAL;
    else
        ++laneResets_[client];
    return journal_.Note(std::move(entry));
}

int Soc::ReconfigureGmac(const wire::GmacRequest& request, int32_t& result)
{
    const wire::GmacReconfig& wanted = request.reconfig;
    JournalEntry entry{JournalKind::kGmac,
                       "reconfigure",
                       {{"interface", NameIn(request.outerName)},
                        {"inner", NameIn(wanted.ifName)},
                        {"command", wanted.command},
                        {"speed", wanted.speed},
                        {"duplex", wanted.duplex}}};
    bool consistent = NameIn(request.outerName) == NameIn(wanted.ifName);
    if (auto error = faults_.Strike(FaultId::kGmacError))
        entry.error = static_cast<int>(*error);
    else if (wanted.command != kReconfigureCommand || !consistent)
        entry.error = EINVAL;
    if (entry.error != 0)
        return journal_.Note(std::move(entry));
    result = faults_.Strike(FaultId::kGmacResult) ? -1 : 0;
    if (result == 0) {
        size_t index = NameIn(request.outerName) == wire::kInterfaceNames[1] ? 1 : 0;
        Interface& gmac = interfaces_[index];
        gmac = {gmac.up, wanted.speed, wanted.duplex, gmac.reconfigurations + 1};
    }
    entry.facts["driverResult"] = result;
    return journal_.Note(std::move(entry));
}

int Soc::SetInterface(uint32_t index, bool up)
{
    if (index >= interfaces_.size())
        return EINVAL;
    JournalEntry entry{JournalKind::kGmac,
                       up ? "ifconfig up" : "ifconfig down",
                       {{"interface", wire::kInterfaceNames[index]}}};
    if (auto error = faults_.Strike(FaultId::kInterfaceError))
        entry.error = static_cast<int>(*error);
    else
        interfaces_[index].up = up;
    return journal_.Note(std::move(entry));
}

int Soc::ReadAttribute(wire::Attribute attribute, std::string& text)
{
    if (!IsResetAttribute(attribute))
        text = faults_.Strike(FaultId::kStateText) ? "unknown\n" : std::to_string(battery_) + "\n";
    else
        text = released_[static_cast<size_t>(attribute)] ? "1\n" : "0\n";
    JournalEntry entry{KindOf(attribute), "read", {{"attribute", AttributeName(attribute)}}};
    if (auto error = faults_.Strike(FaultId::kAttrOpen))
        entry.error = static_cast<int>(*error);
    else
        entry.facts["text"] = text.substr(0, text.size() - 1);
    return journal_.Note(std::move(entry));
}

int Soc::OpenAttributeForWriting(wire::Attribute attribute)
{
    int error = IsResetAttribute(attribute) ? 0 : EACCES;
    if (auto fault = faults_.Strike(FaultId::kAttrOpen))
        error = static_cast<int>(*fault);
    if (error == 0)
        return 0;
    return journal_.Note(
        {KindOf(attribute), "open", {{"attribute", AttributeName(attribute)}}, error});
}

int Soc::WriteAttribute(wire::Attribute attribute, std::string_view text)
{
    JournalEntry entry{KindOf(attribute),
                       "write",
                       {{"attribute", AttributeName(attribute)},
                        {"pin", kFirstPin + static_cast<uint32_t>(attribute)},
                        {"text", text.substr(0, text.find('\n'))}}};
    bool zeroOrOne = text == "0" || text == "1" || text == "0\n" || text == "1\n";
    if (auto error = faults_.Strike(FaultId::kAttrError))
        entry.error = static_cast<int>(*error);
    else if (!zeroOrOne)
        entry.error = EINVAL;
    else
        SetResetLine(kFirstPin + static_cast<uint32_t>(attribute), text[0] == '1');
    return journal_.Note(std::move(entry));
}

void Soc::SetResetLine(uint32_t pin, bool high)
{
    released_[pin - kFirstPin] = high;
    for (const Device& device : devices_) {
        if (!device.chip || device.wiring->resetGpioPin != pin)
            continue;
        device.chip->Advance(clock_.Now());
        device.chip->SetResetLine(!high);
    }
}

Json Soc::ShowLanes() const
{
    Json lanes = Json::object();
    for (uint32_t client = kFirstLaneClient; client <= kLastLaneClient; ++client) {
        auto found = laneResets_.find(client);
        lanes[std::to_string(client)] = found != laneResets_.end() ? found->second : 0;
    }
    return lanes;
}

Json Soc::ShowInterfaces() const
{
    Json shown = Json::object();
    for (size_t i = 0; i < interfaces_.size(); ++i)
        // The analyser loses track of a temporary object that it has made itself, and calls it unset.
        // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
        shown[wire::kInterfaceNames[i]] = {{"up", interfaces_[i].up},
                                           {"speed", interfaces_[i].speed},
                                           {"duplex", interfaces_[i].duplex},
                                           {"reconfigurations", interfaces_[i].reconfigurations}};
    return shown;
}

Json Soc::State() const
{
    return {{"battery", battery_},
            {"resetLines", {{"18", released_[0] ? 1 : 0}, {"19", released_[1] ? 1 : 0}}},
            {"laneResets", ShowLanes()},
            {"interfaces", ShowInterfaces()}};
}

}  // namespace vboard

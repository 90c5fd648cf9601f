// What the registers of the VS08 model mean, as JSON for a reader.
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "virtual_board/chips/vs08/chip.h"

namespace vboard {

using namespace vswitch;
using nlohmann::json;

namespace {

constexpr uint16_t kGroupId = 0x00FF;
constexpr uint16_t kMirrorDest = 0x0007;

std::string Text(const MacAddress& mac)
{
    std::array<char, 18> text{};
    std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text.data();
}

json Thresholds(const std::array<uint16_t, 6>& words)
{
    return {{"green", {words[0], words[1]}},
            {"yellow", {words[2], words[3]}},
            {"red", {words[4], words[5]}}};
}

json WredState(const GlobalRegisters& global)
{
    const unsigned ctrl = global.Get(kWredCtrl);
    std::array<uint16_t, 6> thresholds{};
    for (unsigned i = 0; i < thresholds.size(); ++i)
        thresholds[i] = global.WredThreshold(i);
    json state = Thresholds(thresholds);
    state["enabled"] = (ctrl & 1) != 0;
    state["weight"] = ctrl >> 4 & 15;
    state["maxDropPercent"] = ctrl >> 8;
    return state;
}

json PhyState(const Port& port)
{
    const unsigned ctrl = port.Get(kPhyCtrl);
    return {{"speed", ctrl & 7},
            {"fullDuplex", (ctrl & 8) != 0},
            {"eee", port.Get(kPhyEee) != 0},
            {"eeeActive", port.EeeActive()},
            {"testMode", port.Get(kPhyTest)},
            {"dvt", port.Get(kPhyDvt)}};
}

json SerdesState(const Port& port)
{
    const unsigned ctrl = port.Get(kSerdesCtrl);
    return {{"mode", ctrl & 1 ? "HSGMII" : "SGMII"},
            {"speed", ctrl >> 1 & 7},
            {"rxInvert", (ctrl & 16) != 0},
            {"txInvert", (ctrl & 32) != 0}};
}

json LinkState(const Link& link)
{
    return {{"up", link.up}, {"speed", link.speed}, {"fullDuplex", link.fullDuplex}};
}

json CounterState(const std::array<uint64_t, kCounters>& values)
{
    json state = json::object();
    for (size_t i = 0; i < kCounters; ++i)
        state[std::string(kCounterNames[i])] = values[i];
    return state;
}

}  // namespace

json VswitchChip::State() const
{
    json state = GlobalState();
    state["ports"] = json::array();
    for (unsigned p = 0; p < kPorts; ++p)
        state["ports"].push_back(PortState(p));
    state["queues"] = QueueState();
    state["macToVlan"] = MacVlanState();
    state["fdb"] = FdbState();
    return state;
}

json VswitchChip::GlobalState() const
{
    static constexpr const char* kLedModes[] = {
        "off",    "link",        "activity", "link and activity", "speed", "duplex and collision",
        "all on", "all blinking"};
    const unsigned snooping = global_.Get(kSnooping);
    json linkChange = json::array();
    for (unsigned p = 0; p < kPorts; ++p) {
        if (global_.Get(kLinkChange) >> p & 1)
            linkChange.push_back(p);
    }
    return {{"chip", "VS08"},
            {"revision", "1.0"},
            {"reset", held_     ? "held"
                      : Ready() ? "released"
                                : "booting"},
            {"rxReady", RxReady()},
            {"internalPort", internalPort_},
            {"portIsolation", global_.Get(kForwardCtrl) != 0},
            {"providerBridged",
             {{"enabled", global_.Get(kProviderCtrl) != 0}, {"tpid", global_.Get(kProviderTpid)}}},
            {"ageing", {{"step", global_.Get(kAgeing)}, {"seconds", global_.AgeLimit().count()}}},
            {"mtu", global_.Get(kMtu)},
            {"snooping", {{"igmp", (snooping & 1) != 0}, {"mld", (snooping & 2) != 0}}},
            {"led", {{"mode", global_.Get(kLedMode)}, {"shows", kLedModes[global_.Get(kLedMode)]}}},
            {"linkChange", linkChange},
            {"fdbRefused", global_.Get(kFdbRefused)},
            {"wred", WredState(global_)}};
}

json VswitchChip::PortState(unsigned index) const
{
    static constexpr const char* kKinds[] = {"SerDes", "PHY", "RGMII"};
    const Port& port = ports_[index];
    const unsigned group = port.Get(kPortGroup);
    const unsigned mirror = port.Get(kPortMirror);
    json state = {{"port", index},
                  {"kind", kKinds[static_cast<int>(port.PortKind())]},
                  {"internal", port.Internal()},
                  {"enabled", port.Get(kPortCtrl) != 0},
                  {"link", LinkState(port.CurrentLink())},
                  {"vlan", port.Get(kPortVid)},
                  {"pcp", port.Get(kPortPcp)},
                  {"egressTagging", port.Get(kPortTag) != 0},
                  {"group", group & kGroupValid ? json(group & kGroupId) : json()},
                  {"mirrorTo", mirror & kMirrorEnable ? json(mirror & kMirrorDest) : json()},
                  {"flowControl", {{"xoff", port.Get(kPortXoff)}, {"xon", port.Get(kPortXon)}}},
                  {"counters", CounterState(counters_.OfPort(index))}};
    if (port.PortKind() == Port::Kind::kPhy)
        state["phy"] = PhyState(port);
    else if (port.PortKind() == Port::Kind::kSerdes)
        state["serdes"] = SerdesState(port);
    else
        state["rgmiiDelay"] = port.Get(kRgmiiCtrl) != 0;
    return state;
}

json VswitchChip::QueueState() const
{
    json state = json::array();
    for (unsigned q = 0; q < kQueues; ++q) {
        const Queues::Settings settings = queues_.At(q);
        json queue = Thresholds(settings.thresholds);
        queue["queue"] = q;
        queue["reserved"] = settings.reserved;
        state.push_back(queue);
    }
    return state;
}

json VswitchChip::MacVlanState() const
{
    json state = json::array();
    for (unsigned i = 0; i < kMacVlanEntries; ++i) {
        const MacVlanTable::Entry entry = macVlan_.At(i);
        if (!entry.valid)
            continue;
        state.push_back({{"index", i},
                         {"port", entry.port},
                         {"vlan", entry.vid},
                         {"mask", entry.mask},
                         {"mac", Text(entry.mac)}});
    }
    return state;
}

json VswitchChip::FdbState() const
{
    json entries = json::array();
    const MacTable& table = fdb_.table;
    for (size_t s = table.NextUsed(0); s < MacTable::kSlots; s = table.NextUsed(s + 1)) {
        const MacTable::Entry& entry = table.At(s);
        const auto age = std::chrono::duration_cast<std::chrono::seconds>(now_ - entry.seen);
        entries.push_back({{"slot", s},
                           {"mac", Text(entry.mac)},
                           {"vlan", entry.vid},
                           {"port", entry.port},
                           {"static", entry.isStatic},
                           {"age", entry.isStatic ? 0 : age.count()}});
    }
    return {{"capacity", MacTable::kSlots}, {"count", table.Count()}, {"entries", entries}};
}

}  // namespace vboard

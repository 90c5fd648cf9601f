#include "tools/orblinkctl/facts/causes.h"

#include <algorithm>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/facts/chip_view.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/mac_table.h"
#include "tools/orblinkctl/facts/meanings.h"

namespace ctl {

namespace {

constexpr uint16_t kUsualMtu = 2000;
// With two tags, 1500 octets of data need so many.
constexpr uint16_t kLongestUsualFrame = 1526;

std::string Number(uint64_t value)
{
    return std::to_string(value);
}

class Way {
public:
    Way(const SwitchDeviceRecord& record, const ChipPort& from)
        : record_(record), chip_(ViewChip(from.id.device)), from_(from)
    {
    }

    std::vector<Cause> Alone()
    {
        Link(from_);
        Cable(from_);
        ComesIn();
        return std::move(causes_);
    }

    std::vector<Cause> To(const ChipPort& to)
    {
        Link(from_);
        Cable(from_);
        ComesIn();
        Vlan(to);
        Reach(to);
        Stations(to);
        Link(to);
        Egress(to);
        Queue(to);
        Copies(to);
        return std::move(causes_);
    }

private:
    static std::string Word(const ChipPort& port) { return PortWord(port.id.device, port.id.port); }
    static std::string PortCommand(const ChipPort& port, const std::string& rest)
    {
        return "orblinkctl port " + Word(port) + " " + rest;
    }
    std::string ChipCommand(const char* word, const std::string& rest) const
    {
        return std::string("orblinkctl ") + word + " " + Number(from_.id.device) + " " + rest;
    }

    void Add(const ChipPort& port, Effect effect, std::string text, std::string next = "")
    {
        causes_.push_back({PortObject(port.id), effect, std::move(text), std::move(next)});
    }
    void AddWide(Effect effect, std::string text, std::string next)
    {
        causes_.push_back(
            {SwitchObject(from_.id.device), effect, std::move(text), std::move(next)});
    }

    void Link(const ChipPort& port)
    {
        if (!port.enabled)
            return Add(port, Effect::kStops, "is disabled", PortCommand(port, "enable"));
        if (port.testMode != 0)
            return Add(port, Effect::kStops,
                       "the PHY sends the test pattern " +
                           Text(ValueModel("test_mode", port.testMode, record_)),
                       PortCommand(port, "test-mode off"));
        if (!port.link)
            NoLink(port);
        else
            Add(port, Effect::kFine,
                "link at " + SpeedWord(port.speed) + " Mb/s, " +
                    (port.fullDuplex ? "full" : "half") + " duplex");
        if (port.verification != 0)
            Add(port, Effect::kStops,
                "the verification test " + Text(ValueModel("dvt", port.verification, record_)) +
                    " keeps frames out",
                PortCommand(port, "dvt off"));
        if (!port.isLan && !chip_.receives)
            Add(port, Effect::kStops, "the receiver towards the SoC is being restarted",
                "orblinkctl switch " + Number(port.id.device) + " reset");
        LinkSettings(port);
    }

    void NoLink(const ChipPort& port)
    {
        if (port.hasPhy && port.setSpeed != OB_SPEED_AUTONEG)
            return Add(port, Effect::kStops,
                       "no link; the port is forced to " + SpeedWord(port.setSpeed) +
                           " Mb/s and does not negotiate with the partner",
                       PortCommand(port, "speed auto"));
        Add(port, Effect::kStops, "no link: no cable, or the partner is off or disabled",
            "check cable and partner, then " + PortCommand(port, "link"));
    }

    void LinkSettings(const ChipPort& port)
    {
        if (!port.hasPhy || !port.link)
            return;
        if (port.setSpeed != OB_SPEED_AUTONEG)
            Add(port, Effect::kChanges,
                "forced to " + SpeedWord(port.setSpeed) + " Mb/s " +
                    (port.setFullDuplex ? "full" : "half") +
                    " duplex: a partner that negotiates takes half duplex, and frames collide",
                PortCommand(port, "speed auto"));
        else if (!port.fullDuplex)
            Add(port, Effect::kChanges, "half duplex: the partner offers no more, frames wait",
                PortCommand(port, "duplex full"));
        if (port.eee)
            Add(port, Effect::kChanges, "EEE: frames wait while the link wakes up",
                PortCommand(port, "eee off"));
    }

    // What the counters say of frames that came to the port and went no further.
    void Cable(const ChipPort& port)
    {
        const Model counters = PortCounters(record_, port.id);
        const auto count = [&](const char* name) { return counters[name].get<uint64_t>(); };
        const uint64_t broken = count("etherStatsCRCAlignErrors") + count("etherStatsFragments");
        if (broken > 0)
            Add(port, Effect::kChanges,
                Number(broken) + " broken frames came in and were dropped" +
                    (port.isRgmii && !port.delay ? ": the RGMII delay is off"
                                                 : ": cable or partner"),
                port.isRgmii && !port.delay
                    ? PortCommand(port, "delay on")
                    : "replace the cable, then " + PortCommand(port, "counters reset"));
        if (count("dot1dBasePortMtuExceededDiscards") > 0)
            AddWide(Effect::kChanges,
                    Number(count("dot1dBasePortMtuExceededDiscards")) + " frames into " +
                        PortObject(port.id) + " were longer than the MTU of " + Number(chip_.mtu) +
                        " octets and were dropped",
                    ChipCommand("mtu", Number(std::max<unsigned>(10240, chip_.mtu))));
        else if (chip_.mtu < kLongestUsualFrame)
            AddWide(Effect::kChanges,
                    "frames longer than the MTU of " + Number(chip_.mtu) + " octets are dropped",
                    ChipCommand("mtu", Number(kUsualMtu)));
        if (port.isLan && count("dot1qTpVlanPortInDiscards") > 0)
            Add(port, Effect::kChanges,
                Number(count("dot1qTpVlanPortInDiscards")) +
                    " frames came in with the tag of a VLAN other than " + Number(port.vlan) +
                    " and were dropped",
                "send untagged, or " + PortCommand(port, "vlan VID"));
        if (count("etherStatsDropEvents") > 0)
            Add(port, Effect::kChanges,
                Number(count("etherStatsDropEvents")) + " frames found no free buffer",
                "orblinkctl counters --per-second");
    }

    void ComesIn()
    {
        if (from_.xoff != 0)
            Add(from_, Effect::kChanges,
                "flow control: from " + Number(from_.xoff) +
                    " waiting buffers on the partner is told to pause",
                "orblinkctl qos flow-control " + Word(from_) + " 0 0");
        if (chip_.providerBridged && from_.isLan && !from_.tagged)
            Add(from_, Effect::kChanges,
                "a customer port of provider bridged mode: tags that a host sends are data, all "
                "frames are in VLAN " +
                    Number(from_.vlan),
                ChipCommand("bridge-mode", "off"));
        if (chip_.providerBridged && from_.isLan && from_.tagged && chip_.tpid != 0x8100)
            Add(from_, Effect::kChanges,
                "tags of type 0x8100 are not recognised, only those of " + Hex(chip_.tpid, 4),
                ChipCommand("bridge-mode", "on 0x8100"));
        for (const auto& entry : record_.config.macToVlanTable)
            if (entry.EnableMapping != 0 && entry.LogPort == from_.id.port)
                Mapped(entry);
    }

    void Mapped(const MacToVlanEntry& entry)
    {
        const std::string mac = MacWord(entry.Mac);
        Add(from_, Effect::kChanges,
            "untagged frames from " + mac + " (mask " + Hex(entry.Mask, 3) +
                ") are put into VLAN " + Number(entry.VlanId) + " instead of " + Number(from_.vlan),
            "orblinkctl mac-vlan remove " + Word(from_) + " " + mac + " --mask " +
                Hex(entry.Mask, 3));
    }

    void Vlan(const ChipPort& to)
    {
        const unsigned vlan = from_.isLan ? from_.vlan : to.vlan;
        if (!to.isLan || !from_.isLan || to.vlan == from_.vlan)
            return Add(to, Effect::kFine, "is a member of VLAN " + Number(vlan));
        Add(to, Effect::kStops,
            "is in VLAN " + Number(to.vlan) + ", frames come from VLAN " + Number(from_.vlan),
            PortCommand(to, "vlan " + Number(from_.vlan)));
    }

    void Reach(const ChipPort& to)
    {
        if (!from_.isLan || !to.isLan)
            return;
        const std::string both = "orblinkctl port " + Word(from_) + "," + Word(to) + " group ";
        if (from_.hasGroup && to.hasGroup && from_.group != to.group)
            return Add(to, Effect::kStops,
                       "is in group " + Number(to.group) + ", frames come from group " +
                           Number(from_.group),
                       PortCommand(to, "group " + Number(from_.group) + " --lock"));
        if (from_.hasGroup != to.hasGroup)
            return Add(from_.hasGroup ? from_ : to, Effect::kStops,
                       "is in a group, the other port is in none", both + "none --lock");
        if (!from_.hasGroup && chip_.isolation)
            return AddWide(Effect::kStops, "ports without a group are isolated from each other",
                           both + "1 --lock");
        Add(to, Effect::kFine,
            from_.hasGroup ? "is in the same group " + Number(to.group) : "may be reached");
    }

    // Addresses that are bound to a port, and groups that are sent to their members only.
    void Stations(const ChipPort& to)
    {
        for (const auto& entry : MacEntries(record_, from_.id.device)) {
            if (!entry.contains("static") || entry["static"] != true)
                continue;
            const auto port = entry["port"].get<unsigned>();
            const std::string object = PortWord(from_.id.device, port);
            if (port != to.id.port)
                AddWide(Effect::kChanges,
                        "frames to " + Text(entry["mac"]) + " in VLAN " + Text(entry["vlan"]) +
                            " go to port " + object + " only: a static entry",
                        "orblinkctl mac remove " + object + " " + Text(entry["mac"]) + " " +
                            Text(entry["vlan"]));
        }
        if (chip_.snooping)
            AddWide(Effect::kChanges,
                    "snooping: frames to multicast groups go only where members or queriers are",
                    ChipCommand("igmp", "off"));
        if (chip_.ageing == 1)
            AddWide(Effect::kChanges,
                    "stations that are silent for 15 s are forgotten, frames to them are flooded",
                    ChipCommand("aging", "300s"));
    }

    void Egress(const ChipPort& to)
    {
        if (to.isLan && to.tagged)
            Add(to, Effect::kChanges,
                "frames leave with a tag of type " +
                    Hex(chip_.providerBridged ? chip_.tpid : 0x8100, 4) +
                    ": a host that expects none drops them",
                PortCommand(to, "tagging untagged"));
        else
            Add(to, Effect::kFine, to.isLan ? "frames leave untagged" : "frames leave to the SoC");
        if (from_.link && to.link && to.speed < from_.speed)
            Add(to, Effect::kChanges,
                "is slower (" + SpeedWord(to.speed) + " Mb/s) than what may come in (" +
                    SpeedWord(from_.speed) + " Mb/s)",
                "orblinkctl counters --per-second");
    }

    void Queue(const ChipPort& to)
    {
        const unsigned limit = std::min(chip_.greenMost, QueueLimit(to.id));
        const std::string off =
            ChipCommand("qos", "global-wred 0 4 100 4095 4095 4095 4095 4095 4095");
        if (chip_.earlyDetection && limit == 0)
            Add(to, Effect::kStops,
                "early detection discards every frame: its maximum is 0 buffers", off);
        else if (chip_.earlyDetection)
            Add(to, Effect::kChanges,
                "early detection discards frames, from " + Number(limit) + " buffers on all", off);
        const Model counters = PortCounters(record_, to.id);
        if (const auto lost = counters["ifOutDiscards"].get<uint64_t>(); lost > 0)
            Add(to, Effect::kChanges, Number(lost) + " frames were discarded at the queue",
                PortCommand(to, "counters reset") + ", then orblinkctl counters --per-second");
    }

    void Copies(const ChipPort& to)
    {
        for (unsigned port = 0; port < PortCount(record_); ++port) {
            const uint8_t target = record_.config.mirrorDst[port];
            const std::string source = PortWord(to.id.device, port);
            if (target == to.id.port)
                Add(to, Effect::kChanges,
                    "copies of all frames of port " + source + " leave here too",
                    "orblinkctl port " + source + " mirror off");
            else if (target != OB_NO_MIRROR && (port == to.id.port || port == from_.id.port))
                causes_.push_back({"port " + source, Effect::kChanges,
                                   "copies of its frames leave at port " +
                                       PortWord(to.id.device, target) + " too",
                                   "orblinkctl port " + source + " mirror off"});
        }
    }

    const SwitchDeviceRecord& record_;
    const ChipView chip_;
    const ChipPort from_;
    std::vector<Cause> causes_;
};

// Of chips whose registers are not known here.
std::vector<Cause> CausesOfRecord(const SwitchDeviceRecord& record, PortId id)
{
    const std::string object = PortObject(id);
    const std::string command = "orblinkctl port " + PortWord(id.device, id.port);
    if ((record.config.enabledPorts >> id.port & 1) == 0)
        return {{object, Effect::kStops, "is disabled", command + " enable"}};
    return {{object, Effect::kFine, "is enabled; more is not known of this chip", command}};
}

}  // namespace

std::vector<Cause> CausesOf(const SwitchDeviceRegion& region, PortId from, std::optional<PortId> to)
{
    const auto& record = region.device[from.device];
    if (!IsEnabled(record))
        return {{SwitchObject(from.device), Effect::kStops,
                 record.config.state == OB_STATE_RESET ? "is in reset" : "was never brought up",
                 "orblinkctl up " + std::to_string(from.device)}};
    if (to && to->device != from.device)
        return {{PortObject(*to), Effect::kStops,
                 "is on another switch than " + PortObject(from) +
                     ": frames between them are the SoC's business",
                 "check the bridge of the SoC's interfaces"}};
    if (!IsVs08(record))
        return CausesOfRecord(record, from);
    Way way(record, ViewPort(record, from));
    return to ? way.To(ViewPort(record, *to)) : way.Alone();
}

const char* EffectWord(Effect effect)
{
    return effect == Effect::kFine ? "ok" : effect == Effect::kStops ? "stops" : "changes";
}

}  // namespace ctl

#include "virtual_board/chips/vs08/forwarding.h"

#include <algorithm>
#include <bit>

namespace vboard::vswitch {
namespace {

constexpr uint16_t kVlanTpid = 0x8100;
constexpr uint16_t kPortBits = 0x0007;

bool MayReach(const Port& from, const Port& to, bool isolated)
{
    if (from.Internal() || to.Internal())
        return true;
    const uint16_t group = from.Get(kPortGroup);
    const uint16_t other = to.Get(kPortGroup);
    if ((group | other) & kGroupValid)
        return group == other;
    return !isolated;
}

PortMask ReachOf(const std::vector<Port>& ports, unsigned from, bool isolated)
{
    unsigned reach = 0;
    for (unsigned to = 0; to < kPorts; ++to) {
        if (to != from && MayReach(ports[from], ports[to], isolated))
            reach |= MaskOf(to);
    }
    return static_cast<PortMask>(reach);
}

uint32_t MegabitsOf(unsigned speedCode)
{
    constexpr uint32_t kMegabits[] = {0, 0, 10, 100, 1000, 2500};
    return kMegabits[speedCode];
}

void DecodePort(const std::vector<Port>& ports, unsigned index, bool isolated, ForwardingView& view)
{
    const Port& port = ports[index];
    const uint16_t mirror = port.Get(kPortMirror);
    const Link link = port.CurrentLink();
    const bool tagged = port.Get(kPortTag) != 0;
    view.ports[index] = {port.Get(kPortVid),
                         static_cast<uint8_t>(port.Get(kPortPcp)),
                         tagged,
                         view.providerBridged && !port.Internal() && !tagged,
                         mirror & kMirrorEnable ? mirror & kPortBits : ForwardingView::kNoMirror,
                         ReachOf(ports, index, isolated),
                         port.Get(kPortXoff),
                         port.Get(kPortXon),
                         MegabitsOf(link.speed),
                         link.fullDuplex};
    if (link.up)
        view.links |= MaskOf(index);
    if (link.up && !port.InTest())
        view.forwarding |= MaskOf(index);
    if (port.Internal())
        view.internalPort = index;
}

uint64_t SpreadNibbles(uint16_t mask)
{
    uint64_t spread = 0;
    for (unsigned nibble = 0; nibble < 12; ++nibble) {
        if (mask >> nibble & 1)
            spread |= uint64_t{0xF} << 4 * nibble;
    }
    return spread;
}

bool CountsBefore(const MacVlanTable::Entry& a, const MacVlanTable::Entry& b)
{
    const auto rank = [](const MacVlanTable::Entry& entry) {
        return std::pair(std::popcount(entry.mask), entry.mask);
    };
    return a.port != b.port ? a.port < b.port : rank(a) > rank(b);
}

void DecodeMacVlan(const MacVlanTable& table, ForwardingView& view)
{
    std::array<MacVlanTable::Entry, kMacVlanEntries> valid{};
    size_t count = 0;
    for (unsigned i = 0; i < kMacVlanEntries; ++i) {
        const MacVlanTable::Entry entry = table.At(i);
        if (entry.valid)
            valid[count++] = entry;
    }
    std::stable_sort(valid.begin(), valid.begin() + count, CountsBefore);
    view.firstRule.fill(0);
    for (size_t i = 0; i < count; ++i) {
        const MacVlanTable::Entry& entry = valid[i];
        const uint64_t mask = SpreadNibbles(entry.mask);
        view.macVlanRules[i] = {NumberOf(entry.mac.data()) & mask, mask, entry.vid};
        view.members[entry.vid] |= MaskOf(entry.port);
        for (unsigned later = entry.port + 1; later <= kPorts; ++later)
            ++view.firstRule[later];
    }
}

void DecodeMembers(ForwardingView& view)
{
    view.members.fill(MaskOf(view.internalPort));
    for (unsigned p = 0; p < kPorts; ++p)
        view.members[view.ports[p].pvid] |= MaskOf(p);
}

void DecodeQueues(const GlobalRegisters& global, const Queues& queues, ForwardingView& view)
{
    const unsigned control = global.Get(kWredCtrl);
    view.wred = {(control & 1) != 0, control >> 4 & 15, control >> 8, {}};
    for (unsigned i = 0; i < view.wred.thresholds.size(); ++i)
        view.wred.thresholds[i] = global.WredThreshold(i);
    for (unsigned q = 0; q < kQueues; ++q)
        view.queues[q] = queues.At(q);
}

}  // namespace

uint64_t NumberOf(const uint8_t* mac)
{
    uint64_t number = 0;
    for (unsigned i = 0; i < 6; ++i)
        number = number << 8 | mac[i];
    return number;
}

void Decode(const GlobalRegisters& global, const std::vector<Port>& ports,
            const MacVlanTable& macVlan, const Queues& queues, ForwardingView& view)
{
    view.providerBridged = global.Get(kProviderCtrl) != 0;
    view.tpid = view.providerBridged ? global.Get(kProviderTpid) : kVlanTpid;
    view.mtu = global.Get(kMtu);
    view.igmp = (global.Get(kSnooping) & 1) != 0;
    view.mld = (global.Get(kSnooping) & 2) != 0;
    view.links = view.forwarding = 0;
    const bool isolated = global.Get(kForwardCtrl) != 0;
    for (unsigned p = 0; p < kPorts; ++p)
        DecodePort(ports, p, isolated, view);
    DecodeMembers(view);
    DecodeMacVlan(macVlan, view);
    DecodeQueues(global, queues, view);
}

}  // namespace vboard::vswitch

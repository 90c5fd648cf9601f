#include "hals/linux_switch/ethtool.h"

#include <errno.h>
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>

namespace linux_switch {

struct Ethtool::Command : Request {
    // The device is named in an attribute of each command's own.
    Command(const Ethtool& ethtool, uint8_t command, uint16_t device, uint32_t index)
        : Request(ethtool.family_, 0)
    {
        Header(genlmsghdr{command, 1, 0});
        const size_t header = Open(device | NLA_F_NESTED);
        Put<uint32_t>(ETHTOOL_A_HEADER_DEV_INDEX, index);
        Close(header);
    }
};

namespace {

Attributes Behind(const Reply& reply)
{
    return reply.Behind(sizeof(genlmsghdr));
}

void TakeLengths(const Attribute& nest, DriverCounters& counters)
{
    constexpr uint32_t kHighest[] = {64, 127, 255, 511, 1023, 1518};
    const Attributes bucket{nest};
    const auto high = bucket.Find(ETHTOOL_A_STATS_GRP_HIST_BKT_HI).As<uint32_t>();
    const auto low = bucket.Find(ETHTOOL_A_STATS_GRP_HIST_BKT_LOW).As<uint32_t>();
    const auto value = bucket.Find(ETHTOOL_A_STATS_GRP_HIST_VAL).As<uint64_t>();
    size_t place = 0;
    while (place < sizeof kHighest / sizeof *kHighest && high != kHighest[place])
        ++place;
    // Drivers cut what is longer in ranges of their own.
    if (place == sizeof kHighest / sizeof *kHighest && low < 1519)
        return;
    uint64_t& counter = counters.byLength[place];
    counter = counter == kUnknownCounter ? value : counter + value;
}

void TakeRmon(uint16_t type, uint64_t value, DriverCounters& counters)
{
    switch (type) {
        case ETHTOOL_A_STATS_RMON_UNDERSIZE:
            counters.undersize = value;
            break;
        case ETHTOOL_A_STATS_RMON_OVERSIZE:
            counters.oversize = value;
            break;
        case ETHTOOL_A_STATS_RMON_FRAG:
            counters.fragments = value;
            break;
        case ETHTOOL_A_STATS_RMON_JABBER:
            counters.jabbers = value;
            break;
        default:
            break;
    }
}

// The modes that the interface has are the mask of the set, those that it offers the value.
bool CanNegotiate(const Attribute& ours)
{
    constexpr uint32_t kAutoneg = 1U << ETHTOOL_LINK_MODE_Autoneg_BIT;
    const Attributes set{ours};
    Attributes bits{set.Find(ETHTOOL_A_BITSET_BITS)};
    Attribute bit;
    while (bits.Next(bit)) {
        const Attribute number = Attributes(bit).Find(ETHTOOL_A_BITSET_BIT_INDEX);
        if (number && number.As<uint32_t>() == ETHTOOL_LINK_MODE_Autoneg_BIT)
            return true;
    }
    return (set.Find(ETHTOOL_A_BITSET_MASK).As<uint32_t>() & kAutoneg) != 0;
}

uint64_t* MacCounter(uint16_t type, DriverCounters& counters)
{
    switch (type) {
        case ETHTOOL_A_STATS_ETH_MAC_2_TX_PKT:
            return &counters.sentFrames;
        case ETHTOOL_A_STATS_ETH_MAC_3_SINGLE_COL:
            return &counters.singleCollisions;
        case ETHTOOL_A_STATS_ETH_MAC_4_MULTI_COL:
            return &counters.multipleCollisions;
        case ETHTOOL_A_STATS_ETH_MAC_5_RX_PKT:
            return &counters.receivedFrames;
        case ETHTOOL_A_STATS_ETH_MAC_6_FCS_ERR:
            return &counters.fcsErrors;
        case ETHTOOL_A_STATS_ETH_MAC_7_ALIGN_ERR:
            return &counters.alignErrors;
        case ETHTOOL_A_STATS_ETH_MAC_8_TX_BYTES:
            return &counters.sentOctets;
        case ETHTOOL_A_STATS_ETH_MAC_14_RX_BYTES:
            return &counters.receivedOctets;
        case ETHTOOL_A_STATS_ETH_MAC_18_TX_MCAST:
            return &counters.sentMulticast;
        case ETHTOOL_A_STATS_ETH_MAC_19_TX_BCAST:
            return &counters.sentBroadcast;
        case ETHTOOL_A_STATS_ETH_MAC_21_RX_MCAST:
            return &counters.receivedMulticast;
        case ETHTOOL_A_STATS_ETH_MAC_22_RX_BCAST:
            return &counters.receivedBroadcast;
        default:
            return nullptr;
    }
}

void TakeGroup(const Attribute& nest, DriverCounters& counters)
{
    Attributes parts{nest};
    const auto group = parts.Find(ETHTOOL_A_STATS_GRP_ID).As<uint32_t>();
    Attribute part;
    while (parts.Next(part)) {
        if (part.type == ETHTOOL_A_STATS_GRP_HIST_RX)
            TakeLengths(part, counters);
        Attributes inner{part};
        Attribute counter;
        if (part.type != ETHTOOL_A_STATS_GRP_STAT || !inner.Next(counter))
            continue;
        if (group == ETHTOOL_STATS_RMON)
            TakeRmon(counter.type, counter.As<uint64_t>(), counters);
        else if (uint64_t* place = MacCounter(counter.type, counters))
            *place = counter.As<uint64_t>();
    }
}

}  // namespace

Ethtool::Ethtool() : netlink_(NETLINK_GENERIC)
{
    Request request(GENL_ID_CTRL, 0);
    request.Header(genlmsghdr{CTRL_CMD_GETFAMILY, 1, 0});
    request.PutText(CTRL_ATTR_FAMILY_NAME, ETHTOOL_GENL_NAME);
    unusable_ = netlink_.Ask(request, [this](const Reply& reply) {
        family_ = Behind(reply).Find(CTRL_ATTR_FAMILY_ID).As<uint16_t>();
    });
    if (unusable_ == ENOENT || (unusable_ == 0 && family_ == 0))
        unusable_ = EOPNOTSUPP;
}

int Ethtool::GetMode(uint32_t index, LinkMode& mode)
{
    if (unusable_)
        return unusable_;
    mode = {};
    Command request(*this, ETHTOOL_MSG_LINKMODES_GET, ETHTOOL_A_LINKMODES_HEADER, index);
    return netlink_.Ask(request, [&mode](const Reply& reply) {
        const Attributes values = Behind(reply);
        const auto speed = values.Find(ETHTOOL_A_LINKMODES_SPEED).As<uint32_t>();
        mode.megabits = speed == static_cast<uint32_t>(SPEED_UNKNOWN) ? 0 : speed;
        mode.fullDuplex = values.Find(ETHTOOL_A_LINKMODES_DUPLEX).As<uint8_t>() == DUPLEX_FULL;
        mode.autoneg = values.Find(ETHTOOL_A_LINKMODES_AUTONEG).As<uint8_t>() != 0;
        mode.negotiates = CanNegotiate(values.Find(ETHTOOL_A_LINKMODES_OURS));
    });
}

int Ethtool::SetMode(uint32_t index, const LinkMode& mode)
{
    if (unusable_)
        return unusable_;
    Command request(*this, ETHTOOL_MSG_LINKMODES_SET, ETHTOOL_A_LINKMODES_HEADER, index);
    request.Put<uint8_t>(ETHTOOL_A_LINKMODES_AUTONEG, mode.autoneg);
    if (!mode.autoneg) {
        request.Put<uint32_t>(ETHTOOL_A_LINKMODES_SPEED, mode.megabits);
        request.Put<uint8_t>(ETHTOOL_A_LINKMODES_DUPLEX,
                             mode.fullDuplex ? DUPLEX_FULL : DUPLEX_HALF);
    }
    return netlink_.Do(request);
}

int Ethtool::GetEee(uint32_t index, EeeState& state)
{
    if (unusable_)
        return unusable_;
    state = {};
    Command request(*this, ETHTOOL_MSG_EEE_GET, ETHTOOL_A_EEE_HEADER, index);
    return netlink_.Ask(request, [&state](const Reply& reply) {
        const Attributes values = Behind(reply);
        state.supported = static_cast<bool>(values.Find(ETHTOOL_A_EEE_MODES_OURS));
        state.enabled = values.Find(ETHTOOL_A_EEE_ENABLED).As<uint8_t>() != 0;
    });
}

int Ethtool::SetEee(uint32_t index, bool enabled)
{
    if (unusable_)
        return unusable_;
    Command request(*this, ETHTOOL_MSG_EEE_SET, ETHTOOL_A_EEE_HEADER, index);
    request.Put<uint8_t>(ETHTOOL_A_EEE_ENABLED, enabled);
    return netlink_.Do(request);
}

int Ethtool::GetCounters(uint32_t index, DriverCounters& counters)
{
    memset(&counters, 0xFF, sizeof counters);
    if (unusable_)
        return unusable_;
    constexpr uint32_t kGroups = 1U << ETHTOOL_STATS_ETH_MAC | 1U << ETHTOOL_STATS_RMON;
    Command request(*this, ETHTOOL_MSG_STATS_GET, ETHTOOL_A_STATS_HEADER, index);
    const size_t groups = request.Open(ETHTOOL_A_STATS_GROUPS | NLA_F_NESTED);
    request.Put(ETHTOOL_A_BITSET_NOMASK, nullptr, 0);
    request.Put<uint32_t>(ETHTOOL_A_BITSET_SIZE, ETHTOOL_STATS_RMON + 1);
    request.Put<uint32_t>(ETHTOOL_A_BITSET_VALUE, kGroups);
    request.Close(groups);
    return netlink_.Ask(request, [&counters](const Reply& reply) {
        Attributes parts = Behind(reply);
        Attribute part;
        while (parts.Next(part)) {
            if (part.type == ETHTOOL_A_STATS_GRP)
                TakeGroup(part, counters);
        }
    });
}

}  // namespace linux_switch

// Drivers that have what a veth has not: the test answers ethtool's requests in their place.
#include <linux/ethtool.h>
#include <linux/ethtool_netlink.h>
#include <linux/genetlink.h>
#include <linux/netlink.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "tests/hals/linux_switch/kernel_bench.h"

using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

using Bytes = std::vector<uint8_t>;

template <typename T>
Bytes BytesOf(const T& value)
{
    Bytes bytes(sizeof value);
    memcpy(bytes.data(), &value, sizeof value);
    return bytes;
}

Bytes operator+(Bytes left, const Bytes& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Attribute(uint16_t type, const Bytes& value)
{
    const nlattr header = {static_cast<uint16_t>(sizeof header + value.size()), type};
    Bytes bytes = BytesOf(header) + value;
    bytes.resize(NLA_ALIGN(bytes.size()));
    return bytes;
}

Bytes Message(uint16_t type, uint32_t sequence, const Bytes& payload)
{
    nlmsghdr header{};
    header.nlmsg_len = static_cast<uint32_t>(sizeof header + payload.size());
    header.nlmsg_type = type;
    header.nlmsg_seq = sequence;
    return BytesOf(header) + payload;
}

Bytes Counter(uint16_t type, uint64_t value)
{
    return Attribute(ETHTOOL_A_STATS_GRP_STAT | NLA_F_NESTED, Attribute(type, BytesOf(value)));
}

Bytes Length(uint32_t low, uint32_t high, uint64_t value)
{
    return Attribute(ETHTOOL_A_STATS_GRP_HIST_RX | NLA_F_NESTED,
                     Attribute(ETHTOOL_A_STATS_GRP_HIST_BKT_LOW, BytesOf(low)) +
                         Attribute(ETHTOOL_A_STATS_GRP_HIST_BKT_HI, BytesOf(high)) +
                         Attribute(ETHTOOL_A_STATS_GRP_HIST_VAL, BytesOf(value)));
}

Bytes Group(uint32_t group, const Bytes& counters)
{
    return Attribute(ETHTOOL_A_STATS_GRP | NLA_F_NESTED,
                     Attribute(ETHTOOL_A_STATS_GRP_ID, BytesOf(group)) + counters);
}

// A set of modes as the kernel writes it in short: those that are offered, of those that there are.
Bytes Modes(uint32_t offered)
{
    return Attribute(ETHTOOL_A_BITSET_SIZE, BytesOf(uint32_t{32})) +
           Attribute(ETHTOOL_A_BITSET_VALUE, BytesOf(offered)) +
           Attribute(ETHTOOL_A_BITSET_MASK, BytesOf(uint32_t{0xFFFF}));
}

Bytes LinkModes(bool autoneg, uint32_t speed)
{
    return Attribute(ETHTOOL_A_LINKMODES_AUTONEG, BytesOf(uint8_t{autoneg})) +
           Attribute(ETHTOOL_A_LINKMODES_OURS | NLA_F_NESTED, Modes(0xFFF)) +
           Attribute(ETHTOOL_A_LINKMODES_SPEED, BytesOf(speed)) +
           Attribute(ETHTOOL_A_LINKMODES_DUPLEX, BytesOf(uint8_t{DUPLEX_HALF}));
}

Bytes Eee(bool enabled)
{
    return Attribute(ETHTOOL_A_EEE_MODES_OURS | NLA_F_NESTED, Modes(0x20)) +
           Attribute(ETHTOOL_A_EEE_ENABLED, BytesOf(uint8_t{enabled}));
}

}  // namespace

class LinuxSwitchDriver : public LinuxSwitch {
protected:
    void SetUp() override
    {
        LinuxSwitch::SetUp();
        driver = [this](const Bytes& request) { return Answer(request); };
    }

    Bytes Answer(const Bytes& request)
    {
        nlmsghdr header;
        memcpy(&header, request.data(), sizeof header);
        const uint8_t command = request.at(sizeof header);
        EXPECT_TRUE(NamesADevice(request)) << int{command};
        const Bytes attributes(request.begin() + NLMSG_HDRLEN + GENL_HDRLEN, request.end());
        if (sets.contains(command))
            sets[command].push_back(Settings(attributes));
        nlmsgerr outcome{};
        if (command == refused)
            outcome.error = -EINVAL;
        else if (!answers.contains(command) && !sets.contains(command))
            outcome.error = -EOPNOTSUPP;
        Bytes bytes;
        if (answers.contains(command))
            bytes = Message(header.nlmsg_type, header.nlmsg_seq,
                            BytesOf(genlmsghdr{command, 1, 0}) + answers[command]);
        return bytes + Message(NLMSG_ERROR, header.nlmsg_seq, BytesOf(outcome));
    }

    // In the first attribute, which is a number of its own for each command.
    static bool NamesADevice(const Bytes& request)
    {
        const bool counters = request.at(NLMSG_HDRLEN) == ETHTOOL_MSG_STATS_GET;
        nlattr attribute, device;
        memcpy(&attribute, &request.at(NLMSG_HDRLEN + GENL_HDRLEN), sizeof attribute);
        memcpy(&device, &request.at(NLMSG_HDRLEN + GENL_HDRLEN + sizeof attribute), sizeof device);
        const int header = counters ? int{ETHTOOL_A_STATS_HEADER} : int{ETHTOOL_A_EEE_HEADER};
        return attribute.nla_type == (header | NLA_F_NESTED) &&
               device.nla_type == ETHTOOL_A_HEADER_DEV_INDEX;
    }

    // "type=value" of what follows the interface that is meant.
    static std::string Settings(const Bytes& attributes)
    {
        std::string words;
        for (size_t at = 0; at < attributes.size();) {
            nlattr header;
            memcpy(&header, &attributes[at], sizeof header);
            uint32_t value = 0;
            memcpy(&value, &attributes[at + sizeof header],
                   std::min(sizeof value, header.nla_len - sizeof header));
            if (header.nla_type != (1 | NLA_F_NESTED))
                words += " " + std::to_string(header.nla_type) + "=" + std::to_string(value);
            at += NLA_ALIGN(header.nla_len);
        }
        return words;
    }

    std::map<uint8_t, Bytes> answers;
    std::map<uint8_t, std::vector<std::string>> sets = {{ETHTOOL_MSG_LINKMODES_SET, {}},
                                                        {ETHTOOL_MSG_EEE_SET, {}}};
    uint8_t refused = 0;  // the command that the driver does not take
};

TEST_F(LinuxSwitchDriver, SpeedAndDuplexAreForced)
{
    BringUp();
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(true, 1000);
    EXPECT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_100M, 0), 0);
    EXPECT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_2G5, 1), 0);
    // ETHTOOL_A_LINKMODES_AUTONEG, _SPEED and _DUPLEX
    EXPECT_THAT(sets[ETHTOOL_MSG_LINKMODES_SET], ElementsAre(" 2=0 5=100 6=0", " 2=0 5=2500 6=1"));
    uint32_t link = 0, speed = 9, duplex = 9;
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(false, 10);
    ASSERT_EQ(Hal().GetPortLink(0, 1, &link, &speed, &duplex), 0);
    EXPECT_EQ(speed, unsigned{OB_SPEED_10M});
    EXPECT_EQ(duplex, 0u);
}

TEST_F(LinuxSwitchDriver, NegotiationStartsOnlyWhereItIsOff)
{
    BringUp();
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(true, 1000);
    EXPECT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_AUTONEG, 1), 0);
    EXPECT_THAT(sets[ETHTOOL_MSG_LINKMODES_SET], ElementsAre());
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(false, 100);
    EXPECT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_AUTONEG, 1), 0);
    EXPECT_THAT(sets[ETHTOOL_MSG_LINKMODES_SET], ElementsAre(" 2=1"));
}

TEST_F(LinuxSwitchDriver, ASpeedThatItDoesNotTakeIsRefused)
{
    BringUp();
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(true, 1000);
    refused = ETHTOOL_MSG_LINKMODES_SET;
    EXPECT_NE(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_10G, 1), 0);
    EXPECT_THAT(log, ElementsAre("Cannot set the speed of lan1, DevIdx=0: "
                                 "the kernel does not take that value, errno=22"));
    EXPECT_THAT(sets[ETHTOOL_MSG_LINKMODES_SET], ElementsAre(" 2=0 5=10000 6=1", " 2=1"))
        << "a driver may have stopped negotiating";
}

TEST_F(LinuxSwitchDriver, EeeIsSwitchedAndACapability)
{
    BringUp();
    answers[ETHTOOL_MSG_EEE_GET] = Eee(true);
    SwitchCaps caps{};
    ASSERT_EQ(Hal().GetSwitchCaps(0, &caps), 0);
    EXPECT_EQ(caps.capsFlags, OB_CAPS_MIRRORING | OB_CAPS_EEE);
    uint32_t state = 9;
    ASSERT_EQ(Hal().GetEeePortState(0, 1, &state), 0);
    EXPECT_EQ(state, 1u);
    answers[ETHTOOL_MSG_EEE_GET] = Eee(false);
    ASSERT_EQ(Hal().GetEeePortState(0, 1, &state), 0);
    EXPECT_EQ(state, 0u);
    EXPECT_EQ(Hal().EnablePhyPortEee(0, 1), 0);
    EXPECT_EQ(Hal().DisablePhyPortEee(0, 1), 0);
    // ETHTOOL_A_EEE_ENABLED
    EXPECT_THAT(sets[ETHTOOL_MSG_EEE_SET], ElementsAre(" 5=1", " 5=0"));
    refused = ETHTOOL_MSG_EEE_SET;
    EXPECT_NE(Hal().EnablePhyPortEee(0, 1), 0);
    EXPECT_THAT(log, ElementsAre(HasSubstr("Cannot set EEE of lan1, DevIdx=0: ")));
}

TEST_F(LinuxSwitchDriver, ItsCountersComeBeforeTheKernels)
{
    BringUp();
    answers[ETHTOOL_MSG_STATS_GET] =
        Group(ETHTOOL_STATS_ETH_MAC, Counter(ETHTOOL_A_STATS_ETH_MAC_2_TX_PKT, 102) +
                                         Counter(ETHTOOL_A_STATS_ETH_MAC_3_SINGLE_COL, 3) +
                                         Counter(ETHTOOL_A_STATS_ETH_MAC_4_MULTI_COL, 4) +
                                         Counter(ETHTOOL_A_STATS_ETH_MAC_6_FCS_ERR, 6) +
                                         Counter(ETHTOOL_A_STATS_ETH_MAC_7_ALIGN_ERR, 7) +
                                         Counter(ETHTOOL_A_STATS_ETH_MAC_19_TX_BCAST, 119)) +
        Group(ETHTOOL_STATS_RMON, Counter(ETHTOOL_A_STATS_RMON_UNDERSIZE, 201) +
                                      Counter(ETHTOOL_A_STATS_RMON_OVERSIZE, 202) +
                                      Counter(ETHTOOL_A_STATS_RMON_FRAG, 203) +
                                      Counter(ETHTOOL_A_STATS_RMON_JABBER, 204) +
                                      Length(0, 64, 64) + Length(65, 127, 127) +
                                      Length(128, 255, 255) + Length(256, 511, 511) +
                                      Length(512, 1023, 1023) + Length(1024, 1518, 1518) +
                                      Length(1519, 2047, 11) + Length(2048, 10'240, 22));
    LinuxSwitchCounters counters;
    ASSERT_EQ(Hal().GetPortCounters(0, 1, &counters), 0);
    EXPECT_EQ(counters.aFramesTransmittedOK, 102u);
    EXPECT_EQ(counters.etherStatsCollisions, 7u);
    EXPECT_EQ(counters.etherStatsCRCAlignErrors, 13u);
    EXPECT_EQ(counters.aBroadcastFramesXmittedOK, 119u);
    EXPECT_EQ(counters.etherStatsUndersizePkts, 201u);
    EXPECT_EQ(counters.etherStatsOversizePkts, 202u);
    EXPECT_EQ(counters.etherStatsFragments, 203u);
    EXPECT_EQ(counters.etherStatsJabbers, 204u);
    EXPECT_THAT(counters.etherStatsPktsByLength, ElementsAre(64, 127, 255, 511, 1023, 1518, 33));
    EXPECT_NE(counters.aFramesReceivedOK, LINUX_SWITCH_UNKNOWN) << "which the kernel counts";
    EXPECT_EQ(counters.etherStatsMulticastPkts, LINUX_SWITCH_UNKNOWN);
}

TEST_F(LinuxSwitchDriver, AnInterfaceThatComesBackIsForcedAgain)
{
    BringUp();
    answers[ETHTOOL_MSG_LINKMODES_GET] = LinkModes(true, 1000);
    ASSERT_EQ(Hal().SetPhyPortSpeedDuplex(0, 1, OB_SPEED_100M, 0), 0);
    ASSERT_EQ(Hal().DisablePhyPortEee(0, 1), 0);
    Sh("ip link delete lan1; ip link add lan1 type veth peer name host1");
    ASSERT_EQ(Hal().SetMacAging(0, 3), 0);
    EXPECT_THAT(sets[ETHTOOL_MSG_LINKMODES_SET], ElementsAre(" 2=0 5=100 6=0", " 2=0 5=100 6=0"));
    EXPECT_THAT(sets[ETHTOOL_MSG_EEE_SET], ElementsAre(" 5=0", " 5=0"));
}

// Counters: what the driver tells in the groups of the standards, else what the kernel counts.
#include <string.h>

#include "hals/linux_switch/ethtool.h"
#include "hals/linux_switch/linux_switch_hal.h"
#include "hals/linux_switch/session.h"
#include "hals/linux_switch/slots.h"

namespace linux_switch {
namespace {

static_assert(LINUX_SWITCH_UNKNOWN == kUnknownCounter);

// Octets that a standard counts for each frame and the kernel does not, and the other way round.
constexpr uint64_t kFcs = 4;
constexpr uint64_t kHeader = 14;

uint64_t Known(uint64_t counter, uint64_t instead)
{
    return counter != kUnknownCounter ? counter : instead;
}

uint64_t Sum(uint64_t one, uint64_t other)
{
    return one != kUnknownCounter && other != kUnknownCounter ? one + other : kUnknownCounter;
}

// Data and pad of so many frames.
uint64_t Payload(uint64_t octets, uint64_t frames)
{
    return octets > kHeader * frames ? octets - kHeader * frames : 0;
}

void TakeStatistics(const rtnl_link_stats64& statistics, LinuxSwitchCounters& counters)
{
    counters.etherStatsDropEvents =
        statistics.rx_missed_errors + statistics.rx_over_errors + statistics.rx_fifo_errors;
    counters.etherStatsPkts = statistics.rx_packets + statistics.rx_errors;
    counters.etherStatsOctets = statistics.rx_bytes + kFcs * statistics.rx_packets;
    counters.etherStatsCRCAlignErrors = statistics.rx_crc_errors + statistics.rx_frame_errors;
    counters.etherStatsCollisions = statistics.collisions;
    counters.aFramesTransmittedOK = statistics.tx_packets;
    counters.aOctetsTransmittedOK = Payload(statistics.tx_bytes, statistics.tx_packets);
    counters.aFramesReceivedOK = statistics.rx_packets;
    counters.aOctetsReceivedOK = Payload(statistics.rx_bytes, statistics.rx_packets);
    counters.ifOutDiscards = statistics.tx_dropped;
}

void TakeDriver(const DriverCounters& driver, LinuxSwitchCounters& counters)
{
    const auto take = [](uint64_t& counter, uint64_t told) { counter = Known(told, counter); };
    take(counters.etherStatsBroadcastPkts, driver.receivedBroadcast);
    take(counters.etherStatsMulticastPkts, driver.receivedMulticast);
    take(counters.etherStatsCRCAlignErrors, Sum(driver.fcsErrors, driver.alignErrors));
    take(counters.etherStatsUndersizePkts, driver.undersize);
    take(counters.etherStatsOversizePkts, driver.oversize);
    take(counters.etherStatsFragments, driver.fragments);
    take(counters.etherStatsJabbers, driver.jabbers);
    take(counters.etherStatsCollisions, Sum(driver.singleCollisions, driver.multipleCollisions));
    for (size_t i = 0; i < 7; ++i)
        take(counters.etherStatsPktsByLength[i], driver.byLength[i]);
    take(counters.aFramesTransmittedOK, driver.sentFrames);
    take(counters.aOctetsTransmittedOK, driver.sentOctets);
    take(counters.aMulticastFramesXmittedOK, driver.sentMulticast);
    take(counters.aBroadcastFramesXmittedOK, driver.sentBroadcast);
    take(counters.aFramesReceivedOK, driver.receivedFrames);
    take(counters.aOctetsReceivedOK, driver.receivedOctets);
}

}  // namespace

int GetPortCounters(int devIdx, int port, void* counters)
{
    Session session(devIdx);
    if (!counters || !session.MeetPort(port))
        return -1;
    const uint32_t index = session.Port(port).index;
    rtnl_link_stats64 statistics{};
    if (const int error = ReadStatistics(session.Route(), index, statistics))
        return session.Refuse("read the counters of", session.Memory().NameOf(port), error);
    LinuxSwitchCounters found;
    DriverCounters driver;
    memset(&found, 0xFF, sizeof found);
    TakeStatistics(statistics, found);
    Ethtool().GetCounters(index, driver);  // result dropped: what it does not tell is unknown
    TakeDriver(driver, found);
    memcpy(counters, &found, sizeof found);
    return 0;
}

}  // namespace linux_switch

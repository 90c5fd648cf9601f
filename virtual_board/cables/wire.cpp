#include "virtual_board/cables/wire.h"

#include <algorithm>
#include <utility>

namespace vboard::cables {

bool Wire::Travelling::operator<(const Travelling& other) const
{
    // The queue's first is its greatest.
    return std::pair(due, number) > std::pair(other.due, other.number);
}

uint32_t Wire::Random()
{
    random ^= random << 13;
    random ^= random >> 17;
    random ^= random << 5;
    return random;
}

bool Wire::Draw(uint32_t partsPerMillion)
{
    return Random() % WireFaults::kAll < partsPerMillion;
}

void Wire::Put(bool toSwitch, std::span<const uint8_t> frame, Time now)
{
    Time delay = faults.delay;
    if (faults.jitter > Time{}) {
        const auto span = static_cast<uint64_t>(2 * faults.jitter.count() + 1);
        const uint64_t drawn = (uint64_t{Random()} << 32 | Random()) % span;
        delay += Time{static_cast<Time::rep>(drawn)} - faults.jitter;
    }
    const bool bad = Draw(faults.fcsErrors);
    travelling.push(
        {now + std::max(delay, Time{}), sent++, {toSwitch, bad, {frame.begin(), frame.end()}}});
}

void Wire::Send(bool toSwitch, std::span<const uint8_t> frame, Time now)
{
    if (Draw(faults.loss))
        return;
    Put(toSwitch, frame, now);
    if (Draw(faults.duplicates))
        Put(toSwitch, frame, now);
}

std::optional<Wire::Arrival> Wire::Receive(Time now)
{
    if (travelling.empty() || travelling.top().due > now)
        return std::nullopt;
    Arrival arrival = travelling.top().arrival;
    travelling.pop();
    return arrival;
}

std::optional<Wire::Time> Wire::NextArrival() const
{
    if (travelling.empty())
        return std::nullopt;
    return travelling.top().due;
}

}  // namespace vboard::cables

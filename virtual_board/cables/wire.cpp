#include "virtual_board/cables/wire.h"

#include <algorithm>
#include <utility>

namespace vboard::cables {

using datapath::Damage;

namespace {

// What is left of a frame that is cut off, without its check sequence.
constexpr size_t kCutOff = 32;
// After so many collisions a frame is given up, as IEEE 802.3 has it.
constexpr unsigned kAttempts = 16;

}  // namespace

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
    const auto damage = DrawDamage();
    if (damage && damage != Damage::kBadCheck)
        frame = frame.first(std::min(frame.size(), kCutOff));
    travelling.push(
        {now + std::max(delay, Time{}), sent++, {toSwitch, damage, {frame.begin(), frame.end()}}});
}

std::optional<Damage> Wire::DrawDamage()
{
    if (Draw(faults.fcsErrors))
        return Damage::kBadCheck;
    if (Draw(faults.undersize))
        return Damage::kShort;
    if (Draw(faults.fragments))
        return Damage::kFragment;
    return std::nullopt;
}

unsigned Wire::Send(bool toSwitch, std::span<const uint8_t> frame, Time now, bool halfDuplex)
{
    unsigned collisions = 0;
    while (halfDuplex && collisions < kAttempts && Draw(faults.collisions))
        ++collisions;
    if (collisions == kAttempts || Draw(faults.loss))
        return collisions;
    Put(toSwitch, frame, now);
    if (Draw(faults.duplicates))
        Put(toSwitch, frame, now);
    return collisions;
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

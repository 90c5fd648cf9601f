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
    random_ ^= random_ << 13;
    random_ ^= random_ >> 17;
    random_ ^= random_ << 5;
    return random_;
}

bool Wire::Draw(uint32_t partsPerMillion)
{
    return Random() % WireFaults::kAll < partsPerMillion;
}

void Wire::Put(bool toSwitch, std::span<const uint8_t> frame, Time now)
{
    Time delay = faults_.delay;
    if (faults_.jitter > Time{}) {
        const auto span = static_cast<uint64_t>(2 * faults_.jitter.count() + 1);
        const uint64_t drawn = (uint64_t{Random()} << 32 | Random()) % span;
        delay += Time{static_cast<Time::rep>(drawn)} - faults_.jitter;
    }
    const auto damage = DrawDamage();
    if (damage && damage != Damage::kBadCheck)
        frame = frame.first(std::min(frame.size(), kCutOff));
    travelling_.push(
        {now + std::max(delay, Time{}), sent_++, {toSwitch, damage, {frame.begin(), frame.end()}}});
}

std::optional<Damage> Wire::DrawDamage()
{
    if (Draw(faults_.fcsErrors))
        return Damage::kBadCheck;
    if (Draw(faults_.undersize))
        return Damage::kShort;
    if (Draw(faults_.fragments))
        return Damage::kFragment;
    return std::nullopt;
}

unsigned Wire::Send(bool toSwitch, std::span<const uint8_t> frame, Time now, bool halfDuplex)
{
    unsigned collisions = 0;
    while (halfDuplex && collisions < kAttempts && Draw(faults_.collisions))
        ++collisions;
    if (collisions == kAttempts || Draw(faults_.loss))
        return collisions;
    Put(toSwitch, frame, now);
    if (Draw(faults_.duplicates))
        Put(toSwitch, frame, now);
    return collisions;
}

std::optional<Wire::Arrival> Wire::Receive(Time now)
{
    if (travelling_.empty() || travelling_.top().due > now)
        return std::nullopt;
    Arrival arrival = travelling_.top().arrival;
    travelling_.pop();
    return arrival;
}

std::optional<Wire::Time> Wire::NextArrival() const
{
    if (travelling_.empty())
        return std::nullopt;
    return travelling_.top().due;
}

}  // namespace vboard::cables

#include "virtual_board/chips/vs08/qos.h"

namespace vboard::vswitch {
namespace {

constexpr uint16_t kThresholds = 6;
constexpr uint16_t kReserved = 6;
constexpr uint16_t kMaxReserved = 63;

constexpr RegisterSpec kSpecs[] = {
    {0, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {1, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {2, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {3, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {4, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {5, kMaxThreshold, kMaxThreshold, 0, kMaxThreshold},
    {kReserved, 0, kMaxReserved, 0, kMaxReserved},
};

}  // namespace

Queues::Queues() : queues_(kQueues, RegisterBank(kSpecs)) {}

void Queues::Reset()
{
    for (RegisterBank& queue : queues_)
        queue.Reset();
}

Refusal Queues::Read(uint16_t address, uint16_t& value) const
{
    return queues_[(address - kQueueFirst) / 8].Read(address % 8, value);
}

Refusal Queues::Write(uint16_t address, uint16_t value)
{
    return queues_[(address - kQueueFirst) / 8].Write(address % 8, value);
}

Queues::Settings Queues::At(unsigned queue) const
{
    Settings settings{};
    for (uint16_t i = 0; i < kThresholds; ++i)
        settings.thresholds[i] = queues_[queue][i];
    settings.reserved = queues_[queue][kReserved];
    return settings;
}

}  // namespace vboard::vswitch

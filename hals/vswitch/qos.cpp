// Queues, WRED and flow control.
#include "hals/vswitch/slots.h"
#include "hals/vswitch/vs08_chip.h"

namespace vs08 {
namespace {

constexpr int kThresholds = 6;
constexpr int kMaxWeight = 15;
constexpr int kMaxPercent = 100;

bool Within(int value, int max)
{
    return value >= 0 && value <= max;
}

// Pairs of minimum and maximum, one per colour.
bool WriteThresholds(int devIdx, uint16_t address, const int (&pairs)[kThresholds])
{
    uint16_t words[kThresholds];
    for (int i = 0; i < kThresholds; ++i) {
        if (!Within(pairs[i], kMaxBuffers) || (i % 2 && pairs[i] < pairs[i - 1]))
            return false;
        words[i] = static_cast<uint16_t>(pairs[i]);
    }
    return Chip(devIdx).WriteRun(address, words, kThresholds);
}

uint16_t QueueAddress(int queue, uint16_t offset)
{
    return static_cast<uint16_t>(kQueue + 8 * queue + offset);
}

}  // namespace

int SetQWred(int devIdx, int queue, int greenMin, int greenMax, int yellowMin, int yellowMax,
             int redMin, int redMax)
{
    return Result(Within(queue, kQueues - 1) &&
                  WriteThresholds(devIdx, QueueAddress(queue, 0),
                                  {greenMin, greenMax, yellowMin, yellowMax, redMin, redMax}));
}

int SetGlobWred(int devIdx, int on, int weight, int maxPercent, int greenMin, int greenMax,
                int yellowMin, int yellowMax, int redMin, int redMax)
{
    if (!Within(on, 1) || !Within(weight, kMaxWeight) || !Within(maxPercent, kMaxPercent))
        return -1;
    const int ctrl = on | weight << kWredWeightShift | maxPercent << kWredMaxPShift;
    return Result(WriteThresholds(devIdx, kWredCtrl + 1,
                                  {greenMin, greenMax, yellowMin, yellowMax, redMin, redMax}) &&
                  Chip(devIdx).Write(kWredCtrl, static_cast<uint16_t>(ctrl)));
}

int SetQRsrv(int devIdx, int queue, int buffers)
{
    return Result(
        Within(queue, kQueues - 1) && Within(buffers, kMaxReserved) &&
        Chip(devIdx).Write(QueueAddress(queue, kQueueReserved), static_cast<uint16_t>(buffers)));
}

int SetPortFc(int devIdx, int port, int xoff, int xon)
{
    if (!IsPort(port) || !Within(xoff, kMaxBuffers) || !Within(xon, xoff))
        return -1;
    const uint16_t words[2] = {static_cast<uint16_t>(xoff), static_cast<uint16_t>(xon)};
    return Result(Chip(devIdx).WriteRun(PortAddress(port, kPortXoff), words, 2));
}

}  // namespace vs08

// Frames into the virtual switch, whose registers, links and time change between them.
#include <fuzzer/FuzzedDataProvider.h>

#include <vector>

#include "tests/virtual_board/chips/vs08/chip_bench.h"
#include "virtual_board/datapath/switch_engine.h"

namespace {

using namespace vboard;
using namespace std::chrono_literals;

// Looks at every byte that leaves.
class Ends : public datapath::Wires {
public:
    void Send(unsigned port, std::span<const iovec> frame) override
    {
        size_t bytes = 0;
        for (const iovec& piece : frame) {
            bytes += piece.iov_len;
            for (size_t i = 0; i < piece.iov_len; ++i)
                sum = sum + static_cast<const uint8_t*>(piece.iov_base)[i];
        }
        if (port >= 8 || bytes < datapath::kShortest)
            __builtin_trap();
    }

private:
    volatile unsigned sum = 0;
};

// Stations of a small network, so that addresses come again.
void Address(FuzzedDataProvider& input, std::vector<uint8_t>& frame, size_t at)
{
    auto station = input.ConsumeIntegral<uint8_t>();
    if (station >= 0xF0 || frame.size() < at + 6)
        return;
    auto mac = Station(station % 16);
    if (station % 16 == 0)
        mac = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    std::copy(mac.begin(), mac.end(), frame.begin() + static_cast<long>(at));
}

void OneStep(FuzzedDataProvider& input, ChipBench& bench, datapath::SwitchEngine& engine)
{
    unsigned port = input.ConsumeIntegralInRange(0U, 7U);
    switch (input.ConsumeIntegral<uint8_t>() % 8) {
        case 0:
            bench.Write(input.ConsumeIntegralInRange<uint16_t>(0, 0x2400),
                        input.ConsumeIntegral<uint16_t>());
            break;
        case 1:
            bench.chip.SetLink(port, input.ConsumeBool(), input.ConsumeIntegralInRange(0U, 6U),
                               input.ConsumeBool());
            break;
        case 2:
            bench.Wait(std::chrono::microseconds{input.ConsumeIntegral<uint32_t>()});
            engine.Transmit(bench.now);
            break;
        default: {
            auto frame = input.ConsumeBytes<uint8_t>(
                input.ConsumeIntegralInRange<size_t>(0, datapath::kLongest));
            Address(input, frame, 0);
            Address(input, frame, 6);
            engine.Receive(port, frame, bench.now);
            break;
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    ChipBench bench;
    Ends ends;
    datapath::SwitchEngine engine{bench.chip, ends};
    for (unsigned port = 0; port < 8; ++port)
        bench.LinkUp(port);
    while (input.remaining_bytes() > 0) {
        OneStep(input, bench, engine);
        bench.Wait(1us);
    }
    while (const auto next = engine.NextTransmission()) {
        bench.Wait(std::max<std::chrono::nanoseconds>(*next - bench.now, 1ns));
        engine.Transmit(bench.now);
    }
    return 0;
}

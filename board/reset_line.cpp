#include "board/board_services.h"
#include "common/log.h"
#include "common/stream.h"

namespace orblink {
namespace {

struct ResetLine {
    uint32_t pin;
    const char* attribute;
};

constexpr ResetLine kResetLines[] = {
    {18, "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset"},
    {19, "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset"},
};

const char* AttributeOf(uint32_t pin)
{
    for (const ResetLine& line : kResetLines) {
        if (line.pin == pin)
            return line.attribute;
    }
    return nullptr;
}

// The stream is buffered: without the flush a refused write would show only in fclose.
bool WriteDecimal(FILE* stream, int value)
{
    return fprintf(stream, "%d", value) >= 0 && fflush(stream) == 0;
}

}  // namespace
}  // namespace orblink

using namespace orblink;

int OBOS_SetGpioValue(uint32_t Pin, int Value)
{
    const char* path = AttributeOf(Pin);
    if (path == nullptr)
        return OB_ERROR("Unknown GPIO %d", Pin);
    const Stream attribute{path, "w"};
    if (!attribute)
        return OB_ERROR("Failed to open attribute %s", path);
    OB_TRACE("Reset attribute %s", path);
    if (!WriteDecimal(attribute.Get(), Value))
        return OB_ERROR("Failed to reset");
    return RC_OK;
}

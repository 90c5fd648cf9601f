#include "common/stream.h"
#include "switch/orblink_api.h"

int ORBLINK_isBatteryMode(void)
{
    const orblink::Stream attribute{
        "/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state", "r"};
    if (!attribute)
        return 0;
    int state = 0;
    // NOLINTNEXTLINE(cert-err34-c): what is no number is no battery mode
    return fscanf(attribute.Get(), "%d", &state) == 1 ? state : 0;
}

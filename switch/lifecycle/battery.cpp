#include <cstdio>

#include "switch/orblink_api.h"

int ORBLINK_isBatteryMode(void)
{
    FILE* attribute = fopen("/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state", "r");
    if (attribute == nullptr)
        return 0;
    int state = 0;
    const int read = fscanf(attribute, "%d", &state);
    fclose(attribute);
    return read == 1 ? state : 0;
}

#include "platform/ob_platform.h"
#include "switch/orblink_api.h"

int main(int argc, char** argv)
{
    (void)argv;
    if (argc > 1) {
        OBPLAT_SetLogLevel(OBPLAT_SEVERITY_ERROR);
        return ORBLINK_isBatteryMode();
    }
    return 0;
}

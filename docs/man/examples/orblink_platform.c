/* Takes the library's failures and notices for itself. */
#include <stdio.h>

#include "platform/ob_platform.h"
#include "switch/orblink_api.h"

static void Show(const OBPLAT_LogSite* site, const char* function, const char* format,
                 va_list arguments)
{
    (void)function;
    fprintf(stderr, "%u: ", (unsigned)site->Severity);
    vfprintf(stderr, format, arguments);
    fputc('\n', stderr);
}

int main(void)
{
    uint8_t count;
    OBPLAT_SetLogHandler(Show);
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_NOTICE);
    return ORBLINK_GetNumOfSwitches(&count) == 0 ? 0 : 1;
}

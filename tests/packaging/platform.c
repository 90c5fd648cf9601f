/* A program that takes log lines for itself, with the platform's library alone; compiles as C and C++. */
#include <stdio.h>

#include "platform/ob_platform.h"

static void Show(const OBPLAT_LogSite* site, const char* function, const char* format,
                 va_list arguments)
{
    printf("%s says with severity %u: ", function, (unsigned)site->Severity);
    vprintf(format, arguments);
    printf("\n");
}

int main(void)
{
    static const OBPLAT_LogSite site = {OBPLAT_SEVERITY_ERROR, 3, OBPLAT_MODULE_SWITCH, 17};
    OBPLAT_SetLogHandler(Show);
    OBPLAT_Log(&site, "main", 0, "%d of %d", 1, 2);
    return 0;
}

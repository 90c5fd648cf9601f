/* Says how long one message of the application CPU is, and answers it. */
#include <stdio.h>
#include <string.h>

#include "hwmbox/hwmbox.h"

static int Build(void* message, uint32_t* size)
{
    const uint8_t answer[8] = {0, 0, 0, 12};
    memcpy(message, answer, sizeof answer);
    *size = sizeof answer;
    return 0;
}

static int Parse(void* message, uint32_t size, void* dest, int destSize)
{
    (void)message;
    (void)dest;
    (void)destSize;
    printf("%u bytes\n", (unsigned)size);
    return 0;
}

int main(void)
{
    return HWMB_Start(SOCK_SUBJECT, 12, 0, Build, Parse, NULL, 0) == 0 ? 0 : 1;
}

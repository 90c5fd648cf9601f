/* Counts the entries of the MAC table of switch 0 in two ways. */
#include <stdio.h>

#include "switch/orblink_api.h"

static unsigned walked;

static uint32_t Count(struct MacEntry* entry)
{
    (void)entry;
    ++walked;
    return 1; /* go on */
}

int main(void)
{
    static struct MacTable table;
    if (ORBLINK_GetMacTable(0, &table) != 0 || ORBLINK_ForEachMacEntry(0, Count) != 0)
        return 1;
    printf("%u copied%s, %u walked\n", (unsigned)table.count, table.overflow ? " of more" : "",
           walked);
    return 0;
}

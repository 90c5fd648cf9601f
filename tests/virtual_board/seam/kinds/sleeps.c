#include <errno.h>
#include <stdlib.h>
#include <time.h>

#include "probe.h"

static double now(void)
{
    struct timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return (double)time.tv_sec + (double)time.tv_nsec / 1e9;
}

/* Long: at least the 100 ms that follow the whole seconds. */
static void show(const char* name, double start)
{
    row_text(name, now() - start >= 0.1 ? "long" : "short");
}

/* Each sleep is so many seconds and 100 ms long, but for that until a time: 100 ms. */
int probe_sleeps(const char* seconds)
{
    struct timespec time = {atoi(seconds), 100000000};
    double start = now();
    nanosleep(&time, NULL);
    show("nanosleep", start);
    start = now();
    clock_nanosleep(CLOCK_MONOTONIC, 0, &time, NULL);
    show("clock_nanosleep", start);
    start = now();
    clock_gettime(CLOCK_MONOTONIC, &time);
    time.tv_sec += (time.tv_nsec + 100000000) / 1000000000;
    time.tv_nsec = (time.tv_nsec + 100000000) % 1000000000;
    clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, NULL);
    show("until a time", start);
    return 0;
}

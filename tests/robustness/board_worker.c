/* One caller of the soak on the virtual board: board_worker FIELD SECONDS STATE_FILE.
 * It alone writes its field, so what it wrote last is what everybody reads. The state file survives
 * it. */
#define _GNU_SOURCE
#include <dirent.h>
#include <fcntl.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <time.h>
#include <unistd.h>

#include "phy/ethphy_api.h"
#include "switch/orblink_api.h"

enum { kPorts = 6, kFields = 2 * kPorts + 3 };

struct State {
    uint32_t calls, failures, strays, worstMicroseconds, descriptors[2], kilobytes[2];
    uint32_t done,
        writing; /* values of the field; the call that writes the second may be cut off */
};

static uint64_t Microseconds(void)
{
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (uint64_t)now.tv_sec * 1000000 + (uint64_t)now.tv_nsec / 1000;
}

static uint32_t Descriptors(void)
{
    DIR* entries = opendir("/proc/self/fd");
    uint32_t count = 0;
    if (entries == NULL)
        exit(2);
    while (readdir(entries) != NULL)
        ++count;
    closedir(entries);
    return count;
}

static uint32_t Kilobytes(void)
{
    unsigned long size = 0, resident = 0;
    FILE* statm = fopen("/proc/self/statm", "r");
    // NOLINTNEXTLINE(cert-err34-c): the numbers are the kernel's
    if (statm == NULL || fscanf(statm, "%lu %lu", &size, &resident) != 2)
        exit(2);
    fclose(statm);
    return (uint32_t)(resident * 4);
}

static int Write(unsigned field, uint32_t value)
{
    const uint8_t port = (uint8_t)(1 + field % kPorts);
    if (field < kPorts)
        return ORBLINK_SetLanPortVlan(0, port, (int)(1 + value % 100));
    if (field < 2 * kPorts)
        return ORBLINK_SetLanPortPcp(0, port, (uint8_t)(value % 8));
    if (field == 2 * kPorts)
        return ORBLINK_SetMtuSize(0, (uint16_t)(1500 + value % 500));
    return ETHPHY_SetAdminState((uint8_t)(field - 2 * kPorts - 1), (int)(value % 2));
}

/* 1 when the field is what a write of the value makes it, 0 when not, -1 when it cannot be read. */
static int Holds(unsigned field, uint32_t value)
{
    struct SwitchProvConfig config;
    struct PhyProvConfig phy;
    const unsigned port = 1 + field % kPorts;
    if (field > 2 * kPorts)
        return ETHPHY_GetProvisionedConfig((uint8_t)(field - 2 * kPorts - 1), &phy) != 0
                   ? -1
                   : (uint32_t)phy.adminState == value % 2;
    if (ORBLINK_GetSwitchProvConfig(0, &config) != 0)
        return -1;
    if (field < kPorts)
        return config.lanPortVlan[port] == 1 + value % 100;
    if (field < 2 * kPorts)
        return config.lanPortPcp[port] == value % 8;
    return config.mtuSize == 1500 + value % 500;
}

static void Measure(struct State* state, int when)
{
    state->descriptors[when] = Descriptors();
    state->kilobytes[when] = Kilobytes();
}

static void Step(struct State* state, unsigned field, uint32_t value)
{
    const uint64_t begin = Microseconds();
    state->writing = value;
    state->failures += Write(field, value) != 0;
    state->done = value;
    const uint32_t took = (uint32_t)(Microseconds() - begin);
    if (took > state->worstMicroseconds)
        state->worstMicroseconds = took;
    state->strays += Holds(field, value) != 1;
    state->calls += 2;
}

/* NULL when it cannot be had. */
static struct State* MapState(const char* path)
{
    const int file = open(path, O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    void* state = MAP_FAILED;
    if (file < 0)
        return NULL;
    if (ftruncate(file, sizeof(struct State)) == 0)
        state = mmap(NULL, sizeof(struct State), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    return state == MAP_FAILED ? NULL : state;
}

int main(int count, char** words)
{
    if (count != 4)
        return 2;
    const unsigned field = (unsigned)strtoul(words[1], NULL, 10);
    const uint64_t end = Microseconds() + (uint64_t)strtoul(words[2], NULL, 10) * 1000000;
    struct State* const state = field < kFields ? MapState(words[3]) : NULL;
    if (state == NULL)
        return 2;
    if (state->calls != 0 && Holds(field, state->done) != 1 && Holds(field, state->writing) != 1)
        ++state->strays;
    uint32_t value = state->writing;
    for (unsigned i = 0; Microseconds() < end; ++i) {
        Step(state, field, ++value);
        if (i == 10)
            Measure(state, 0);
    }
    Measure(state, 1);
    return state->failures != 0 || state->strays != 0;
}

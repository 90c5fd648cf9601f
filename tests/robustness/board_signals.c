/* Bring-ups on the virtual board under a timer of 1000 Hz without SA_RESTART: board_signals ROUNDS.
 * A signal that comes before the board has looked at a call makes it fail with EINTR. The HALs make
 * their register accesses again; what the library calls itself fails the bring-up. */
#include <errno.h>
#include <signal.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/time.h>

#include "phy/ethphy_api.h"
#include "platform/ob_platform.h"
#include "switch/orblink_api.h"

enum { kSkipped = 77 };

static unsigned accesses, others; /* that were cut short */

static void OnSignal(int number)
{
    (void)number;
}

/* Reset attributes, lanes, and the library's own look at a PHY. */
static int IsOfTheLibrary(const char* function)
{
    static const char* const names[] = {"OBOS_SetGpioValue", "_ResetModphy", "ETHPHY_ResetSgmii",
                                        "_IsResetSgmiiRequired"};
    for (size_t i = 0; i < sizeof names / sizeof names[0]; ++i)
        if (strcmp(function, names[i]) == 0)
            return 1;
    return 0;
}

static void OnLine(const OBPLAT_LogSite* site, const char* function, const char* format,
                   va_list arguments)
{
    (void)format;
    (void)arguments;
    if (site->Severity != OBPLAT_SEVERITY_ERROR)
        return;
    accesses += strstr(function, "Mdio") != NULL && errno == EINTR;
    others += IsOfTheLibrary(function);
}

/* Every so many microseconds; 0: no more. */
static void Signal(int interval)
{
    const struct itimerval timer = {{0, interval}, {0, interval}};
    setitimer(ITIMER_REAL, &timer, NULL);
}

static int BringUp(int phy)
{
    return phy ? ETHPHY_ResetDisable(0, 1) : ORBLINK_ResetDisable(0, 1, NULL, 0);
}

/* How many failed although no call of the library's own was cut short. */
static unsigned Unexplained(int phy, int rounds)
{
    unsigned failed = 0, unexplained = 0;
    accesses = 0;
    for (int i = 0; i < rounds; ++i) {
        if ((phy ? ETHPHY_ResetEnable(0) : ORBLINK_ResetEnable(0)) != 0)
            exit(2);
        others = 0;
        Signal(1000);
        const int result = BringUp(phy);
        Signal(0);
        failed += result != 0;
        unexplained += result != 0 && others == 0;
    }
    printf(
        "| %d bring-ups of a %s on the virtual board under 1000 Hz | %u register accesses made "
        "again, %u failed at calls of the library's own, %u at others |\n",
        rounds, phy ? "PHY" : "switch", accesses, failed - unexplained, unexplained);
    return unexplained;
}

int main(int count, char** words)
{
    const struct sigaction action = {.sa_handler = OnSignal};
    const int rounds = count == 2 ? (int)strtol(words[1], NULL, 10) : 0;
    if (rounds <= 0 || sigaction(SIGALRM, &action, NULL) != 0)
        return 2;
    OBPLAT_SetLogHandler(OnLine);
    const unsigned ofSwitch = Unexplained(0, rounds);
    const unsigned cut = accesses;
    const unsigned ofPhy = Unexplained(1, rounds);
    if (ofSwitch + ofPhy != 0)
        return 1;
    return cut + accesses == 0 ? kSkipped : 0;
}

#include "tools/orblink_hal_check/processes/probe.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>

#include "common/shared_names.h"
#include "tools/orblink_hal_check/processes/attachment.h"
#include "tools/orblink_hal_check/watch/hal.h"
#include "tools/orblink_hal_check/watch/slot_call.h"
#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

constexpr int kCrashed = 99;

void NoteCrash(int signal, siginfo_t* info, void*)
{
    TheWatch().signal = signal;
    TheWatch().faultAddress =
        signal == SIGSEGV || signal == SIGBUS ? reinterpret_cast<uintptr_t>(info->si_addr) : 0;
    _exit(kCrashed);
}

void CatchCrashes()
{
    static std::array<char, 65536> stack;
    const stack_t other{.ss_sp = stack.data(), .ss_flags = 0, .ss_size = stack.size()};
    sigaltstack(&other, nullptr);
    struct sigaction action {};
    action.sa_sigaction = NoteCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK;
    for (int signal : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS})
        sigaction(signal, &action, nullptr);
}

// What the library under test prints is not part of the report.
void SilenceOutput()
{
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    close(nowhere);
}

void RunOne(const Step& step)
{
    Watch& watch = TheWatch();
    snprintf(watch.slot, sizeof watch.slot, "%s", step.slot);
    watch.call[0] = '\0';
    watch.failedCall[0] = '\0';
    try {
        step.run();
    } catch (...) {
        watch.inSlot = false;
        Report("slot.exits", std::string(watch.call) + " threw an exception");
    }
}

[[noreturn]] void RunFrom(uint32_t first, const ProbeRules& rules, Entry entry, const Steps& steps,
                          int progress)
{
    Watch& watch = TheWatch();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    SilenceOutput();
    CatchCrashes();
    ListenToLog();
    std::string complaint;
    if (!LoadHal(rules.library, complaint)) {
        snprintf(watch.complaint, sizeof watch.complaint, "%s", complaint.c_str());
        _exit(EXIT_FAILURE);
    }
    if (!Enter(entry))
        _exit(EXIT_FAILURE);
    watch.attached = true;
    for (watch.step = first; watch.step < steps.size(); ++watch.step) {
        if (write(progress, ".", 1) != 1)
            _exit(EXIT_FAILURE);
        RunOne(steps[watch.step]);
    }
    fflush(stdout);
    watch.finished = true;
    _exit(EXIT_SUCCESS);
}

// False when nothing was heard for as long as the patience lasts.
bool WaitForEnd(int progress, std::chrono::milliseconds patience)
{
    for (;;) {
        pollfd heard{progress, POLLIN, 0};
        const int ready = poll(&heard, 1, static_cast<int>(patience.count()));
        if (ready == 0)
            return false;
        std::array<char, 64> dots;
        if (ready > 0 && read(progress, dots.data(), dots.size()) <= 0)
            return true;
    }
}

// A process that ended while it held a lock of the PHYs leaves it behind.
void FreeLocks()
{
    for (const char* keyFile : {OB_SWITCH_KEY_FILE, OB_PHY_KEY_FILE}) {
        const key_t key = ftok(keyFile, OB_KEY_NUMBER);
        const int set = key == -1 ? -1 : semget(key, 1, 0);
        if (set != -1)
            semctl(set, 0, SETVAL, 1);
    }
}

struct Touched {
    const char* check;
    const char* words;
};

Touched MeaningOf(Zone::Kind kind)
{
    switch (kind) {
        case Zone::kPast:
            return {"buffer.overrun", " reached past a buffer of "};
        case Zone::kReadOnly:
            return {"buffer.const-written", " wrote to a buffer that may only be read, of "};
        case Zone::kWithdrawn:
            break;
    }
    return {"pointer.kept", " used a buffer after its call, of "};
}

void ReportEnd(const Step& step, bool hung, int status)
{
    const Watch& watch = TheWatch();
    const std::string call = watch.call[0] != '\0' ? watch.call : "the library";
    const Zone* const zone = watch.signal != 0 ? ZoneOf(watch.faultAddress) : nullptr;
    if (hung) {
        Report("slot.hangs", call + " did not return");
    } else if (zone != nullptr) {
        const Touched touched = MeaningOf(zone->kind);
        ReportOn(zone->slot, touched.check, call + touched.words + zone->slot);
    } else if (watch.signal != 0 || WIFSIGNALED(status)) {
        const int signal = watch.signal != 0 ? watch.signal : WTERMSIG(status);
        Report(step.ifItEnds, call + ": " + strsignal(signal));
    } else {
        Report("slot.exits",
               call + " ended the program with status " + std::to_string(WEXITSTATUS(status)));
    }
}

// The number of the step that ended the process; that of steps when none did; -1 when it never began.
int RunProcess(uint32_t first, const ProbeRules& rules, Entry entry, const Steps& steps)
{
    Watch& watch = TheWatch();
    watch.step = first;
    watch.attached = watch.finished = watch.inSlot = false;
    watch.signal = 0;
    watch.faultAddress = 0;
    watch.zoneCount = 0;
    watch.slot[0] = watch.call[0] = '\0';
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        return -1;
    const pid_t process = fork();
    if (process == 0) {
        close(ends[0]);
        RunFrom(first, rules, entry, steps, ends[1]);
    }
    close(ends[1]);
    const bool hung = process > 0 && !WaitForEnd(ends[0], rules.patience);
    close(ends[0]);
    if (process < 0)
        return -1;
    int status = 0;
    if (hung)
        kill(process, SIGKILL);
    waitpid(process, &status, 0);
    if (watch.finished)
        return static_cast<int>(steps.size());
    FreeLocks();
    if (!watch.attached)
        return -1;
    ReportEnd(steps[watch.step], hung, status);
    return static_cast<int>(watch.step);
}

}  // namespace

bool RunSteps(const ProbeRules& rules, Entry entry, const Steps& steps)
{
    for (uint32_t first = 0; first < steps.size();) {
        const int ended = RunProcess(first, rules, entry, steps);
        if (ended < 0)
            return false;
        first = static_cast<uint32_t>(ended) + 1;
    }
    return true;
}

}  // namespace halcheck

#include "tools/orblinkctl/commands/confirmation.h"

#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/recovery.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/line/undo.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"
#include "tools/orblinkctl/output/terminal.h"

namespace ctl {

namespace {

// Frees what the caller held when it was killed: without that, no step back would be possible.
void TakeBackForAnybody(const Model& before)
{
    for (const Family family : {Family::kSwitch, Family::kPhy})
        FreeAbandonedLock(family);
    ReturnTo(before);
}

std::string AskingText(const PendingChange& change)
{
    char seconds[32];
    std::snprintf(seconds, sizeof seconds, "%g", change.seconds);
    return std::string(
               "To keep the changes, press Enter or run 'orblinkctl config confirm' within ") +
           seconds + " s.\n";
}

// Until somebody decides: here by a key or a signal, elsewhere by a command, or nobody in time.
GuardOutcome Decision(Guard& guard, double seconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::duration<double>(seconds);
    const bool live = isatty(STDOUT_FILENO) != 0;
    bool listening = true;
    for (;;) {
        const auto left = std::chrono::duration<double>(end - Clock::now()).count();
        if (live && left > 0)
            WriteOut("\r" + std::to_string(static_cast<int>(std::ceil(left))) + " s left \r");
        pollfd sources[] = {{guard.Channel(), POLLIN, 0},
                            {listening ? STDIN_FILENO : -1, POLLIN, 0}};
        const int ready = poll(sources, 2, live ? 1000 : -1);
        if (EndRequested())
            return guard.TakeBack();
        if (ready > 0 && sources[0].revents != 0)
            return guard.Wait();
        if (ready <= 0 || sources[1].revents == 0)
            continue;
        char key = 0;
        if (read(STDIN_FILENO, &key, 1) == 1)
            return guard.Keep();
        listening = false;
    }
}

void RunGuarded(Guard& guard, const std::vector<ConfigStep>& steps)
{
    try {
        RunSteps(steps);
    } catch (Failure& failure) {
        const GuardOutcome outcome = guard.TakeBack();
        failure.text += outcome.failure.empty()
                            ? "; the changes were taken back"
                            : "; the changes could not be taken back: " + outcome.failure;
        throw;
    }
}

}  // namespace

void RunOrTakeBack(const std::vector<ConfigStep>& steps, const Model& before)
{
    try {
        RunSteps(steps);
    } catch (Failure& failure) {
        try {
            ReturnTo(before);
            failure.text += "; the changes were taken back";
        } catch (const Failure& second) {
            failure.text += "; the changes could not be taken back: " + second.text;
        }
        throw;
    }
}

bool KeptInTime(const PendingChange& change, const Model& before,
                const std::vector<ConfigStep>& steps)
{
    const CaughtEndSignals signals;
    Guard guard(change, [&] { TakeBackForAnybody(before); });
    if (CurrentSettings().format == Format::kText) {
        Model shown;
        shown["differences"] = change.differences;
        std::string text;
        PrintModel(shown, text);
        WriteOut(text);
    }
    RunGuarded(guard, steps);
    guard.StartCountdown();
    if (CurrentSettings().format == Format::kText)
        WriteOut(AskingText(change));
    const GuardOutcome outcome = Decision(guard, change.seconds);
    if (!outcome.failure.empty())
        throw Failure{kFailed, "the changes could not be taken back: " + outcome.failure};
    return outcome.kept;
}

}  // namespace ctl

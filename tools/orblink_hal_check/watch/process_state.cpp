#include "tools/orblink_hal_check/watch/process_state.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

int EntriesOf(const char* folder)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> entries{opendir(folder), closedir};
    int count = 0;
    while (entries && readdir(entries.get()) != nullptr)
        ++count;
    return count;
}

}  // namespace

ProcessUntouched::State ProcessUntouched::Now()
{
    State state{};
    std::error_code error;
    state.folder = std::filesystem::current_path(error).string();
    state.fileModeMask = umask(0);
    umask(state.fileModeMask);
    sigprocmask(SIG_BLOCK, nullptr, &state.blocked);
    for (size_t i = 1; i < state.handlers.size(); ++i) {
        struct sigaction action {};
        sigaction(static_cast<int>(i), nullptr, &action);
        state.handlers[i] = reinterpret_cast<void*>(action.sa_handler);
    }
    return state;
}

ProcessUntouched::ProcessUntouched(bool calledBefore)
    : before_(Now()),
      calledBefore_(calledBefore),
      descriptors_(EntriesOf("/proc/self/fd")),
      threads_(EntriesOf("/proc/self/task"))
{
}

ProcessUntouched::~ProcessUntouched()
{
    const State now = Now();
    const std::string call = TheWatch().call;
    const char* changed = nullptr;
    if (now.folder != before_.folder)
        changed = "the working folder";
    else if (now.fileModeMask != before_.fileModeMask)
        changed = "the file mode mask";
    else if (memcmp(&now.blocked, &before_.blocked, sizeof now.blocked) != 0)
        changed = "the blocked signals";
    else if (now.handlers != before_.handlers)
        changed = "a signal's handler";
    if (changed != nullptr)
        Report("process.changed", call + " changed " + changed);
    if (EntriesOf("/proc/self/task") > threads_)
        Report("process.thread-left", call + " left a thread behind");
    if (calledBefore_ && EntriesOf("/proc/self/fd") > descriptors_)
        Report("process.descriptor-leak", call + " left a descriptor open, not for the first time");
}

}  // namespace halcheck

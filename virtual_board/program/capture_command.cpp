#include "virtual_board/program/capture_command.h"

#include <signal.h>
#include <time.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <vector>

#include "virtual_board/board/control.h"
#include "virtual_board/board/system_failure.h"
#include "virtual_board/program/control_client.h"
#include "virtual_board/program/pcapng.h"

namespace vboard {
namespace {

constexpr timespec kPause{0, 50'000'000};

struct CloseFile {
    // What is written was flushed before.
    // cppcheck-suppress doubleFree ; it takes the operator for two calls
    void operator()(FILE* file) const { static_cast<void>(fclose(file)); }
};
using File = std::unique_ptr<FILE, CloseFile>;

class Output {
public:
    explicit Output(const std::string& path) : name_(path), file_(fopen(path.c_str(), "wbe"))
    {
        if (!file_)
            Fail(name_);
    }
    // Whole, so that who reads along finds no half records.
    void Write(const std::string& bytes)
    {
        if (fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size() ||
            fflush(file_.get()) != 0)
            Fail(name_);
    }

private:
    std::string name_;
    File file_;
};

// Waits for a moment, if at all; true when a signal says to end.
bool EndsNow(const sigset_t& signals, bool waits)
{
    constexpr timespec kNow{};
    return sigtimedwait(&signals, nullptr, waits ? &kPause : &kNow) > 0;
}

sigset_t BlockSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

std::string Record(const Json& frame)
{
    const auto bytes = frame.at("bytes").get<std::vector<uint8_t>>();
    return PcapngRecord({frame.at("timeNs"), frame.at("received"), frame.at("comment"), bytes});
}

// The answer, when it is none that refuses.
Json Ask(const std::string& path, const Json& question, int& exitCode)
{
    Json answer = AskBoard(path, question);
    exitCode = 0;
    if (!answer.value("ok", false)) {
        fprintf(stderr, "orblink-vboard: %s\n", answer.value("error", "refused").c_str());
        exitCode = answer.value("exit", kExitFailed);
    }
    return answer;
}

}  // namespace

int CaptureCommand(const std::string& socketPath, const Json& command)
{
    const sigset_t signals = BlockSignals();
    Json question = command;
    question.erase("file");
    int exitCode = 0;
    Json answer = Ask(socketPath, question, exitCode);
    if (exitCode != 0)
        return exitCode;
    Output output{command.at("file")};
    output.Write(PcapngHeader(command.at("device").get<std::string>() + ":" +
                              std::to_string(command.at("port").get<unsigned>())));
    uint64_t left = command.value("count", UINT64_MAX);
    uint64_t lost = 0;
    uint64_t kept = 0;
    for (bool ends = false; left > 0;) {
        const bool endsNow = !ends && EndsNow(signals, kept == 0);
        question["from"] = answer.at("next");
        answer = Ask(socketPath, question, exitCode);
        if (exitCode != 0)
            return exitCode;
        lost += answer.at("lost").get<uint64_t>();
        kept = answer.at("kept");
        const Json& frames = answer.at("frames");
        // What has come up to the end is written, what still comes is not.
        if (endsNow)
            left = std::min<uint64_t>(left, frames.size() + kept);
        ends = ends || endsNow;
        for (size_t i = 0; i < frames.size() && left > 0; ++i, --left)
            output.Write(Record(frames[i]));
        if (ends && frames.empty())
            break;
    }
    if (lost > 0)
        fprintf(stderr, "orblink-vboard: %llu frames came faster than they were written\n",
                static_cast<unsigned long long>(lost));
    return 0;
}

}  // namespace vboard

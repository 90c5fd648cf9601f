#include "tools/orblink_web/server/reader_process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/asio/buffer.hpp>
#include <boost/asio/read_until.hpp>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <system_error>
#include <utility>
#include <vector>

#include "tools/orblinkctl/access/unique_descriptor.h"

namespace web {

namespace {

using std::chrono::milliseconds;

// Longer than any answer of a board.
constexpr size_t kLongestMessage = size_t{32} << 20;

constexpr milliseconds kRestart{500};

struct Spawned {
    int pipe;
    pid_t process;
};

Spawned Spawn(const ReaderOptions& options)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) == -1)
        throw std::system_error(errno, std::generic_category(), "pipe");
    const ctl::UniqueDescriptor writer(ends[1]);
    Spawned spawned{ends[0], -1};
    std::vector<std::string> words = {"orblink-web", "--reader",
                                      "--registers", std::to_string(options.registerPeriod / 1000),
                                      "--log",       options.logFile};
    if (!options.namesFile.empty())
        words.insert(words.end(), {"--names", options.namesFile});
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, writer.Get(), kReaderPipe);
    const int error = posix_spawn(&spawned.process, "/proc/self/exe", &actions, nullptr,
                                  arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        close(ends[0]);
        throw std::system_error(error, std::generic_category(), "the reading process");
    }
    return spawned;
}

// Waits so long for the process; whether it has ended.
bool Reaped(pid_t process, milliseconds most, int* status)
{
    const auto end = std::chrono::steady_clock::now() + most;
    for (;;) {
        if (waitpid(process, status, WNOHANG) != 0)
            return true;
        if (std::chrono::steady_clock::now() >= end)
            return false;
        poll(nullptr, 0, 5);
    }
}

std::string Cause(int status)
{
    const std::string text = "The process that reads the board has ended: ";
    if (WIFSIGNALED(status))
        return text + strsignal(WTERMSIG(status)) + ".";
    return WEXITSTATUS(status) == 0
               ? ""
               : text + "exit code " + std::to_string(WEXITSTATUS(status)) + ".";
}

}  // namespace

ReaderProcess::ReaderProcess(boost::asio::io_context& io, const ReaderOptions& options)
    : options_(options), pipe_(io), again_(io)
{
}

ReaderProcess::~ReaderProcess()
{
    Stop();
}

void ReaderProcess::Start()
{
    const Spawned spawned = Spawn(options_);
    process_ = spawned.process;
    ++starts_;
    received_.clear();
    pipe_.assign(spawned.pipe);
    Read();
}

void ReaderProcess::Read()
{
    boost::asio::async_read_until(pipe_, boost::asio::dynamic_buffer(received_, kLongestMessage),
                                  '\n', [this](boost::system::error_code error, size_t) {
                                      if (error == boost::asio::error::operation_aborted)
                                          return;
                                      if (error)
                                          return Ended();
                                      TakeLines();
                                      Read();
                                  });
}

void ReaderProcess::TakeLines()
{
    size_t begin = 0;
    for (size_t end = 0; (end = received_.find('\n', begin)) != std::string::npos; begin = end + 1)
        if (auto message = Decoded(std::string_view(received_).substr(begin, end - begin)))
            onMessage(std::move(*message));
    received_.erase(0, begin);
}

void ReaderProcess::Ended()
{
    pipe_.close();
    int status = 0;
    if (!Reaped(process_, milliseconds(200), &status)) {
        kill(process_, SIGKILL);
        waitpid(process_, &status, 0);
    }
    process_ = -1;
    const std::string cause = Cause(status);
    onEnd(cause);
    StartLater(cause.empty() ? milliseconds(0) : kRestart);
}

void ReaderProcess::StartLater(milliseconds delay)
{
    again_.expires_after(delay);
    again_.async_wait([this](boost::system::error_code error) {
        if (error)
            return;
        try {
            Start();
        } catch (const std::system_error& failure) {
            onEnd(failure.what());
            StartLater(kRestart);
        }
    });
}

void ReaderProcess::Stop()
{
    boost::system::error_code ignored;  // what is closed and cancelled is gone in any case
    again_.cancel(ignored);
    if (process_ == -1)
        return;
    // Nobody listens any more: it ends before its next reading.
    pipe_.close(ignored);
    int status = 0;
    if (!Reaped(process_, milliseconds(330), &status)) {
        kill(process_, SIGKILL);
        waitpid(process_, &status, 0);
    }
    process_ = -1;
}

}  // namespace web

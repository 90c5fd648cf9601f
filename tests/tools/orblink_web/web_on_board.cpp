#include "tests/tools/orblink_web/web_on_board.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tests/tools/orblink_web/http_client.h"

namespace webtest {

namespace {

std::string Quoted(const std::string& text)
{
    std::string quoted = "'";
    for (const char c : text)
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

std::string BoardFile(const std::string& board)
{
    if (board.find('/') != std::string::npos)
        return board;
    return std::string(ORBLINK_SOURCE "/virtual_board/boards/") + board + ".toml";
}

}  // namespace

std::string Program(const std::string& name)
{
    return std::string(std::getenv("ORBLINK_BUILD")) + "/bin/" + name;
}

bool Eventually(const std::function<bool()>& condition, int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    while (!condition()) {
        if (Clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

Scratch::Scratch()
{
    std::string name = "/tmp/orblink-web-test.XXXXXX";
    path_ = mkdtemp(name.data());
}

Scratch::~Scratch()
{
    std::filesystem::remove_all(path_);
}

void Scratch::Write(const std::string& name, const std::string& text) const
{
    std::ofstream(Path(name)) << text;
}

void Scratch::Append(const std::string& name, const std::string& text) const
{
    std::ofstream(Path(name), std::ios::app) << text;
}

std::string Scratch::Read(const std::string& name) const
{
    std::ifstream file(Path(name));
    return {std::istreambuf_iterator<char>(file), {}};
}

Background::Background(std::vector<std::string> words, const std::string& errors)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) == -1)
        return;
    std::vector<char*> arguments;
    for (auto& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    process_ = fork();
    if (process_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        dup2(open(errors.c_str(), O_CREAT | O_WRONLY | O_APPEND, 0600), STDERR_FILENO);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    close(ends[1]);
    out_ = ends[0];
}

Background::~Background()
{
    End(SIGTERM);
    close(out_);
}

std::string Background::Line() const
{
    std::string line;
    for (char c = 0; read(out_, &c, 1) == 1 && c != '\n';)
        line += c;
    return line;
}

int Background::End(int signal, int milliseconds)
{
    if (process_ == -1)
        return -1;
    kill(process_, signal);
    int status = 0;
    const bool ended =
        Eventually([&] { return waitpid(process_, &status, WNOHANG) == process_; }, milliseconds);
    if (!ended) {
        kill(process_, SIGKILL);
        waitpid(process_, &status, 0);
    }
    process_ = -1;
    if (!ended)
        return -1;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

WebOnBoard::WebOnBoard(const std::string& board)
    : board_(std::make_unique<Background>(
          std::vector<std::string>{Program("orblink-vboard"), "serve", "--board", BoardFile(board),
                                   "--time-scale", "0.02", "--socket", scratch_.Path("board.sock")},
          scratch_.Path("board.err")))
{
    EXPECT_TRUE(Eventually([&] { return access(scratch_.Path("board.sock").c_str(), F_OK) == 0; }))
        << scratch_.Read("board.err");
}

std::string WebOnBoard::Attach() const
{
    return Program("orblink-vboard") + " attach --socket " + scratch_.Path("board.sock") +
           " -- sh -c ";
}

Outcome WebOnBoard::Run(const std::string& line) const
{
    const std::string inner = "PATH=" + Program("") + ":$PATH; " + line;
    const std::string whole = Attach() + Quoted(inner) + " >" + scratch_.Path("out") + " 2>" +
                              scratch_.Path("err") + " </dev/null";
    const int status = std::system(whole.c_str());
    return {WEXITSTATUS(status), scratch_.Read("out")};
}

void WebOnBoard::Control(const std::string& words) const
{
    const std::string line = Program("orblink-vboard") + " control --socket " +
                             scratch_.Path("board.sock") + " " + words + " >/dev/null";
    EXPECT_EQ(std::system(line.c_str()), 0) << words;
}

void WebOnBoard::BringUp() const
{
    const Outcome outcome =
        Run("orblinkctl init && for n in $(orblinkctl switch -o kv | sed -n 's/.*switch=//p'); do "
            "orblinkctl up $n || exit; done && for n in $(orblinkctl phy -o kv | "
            "sed -n 's/.*phy=//p'); do orblinkctl phy $n up || exit; done");
    EXPECT_EQ(outcome.code, 0) << outcome.out << scratch_.Read("err");
}

std::unique_ptr<Background> WebOnBoard::Start(const std::string& line) const
{
    return std::make_unique<Background>(
        std::vector<std::string>{Program("orblink-vboard"), "attach", "--socket",
                                 scratch_.Path("board.sock"), "--", "sh", "-c", line},
        scratch_.Path("started.err"));
}

void WebOnBoard::Serve(const std::string& options)
{
    web_ = Start("echo $$ >" + scratch_.Path("pid") + "; exec " + Program("orblink-web") +
                 " --listen 127.0.0.1:0 " + options);
    const std::string said = web_->Line();
    const std::string begin = "listening on http://127.0.0.1:";
    ASSERT_TRUE(said.starts_with(begin)) << said << scratch_.Read("started.err");
    port_ = std::stoi(said.substr(begin.size()));
}

pid_t WebOnBoard::ProcessId() const
{
    return static_cast<pid_t>(std::stoi(scratch_.Read("pid")));
}

bool WebOnBoard::Shows(const std::string& path, const std::string& text, int milliseconds) const
{
    return Eventually([&] { return Get(port_, path).body.find(text) != std::string::npos; },
                      milliseconds);
}

}  // namespace webtest

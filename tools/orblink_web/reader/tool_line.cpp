#include "tools/orblink_web/reader/tool_line.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "tools/orblinkctl/line/session.h"

namespace web {

namespace {

// Longer than any call takes, shorter than a reader of the page takes for a standstill.
constexpr char kBusyWait[] = "0.5";

ctl::UniqueDescriptor TakeOver(int stream, const char* name)
{
    ctl::UniqueDescriptor file(memfd_create(name, MFD_CLOEXEC));
    if (!file || dup2(file.Get(), stream) == -1)
        throw std::system_error(errno, std::generic_category(), name);
    return file;
}

std::string Taken(int descriptor)
{
    std::string text;
    char piece[4096];
    lseek(descriptor, 0, SEEK_SET);  // cannot fail: a file in memory
    for (ssize_t count = 0; (count = read(descriptor, piece, sizeof piece)) > 0;)
        text.append(piece, static_cast<size_t>(count));
    if (ftruncate(descriptor, 0) == -1)
        throw std::system_error(errno, std::generic_category(), "ftruncate");
    lseek(descriptor, 0, SEEK_SET);
    return text;
}

std::string Path(const Words& words)
{
    std::string path;
    for (const auto& word : words)
        path += (path.empty() ? "" : "/") + word;
    return path;
}

}  // namespace

ToolLine::ToolLine(std::string namesFile)
    : namesFile_(std::move(namesFile)),
      out_(TakeOver(STDOUT_FILENO, "standard output")),
      err_(TakeOver(STDERR_FILENO, "standard error"))
{
}

Answer ToolLine::Run(const Words& words)
{
    // The measured values have a text format of their own, which is the one that is asked for.
    const bool text = !words.empty() && words.front() == "metrics";
    Words line = {"--wait", kBusyWait};
    if (!text)
        line.emplace_back("--json");
    else
        line.emplace_back("--json-errors");
    if (!namesFile_.empty())
        line.insert(line.end(), {"--names", namesFile_});
    line.insert(line.end(), words.begin(), words.end());
    Answer answer;
    answer.path = Path(words);
    answer.when = MonotonicMilliseconds();
    answer.code = ctl::RunLine(line);
    std::fflush(stdout);
    std::fflush(stderr);
    answer.text = Taken(out_.Get());
    const std::string complaint = Taken(err_.Get());
    if (answer.text.empty())
        answer.text = complaint;
    return answer;
}

}  // namespace web

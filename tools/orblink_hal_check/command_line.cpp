#include "tools/orblink_hal_check/command_line.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tools/orblink_hal_check/processes/board.h"
#include "tools/orblink_hal_check/report/checks.h"
#include "tools/orblink_hal_check/report/report.h"
#include "tools/orblink_hal_check/session.h"
#include "tools/orblink_hal_check/watch/library_file.h"
#include "tools/orblink_hal_check/watch/slots.h"

namespace halcheck {

namespace {

namespace fs = std::filesystem;

enum ExitCode { kClean = 0, kFound = 1, kUsage = 2, kNotChecked = 3 };

constexpr uint64_t kLimit = 2000;    // milliseconds
constexpr int kPatience = 10000;     // milliseconds
constexpr size_t kLongestName = 31;  // of a library in board data

struct Options {
    std::string library;
    std::string board;
    std::string slot;
    std::vector<std::string> ignored;
    uint64_t limit = kLimit;
    int patience = kPatience;
    uint32_t counters = 0;
    bool json = false;
    bool tap = false;
    bool junit = false;
    bool list = false;
    std::string session;
};

int Complain(const std::string& what)
{
    fprintf(stderr, "orblink-hal-check: %s\n", what.c_str());
    return kNotChecked;
}

// A folder that goes with the object.
class Scratch {
public:
    Scratch()
    {
        std::error_code error;
        std::string name = (fs::temp_directory_path(error) / "orblink-hal-check.XXXXXX").string();
        if (mkdtemp(name.data()) != nullptr)
            path_ = name;
    }
    ~Scratch()
    {
        std::error_code error;
        if (!path_.empty())
            fs::remove_all(path_, error);
    }
    Scratch(const Scratch&) = delete;
    Scratch& operator=(const Scratch&) = delete;

    bool Exists() const { return !path_.empty(); }
    std::string Path(const char* name) const { return (path_ / name).string(); }

private:
    fs::path path_;
};

std::string ReadAll(const std::string& path)
{
    std::ifstream file{path};
    return {std::istreambuf_iterator<char>(file), {}};
}

// Where the loader finds the library under the name that the board data give.
std::string PlaceLibrary(const fs::path& library, const Scratch& scratch)
{
    std::error_code error;
    std::string name = library.filename().string();
    fs::path folder = library.parent_path();
    if (name.size() > kLongestName) {
        name = "hal.so";
        fs::create_symlink(library, scratch.Path("hal.so"), error);
        folder = fs::path(scratch.Path("hal.so")).parent_path();
    }
    const char* const before = getenv("LD_LIBRARY_PATH");
    const std::string path =
        folder.string() + (before != nullptr && before[0] != '\0' ? std::string(":") + before : "");
    setenv("LD_LIBRARY_PATH", path.c_str(), 1);
    return name;
}

void FindInFile(const fs::path& path, const LibraryFile& file, Result& result)
{
    if (path.filename().string().size() > kLongestName)
        result.Add("library.name-too-long", "",
                   path.filename().string() + " has " +
                       std::to_string(path.filename().string().size()) + " characters");
    for (const std::string& function : file.apiFunctions)
        result.Add("library.calls-api", "", "it imports " + function);
}

std::vector<std::string> SessionCommand(const Options& options, const std::string& name,
                                        const std::string& resultFile)
{
    std::error_code error;
    std::vector<std::string> words{fs::read_symlink("/proc/self/exe", error).string(),
                                   "--session=" + resultFile,
                                   "--limit=" + std::to_string(options.limit),
                                   "--patience=" + std::to_string(options.patience),
                                   "--counters-size=" + std::to_string(options.counters)};
    if (!options.slot.empty())
        words.push_back("--slot=" + options.slot);
    words.push_back(name);
    return words;
}

// The exit code: the given one, unless nobody can read the text.
int Print(const std::string& text, int code)
{
    return fputs(text.c_str(), stdout) >= 0 && fflush(stdout) == 0
               ? code
               : Complain(std::string("cannot write the output: ") + strerror(errno));
}

std::string ReportText(const Options& options, const Result& result)
{
    return options.json    ? JsonReport(result)
           : options.tap   ? TapReport(result)
           : options.junit ? JunitReport(result)
                           : TextReport(result);
}

int CheckOnBoard(const Options& options, const fs::path& path, const LibraryFile& file,
                 const Scratch& scratch)
{
    const std::string name = PlaceLibrary(path, scratch);
    const BoardWish wish{name, file.hasSwitchTable, file.hasPhyTable};
    std::string complaint;
    const auto board = options.board.empty() ? std::optional<std::string>{OwnBoard(wish)}
                                             : BoardOfFile(options.board, wish, complaint);
    if (!board)
        return Complain(complaint);
    std::ofstream{scratch.Path("board.toml")} << *board;
    const std::string resultFile = scratch.Path("result.json");
    const int code = RunOnBoard(scratch.Path("board.toml"),
                                SessionCommand(options, name, resultFile), scratch.Path("errors"));
    const auto json = nlohmann::json::parse(ReadAll(resultFile), nullptr, false);
    if (code != 0 || json.is_discarded()) {
        fputs(ReadAll(scratch.Path("errors")).c_str(), stderr);
        return Complain(options.library + " could not be checked");
    }
    Result result = FromJson(json);
    result.library = options.library;
    FindInFile(path, file, result);
    std::erase_if(result.findings, [&](const Finding& finding) {
        return std::ranges::find(options.ignored, finding.check) != options.ignored.end() ||
               (!options.slot.empty() && !finding.slot.empty() && finding.slot != options.slot);
    });
    return Print(ReportText(options, result), result.findings.empty() ? kClean : kFound);
}

int CheckLibrary(const Options& options)
{
    std::error_code error;
    const fs::path path = fs::absolute(options.library, error);
    const LibraryFile file = ReadLibraryFile(path.string());
    if (!file.complaint.empty())
        return Complain(options.library + ": " + file.complaint);
    if (getenv("ORBLINK_VBOARD") != nullptr)
        return Complain("this is a virtual board already, and the check needs one of its own");
    // The command gets them too and ends; then the folder can go.
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        std::signal(signal, SIG_IGN);
    const Scratch scratch;
    return scratch.Exists() ? CheckOnBoard(options, path, file, scratch)
                            : Complain("there is no folder for temporary files");
}

std::string CheckSlot(const std::string& name)
{
    return IsSlot(name) ? "" : "'" + name + "' is no slot";
}

std::string CheckId(const std::string& id)
{
    return IsCheck(id) ? "" : "'" + id + "' is no check; --list shows them";
}

void Describe(CLI::App& app, Options& options)
{
    app.add_option("LIBRARY", options.library, "the HAL library");
    app.add_option(
           "--board", options.board,
           "a board file whose devices the library is to drive; without one it gets a board "
           "of one device")
        ->type_name("FILE");
    app.add_option("--slot", options.slot, "call this slot alone, beside the bring-up")
        ->type_name("NAME")
        ->check(CLI::Validator(CheckSlot, "", ""));
    app.add_option("--ignore", options.ignored, "leave out findings of this check; may be repeated")
        ->type_name("ID")
        ->expected(1)
        ->check(CLI::Validator(CheckId, "", ""));
    app.add_option("--limit", options.limit,
                   "milliseconds that a slot may hold the lock, waits included (2000)")
        ->type_name("MS")
        ->check(CLI::Range(1, 3'600'000));
    app.add_option("--patience", options.patience,
                   "milliseconds until a call counts as hanging (10000)")
        ->type_name("MS")
        ->check(CLI::Range(10, 3'600'000));
    app.add_option("--counters-size", options.counters,
                   "bytes of the counters that the library fills; not known by default")
        ->type_name("BYTES")
        ->check(CLI::Range(0, 1 << 20));
    auto* const formats = app.add_option_group("Report");
    formats->add_flag("--json", options.json, "as JSON");
    formats->add_flag("--tap", options.tap, "as TAP");
    formats->add_flag("--junit", options.junit, "as JUnit XML");
    formats->require_option(0, 1);
    app.add_flag("--list", options.list, "show the checks and what they mean");
    app.add_option("--session", options.session, "")->group("");
    app.set_version_flag("--version",
                         std::string("orblink-hal-check ") + ORBLINK_HAL_CHECK_VERSION);
}

int Run(int argc, char** argv)
{
    Options options;
    CLI::App app("Checks a HAL library against the contract of its slots, on a virtual board.",
                 "orblink-hal-check");
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        std::ostringstream text;
        const int code = app.exit(wish, text);
        return Print(text.str(), code);
    } catch (const CLI::ParseError& error) {
        fprintf(stderr, "orblink-hal-check: %s\n", error.what());
        return kUsage;
    }
    if (options.list)
        return Print(ListOfChecks(), kClean);
    if (options.library.empty()) {
        fprintf(stderr, "orblink-hal-check: LIBRARY is missing\n");
        return kUsage;
    }
    if (!options.session.empty())
        return RunSession({options.library, options.slot, options.limit * 1000, options.patience,
                           options.counters, options.session});
    return CheckLibrary(options);
}

}  // namespace

int RunCommandLine(int argc, char** argv)
{
    try {
        return Run(argc, argv);
    } catch (const std::exception& error) {
        return Complain(error.what());
    }
}

}  // namespace halcheck

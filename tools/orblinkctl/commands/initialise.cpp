#include "tools/orblinkctl/commands/initialise.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <optional>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/access/unique_descriptor.h"
#include "tools/orblinkctl/commands/recovery.h"
#include "tools/orblinkctl/facts/board_data_sorter.h"
#include "tools/orblinkctl/facts/board_model.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/terminal.h"

namespace ctl {

namespace {

using Clock = std::chrono::steady_clock;

// So long nobody wonders why nothing happens.
constexpr std::chrono::milliseconds kSilence{1000};

std::string FamilyText(Family family)
{
    return std::string("the ") + NamesOf(family).name + " family";
}

// One line says it; the library's own are for -v.
void RequireHals(Family family)
{
    for (const std::string beginning : {"dlopen failed, ", "dlsym failed, "}) {
        const std::string line = LineWith(beginning);
        if (line.empty())
            continue;
        DropHeldLogLines();
        throw Failure{kFailed, FamilyText(family) +
                                   ": a HAL library that the board data name cannot be "
                                   "loaded: " +
                                   line.substr(line.find(beginning) + beginning.size())};
    }
}

std::string SecondsText(double seconds)
{
    char text[32];
    std::snprintf(text, sizeof text, "%g s", seconds);
    return text;
}

int CallLibrary(Family family, bool defaults)
{
    return family == Family::kSwitch ? ORBLINK_InitOnce(defaults ? 1 : 0) : ETHPHY_InitOnce();
}

unsigned CountDevices(Family family)
{
    uint8_t count = 0;
    if (family == Family::kSwitch)
        Check(ORBLINK_GetNumOfSwitches(&count), "board", "ORBLINK_GetNumOfSwitches");
    else
        Check(ETHPHY_GetNumOfPhys(&count), "board", "ETHPHY_GetNumOfPhys");
    return count;
}

// The mailbox client tells its story on standard output, where only the command's own output
// belongs. False when no board data came, or none that the library could take: it then goes on
// without devices.
bool RunLibrary(Family family, bool defaults)
{
    StdoutCapture capture;
    const int result = CallLibrary(family, defaults);
    const std::string story = capture.Text();
    if (CurrentSettings().verbosity > 0)
        std::fputs(story.c_str(), stderr);
    const bool bad = LogSaid("Bad message") || LogSaid("Unsupported message type");
    RequireHals(family);
    Check(result, "board", family == Family::kSwitch ? "ORBLINK_InitOnce" : "ETHPHY_InitOnce");
    const BoardDataSorter* const sorter = CurrentSorter();
    const bool came = story.find("successfully received") != std::string::npos ||
                      (sorter != nullptr && sorter->HandedOver());
    return came && !bad;
}

Model RunHere(Family family, bool defaults)
{
    const bool came = RunLibrary(family, defaults);
    Model model;
    model["family"] = family == Family::kPhy ? "phy" : "switch";
    model["devices"] = CountDevices(family);
    if (!came && model["devices"] == 0)
        throw Failure{kFailed, FamilyText(family) +
                                   " is initialised, but without devices: no good board data came "
                                   "over the mailbox (-v shows the exchange)"};
    model["mac_addresses"] = MacAddresses();
    return model;
}

// {"model"} or {"code", "text"}, and the library's "lines".
std::string Report(Family family, bool defaults)
{
    Model report;
    try {
        report["model"] = RunHere(family, defaults);
    } catch (const Failure& failure) {
        report["code"] = failure.code;
        report["text"] = failure.text;
    }
    report["lines"] = HeldLogLines();
    return report.dump(-1, ' ', false, Model::error_handler_t::replace);
}

[[noreturn]] void RunChild(int output, Family family, bool defaults)
{
    // The parent decides about the end.
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        std::signal(number, SIG_IGN);
    if (BoardDataSorter* const sorter = CurrentSorter())
        sorter->SortFor(family);
    const std::string report = Report(family, defaults);
    for (size_t done = 0; done < report.size();) {
        const ssize_t count = write(output, report.data() + done, report.size() - done);
        if (count < 0)
            _exit(kFailed);
        done += static_cast<size_t>(count);
    }
    _exit(kDone);
}

// The initialising process and what it has said so far.
class Initialiser {
public:
    Initialiser(Family family, bool defaults) : family_(family)
    {
        int ends[2];
        if (pipe2(ends, O_CLOEXEC) != 0)
            throw Failure{kFailed, std::string("pipe: ") + std::strerror(errno)};
        input_ = UniqueDescriptor(ends[0]);
        const UniqueDescriptor output(ends[1]);
        child_ = fork();
        if (child_ < 0)
            throw Failure{kFailed, std::string("fork: ") + std::strerror(errno)};
        if (child_ == 0)
            RunChild(output.Get(), family, defaults);
    }

    // Nothing when the report did not come in time.
    std::optional<std::string> Wait(double seconds)
    {
        const auto start = Clock::now();
        const auto end = start + std::chrono::duration_cast<Clock::duration>(
                                     std::chrono::duration<double>(seconds));
        bool told = CurrentSettings().quiet;
        while (!ReadSome(told ? end : std::min(end, start + kSilence))) {
            if (EndRequested()) {
                GiveUp();
                throw Failure{kFailed,
                              FamilyText(family_) + ": interrupted; what was made is undone"};
            }
            if (Clock::now() >= end) {
                GiveUp();
                return std::nullopt;
            }
            if (!told && Clock::now() >= start + kSilence)
                std::fprintf(stderr,
                             "orblinkctl: %s waits for board data from the application "
                             "CPU, %s at most\n",
                             FamilyText(family_).c_str(), SecondsText(seconds).c_str());
            told = told || Clock::now() >= start + kSilence;
        }
        waitpid(child_, nullptr, 0);
        return report_;
    }

private:
    // True at the end of the report.
    bool ReadSome(Clock::time_point until)
    {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now());
        pollfd source{input_.Get(), POLLIN, 0};
        if (poll(&source, 1, static_cast<int>(std::max<int64_t>(0, left.count()))) <= 0)
            return false;
        char buffer[4096];
        const ssize_t count = read(input_.Get(), buffer, sizeof buffer);
        if (count > 0)
            report_.append(buffer, static_cast<size_t>(count));
        return count == 0;
    }

    void GiveUp()
    {
        kill(child_, SIGKILL);  // result dropped: it may have ended
        waitpid(child_, nullptr, 0);
        UndoInitialisation(family_);
    }

    Family family_;
    UniqueDescriptor input_;
    pid_t child_ = -1;
    std::string report_;
};

}  // namespace

std::string NoAnswerText()
{
    return "no board data came from the application CPU within " +
           SecondsText(CurrentSettings().wait) + "; what was made is undone";
}

std::optional<Model> InitialiseFamily(Family family, bool defaults)
{
    const CaughtEndSignals signals;
    const auto text = Initialiser(family, defaults).Wait(CurrentSettings().wait);
    if (!text)
        return std::nullopt;
    const Model report = Model::parse(*text, nullptr, false);
    if (report.is_discarded() || !report.is_object())
        throw Failure{kFailed, FamilyText(family) + ": the initialising process has ended early"};
    if (report.contains("model"))
        return report["model"];
    HoldLogLines(report["lines"].get<std::vector<std::string>>());
    throw Failure{static_cast<ExitCode>(report["code"].get<int>()),
                  report["text"].get<std::string>()};
}

}  // namespace ctl

#include "tools/orblink_hal_check/processes/board.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <toml++/toml.h>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

#include "toml/text_check.h"

namespace halcheck {

namespace {

constexpr char kTimeScale[] = "0.001";
constexpr int kNotStarted = 127;
constexpr int kSignal = 128;

constexpr char kSwitch[] = R"(
[[switch]]
hal = "$"
serdes = 0
reset_pin = 18
mdio_bus = 0
mdio_address = 16
internal_mode = "HSGMII"
internal_speed = "2.5G"
links_up = [1, 2]
)";

constexpr char kPhy[] = R"(
[[phy]]
hal = "$"
serdes = 1
reset_pin = 19
mdio_bus = 0
mdio_address = 4
port_mode = "SGMII"
)";

std::string Named(std::string text, const std::string& name)
{
    return text.replace(text.find('$'), 1, name);
}

// The one beside this program, or else the one in the path.
std::string Vboard()
{
    std::error_code error;
    const auto self = std::filesystem::read_symlink("/proc/self/exe", error);
    const auto beside = self.parent_path() / "orblink-vboard";
    return std::filesystem::exists(beside, error) ? beside.string() : "orblink-vboard";
}

// The signals that end this program at a terminal end the command, which it waits for.
int Spawn(std::vector<std::string> words, const std::string& errors)
{
    std::vector<char*> arguments;
    for (std::string& word : words)
        arguments.push_back(word.data());
    arguments.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(),
                                     O_WRONLY | O_CREAT | O_APPEND, S_IRUSR | S_IWUSR);
    sigset_t ending;
    sigemptyset(&ending);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT})
        sigaddset(&ending, signal);
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);
    posix_spawnattr_setsigdefault(&attributes, &ending);
    pid_t process = -1;
    const int failed =
        posix_spawnp(&process, arguments[0], &actions, &attributes, arguments.data(), environ);
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    if (failed != 0 || waitpid(process, &status, 0) != process)
        return kNotStarted;
    return WIFEXITED(status) ? WEXITSTATUS(status) : kSignal + WTERMSIG(status);
}

// The devices of a family get the library, or go.
bool Give(toml::table& board, const char* key, bool wanted, const std::string& hal)
{
    toml::array* const devices = board[key].as_array();
    if (!wanted || devices == nullptr) {
        board.erase(key);
        return !wanted;
    }
    for (toml::node& device : *devices)
        if (toml::table* const table = device.as_table(); table != nullptr)
            table->insert_or_assign("hal", hal);
    return !devices->empty();
}

}  // namespace

std::string OwnBoard(const BoardWish& wish)
{
    return "name = \"HAL check\"\n"
           "mac_addresses = [\"02:00:5e:00:00:01\", \"02:00:5e:00:00:02\", \"02:00:5e:00:00:03\", "
           "\"02:00:5e:00:00:04\", \"02:00:5e:00:00:05\"]\n" +
           (wish.hasSwitches ? Named(kSwitch, wish.hal) : "") +
           (wish.hasPhys ? Named(kPhy, wish.hal) : "");
}

std::optional<std::string> BoardOfFile(const std::string& path, const BoardWish& wish,
                                       std::string& complaint)
{
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error) ||
        std::filesystem::file_size(path, error) > toml_text::kLongestFile) {
        complaint = path + " is no board file";
        return std::nullopt;
    }
    std::ifstream file{path};
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    if (const auto wrong = toml_text::Check(text)) {
        complaint = path + ":" + std::to_string(wrong->line) + ": " + wrong->what;
        return std::nullopt;
    }
    try {
        toml::table board = toml::parse(text, path);
        board.erase("mailbox_order");
        if (!Give(board, "switch", wish.hasSwitches, wish.hal) ||
            !Give(board, "phy", wish.hasPhys, wish.hal)) {
            complaint = path + " has no device for this library";
            return std::nullopt;
        }
        std::ostringstream changed;
        changed << board;
        return changed.str();
    } catch (const toml::parse_error& wrong) {
        complaint = path + ":" + std::to_string(wrong.source().begin.line) + ": " +
                    std::string(wrong.description());
        return std::nullopt;
    }
}

int RunOnBoard(const std::string& boardFile, const std::vector<std::string>& command,
               const std::string& errors)
{
    std::vector<std::string> words{Vboard(),       "run",      "--board", boardFile,
                                   "--time-scale", kTimeScale, "--"};
    words.insert(words.end(), command.begin(), command.end());
    return Spawn(words, errors);
}

void TeachAddresses(int devIdx)
{
    const std::string name = "sw" + std::to_string(devIdx);
    for (const char* address : {"02:00:00:00:00:21", "02:00:00:00:00:22"})
        Spawn({Vboard(), "control", "learn", name + ":1", address}, "/dev/null");
}

}  // namespace halcheck

#include "tests/virtual_board/program/vboard_process.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vboard_test {
namespace {

std::string BuildDir()
{
    const char* given = getenv("ORBLINK_BUILD");
    if (given != nullptr)
        return given;
    return std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path();
}

}  // namespace

Outcome Shell(const std::string& script)
{
    setenv("VBOARD", (BuildDir() + "/bin/orblink-vboard").c_str(), 1);
    setenv("RUN", (BuildDir() + "/bin/orblink-vboard run").c_str(), 1);
    setenv("CLIENT", (BuildDir() + "/tests/vboard_client").c_str(), 1);
    setenv("OTHER", (BuildDir() + "/tests/vboard_client_other").c_str(), 1);
    setenv("PLAIN", (BuildDir() + "/tests/plain_container").c_str(), 1);
    setenv("BOARDS", ORBLINK_BOARDS, 1);
    std::string path = TemporaryPath("script");
    std::ofstream{path} << script;
    FILE* pipe = popen(("sh " + path + " 2>&1").c_str(), "r");
    Outcome outcome{-1, {}};
    char part[4096];
    for (size_t size = 0; (size = fread(part, 1, sizeof part, pipe)) > 0;)
        outcome.output.append(part, size);
    int status = pclose(pipe);
    if (WIFEXITED(status))
        outcome.status = WEXITSTATUS(status);
    return outcome;
}

Outcome OnBoard(const std::string& board, const std::string& script, const std::string& options)
{
    std::string path = TemporaryPath("inner");
    std::ofstream{path} << script;
    return Shell("exec $RUN --board $BOARDS/" + board + " " + options + " -- sh " + path);
}

std::optional<std::string> AsOrdinaryUser()
{
    if (geteuid() != 0)
        return "";
    const std::string drop = "setpriv --reuid 65534 --regid 65534 --clear-groups ";
    const std::string can = "test -x $VBOARD -a -x $CLIENT -a -r $BOARDS/phy.toml";
    return Shell(drop + can).status == 0 ? std::optional{drop} : std::nullopt;
}

bool NamespacesAreRefused()
{
    return Shell("$RUN --isolation namespaces --board $BOARDS/no_devices.toml -- true").status != 0;
}

std::string Printed(const Outcome& outcome)
{
    std::string output = outcome.output;
    for (const char* said : {"orblink-vboard: board \"", "orblink-vboard: without CAP_SYS_ADMIN"}) {
        size_t start = 0;
        while ((start = output.find(said)) != std::string::npos)
            output.erase(start, output.find('\n', start) + 1 - start);
    }
    return output;
}

std::string TemporaryPath(const std::string& name)
{
    static std::string directory = [] {
        std::string pattern = "/tmp/vboard_test.XXXXXX";
        return std::string(mkdtemp(pattern.data()));
    }();
    static struct Remover {
        ~Remover() { std::filesystem::remove_all(directory); }
    } remover;
    std::filesystem::permissions(directory, std::filesystem::perms(0755));
    return directory + "/" + name;
}

}  // namespace vboard_test

#include "virtual_board/program/environment.h"

#include <cstdlib>

#include "virtual_board/board/wire.h"

namespace vboard {
namespace {

// ifconfig and its kin are there, and on the real board everybody finds them.
constexpr const char* kAdministratorsPrograms[] = {"/usr/sbin", "/sbin"};

bool Names(const std::string& path, const std::string& directory)
{
    return (":" + path + ":").find(":" + directory + ":") != std::string::npos;
}

}  // namespace

void SetEnvironment(const std::string& socketPath)
{
    setenv(wire::kSocketVariable, socketPath.c_str(), 1);
    const char* before = getenv("PATH");
    std::string path = before != nullptr ? before : "/usr/local/bin:/usr/bin:/bin";
    for (const char* directory : kAdministratorsPrograms)
        if (!Names(path, directory))
            path.append(":").append(directory);
    setenv("PATH", path.c_str(), 1);
}

}  // namespace vboard

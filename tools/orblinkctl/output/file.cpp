#include "tools/orblinkctl/output/file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "tools/orblinkctl/facts/failure.h"

namespace ctl {

void WriteOut(const std::string& text)
{
    if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
        throw Failure{kFailed, std::string("cannot write the output: ") + std::strerror(errno)};
}

void ReplaceFile(const std::string& path, const std::string& text)
{
    const std::string unfinished = path + ".unfinished";
    {
        std::ofstream file(unfinished, std::ios::binary);
        file << text << std::flush;
        if (!file)
            throw Failure{kFailed, unfinished + ": " + std::strerror(errno)};
    }
    if (std::rename(unfinished.c_str(), path.c_str()) != 0)
        throw Failure{kFailed, path + ": " + std::strerror(errno)};
}

}  // namespace ctl

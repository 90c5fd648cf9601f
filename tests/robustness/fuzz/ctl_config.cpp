// A configuration file of orblinkctl; what can be read is no different from itself.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <nlohmann/json.hpp>
#include <string>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/config/config_model.h"

namespace {

// A file in memory.
class File {
public:
    explicit File(std::string_view text) : fd_(memfd_create("config", 0))
    {
        if (fd_ < 0 || write(fd_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
            std::abort();
    }
    ~File() { close(fd_); }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    std::string Path() const { return "/proc/self/fd/" + std::to_string(fd_); }

private:
    int fd_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    File file{{reinterpret_cast<const char*>(data), size}};
    try {
        ctl::Model config = ctl::ReadConfig(file.Path());
        if (!ctl::Differences(config, config).empty())
            std::abort();
    } catch (const ctl::Failure&) {  // no configuration
    }
    return 0;
}

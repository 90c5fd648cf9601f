#include "tests/support/played_files.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "tests/support/interpose.h"
#include "tests/support/scripted_platform.h"

namespace obtest {
namespace {

constexpr const char* kSystemState =
    "/sys/bus/acpi/drivers/Kova ACPI driver/VQR34DB:00/system_state";
constexpr const char* kResetAttributes[] = {
    "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:00/sgmii0_reset",
    "/sys/devices/pci0000:00/0000:00:0d.0/VQR351B:01/sgmii1_reset"};

ssize_t WriteAttribute(void* cookie, const char* data, size_t size)
{
    const char* path = static_cast<const char*>(cookie);
    Platform().transcript.Add(
        Text("sys write(%s, \"%.*s\")", strrchr(path, '/') + 1, static_cast<int>(size), data));
    long result = 0;
    // A cookie reports a failed write as 0 bytes taken.
    return Platform().TakesFailure("fwrite", result) ? 0 : static_cast<ssize_t>(size);
}

FILE* SystemStateStream()
{
    if (!Platform().systemState.has_value()) {
        errno = ENOENT;
        return nullptr;
    }
    FILE* stream = tmpfile();
    fputs(Platform().systemState->c_str(), stream);
    rewind(stream);
    return stream;
}

}  // namespace

int PlayedDescriptor()
{
    return ::open("/dev/null", O_RDWR);
}

FILE* PlayedAttribute(const std::string& path)
{
    if (path == kSystemState)
        return SystemStateStream();
    for (const char* attribute : kResetAttributes)
        if (path == attribute)
            return fopencookie(
                // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): WriteAttribute() reads it
                const_cast<char*>(attribute), "w",
                {.read = nullptr, .write = WriteAttribute, .seek = nullptr, .close = nullptr});
    errno = ENOENT;
    return nullptr;
}

std::string ScriptedLibraryPath(const std::string& which)
{
    return which.find('/') != std::string::npos
               ? which
               : OBTEST_LIBRARY_DIR "/libscripted_hal_" + which + ".so";
}

}  // namespace obtest

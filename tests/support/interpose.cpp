#include "tests/support/interpose.h"

#include <link.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>

namespace obtest {
namespace {

struct Range {
    uintptr_t from = 0;
    uintptr_t to = 0;
};

int FindLibrary(dl_phdr_info* info, size_t, void* data)
{
    if (strstr(info->dlpi_name, "/liborblink.so") == nullptr)
        return 0;
    auto& range = *static_cast<Range*>(data);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& header = info->dlpi_phdr[i];
        if (header.p_type == PT_LOAD && (header.p_flags & PF_X) != 0) {
            range.from = info->dlpi_addr + header.p_vaddr;
            range.to = range.from + header.p_memsz;
        }
    }
    return 1;
}

// What the library's own start-up and end do (writing coverage data, say) is none of the script's.
bool programHasEnded = false;
struct ProgramEnd {
    ~ProgramEnd() { programHasEnded = true; }
} programEnd;

}  // namespace

bool FromLibrary(const void* returnAddress)
{
    if (programHasEnded)
        return false;
    // Calls before the library is mapped (by a sanitizer's start-up, say) find an empty range.
    static Range range;
    if (range.to == 0)
        dl_iterate_phdr(FindLibrary, &range);
    const auto address = reinterpret_cast<uintptr_t>(returnAddress);
    return address >= range.from && address < range.to;
}

std::string Text(const char* format, ...)
{
    char text[4096];
    va_list args;
    va_start(args, format);
    vsnprintf(text, sizeof(text), format, args);
    va_end(args);
    return text;
}

}  // namespace obtest

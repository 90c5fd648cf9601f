#include "common/hal_library.h"

#include <dlfcn.h>

#include <cerrno>

namespace orblink {
namespace {

const char* LoaderWords()
{
    const char* const words = dlerror();
    return words != nullptr ? words : "";
}

// Of values that come in: a constant with an address in it is one more page that the loader writes.
HalLibrary NotLoaded(HalStep failed, int error, const char* reason)
{
    return {nullptr, failed, error, reason};
}

}  // namespace

HalLibrary LoadHalLibrary(const char* name, const char* tableSymbol)
{
    if (name[0] == '\0')  // dlopen would open the program itself
        return NotLoaded(HalStep::kOpen, ENOENT, "the library has no name");
    void* const library = dlopen(name, RTLD_NOW);
    if (library == nullptr) {
        const int error = errno;
        return NotLoaded(HalStep::kOpen, error, LoaderWords());
    }
    const void* const table = dlsym(library, tableSymbol);
    if (table == nullptr) {
        const int error = errno;
        // cppcheck-suppress resourceLeak ; it stays for the life of the process
        return NotLoaded(HalStep::kSymbol, error, LoaderWords());
    }
    // cppcheck-suppress resourceLeak ; as above
    return {table, HalStep::kDone, 0, ""};
}

}  // namespace orblink

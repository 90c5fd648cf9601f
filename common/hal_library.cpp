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

}  // namespace

HalLibrary LoadHalLibrary(const char* name, const char* tableSymbol)
{
    if (name[0] == '\0')  // dlopen would open the program itself
        return {nullptr, HalStep::kOpen, ENOENT, "the library has no name"};
    void* const library = dlopen(name, RTLD_NOW);
    if (library == nullptr) {
        const int error = errno;
        return {nullptr, HalStep::kOpen, error, LoaderWords()};
    }
    const void* const table = dlsym(library, tableSymbol);
    if (table == nullptr) {
        const int error = errno;
        // cppcheck-suppress resourceLeak ; it stays for the life of the process
        return {nullptr, HalStep::kSymbol, error, LoaderWords()};
    }
    // cppcheck-suppress resourceLeak ; as above
    return {table, HalStep::kDone, 0, ""};
}

}  // namespace orblink

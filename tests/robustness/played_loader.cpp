// The dynamic loader as the library meets it: looking a table up can fail, and a failure can come
// without words.
#include <dlfcn.h>

#include "tests/support/interpose.h"
#include "tests/support/scripted_platform.h"

namespace obtest {
namespace {

#ifdef __x86_64__
constexpr const char* kVersion = "GLIBC_2.2.5";
#else
constexpr const char* kVersion = "GLIBC_2.0";
#endif

// dlsym itself cannot be looked up by dlsym.
template <typename Function>
Function* RealLoader(const char* name)
{
    return reinterpret_cast<Function*>(dlvsym(RTLD_NEXT, name, kVersion));
}

using LookUp = void*(void*, const char*);
using Explain = char*();

// Others call them before they are set. Looking one up forgets what dlerror would have said, so it
// is done early.
LookUp* realLookUp = RealLoader<LookUp>("dlsym");
Explain* realExplain = RealLoader<Explain>("dlerror");

bool refused = false;  // the failure that dlerror has to tell of is a played one

}  // namespace

OB_INTERPOSE(void*, dlsym, void* library, const char* name)
{
    if (realLookUp == nullptr)
        realLookUp = RealLoader<LookUp>("dlsym");
    if (!OB_FROM_LIBRARY)
        return realLookUp(library, name);
    Platform().transcript.Add(Text("sys dlsym(%s)", name));
    long result = 0;
    refused = Platform().TakesFailure("dlsym", result);
    return refused ? nullptr : realLookUp(library, name);
}

OB_INTERPOSE(char*, dlerror)
{
    if (realExplain == nullptr)
        realExplain = RealLoader<Explain>("dlerror");
    if (!OB_FROM_LIBRARY)
        return realExplain();
    static char words[] = "the table was not found";
    char* const said = refused ? words : realExplain();
    refused = false;
    long result = 0;
    return Platform().TakesFailure("dlerror", result) ? nullptr : said;
}

}  // namespace obtest

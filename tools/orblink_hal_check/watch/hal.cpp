#include "tools/orblink_hal_check/watch/hal.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>

namespace halcheck {

namespace {

void* loadedLibrary = nullptr;
void* foundTables[2] = {};

bool MakeWritable(void* table, size_t size)
{
    const auto page = static_cast<uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto before = reinterpret_cast<uintptr_t>(table) & (page - 1);
    return mprotect(static_cast<char*>(table) - before, before + size, PROT_READ | PROT_WRITE) == 0;
}

template <typename Table>
void KeepReal(const void* table)
{
    memcpy(&RealTable<Table>(), table, sizeof(Table));
}

}  // namespace

bool LoadHal(const std::string& name, std::string& complaint)
{
    loadedLibrary = dlopen(name.c_str(), RTLD_NOW);
    if (loadedLibrary == nullptr) {
        complaint = dlerror();
        return false;
    }
    for (Family family : kFamilies)
        foundTables[family == Family::kPhy] = dlsym(loadedLibrary, TableSymbol(family));
    if (foundTables[0] != nullptr || foundTables[1] != nullptr)
        return true;
    complaint = name + " has neither OBHAL_HalFuncs nor ETHPHY_HalFuncs";
    return false;
}

void* FindTable(Family family)
{
    return foundTables[family == Family::kPhy];
}

size_t SizeOfTable(Family family)
{
    Dl_info info;
    void* symbol = nullptr;
    if (dladdr1(FindTable(family), &info, &symbol, RTLD_DL_SYMENT) == 0 || symbol == nullptr)
        return 0;
    return static_cast<const ElfW(Sym)*>(symbol)->st_size;
}

bool IsCode(const void* address)
{
    const std::unique_ptr<FILE, int (*)(FILE*)> maps{fopen("/proc/self/maps", "re"), fclose};
    const auto wanted = reinterpret_cast<uintptr_t>(address);
    char line[512];
    while (maps && fgets(line, sizeof line, maps.get()) != nullptr) {
        unsigned long begin = 0;
        unsigned long end = 0;
        char rights[5] = {};
        // NOLINTNEXTLINE(cert-err34-c): the kernel's numbers are in range
        if (sscanf(line, "%lx-%lx %4s", &begin, &end, rights) == 3 && wanted >= begin &&
            wanted < end)
            return rights[2] == 'x';
    }
    return false;
}

bool WatchTable(Family family)
{
    auto** const slots = static_cast<void (**)()>(FindTable(family));
    if (family == Family::kSwitch)
        KeepReal<SwitchTable>(slots);
    else
        KeepReal<PhyTable>(slots);
    const auto watched = SlotsOf(family);
    if (!MakeWritable(slots, watched.size_bytes() / sizeof(Slot) * sizeof(void (*)())))
        return false;
    for (size_t i = 0; i < watched.size(); ++i)
        if (slots[i] != nullptr)
            slots[i] = watched[i].watched;
    return true;
}

}  // namespace halcheck

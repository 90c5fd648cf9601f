// What a process that has called one family, or each, holds because of the library: pages of its own,
// stack, heap. One "name value" line each; fails when an operation has taken memory from the heap.
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <sys/wait.h>
#include <unistd.h>

#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/call_classes.h"
#include "platform/ob_platform.h"

namespace {

constexpr uintptr_t kPageSize = 4096;
constexpr size_t kStackSize = size_t{256} * 1024;
constexpr uint8_t kPaint = 0xA5;

int allocations;
alignas(kPageSize) uint8_t stack[kStackSize];

// A set of pages of the library's writable parts, in their order.
using Pages = uint64_t;
constexpr size_t kMaxPages = 64;

struct PageNumbers {
    uintptr_t number[kMaxPages];
    size_t count = 0;
};

// The writable parts of liborblink.so.0.
int FindWritable(dl_phdr_info* info, size_t, void* out)
{
    if (strstr(info->dlpi_name, "liborblink.so") == nullptr)
        return 0;
    auto& found = *static_cast<PageNumbers*>(out);
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type != PT_LOAD || (part.p_flags & PF_W) == 0)
            continue;
        const uintptr_t begin = info->dlpi_addr + part.p_vaddr;
        for (uintptr_t page = begin / kPageSize; page * kPageSize < begin + part.p_memsz; ++page) {
            if (found.count == kMaxPages)
                abort();
            found.number[found.count++] = page;
        }
    }
    return 1;
}

// Those that are this process's own: present, and neither a file's nor shared.
Pages OwnPages(const PageNumbers& writable)
{
    constexpr uint64_t kPresent = uint64_t{1} << 63;
    constexpr uint64_t kFileOrShared = uint64_t{1} << 61;
    const int pagemap = open("/proc/self/pagemap", O_RDONLY);
    Pages own = 0;
    for (size_t i = 0; i < writable.count; ++i) {
        uint64_t entry = 0;
        const auto at = static_cast<off_t>(writable.number[i] * sizeof(entry));
        if (pread(pagemap, &entry, sizeof(entry), at) != sizeof(entry))
            abort();
        if ((entry & kPresent) != 0 && (entry & kFileOrShared) == 0)
            own |= Pages{1} << i;
    }
    close(pagemap);
    return own;
}

bool IsSwitchCall(const char* name)
{
    return strncmp(name, "phy-", 4) != 0;
}

bool IsPhyCall(const char* name)
{
    return !IsSwitchCall(name);
}

bool IsNone(const char*)
{
    return false;
}

// A process's own pages after the calls of these classes, in one that has made no others.
Pages OwnPagesAfter(bool (*isMade)(const char* name), std::span<const bench::CallClass> classes,
                    const PageNumbers& writable)
{
    int ends[2];
    if (pipe(ends) != 0)
        abort();
    const pid_t child = fork();
    if (child == 0) {
        for (const auto& [name, call] : classes)
            if (isMade(name))
                call();
        const Pages own = OwnPages(writable);
        _exit(write(ends[1], &own, sizeof(own)) == sizeof(own) ? 0 : 1);
    }
    Pages own = 0;
    if (read(ends[0], &own, sizeof(own)) != sizeof(own))
        abort();
    waitpid(child, nullptr, 0);
    close(ends[0]);
    close(ends[1]);
    return own;
}

void PrintOwnPages(std::span<const bench::CallClass> classes, const PageNumbers& writable)
{
    const Pages loaded = OwnPagesAfter(IsNone, classes, writable);
    const Pages ofSwitch = OwnPagesAfter(IsSwitchCall, classes, writable);
    const Pages ofPhy = OwnPagesAfter(IsPhyCall, classes, writable);
    printf("own-pages-loaded %d\n", std::popcount(loaded));
    printf("own-pages-switch %d\n", std::popcount(ofSwitch));
    printf("own-pages-phy %d\n", std::popcount(ofPhy));
    printf("own-pages-of-both-families %d\n", std::popcount(ofSwitch & ofPhy & ~loaded));
}

void* CallOnPaintedStack(void* called)
{
    (*static_cast<const bench::CallClass**>(called))->call();
    return nullptr;
}

// Bytes of stack below a thread's start that the call reaches.
size_t StackDepth(const bench::CallClass& one)
{
    memset(stack, kPaint, sizeof(stack));
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_t thread = 0;
    const bench::CallClass* called = &one;
    if (pthread_attr_setstack(&attributes, stack, sizeof(stack)) != 0 ||
        pthread_create(&thread, &attributes, CallOnPaintedStack, &called) != 0)
        abort();
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    size_t untouched = 0;
    while (untouched < sizeof(stack) && stack[untouched] == kPaint)
        ++untouched;
    return sizeof(stack) - untouched;
}

}  // namespace

extern "C" {

void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size)
{
    ++allocations;
    return __libc_malloc(size);
}

void* calloc(size_t count, size_t size)
{
    ++allocations;
    return __libc_calloc(count, size);
}

void* realloc(void* block, size_t size)
{
    ++allocations;
    return __libc_realloc(block, size);
}

}  // extern "C"

int main()
{
    const bench::ReadyBoard board;
    const auto classes = bench::CallClasses(board);
    PageNumbers writable;
    dl_iterate_phdr(FindWritable, &writable);
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_NOTICE);
    PrintOwnPages(classes, writable);
    for (const auto& one : classes)  // the first call of each family loads its HAL
        one.call();
    const int before = allocations;
    for (const auto& one : classes)
        one.call();
    const int taken = allocations - before;
    printf("heap-allocations %d\n", taken);
    printf("own-pages %d\n", std::popcount(OwnPages(writable)));
    const size_t nothing = StackDepth(classes[0]);
    size_t deepest = 0;
    for (const auto& one : classes) {
        const size_t depth = StackDepth(one);
        deepest = depth > deepest ? depth : deepest;
    }
    printf("stack-bytes %zu\n", deepest - nothing);
    if (before == 0 || !bench::CallsReachedTheHal()) {
        fprintf(stderr, "nothing was measured\n");
        return 1;
    }
    return taken == 0 ? 0 : 1;
}

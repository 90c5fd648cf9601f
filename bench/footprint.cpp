// What a process that has called each family holds because of the library: pages of its own, stack,
// heap. One "name value" line each; fails when an operation has taken memory from the heap.
#include <fcntl.h>
#include <link.h>
#include <pthread.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "bench/call_classes.h"
#include "platform/ob_platform.h"

namespace {

constexpr uintptr_t kPageSize = 4096;
constexpr size_t kStackSize = 256 * 1024;
constexpr uint8_t kPaint = 0xA5;

int allocations;
alignas(kPageSize) uint8_t stack[kStackSize];

struct Range {
    uintptr_t begin = 0;
    uintptr_t end = 0;
};

// The writable part of liborblink.so.0.
int FindWritable(dl_phdr_info* info, size_t, void* out)
{
    if (strstr(info->dlpi_name, "liborblink.so") == nullptr)
        return 0;
    for (int i = 0; i < info->dlpi_phnum; ++i) {
        const auto& part = info->dlpi_phdr[i];
        if (part.p_type == PT_LOAD && (part.p_flags & PF_W) != 0) {
            const uintptr_t begin = info->dlpi_addr + part.p_vaddr;
            *static_cast<Range*>(out) = {begin / kPageSize * kPageSize, begin + part.p_memsz};
        }
    }
    return 1;
}

// Pages of it that are this process's own: present, and neither a file's nor shared.
unsigned OwnPages(const Range& range)
{
    constexpr uint64_t kPresent = uint64_t{1} << 63;
    constexpr uint64_t kFileOrShared = uint64_t{1} << 61;
    const int pagemap = open("/proc/self/pagemap", O_RDONLY);
    unsigned own = 0;
    for (uintptr_t page = range.begin / kPageSize; page * kPageSize < range.end; ++page) {
        uint64_t entry = 0;
        const auto at = static_cast<off_t>(page * sizeof(entry));
        if (pread(pagemap, &entry, sizeof(entry), at) != sizeof(entry))
            abort();
        if ((entry & kPresent) != 0 && (entry & kFileOrShared) == 0)
            ++own;
    }
    close(pagemap);
    return own;
}

void* CallOnPaintedStack(void* one)
{
    static_cast<const bench::CallClass*>(one)->call();
    return nullptr;
}

// Bytes of stack below a thread's start that the call reaches.
size_t StackDepth(const bench::CallClass& one)
{
    memset(stack, kPaint, sizeof(stack));
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstack(&attributes, stack, sizeof(stack));
    pthread_t thread;
    if (pthread_create(&thread, &attributes, CallOnPaintedStack,
                       const_cast<bench::CallClass*>(&one)) != 0)
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
    Range writable;
    dl_iterate_phdr(FindWritable, &writable);
    OBPLAT_SetLogLevel(OBPLAT_SEVERITY_NOTICE);
    for (const auto& one : classes)  // the first call of each family loads its HAL
        one.call();
    const int before = allocations;
    for (const auto& one : classes)
        one.call();
    const int taken = allocations - before;
    printf("heap-allocations %d\n", taken);
    printf("own-pages %u\n", OwnPages(writable));
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

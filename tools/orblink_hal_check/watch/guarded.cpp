#include "tools/orblink_hal_check/watch/guarded.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/orblink_hal_check/watch/watch.h"

namespace halcheck {

namespace {

const size_t kPage = static_cast<size_t>(sysconf(_SC_PAGESIZE));

size_t WholePages(size_t size)
{
    return (size + kPage - 1) / kPage * kPage;
}

}  // namespace

Guarded::Guarded(const char* slot, size_t size, uint8_t fill, Rights rights)
    : slot_(slot), size_(size), fill_(fill), readable_(WholePages(size))
{
    void* const memory = mmap(nullptr, readable_ + kPage, PROT_READ | PROT_WRITE,
                              // cppcheck-suppress invalidFunctionArg ; what is mapped is no file
                              MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) {
        perror("orblink-hal-check: mmap");
        exit(EXIT_FAILURE);
    }
    pages_ = static_cast<uint8_t*>(memory);
    data_ = pages_ + readable_ - size;
    memset(pages_, fill, readable_);
    mprotect(pages_ + readable_, kPage, PROT_NONE);
    AddZone(pages_ + readable_, kPage, Zone::kPast, slot);
    if (rights == Rights::kReadOnly) {
        mprotect(pages_, readable_, PROT_READ);
        AddZone(pages_, readable_, Zone::kReadOnly, slot);
    }
}

Guarded::~Guarded()
{
    mprotect(pages_, readable_, PROT_NONE);
    AddZone(pages_, readable_ + kPage, Zone::kWithdrawn, slot_);
}

bool Guarded::IsUntouched() const
{
    return std::all_of(data_, data_ + size_, [this](uint8_t byte) { return byte == fill_; });
}

void Guarded::CheckBeginning() const
{
    if (!std::all_of(pages_, data_, [this](uint8_t byte) { return byte == fill_; }))
        ReportOn(slot_, "buffer.underrun",
                 std::string(TheWatch().call) + " wrote before its buffer of " +
                     std::to_string(size_) + " bytes");
}

}  // namespace halcheck

// The lane driver's device file and the attributes of the platform's ACPI devices.

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "virtual_board/preload/board_link.h"
#include "virtual_board/preload/descriptors.h"
#include "virtual_board/preload/next.h"

using namespace vboard;
using namespace vboard::preload;

namespace {

constexpr size_t kMaxAttributeText = 64;

const wire::AttributePath* FindAttribute(const char* path)
{
    for (const auto& entry : wire::kAttributePaths)
        if (path != nullptr && strcmp(path, entry.path) == 0)
            return &entry;
    return nullptr;
}

bool IsOfTheBoard(const char* path)
{
    bool known = path != nullptr &&
                 (strcmp(path, wire::kLaneDriverPath) == 0 || FindAttribute(path) != nullptr);
    return known && BoardPath() != nullptr;
}

// A connection that stays with the open file.
int OpenConnection(wire::Op op, uint32_t arg, DescriptorKind kind)
{
    int fd = Connect();
    if (fd < 0)
        return -1;
    if (Ask(fd, op, arg) < 0) {
        Disconnect(fd);
        return -1;
    }
    return Remember(fd, kind);
}

// What the attribute holds now, in a file that any reader can read.
int OpenForReading(wire::Attribute attribute)
{
    char text[kMaxAttributeText];
    long size = AskOnce(wire::Op::kAttributeRead, static_cast<uint32_t>(attribute), {},
                        {text, sizeof text});
    if (size < 0)
        return -1;
    auto fd = static_cast<int>(syscall(SYS_memfd_create, "attribute", 0));
    if (fd < 0)
        return -1;
    syscall(SYS_write, fd, text, static_cast<size_t>(size));
    syscall(SYS_lseek, fd, 0, SEEK_SET);
    return fd;
}

int OpenForWriting(wire::Attribute attribute)
{
    return OpenConnection(wire::Op::kAttributeWrite, static_cast<uint32_t>(attribute),
                          DescriptorKind::kAttribute);
}

int OpenOfTheBoard(const char* path, int flags)
{
    const auto* entry = FindAttribute(path);
    if (entry == nullptr)
        return OpenConnection(wire::Op::kLaneOpen, 0, DescriptorKind::kLane);
    if ((flags & O_ACCMODE) == O_RDONLY)
        return OpenForReading(entry->attribute);
    return OpenForWriting(entry->attribute);
}

ssize_t WriteText(int fd, const void* text, size_t size)
{
    return PostText(fd, text, size) ? AwaitUninterrupted(fd) : -1;
}

// stdio counts 0 as the failure of a cookie stream.
ssize_t WriteCookie(void* cookie, const char* text, size_t size)
{
    ssize_t written = WriteText(static_cast<int>(reinterpret_cast<intptr_t>(cookie)), text, size);
    return written < 0 ? 0 : written;
}

int CloseCookie(void* cookie)
{
    auto fd = static_cast<int>(reinterpret_cast<intptr_t>(cookie));
    Forget(fd);
    Disconnect(fd);
    return 0;
}

FILE* StreamForWriting(int fd)
{
    cookie_io_functions_t functions{nullptr, WriteCookie, nullptr, CloseCookie};
    return fopencookie(reinterpret_cast<void*>(static_cast<intptr_t>(fd)), "w", functions);
}

FILE* OpenStream(const char* path, const char* mode)
{
    bool read = strchr(mode, 'r') != nullptr && strchr(mode, '+') == nullptr;
    int fd = OpenOfTheBoard(path, read ? O_RDONLY : O_WRONLY);
    if (fd < 0)
        return nullptr;
    FILE* stream = read ? VBOARD_NEXT(fdopen)(fd, "r") : StreamForWriting(fd);
    if (stream == nullptr)
        Disconnect(fd);
    return stream;
}

mode_t CreationMode(int flags, va_list arguments)
{
    bool given = (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
    return given ? va_arg(arguments, mode_t) : 0;
}

}  // namespace

extern "C" {

// What programs compiled with _FORTIFY_SOURCE call for open() without a mode.
int __open_2(const char* path, int flags);
int __open64_2(const char* path, int flags);

int open(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = CreationMode(flags, arguments);
    va_end(arguments);
    if (IsOfTheBoard(path))
        return OpenOfTheBoard(path, flags);
    return VBOARD_NEXT(open)(path, flags, mode);
}

int open64(const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = CreationMode(flags, arguments);
    va_end(arguments);
    if (IsOfTheBoard(path))
        return OpenOfTheBoard(path, flags);
    return VBOARD_NEXT(open64)(path, flags, mode);
}

int openat(int directory, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = CreationMode(flags, arguments);
    va_end(arguments);
    if (IsOfTheBoard(path))
        return OpenOfTheBoard(path, flags);
    return VBOARD_NEXT(openat)(directory, path, flags, mode);
}

int openat64(int directory, const char* path, int flags, ...)
{
    va_list arguments;
    va_start(arguments, flags);
    mode_t mode = CreationMode(flags, arguments);
    va_end(arguments);
    if (IsOfTheBoard(path))
        return OpenOfTheBoard(path, flags);
    return VBOARD_NEXT(openat64)(directory, path, flags, mode);
}

int __open_2(const char* path, int flags)
{
    return IsOfTheBoard(path) ? OpenOfTheBoard(path, flags) : VBOARD_NEXT(open)(path, flags);
}

int __open64_2(const char* path, int flags)
{
    return IsOfTheBoard(path) ? OpenOfTheBoard(path, flags) : VBOARD_NEXT(open64)(path, flags);
}

FILE* fopen(const char* path, const char* mode)
{
    return IsOfTheBoard(path) ? OpenStream(path, mode) : VBOARD_NEXT(fopen)(path, mode);
}

FILE* fopen64(const char* path, const char* mode)
{
    return IsOfTheBoard(path) ? OpenStream(path, mode) : VBOARD_NEXT(fopen64)(path, mode);
}

ssize_t write(int fd, const void* data, size_t size)
{
    if (Find(fd, DescriptorKind::kAttribute) == nullptr)
        return VBOARD_NEXT(write)(fd, data, size);
    return WriteText(fd, data, size);
}

}  // extern "C"

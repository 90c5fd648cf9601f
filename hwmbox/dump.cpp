#include <stdarg.h>
#include <stddef.h>

#include "hwmbox/mailbox.h"
#include "platform/ob_platform.h"

namespace orblink {
namespace {

constexpr int kColumns = 16;
constexpr ptrdiff_t kHexWidth = 3;

// A message can be longer than the receive buffer that it was cut to.
int ReadableBytes(const void* buffer, int length)
{
    if (buffer == nullptr)
        return 0;
    const auto start = reinterpret_cast<uintptr_t>(buffer);
    const auto received = reinterpret_cast<uintptr_t>(mailbox.receiveBuffer);
    if (start < received || start >= received + HWMB_BUFFER_SIZE)
        return length;
    const int rest = static_cast<int>(received + HWMB_BUFFER_SIZE - start);
    return length < rest ? length : rest;
}

__attribute__((format(printf, 3, 4))) int Format(char* dest, size_t size, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int length = vsnprintf_s(dest, size, format, args);
    va_end(args);
    return length;
}

// A blank cannot be told from the gap between two bytes: it is a dot, as '~' is.
char Printable(uint8_t byte)
{
    return byte >= 0x21 && byte <= 0x7D ? static_cast<char>(byte) : '.';
}

}  // namespace
}  // namespace orblink

using namespace orblink;

void HWMB_dumpBuffer(const void* Buffer, int Length)
{
    HWMB_PRINT("=====_HWMB_BUFFER_DUMP_ 0x%p[%d]=====", Buffer, Length);
    const auto* bytes = static_cast<const uint8_t*>(Buffer);
    const int count = ReadableBytes(Buffer, Length);
    char hexLine[kColumns * kHexWidth + 1] = {};
    char charLine[kColumns + 1] = {};
    for (int i = 0; i < count; ++i) {
        const int c = i % kColumns;
        if (Format(hexLine + c * kHexWidth, kHexWidth + 1, "%02x ", bytes[i]) < 0)
            HWMB_PRINT("Runtime-constraint violation error in function kova_snprintf_s");
        charLine[c] = Printable(bytes[i]);
        if (c == kColumns - 1 || i + 1 == count) {
            charLine[c + 1] = '\0';
            HWMB_PRINT(" [0x%08x] %-48s   %s", i - c, hexLine, charLine);
        }
    }
    HWMB_PRINT("=====_HWMB_BUFFER_DUMP_=====");
}

#include <stdarg.h>
#include <stddef.h>

#include "hwmbox/mailbox.h"
#include "platform/ob_platform.h"

namespace orblink {
namespace {

constexpr int kColumns = 16;
constexpr ptrdiff_t kHexWidth = 3;

__attribute__((format(printf, 3, 4))) int Format(char* dest, size_t size, const char* format, ...)
{
    va_list args;  // NOLINT(cppcoreguidelines-init-variables): va_start() sets it
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

void HWMB_dumpBuffer(const void* buffer, int shown, int readable)
{
    HWMB_PRINT("=====_HWMB_BUFFER_DUMP_ 0x%p[%d]=====", buffer, shown);
    const auto* bytes = static_cast<const uint8_t*>(buffer);
    char hexLine[kColumns * kHexWidth + 1] = {};
    char charLine[kColumns + 1] = {};
    for (int i = 0; i < readable; ++i) {
        const int c = i % kColumns;
        if (Format(hexLine + c * kHexWidth, kHexWidth + 1, "%02x ", bytes[i]) < 0)
            HWMB_PRINT("Runtime-constraint violation error in function kova_snprintf_s");
        charLine[c] = Printable(bytes[i]);
        if (c == kColumns - 1 || i + 1 == readable) {
            charLine[c + 1] = '\0';
            HWMB_PRINT(" [0x%08x] %-48s   %s", i - c, hexLine, charLine);
        }
    }
    HWMB_PRINT("=====_HWMB_BUFFER_DUMP_=====");
}

}  // namespace orblink

void HWMB_dumpBuffer(const void* Buffer, int Length)
{
    orblink::HWMB_dumpBuffer(Buffer, Length, Buffer == nullptr ? 0 : Length);
}

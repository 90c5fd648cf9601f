// The log sink, standard output and the bounds-checked functions.
#include <cstdarg>
#include <cstdio>
#include <regex>

#include "platform/ob_platform.h"
#include "tests/support/interpose.h"
#include "tests/support/scripted_platform.h"

using namespace obtest;

namespace {

std::string Rendered(const char* format, va_list args)
{
    va_list copy;
    va_copy(copy, args);
    std::string text(static_cast<size_t>(vsnprintf(nullptr, 0, format, copy)), '\0');
    va_end(copy);
    vsnprintf(text.data(), text.size() + 1, format, args);
    return text;
}

// Replaces the descriptor's line number behind the function's name, wherever both stand.
std::string WithoutLine(std::string text, const std::string& func, uint32_t line)
{
    for (const char* mark : {":", "."}) {
        const std::string prefix = func + mark + std::to_string(line);
        for (size_t at = text.find(prefix); at != std::string::npos; at = text.find(prefix, at))
            text.replace(at, prefix.size(), func + mark + "#");
    }
    return text;
}

}  // namespace

extern "C" void OBPLAT_Log(const OBPLAT_LogSite* Site, const char* Func, int Zero,
                           const char* Format, ...)
{
    va_list args;
    va_start(args, Format);
    std::string text = WithoutLine(Rendered(Format, args), Func, Site->Line);
    va_end(args);
    const bool prefixed = text.rfind(std::string(Func) + ":#", 0) == 0 ||
                          text.rfind(std::string(Func) + ".#", 0) == 0;
    if (!prefixed)
        text = "[" + std::string(Func) + "] " + text;
    const char* module = Site->Module == OBPLAT_MODULE_SWITCH ? "log"
                         : Site->Module == OBPLAT_MODULE_PHY  ? "phy"
                                                              : "bad-module";
    if (Site->Class != 3 || Zero != 0)
        module = "bad-site";
    Platform().transcript.Add(Text("%s%u %s", module, Site->Severity, text.c_str()));
    Platform().transcript.AddFormat(Format);
}

OB_INTERPOSE(int, printf, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    if (!OB_FROM_LIBRARY) {
        const int length = vprintf(format, args);
        va_end(args);
        return length;
    }
    std::string text = Rendered(format, args);
    va_end(args);
    const int length = static_cast<int>(text.size());
    if (text.empty() || text.back() != '\n')
        text += "<no newline>";
    else
        text.pop_back();
    static const std::regex line("^(\\w+):[0-9]+");
    Platform().transcript.Add("out " + std::regex_replace(text, line, "$1:#"));
    return length;
}

extern "C" int kova_memcpy_s(void* Dest, size_t DestMax, const void* Src, size_t Count)
{
    long result = 0;
    if (Platform().TakesFailure("kova_memcpy_s", result))
        return static_cast<int>(result);
    return Real<int(void*, size_t, const void*, size_t)>("kova_memcpy_s")(Dest, DestMax, Src,
                                                                          Count);
}

extern "C" int kova_strncpy_s(char* Dest, size_t DestMax, const char* Src, size_t Count)
{
    long result = 0;
    if (Platform().TakesFailure("kova_strncpy_s", result))
        return static_cast<int>(result);
    return Real<int(char*, size_t, const char*, size_t)>("kova_strncpy_s")(Dest, DestMax, Src,
                                                                           Count);
}

extern "C" int kova_vsnprintf_s(char* Dest, size_t DestMax, const char* Format, va_list Args)
{
    long result = 0;
    if (Platform().TakesFailure("kova_vsnprintf_s", result))
        return static_cast<int>(result);
    return Real<int(char*, size_t, const char*, va_list)>("kova_vsnprintf_s")(Dest, DestMax, Format,
                                                                              Args);
}

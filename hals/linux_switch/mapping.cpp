#include "hals/linux_switch/mapping.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include "hals/linux_switch/log.h"

namespace linux_switch {
namespace {

constexpr const char* kDirectory = "/etc/orblink";
constexpr size_t kLongestFile = 4096;
constexpr uint8_t kUnset = 0xFF;

// A part of the text.
struct Piece {
    const char* at;
    size_t size;

    bool Is(const char* word) const { return size == strlen(word) && memcmp(at, word, size) == 0; }
};

bool IsBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r';
}

Piece Trim(Piece piece)
{
    while (piece.size > 0 && IsBlank(piece.at[0])) {
        ++piece.at;
        --piece.size;
    }
    while (piece.size > 0 && IsBlank(piece.at[piece.size - 1]))
        --piece.size;
    return piece;
}

// A '#' within quotes is none.
Piece WithoutComment(Piece line)
{
    bool quoted = false;
    for (size_t i = 0; i < line.size; ++i) {
        if (line.at[i] == '"')
            quoted = !quoted;
        else if (line.at[i] == '#' && !quoted)
            return Trim({line.at, i});
    }
    return Trim(line);
}

// A text without escapes.
bool Unquote(Piece& value)
{
    if (value.size < 2 || value.at[0] != '"' || value.at[value.size - 1] != '"')
        return false;
    value = {value.at + 1, value.size - 2};
    for (size_t i = 0; i < value.size; ++i) {
        if (value.at[i] == '"' || value.at[i] == '\\')
            return false;
    }
    return true;
}

bool IsInterfaceName(const Piece& name)
{
    if (name.size == 0 || name.size >= IFNAMSIZ || name.Is(".") || name.Is(".."))
        return false;
    for (size_t i = 0; i < name.size; ++i) {
        const char c = name.at[i];
        if (c <= ' ' || c > '~' || c == '/' || c == ':')
            return false;
    }
    return true;
}

bool IsPortNumber(const Piece& number)
{
    return number.size == 1 && number.at[0] >= '0' && number.at[0] < '0' + kPorts;
}

const char* TakeName(Piece value, char (&name)[IFNAMSIZ])
{
    if (name[0] != '\0')
        return "is there twice";
    if (!Unquote(value) || !IsInterfaceName(value))
        return "expected the name of an interface, in quotes";
    memcpy(name, value.at, value.size);
    return nullptr;
}

const char* TakeOnReset(const Piece& value, SwitchMemory& memory)
{
    if (value.Is("\"build\""))
        memory.onReset = OnReset::kBuild;
    else if (value.Is("\"settings\""))
        memory.onReset = OnReset::kSettings;
    else
        return "expected \"build\" or \"settings\"";
    return nullptr;
}

const char* TakeCpuPort(const Piece& value, SwitchMemory& memory)
{
    if (memory.cpuPort != kUnset)
        return "is there twice";
    if (!IsPortNumber(value))
        return "expected a port, 0 to 7";
    memory.cpuPort = static_cast<uint8_t>(value.at[0] - '0');
    return nullptr;
}

const char* TakeKey(const Piece& key, const Piece& value, bool inPorts, SwitchMemory& memory)
{
    if (inPorts)
        return IsPortNumber(key) ? TakeName(value, memory.port[key.at[0] - '0'].name)
                                 : "expected a port, 0 to 7";
    if (key.Is("bridge"))
        return TakeName(value, memory.bridge);
    if (key.Is("cpu_port"))
        return TakeCpuPort(value, memory);
    if (key.Is("on_reset"))
        return TakeOnReset(value, memory);
    return "expected bridge, cpu_port, on_reset or [ports]";
}

const char* TakeLine(const Piece& line, bool& inPorts, SwitchMemory& memory)
{
    if (line.size == 0)
        return nullptr;
    if (line.at[0] == '[') {
        const bool first = !inPorts;
        inPorts = true;
        return first && line.Is("[ports]") ? nullptr : "expected [ports], once";
    }
    const auto* equals = static_cast<const char*>(memchr(line.at, '=', line.size));
    if (!equals)
        return "expected KEY = VALUE";
    const size_t before = static_cast<size_t>(equals - line.at);
    return TakeKey(Trim({line.at, before}), Trim({equals + 1, line.size - before - 1}), inPorts,
                   memory);
}

bool HasTwice(const SwitchMemory& memory)
{
    for (int port = 0; port < memory.ports; ++port) {
        for (int other = 0; other < port; ++other) {
            if (strcmp(memory.NameOf(port), memory.NameOf(other)) == 0)
                return true;
        }
        if (port != memory.cpuPort && strcmp(memory.port[port].name, memory.bridge) == 0)
            return true;
    }
    return false;
}

const char* CheckWhole(SwitchMemory& memory)
{
    if (memory.bridge[0] == '\0')
        return "bridge is missing";
    if (memory.cpuPort == kUnset)
        return "cpu_port is missing";
    for (int port = 0; port < kPorts; ++port) {
        if (port != memory.cpuPort && memory.port[port].name[0] == '\0')
            continue;
        if (memory.ports != port)
            return "the port numbers have a gap";
        memory.ports = static_cast<uint8_t>(port + 1);
    }
    if (memory.ports < 2)
        return "a switch has a port beside the CPU port";
    return HasTwice(memory) ? "an interface is two ports" : nullptr;
}

// -1, or how much was read of a regular file that is not too long.
ssize_t ReadWhole(const char* path, char* text)
{
    const int fd = open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    struct stat facts;
    if (fd < 0)
        return -1;
    ssize_t got = -1;
    if (fstat(fd, &facts) != 0 || !S_ISREG(facts.st_mode) || facts.st_size > off_t{kLongestFile})
        errno = EFBIG;
    else
        got = read(fd, text, kLongestFile);
    const int error = errno;
    close(fd);
    errno = error;
    return got;
}

}  // namespace

MappingFault ParseMapping(const char* text, size_t size, SwitchMemory& memory)
{
    memory = {};
    memory.cpuPort = kUnset;
    ClearSettings(memory);
    bool inPorts = false;
    int number = 0;
    while (size > 0) {
        ++number;
        const auto* end = static_cast<const char*>(memchr(text, '\n', size));
        const size_t length = end ? static_cast<size_t>(end - text) : size;
        if (const char* what = TakeLine(WithoutComment({text, length}), inPorts, memory))
            return {what, number};
        const size_t step = end ? length + 1 : length;
        text += step;
        size -= step;
    }
    if (const char* what = CheckWhole(memory))
        return {what, number};
    memory.mapped = 1;
    return {nullptr, 0};
}

Loaded LoadMapping(int devIdx, SwitchMemory& memory)
{
    const char* directory = secure_getenv("ORBLINK_LINUX_SWITCH");
    char path[PATH_MAX];
    char text[kLongestFile];
    const int length = snprintf(path, sizeof path, "%s/linux-switch-%d.toml",
                                directory ? directory : kDirectory, devIdx);
    memory = {};
    if (length < 0 || static_cast<size_t>(length) >= sizeof path)
        return Loaded::kFailed;
    const ssize_t size = ReadWhole(path, text);
    if (size < 0 && errno == ENOENT)
        return Loaded::kNone;
    if (size < 0) {
        LS_ERROR("Cannot read %s, errno=%d", path, errno);
        return Loaded::kFailed;
    }
    const MappingFault fault = ParseMapping(text, static_cast<size_t>(size), memory);
    if (!fault.what)
        return Loaded::kYes;
    memory = {};
    LS_ERROR("%s:%d: %s", path, fault.line, fault.what);
    return Loaded::kFailed;
}

}  // namespace linux_switch

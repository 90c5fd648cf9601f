#include "tools/orblinkctl/line/vocabulary.h"

#include <cstdlib>
#include <string>

#include "tools/orblinkctl/access/names.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/meanings.h"

namespace ctl {

namespace {

bool IsOneOf(std::string_view word, std::string_view list)
{
    for (const auto& entry : SplitWords(list))
        if (entry == word)
            return true;
    return false;
}

bool IsPort(std::string_view word)
{
    return FindPort(word).has_value();
}
bool IsPhy(std::string_view word)
{
    return FindPhy(word).has_value();
}
bool IsMac(std::string_view word)
{
    return ParseMac(word).has_value();
}
bool IsRange(std::string_view word)
{
    return ParseRange(word).has_value();
}
bool IsMasked(std::string_view word)
{
    return ParseMasked(word).has_value();
}
bool IsSpeed(std::string_view word)
{
    return ParseSpeed(word).has_value();
}
bool IsPhySpeed(std::string_view word)
{
    return IsOneOf(word, "10 100 1000 2500");
}
bool IsDuplex(std::string_view word)
{
    return IsOneOf(word, "full half");
}
bool IsOnOff(std::string_view word)
{
    return IsOneOf(word, "on off");
}
bool IsFormat(std::string_view word)
{
    return IsOneOf(word, "text json kv");
}
bool IsWhen(std::string_view word)
{
    return IsOneOf(word, "auto always never");
}
bool IsShell(std::string_view word)
{
    return IsOneOf(word, "bash zsh fish");
}
bool IsAnything(std::string_view)
{
    return true;
}
bool IsNotEmpty(std::string_view word)
{
    return !word.empty();
}

bool IsMirror(std::string_view word)
{
    return word == "off" || FindPort(word).has_value();
}

// A word of the setting, or a number between the limits.
bool IsValue(const char* setting, std::string_view word, uint64_t least, uint64_t most)
{
    const auto value = ParseValue(setting, word);
    return value && *value >= least && *value <= most;
}

bool IsTest(std::string_view word)
{
    return word == "off" || IsValue("dvt", word, 1, 4);
}
bool IsTagging(std::string_view word)
{
    return IsValue("tagging", word, 0, UINT32_MAX);
}
bool IsTestMode(std::string_view word)
{
    return IsValue("test_mode", word, 0, 255);
}
bool IsLedMode(std::string_view word)
{
    return IsValue("led", word, 0, 255);
}
bool IsStep(std::string_view word)
{
    return IsValue("aging", word, 1, 5);
}

bool IsGroup(std::string_view word)
{
    return word == "none" || ParseNumber(word, 0, UINT32_MAX).has_value();
}

bool IsCommandNumber(std::string_view word)
{
    if (word.starts_with("-"))
        return ParseNumber(word.substr(1), 0, uint64_t{1} << 31).has_value();
    return ParseNumber(word, 0, INT32_MAX).has_value();
}

template <size_t Most>
bool IsBytes(std::string_view word)
{
    const auto bytes = ParseBytes(word);
    return bytes && bytes->size() <= Most;
}

bool IsPrefix(std::string_view word)
{
    return !word.empty() && word.size() <= 17 &&
           word.find_first_not_of("0123456789abcdefABCDEF:") == std::string_view::npos;
}

bool IsSeconds(std::string_view word)
{
    const std::string text(word);
    char* end = nullptr;
    const double seconds = std::strtod(text.c_str(), &end);
    return !text.empty() && *end == '\0' && seconds >= 0 && seconds <= 86400;
}

constexpr Argument kArguments[] = {
    {"SWITCH", "0 or 1", nullptr, 0, 1, "0 1"},
    {"PORT", "PORT or SWITCH:PORT with switch 0 or 1 and port 0 to 7, or a name of the names file",
     IsPort, 0, 0, "0:0 0:1 0:2 0:3 0:4 0:5 0:6 0:7 1:0 1:1 1:2 1:3 1:4 1:5 1:6 1:7"},
    {"OTHER-PORT", "as PORT, another one of the same switch", IsPort, 0, 0,
     "0:0 0:1 0:2 0:3 0:4 0:5 0:6 0:7 1:0 1:1 1:2 1:3 1:4 1:5 1:6 1:7"},
    {"PHY", "0 or 1, or a name of the names file", IsPhy, 0, 0, "0 1"},
    {"GMAC", "0 or 1", nullptr, 0, 1, "0 1"},
    {"VID", "1 to 4094", nullptr, 1, 4094, ""},
    {"PCP", "0 to 7", nullptr, 0, 7, "0 1 2 3 4 5 6 7"},
    {"TAGGING", "untagged, tagged, or the chip's number 0 to 4294967295", IsTagging, 0, 0,
     "untagged tagged"},
    {"GROUP", "0 to 4294967295 or none", IsGroup, 0, 0, "none"},
    {"SPEED", "auto, 10, 100, 1000, 2500 or 10000 (Mb/s)", IsSpeed, 0, 0,
     "auto 10 100 1000 2500 10000"},
    {"PHY-SPEED", "10, 100, 1000 or 2500 (Mb/s)", IsPhySpeed, 0, 0, "10 100 1000 2500"},
    {"DUPLEX", "full or half", IsDuplex, 0, 0, "full half"},
    {"ON-OFF", "on or off", IsOnOff, 0, 0, "on off"},
    {"DESTINATION", "a port of the same switch, 0 to 7 or as PORT, or off", IsMirror, 0, 0,
     "0 1 2 3 4 5 6 7 off"},
    {"TEST", "mac-loopback, line-loopback, packets, bit-stream (1 to 4) or off", IsTest, 0, 0,
     "mac-loopback line-loopback packets bit-stream off"},
    {"TEST-MODE",
     "off, waveform, jitter-master, jitter-slave, distortion, or the chip's number 0 to 255",
     IsTestMode, 0, 0, "off waveform jitter-master jitter-slave distortion"},
    {"LED-MODE",
     "off, link, activity, link+activity, speed, duplex+collision, on, blinking, or the chip's "
     "number 0 to 255",
     IsLedMode, 0, 0, "off link activity link+activity speed duplex+collision on blinking"},
    {"STEP", "15s, 75s, 300s, 1200s, 4800s (1 to 5)", IsStep, 0, 0, "15s 75s 300s 1200s 4800s"},
    {"BYTES", "0 to 65535", nullptr, 0, 65535, ""},
    {"TPID", "1 to 65535", nullptr, 1, 65535, "0x8100 0x88a8"},
    {"MAC", "six hexadecimal pairs separated by colons", IsMac, 0, 0, ""},
    {"MASK", "0 to 0xfff, one bit for each hexadecimal digit of the address", nullptr, 0, 0xFFF,
     "0xfff"},
    {"REGISTERS", "a register or a range FIRST-LAST, 0 to 0xffff", IsRange, 0, 0, ""},
    {"VALUE", "0 to 0xffff, or VALUE/MASK with no bit outside the mask", IsMasked, 0, 0, ""},
    {"PORT-NUMBER", "0 to 65535", nullptr, 0, 65535, ""},
    {"PARTITION", "0 to 31", nullptr, 0, 31, ""},
    {"COMMAND-NUMBER", "-2147483648 to 2147483647", IsCommandNumber, 0, 0, ""},
    {"PARAMETER", "up to 256 bytes as hexadecimal pairs", IsBytes<256>, 0, 0, ""},
    {"VENDOR-BYTES", "up to 32 bytes as hexadecimal pairs", IsBytes<32>, 0, 0, ""},
    {"STATUS", "0 to 4294967295", nullptr, 0, UINT32_MAX, "0 1"},
    {"PIN", "18 or 19", nullptr, 18, 19, "18 19"},
    {"LEVEL", "0 or 1", nullptr, 0, 1, "0 1"},
    {"QUEUE", "0 to 255", nullptr, 0, 255, ""},
    {"ENABLE", "0 to 255", nullptr, 0, 255, "0 1"},
    {"WEIGHT", "0 to 255", nullptr, 0, 255, ""},
    {"MAX-P", "0 to 255", nullptr, 0, 255, ""},
    {"GREEN-MIN", "0 to 65535", nullptr, 0, 65535, ""},
    {"GREEN-MAX", "0 to 65535", nullptr, 0, 65535, ""},
    {"YELLOW-MIN", "0 to 65535", nullptr, 0, 65535, ""},
    {"YELLOW-MAX", "0 to 65535", nullptr, 0, 65535, ""},
    {"RED-MIN", "0 to 65535", nullptr, 0, 65535, ""},
    {"RED-MAX", "0 to 65535", nullptr, 0, 65535, ""},
    {"BUFFERS", "0 to 65535", nullptr, 0, 65535, ""},
    {"XOFF", "0 to 65535", nullptr, 0, 65535, ""},
    {"XON", "0 to 65535", nullptr, 0, 65535, ""},
    {"PREFIX", "the beginning of an address, hexadecimal digits and colons", IsPrefix, 0, 0, ""},
    {"FORMAT", "text, json or kv", IsFormat, 0, 0, "text json kv"},
    {"WHEN", "auto, always or never", IsWhen, 0, 0, "auto always never"},
    {"SECONDS", "0 to 86400", IsSeconds, 0, 0, ""},
    {"COUNT", "1 to 1000000", nullptr, 1, 1000000, ""},
    {"FILE", "a file name", IsNotEmpty, 0, 0, ""},
    {"SHELL", "bash, zsh or fish", IsShell, 0, 0, "bash zsh fish"},
    {"COMMAND", "the words of a command, an argument or an option", IsAnything, 0, 0, ""},
};

constexpr OptionDefinition kOptions[] = {
    {"--json", "", "print JSON (the same as -o json)", true},
    {"-o", "FORMAT", "output format: text, json or kv", true},
    {"-v", "", "library log lines on standard error; twice also the trace lines", true},
    {"-q", "", "no library log lines, not even of failures", true},
    {"--wait", "SECONDS", "how long to wait for a busy board (10)", true},
    {"--color", "WHEN", "colour: auto, always or never", true},
    {"--names", "FILE", "labels of ports and PHYs (/etc/orblink/names.toml)", true},
    {"--json-errors", "", "print a failure as JSON", true},
    {"--help", "", "show the help of the command and end", true},
    {"--version", "", "show the version and end", true},
    {"--switch", "", "the switch family only", false},
    {"--phy", "", "the PHY family only", false},
    {"--no-defaults", "", "do not read the capabilities nor write the default configuration",
     false},
    {"--defaults", "", "write the default configuration first", false},
    {"--restore", "", "apply the stored configuration (the default)", false},
    {"--vendor-params", "VENDOR-BYTES", "parameters for the reset of the chip, kept", false},
    {"--lock", "", "lock the group of the port, and write", false},
    {"--unlock", "", "unlock the group of the port, and write", false},
    {"--mask", "MASK", "digits of the address that count (0xfff)", false},
    {"--vlan", "VID", "of this VLAN only", false},
    {"--port", "PORT", "of this port only", false},
    {"--prefix", "PREFIX", "addresses that begin so", false},
    {"--count", "", "only the number of entries", false},
    {"--hsgmii", "", "the lane runs at 2.5 Gb/s", false},
    {"--decode", "", "show the bits by name", false},
    {"--svg", "FILE", "write the picture as SVG", false},
    {"--startup", "", "/etc/orblink/startup.toml, the configuration after power-on", false},
    {"--dry-run", "", "show what would be done", false},
    {"--confirm-within", "SECONDS", "take the changes back unless they are confirmed in time",
     false},
    {"--apply", "", "do it", false},
    {"--force", "", "also where a doubt remains", false},
    {"--keep-going", "", "go on after a line that failed", false},
    {"--interval", "SECONDS", "time between two samples (1)", false},
    {"--rounds", "COUNT", "end after so many samples", false},
    {"--textfile", "FILE", "write there, by renaming a complete file", false},
    {"--all", "", "also what is zero", false},
    {"--per-second", "", "how much is added in a second", false},
    {"--anonymise", "", "leave no MAC address in it", false},
};

}  // namespace

std::span<const Argument> Arguments()
{
    return kArguments;
}
std::span<const OptionDefinition> Options()
{
    return kOptions;
}

const Argument& ArgumentNamed(std::string_view name)
{
    for (const auto& argument : kArguments)
        if (name == argument.name)
            return argument;
    std::abort();
}

const OptionDefinition& OptionNamed(std::string_view name)
{
    for (const auto& option : kOptions)
        if (name == option.name)
            return option;
    std::abort();
}

bool Accepts(const Argument& argument, std::string_view word)
{
    if (argument.check != nullptr)
        return argument.check(word);
    return ParseNumber(word, argument.least, argument.most).has_value();
}

}  // namespace ctl

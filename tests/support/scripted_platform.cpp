#include "tests/support/scripted_platform.h"

#include <cerrno>
#include <cstdio>

namespace obtest {
namespace {

std::string MacText(const uint8_t* mac)
{
    char text[18];
    std::snprintf(text, sizeof(text), "%02X:%02X:%02X:%02X:%02X:%02X", mac[0], mac[1], mac[2],
                  mac[3], mac[4], mac[5]);
    return text;
}

// Signature letters: i int, u unsigned, p pointer, m MAC address.
std::string ArgText(char kind, intptr_t value)
{
    switch (kind) {
        case 'i':
            return std::to_string(static_cast<int>(value));
        case 'u':
            return std::to_string(static_cast<uint32_t>(value));
        case 'm':
            return MacText(reinterpret_cast<const uint8_t*>(value));
        default:
            return value == 0 ? "null" : "ptr";
    }
}

}  // namespace

ScriptedPlatform& Platform()
{
    // Never destroyed: the library still calls when the program's own objects are gone.
    static auto& platform = *new ScriptedPlatform;
    return platform;
}

void ScriptedPlatform::Fail(const std::string& call, int errorNumber, int nth, long result)
{
    failures_.insert({call, {nth, 1, errorNumber, result}});
}

void ScriptedPlatform::FailEach(const std::string& call, int errorNumber, int times, long result)
{
    failures_.insert({call, {1, times, errorNumber, result}});
}

void ScriptedPlatform::FailSlot(const std::string& slot, int code)
{
    slots[slot] = [code](const SlotArgs&) { return code; };
}

bool ScriptedPlatform::TakesFailure(const std::string& call, long& result)
{
    bool taken = false;
    auto [entry, last] = failures_.equal_range(call);
    while (entry != last) {
        Failure& failure = entry->second;
        if (failure.nth > 1) {
            --failure.nth;
        } else if (!taken) {
            taken = true;
            errno = failure.errorNumber;
            result = failure.result;
            if (failure.times > 0 && --failure.times == 0) {
                entry = failures_.erase(entry);
                continue;
            }
        }
        ++entry;
    }
    return taken;
}

int ScriptedPlatform::CallSlot(int library, const std::string& slot, const char* signature,
                               const SlotArgs& args)
{
    std::string line = "hal" + std::to_string(library) + " " + slot + "(";
    for (size_t i = 0; i < args.size(); ++i)
        line += (i > 0 ? ", " : "") + ArgText(signature[i], args[i]);
    transcript.Add(line + ")");
    const auto hook = slots.find(slot);
    return hook == slots.end() ? 0 : hook->second(args);
}

}  // namespace obtest

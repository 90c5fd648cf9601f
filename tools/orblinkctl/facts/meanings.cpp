#include "tools/orblinkctl/facts/meanings.h"

#include <cstdlib>

#include "common/iface.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/counters.h"

namespace ctl {

namespace {

constexpr ValueWord kTagging[] = {{0, "untagged"}, {1, "tagged"}};
constexpr ValueWord kAging[] = {{1, "15s"}, {2, "75s"}, {3, "300s"}, {4, "1200s"}, {5, "4800s"}};
constexpr ValueWord kLed[] = {{0, "off"},      {1, "link"},
                              {2, "activity"}, {3, "link+activity"},
                              {4, "speed"},    {5, "duplex+collision"},
                              {6, "on"},       {7, "blinking"}};
constexpr ValueWord kTestMode[] = {
    {0, "off"}, {1, "waveform"}, {2, "jitter-master"}, {3, "jitter-slave"}, {4, "distortion"}};
constexpr ValueWord kDvt[] = {
    {1, "mac-loopback"}, {2, "line-loopback"}, {3, "packets"}, {4, "bit-stream"}};

constexpr Meaning kMeanings[] = {
    {"tagging", kTagging, 0, 1, ""},
    {"aging", kAging, 1, 5, ""},
    {"led", kLed, 0, 7, ""},
    {"test_mode", kTestMode, 0, 4, ""},
    {"dvt", kDvt, 1, 4, ""},
    {"mtu", {}, 64, 10240, " octets"},
    {"group", {}, 0, 255, ""},
    {"bridge_tpid", {}, 0x600, 0xFFFF, ""},
    {"queue", {}, 0, 63, ", 8 x port + queue of the port"},
    {"threshold", {}, 0, 4095, " buffers"},
    {"global_wred_enable", {}, 0, 1, ""},
    {"weight", {}, 0, 15, ""},
    {"max_p", {}, 0, 100, " percent"},
    {"reservation", {}, 0, 63, " buffers"},
};

// "test_mode" is a key; people read "test mode".
std::string Readable(std::string_view setting)
{
    std::string text(setting);
    for (char& c : text)
        if (c == '_')
            c = ' ';
    return text;
}

std::string NumberText(const Meaning& meaning, uint32_t value)
{
    return meaning.most == 0xFFFF ? Hex(value, 4) : std::to_string(value);
}

}  // namespace

std::span<const Meaning> Meanings()
{
    return kMeanings;
}

const Meaning& MeaningOf(std::string_view setting)
{
    for (const auto& meaning : kMeanings)
        if (setting == meaning.setting)
            return meaning;
    std::abort();
}

std::optional<uint32_t> ParseValue(std::string_view setting, std::string_view word)
{
    for (const auto& [value, name] : MeaningOf(setting).words)
        if (word == name)
            return value;
    const auto number = ParseNumber(word, 0, UINT32_MAX);
    return number ? std::optional(static_cast<uint32_t>(*number)) : std::nullopt;
}

Model ValueModel(std::string_view setting, uint32_t value, const SwitchDeviceRecord& record)
{
    if (IsVs08(record))
        for (const auto& [number, word] : MeaningOf(setting).words)
            if (value == number)
                return word;
    return value;
}

bool SameValue(std::string_view setting, const Model& one, const Model& other)
{
    if (one == other)
        return true;
    for (const auto& meaning : kMeanings)
        if (setting == meaning.setting && !one.is_null() && !other.is_null()) {
            const auto first = ParseValue(setting, Text(one));
            return first && first == ParseValue(setting, Text(other));
        }
    return false;
}

std::string WordsOf(std::string_view setting)
{
    std::string text;
    for (const auto& [value, word] : MeaningOf(setting).words)
        text += (text.empty() ? "" : " ") + std::string(word);
    return text;
}

std::string OfferText(std::string_view setting)
{
    const Meaning& meaning = MeaningOf(setting);
    std::string text;
    for (const auto& [value, word] : meaning.words)
        text += (text.empty() ? "" : ", ") + std::string(word);
    return text.empty() ? NumberText(meaning, meaning.least) + " to " +
                              NumberText(meaning, meaning.most) + meaning.unit
                        : text;
}

void RequireOffered(std::string_view setting, uint32_t value, const SwitchDeviceRecord& record,
                    std::string_view object)
{
    const Meaning& meaning = MeaningOf(setting);
    if (!IsVs08(record) || (value >= meaning.least && value <= meaning.most))
        return;
    throw Failure{kUnsupported, Readable(setting) + " " + NumberText(meaning, value) +
                                    " is not offered by " + std::string(object) + " (" +
                                    OfferText(setting) + ")"};
}

void RequireSpeed(uint32_t code, const SwitchDeviceRecord& record, unsigned port,
                  std::string_view object)
{
    if (!IsVs08(record) || record.caps.port[port].portHasPhy == 0 || code <= OB_SPEED_1G)
        return;
    throw Failure{kUnsupported, "speed " + SpeedWord(code) + " is not offered by " +
                                    std::string(object) + " (10, 100, 1000)"};
}

}  // namespace ctl

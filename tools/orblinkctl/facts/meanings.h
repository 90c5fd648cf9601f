// What the values of settings mean: the words and limits by which they are typed, shown, saved,
// completed and refused. The words are those of the VS08; other chips keep their numbers.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "switch/orblink_records.h"
#include "tools/orblinkctl/access/model.h"

namespace ctl {

struct ValueWord {
    uint32_t value;
    const char* word;
};

struct Meaning {
    // The key of models and files.
    const char* setting;
    std::span<const ValueWord> words;
    // What the chip takes.
    uint32_t least;
    uint32_t most;
    // Behind the limits of a number.
    const char* unit;
};

std::span<const Meaning> Meanings();
const Meaning& MeaningOf(std::string_view setting);

// A word of the setting or a number.
std::optional<uint32_t> ParseValue(std::string_view setting, std::string_view word);

// The word for a value; the number where the chip or the value has none.
Model ValueModel(std::string_view setting, uint32_t value, const SwitchDeviceRecord& record);

// Whether two values, as words or numbers, say the same.
bool SameValue(std::string_view setting, const Model& one, const Model& other);

// The words, separated by blanks; for the completion.
std::string WordsOf(std::string_view setting);

// "untagged, tagged" or "64 to 10240".
std::string OfferText(std::string_view setting);

// Fails when a chip that is known here does not take the value.
void RequireOffered(std::string_view setting, uint32_t value, const SwitchDeviceRecord& record,
                    std::string_view object);

// The same for the speed of a port, a code of enum OB_Speed.
void RequireSpeed(uint32_t code, const SwitchDeviceRecord& record, unsigned port,
                  std::string_view object);

}  // namespace ctl

// What a switch chip was told through its HAL since its reset, by setting.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace obtest {

// "SetLanPortVlan(0, 2, 100)", as it stands in the transcript behind the library's number.
inline std::string ArgumentText(const std::string& text)
{
    return text;
}
template <typename Number>
std::string ArgumentText(Number number)
{
    return std::to_string(number);
}
template <typename... Args>
std::string HalCall(const std::string& slot, Args... args)
{
    std::string text = slot + "(0";
    ((text += ", " + ArgumentText(args)), ...);
    return text + ")";
}

std::string MacText(const uint8_t* mac);

class ToldChip {
public:
    // A call that the HAL carried out.
    void Take(const std::string& call);

    // The last value of a setting ("vlan 2"), or the other one when the chip was never told.
    std::string Value(const std::string& setting, const std::string& otherwise) const;
    long Number(const std::string& setting, long otherwise) const;

    const std::map<std::string, std::string>& Values() const { return values_; }

private:
    void TakeMapping(const std::vector<std::string>& args);

    std::map<std::string, std::string> values_;
};

// For failure messages: what the one was told and the other was not.
std::string Difference(const ToldChip& one, const ToldChip& other);

}  // namespace obtest

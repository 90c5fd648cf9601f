// How a verb of `control` answers.
#pragma once

#include <string>

#include "virtual_board/board/journal.h"

namespace vboard {

inline constexpr int kControlSchema = 1;

// Thrown by a verb that is not done.
struct Refusal {
    int exitCode;
    std::string text;
};

inline Json Done(const Json& facts = Json::object())
{
    Json answer = {{"schema", kControlSchema}, {"ok", true}};
    answer.update(facts);
    return answer;
}

// "sw0:2", as the command names it.
inline std::string PortName(const Json& command)
{
    return command.at("device").get<std::string>() + ":" +
           std::to_string(command.at("port").get<unsigned>());
}

}  // namespace vboard

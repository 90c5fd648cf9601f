#include "tools/orblink_web/reader/message.h"

#include <chrono>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"

namespace web {

int64_t MonotonicMilliseconds()
{
    using std::chrono::milliseconds;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<milliseconds>(now).count();
}

std::string Encoded(const Message& message)
{
    ctl::Model model;
    if (message.answer) {
        auto& answer = model["answer"];
        answer["path"] = message.answer->path;
        answer["code"] = message.answer->code;
        answer["text"] = message.answer->text;
        answer["when"] = message.answer->when;
    }
    model["log"] = message.log;
    return model.dump(-1, ' ', false, ctl::Model::error_handler_t::replace) + "\n";
}

std::optional<Message> Decoded(std::string_view line)
{
    const auto model = ctl::Model::parse(line, nullptr, false);
    try {
        Message message;
        message.log = model.at("log").get<std::vector<std::string>>();
        if (model.contains("answer")) {
            const auto& answer = model["answer"];
            message.answer =
                Answer{answer.at("path").get<std::string>(), answer.at("code").get<int>(),
                       answer.at("text").get<std::string>(), answer.at("when").get<int64_t>()};
        }
        return message;
    } catch (const ctl::Model::exception&) {
        return std::nullopt;
    }
}

}  // namespace web

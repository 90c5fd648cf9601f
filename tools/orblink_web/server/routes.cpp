#include "tools/orblink_web/server/routes.h"

#include <algorithm>
#include <optional>

#include "tools/orblink_web/view/page.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"

namespace web {

namespace {

constexpr char kJson[] = "application/json";
constexpr char kHtml[] = "text/html; charset=utf-8";
constexpr char kPrometheus[] = "text/plain; version=0.0.4; charset=utf-8";
constexpr std::string_view kApi = "/api/";

std::optional<int> HexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return std::nullopt;
}

// Of "mac=...": its text.
std::string QueryText(std::string_view target, std::string_view name)
{
    const size_t mark = target.find('?');
    std::string_view query = mark == std::string_view::npos ? "" : target.substr(mark + 1);
    while (!query.empty()) {
        const std::string_view pair = query.substr(0, query.find('&'));
        if (pair.substr(0, pair.find('=')) == name && pair.size() > name.size())
            return Unescaped(pair.substr(name.size() + 1), true);
        query.remove_prefix(std::min(query.size(), pair.size() + 1));
    }
    return "";
}

int64_t AgeOf(const Answer& answer)
{
    return (MonotonicMilliseconds() - answer.when) / 1000;
}

Reply Failed(unsigned status, int code, const std::string& text)
{
    ctl::Model model;
    model["schema"] = ctl::kSchema;
    model["error"]["code"] = code;
    model["error"]["text"] = text;
    return {status, kJson, model.dump(-1, ' ', false, ctl::Model::error_handler_t::replace) + "\n"};
}

// A command may end with 1 because of one port and still tell of all others.
bool IsError(const Answer& answer)
{
    if (answer.code == 0)
        return false;
    const auto model = ctl::Model::parse(answer.text, nullptr, false);
    return !model.is_object() || model.contains("error");
}

Reply Api(const BoardView& view, const std::string& path)
{
    const Answer* answer = view.Find(path);
    if (answer == nullptr) {
        std::string known;
        for (const auto& other : view.Paths())
            known += " /api/" + other;
        return Failed(
            404, ctl::kNoSuchObject,
            known.empty() ? "the board was not read yet" : "this is not read; there is:" + known);
    }
    const unsigned status = !IsError(*answer)                    ? 200
                            : answer->code == ctl::kNoSuchObject ? 404
                                                                 : 503;
    return {status, kJson, answer->text, AgeOf(*answer)};
}

void AddMetric(std::string& out, const std::string& name, const char* type, const char* help,
               uint64_t value)
{
    out += "# HELP " + name + " " + help + "\n# TYPE " + name + " " + type + "\n" + name + " " +
           std::to_string(value) + "\n";
}

Reply Metrics(const BoardView& view, const ServerFigures& figures)
{
    const Answer* answer = view.Find("metrics");
    const bool readable = answer != nullptr && !answer->text.empty() && answer->text[0] == '#';
    Reply reply{200, kPrometheus, readable ? answer->text : "",
                readable ? AgeOf(*answer) : int64_t{-1}};
    const int64_t silent = MonotonicMilliseconds() - view.LastAnswer();
    AddMetric(reply.body, "orblink_web_board_readable", "gauge",
              "1 when the values of the board are there.", readable ? 1 : 0);
    AddMetric(reply.body, "orblink_web_silence_seconds", "gauge",
              "Time since the board's last answer.", static_cast<uint64_t>(silent) / 1000);
    AddMetric(reply.body, "orblink_web_event_clients", "gauge", "Clients that follow the events.",
              figures.eventClients);
    AddMetric(reply.body, "orblink_web_readings_total", "counter",
              "Lines of orblinkctl that the board was read by.", view.Readings());
    AddMetric(reply.body, "orblink_web_requests_total", "counter", "Requests that were answered.",
              figures.requests);
    AddMetric(reply.body, "orblink_web_reader_starts_total", "counter",
              "Starts of the process that reads the board.", figures.readerStarts);
    return reply;
}

}  // namespace

std::string_view PathOf(std::string_view target)
{
    return target.substr(0, target.find('?'));
}

std::string Unescaped(std::string_view text, bool plusIsBlank)
{
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        const auto high = i + 2 < text.size() ? HexDigit(text[i + 1]) : std::nullopt;
        const auto low = i + 2 < text.size() ? HexDigit(text[i + 2]) : std::nullopt;
        if (text[i] == '%' && high && low) {
            out += static_cast<char>(*high * 16 + *low);
            i += 2;
        } else {
            out += text[i] == '+' && plusIsBlank ? ' ' : text[i];
        }
    }
    return out;
}

Reply Route(const BoardView& view, const ServerFigures& figures, std::string_view target)
{
    const std::string_view path = PathOf(target);
    if (path == "/")
        return {200, kHtml, Page(view, QueryText(target, "mac"))};
    if (path == "/page.css")
        return {200, "text/css; charset=utf-8", kStyleSheet};
    if (path == "/page.js")
        return {200, "text/javascript; charset=utf-8", kScript};
    if (path == "/icon.svg")
        return {200, "image/svg+xml", kIcon};
    if (path == "/part/mac")
        return {200, kHtml, view.Search(QueryText(target, "mac"))};
    if (path == "/metrics")
        return Metrics(view, figures);
    if (path.starts_with(kApi))
        return Api(view, Unescaped(path.substr(kApi.size()), false));
    return {404, "text/plain; charset=utf-8", "There is /, /events, /metrics and /api/.\n"};
}

}  // namespace web

// From a path to what is answered.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "tools/orblink_web/view/board_view.h"

namespace web {

struct Reply {
    unsigned status = 200;
    const char* type = "text/plain; charset=utf-8";
    std::string body;
    // Seconds since what is told was read; below 0 when it was not read.
    int64_t age = -1;
};

struct ServerFigures {
    size_t eventClients = 0;
    uint64_t requests = 0;
    uint64_t readerStarts = 0;
};

// Everything but the stream of events.
Reply Route(const BoardView& view, const ServerFigures& figures, std::string_view target);

// The path of a request's target, without a query.
std::string_view PathOf(std::string_view target);
// %HH and + undone; nothing but these.
std::string Unescaped(std::string_view text, bool plusIsBlank);

}  // namespace web

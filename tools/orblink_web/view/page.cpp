#include "tools/orblink_web/view/page.h"

#include "tools/orblink_web/view/html.h"

namespace web {

namespace {

// Its contents are replaced by the events of the topic's name.
std::string Part(const BoardView& view, Topic topic)
{
    return std::string("<div id=\"") + TopicName(topic) + "\">" + view.Content(topic) + "</div>\n";
}

std::string Section(const char* title, const std::string& content)
{
    return std::string("<section><h2>") + title + "</h2>\n" + content + "</section>\n";
}

std::string SearchForm(const std::string& search)
{
    return "<form action=\"/\" method=\"get\" role=\"search\" id=\"search\">"
           "<label for=\"mac-search\">Search address, port or VLAN</label> "
           "<input id=\"mac-search\" name=\"mac\" type=\"search\" maxlength=\"64\" "
           "autocomplete=\"off\" value=\"" +
           Escaped(search) + "\"> <button>Search</button></form>\n";
}

std::string MacPart(const BoardView& view, const std::string& search)
{
    const std::string found = search.empty() ? view.Content(Topic::kMac) : view.Search(search);
    return SearchForm(search) + "<div id=\"mac\">" + found + "</div>\n";
}

constexpr char kPageHead[] =
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<title>OrbLink</title>\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<meta name=\"color-scheme\" content=\"light dark\">\n"
    "<link rel=\"stylesheet\" href=\"/page.css\">\n"
    "<link rel=\"icon\" href=\"/icon.svg\" type=\"image/svg+xml\">\n"
    "<script src=\"/page.js\" defer></script>\n</head>\n<body>\n"
    "<header><h1>OrbLink</h1>\n";

constexpr char kPageEnd[] =
    "<footer><p>Read-only. The same as JSON: <a href=\"/api/\">/api/</a>, for Prometheus: "
    "<a href=\"/metrics\">/metrics</a>.</p></footer>\n</body>\n</html>\n";

}  // namespace

std::string Page(const BoardView& view, const std::string& search)
{
    return kPageHead +
           ("<div id=\"state\" role=\"status\" aria-live=\"polite\">" +
            view.Content(Topic::kState)) +
           "</div></header>\n"
           "<noscript><p class=\"remark\">The page shows one moment: reload it for the next. "
           "With JavaScript it is live and plots the traffic.</p></noscript>\n<main>\n" +
           Section("Board", Part(view, Topic::kDrawing)) +
           "<section id=\"traffic\" hidden><h2>Traffic of the last minutes</h2>"
           "<div id=\"plots\"></div></section>\n" +
           Section("Ports", Part(view, Topic::kPorts)) + Section("PHYs", Part(view, Topic::kPhys)) +
           Section("Changes", "<div id=\"changes\" role=\"log\" aria-live=\"polite\">" +
                                  view.Content(Topic::kChanges) + "</div>\n") +
           Section("Counters", Part(view, Topic::kCounters)) +
           Section("MAC addresses", MacPart(view, search)) +
           Section("PHY registers", Part(view, Topic::kRegisters)) +
           Section("Log of the library", Part(view, Topic::kLog)) + "</main>\n" + kPageEnd;
}

}  // namespace web

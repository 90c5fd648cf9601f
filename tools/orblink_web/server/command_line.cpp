#include "tools/orblink_web/server/command_line.h"

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <optional>
#include <sstream>
#include <string>

#include "tools/orblink_web/reader/reader.h"
#include "tools/orblink_web/server/server.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/words.h"

namespace web {

namespace {

struct Options {
    // Run as the process that reads the board.
    bool reader = false;
    std::string listen = "127.0.0.1:8080";
    ServerOptions server;
};

constexpr char kLogFile[] = "/var/log/syslog";
constexpr uint64_t kRegisterSeconds = 5;

std::optional<boost::asio::ip::tcp::endpoint> EndpointOf(const std::string& text)
{
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos)
        return std::nullopt;
    std::string host = text.substr(0, colon);
    const auto port = ctl::ParseNumber(text.substr(colon + 1), 0, 65535);
    if (host == "localhost")
        host = "127.0.0.1";
    const bool bracketed = host.size() > 2 && host.front() == '[' && host.back() == ']';
    if (bracketed)
        host = host.substr(1, host.size() - 2);
    boost::system::error_code error;
    const auto address = boost::asio::ip::make_address(host, error);
    if (error || !port || address.is_v6() != bracketed)
        return std::nullopt;
    return boost::asio::ip::tcp::endpoint(address, static_cast<uint16_t>(*port));
}

std::string CheckEndpoint(const std::string& text)
{
    return EndpointOf(text)
               ? ""
               : "'" + text + "' is no address and port, such as 127.0.0.1:8080 or [::1]:8080";
}

// False when the program has to end with the code at once: after --help or a complaint.
bool TakeOptions(int argc, char** argv, Options& options, int& code)
{
    CLI::App app("Shows the board as a live page, as JSON and to Prometheus; changes nothing.",
                 "orblink-web");
    uint64_t registers = kRegisterSeconds;
    options.server.reader.logFile = kLogFile;
    app.add_option("--listen", options.listen,
                   "address and port; port 0: any free one (127.0.0.1:8080)")
        ->type_name("ADDRESS:PORT")
        ->check(CLI::Validator(CheckEndpoint, "", ""));
    app.add_option("--host", options.server.hostNames,
                   "a name by which clients may ask, beside addresses and localhost")
        ->type_name("NAME")
        ->expected(1);
    app.add_option("--names", options.server.reader.namesFile,
                   "labels of ports and PHYs (/etc/orblink/names.toml)")
        ->type_name("FILE");
    app.add_option("--log", options.server.reader.logFile,
                   "the file in which the library's lines are (/var/log/syslog)")
        ->type_name("FILE");
    app.add_option("--registers", registers,
                   "seconds between two readings of the PHY registers; 0: none (5)")
        ->type_name("SECONDS")
        ->check(CLI::Range(0, 86400));
    app.add_flag("--reader", options.reader, "")->group("");
    app.set_version_flag("--version", std::string("orblink-web ") + ORBLINK_WEB_VERSION);
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        code = app.exit(wish);
        return false;
    } catch (const CLI::ParseError& error) {
        std::fprintf(stderr, "orblink-web: %s\n", error.what());
        code = ctl::kUsage;
        return false;
    }
    options.server.listen = *EndpointOf(options.listen);
    options.server.reader.registerPeriod = static_cast<int64_t>(registers) * 1000;
    return true;
}

int Serve(const Options& options)
{
    try {
        Server server(options.server);
        std::ostringstream where;
        where << server.Endpoint();
        std::printf("listening on http://%s/\n", where.str().c_str());
        std::fflush(stdout);
        server.Run();
        return ctl::kDone;
    } catch (const boost::system::system_error& error) {
        std::fprintf(stderr, "orblink-web: %s: %s\n", options.listen.c_str(),
                     error.code().message().c_str());
    } catch (const std::exception& error) {
        std::fprintf(stderr, "orblink-web: %s\n", error.what());
    }
    return ctl::kFailed;
}

}  // namespace

int RunCommandLine(int argc, char** argv)
{
    Options options;
    int code = 0;
    if (!TakeOptions(argc, argv, options, code))
        return code;
    return options.reader ? RunReader(options.server.reader) : Serve(options);
}

}  // namespace web

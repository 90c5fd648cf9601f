#include "virtual_board/board/cable_verbs.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>

#include "virtual_board/board/control.h"
#include "virtual_board/board/control_answer.h"

namespace vboard {
namespace {

Cables& CablesOf(const VirtualBoard& board)
{
    if (board.Plugged() == nullptr)
        throw Refusal{kExitNotSupported,
                      "this board's ports have no interfaces: run it with --ports tap"};
    return *board.Plugged();
}

std::string HostNames(const Cables& cables)
{
    std::vector<std::string> names;
    for (const CableEnd& end : cables.Ends())
        if (!end.host.empty() && std::ranges::find(names, end.host) == names.end())
            names.push_back(end.host);
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list.empty() ? "none" : list;
}

std::chrono::nanoseconds Time(const Json& command, const char* key)
{
    return std::chrono::nanoseconds{command.value(key, int64_t{0})};
}

// A number without zeros behind its point.
std::string Plain(double number)
{
    std::string text = std::to_string(number);
    text.erase(text.find_last_not_of('0') + 1);
    return text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
}

std::string WithChance(const char* option, uint32_t partsPerMillion)
{
    constexpr double kPerCent = WireFaults::kAll / 100.0;
    return partsPerMillion == 0
               ? ""
               : std::string(" --") + option + " " + Plain(partsPerMillion / kPerCent) + "%";
}

std::string WithTime(const char* option, std::chrono::nanoseconds time)
{
    const std::chrono::duration<double, std::milli> ms = time;
    return time.count() == 0 ? "" : std::string(" --") + option + " " + Plain(ms.count()) + "ms";
}

// In the words that set it.
std::string WireText(const WireFaults& wire)
{
    const std::string words =
        WithChance("fcs-errors", wire.fcsErrors) + WithChance("loss", wire.loss) +
        WithChance("duplicate", wire.duplicates) + WithChance("undersize", wire.undersize) +
        WithChance("fragments", wire.fragments) + WithChance("collisions", wire.collisions) +
        WithTime("delay", wire.delay) + WithTime("jitter", wire.jitter);
    return words.empty() ? "good" : words.substr(1);
}

}  // namespace

Json ShowHosts(VirtualBoard& board, const Json&)
{
    Json hosts = Json::array();
    for (const CableEnd& end : CablesOf(board).Ends())
        hosts.push_back({{"host", end.host},
                         {"interface", end.interface},
                         {"port", end.port},
                         {"address", end.address},
                         {"wire", WireText(end.wire)}});
    return Done({{"hosts", hosts}});
}

Json ShowNetwork(VirtualBoard& board, const Json& command)
{
    const auto host = command.at("host").get<std::string>();
    const Cables& cables = CablesOf(board);
    const int fd = cables.NetworkOf(host);
    if (fd < 0)
        throw Refusal{kExitNoSuchObject,
                      "no host '" + host + "' on this board, which has " + HostNames(cables)};
    return Done({{"pid", getpid()}, {"fd", fd}});
}

Json SetWire(VirtualBoard& board, const Json& command)
{
    WireFaults faults;
    faults.fcsErrors = command.value("fcsErrors", 0U);
    faults.loss = command.value("loss", 0U);
    faults.duplicates = command.value("duplicate", 0U);
    faults.undersize = command.value("undersize", 0U);
    faults.fragments = command.value("fragments", 0U);
    faults.collisions = command.value("collisions", 0U);
    faults.delay = Time(command, "delay");
    faults.jitter = Time(command, "jitter");
    const auto device = command.at("device").get<std::string>();
    if (!CablesOf(board).SetWire(device, command.at("port").get<unsigned>(), faults))
        throw Refusal{kExitNoSuchObject, PortName(command) + " is no port with a cable"};
    return Done();
}

Json CaptureFrames(VirtualBoard& board, const Json& command)
{
    std::optional<uint64_t> from;
    if (command.contains("from"))
        from = command["from"].get<uint64_t>();
    const auto captured = CablesOf(board).Capture(command.at("device").get<std::string>(),
                                                  command.at("port").get<unsigned>(), from);
    if (!captured)
        throw Refusal{kExitNoSuchObject, PortName(command) + " is no port with a cable"};
    Json frames = Json::array();
    for (const CapturedFrame& frame : captured->frames)
        frames.push_back({{"timeNs", frame.timeNs},
                          {"received", frame.received},
                          {"comment", frame.comment},
                          {"bytes", frame.bytes}});
    return Done({{"next", captured->next},
                 {"lost", captured->lost},
                 {"kept", captured->kept},
                 {"frames", frames}});
}

Json TraceFrame(VirtualBoard& board, const Json& command)
{
    const auto steps = CablesOf(board).Trace(command.at("device").get<std::string>(),
                                             command.at("port").get<unsigned>(),
                                             command.at("frame").get<std::vector<uint8_t>>());
    if (!steps)
        throw Refusal{kExitNoSuchObject, PortName(command) + " is no port with a cable"};
    Json shown = Json::array();
    for (const auto& [decision, registers] : *steps)
        shown.push_back({{"decision", decision}, {"registers", registers}});
    return Done({{"steps", shown}});
}

}  // namespace vboard

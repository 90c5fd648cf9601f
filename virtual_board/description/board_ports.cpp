#include "virtual_board/description/board_ports.h"

#include <algorithm>
#include <set>

#include "virtual_board/description/interface_address.h"

namespace vboard {
namespace {

constexpr uint32_t kLastPort = std::tuple_size_v<decltype(SwitchDescription::ports)> - 1;
constexpr size_t kMaxInterfaceName = 15;
constexpr size_t kMaxText = 64;
constexpr std::string_view kNoHost = "none";

bool IsInterfaceName(const std::string& name)
{
    constexpr std::string_view kOthers = "_-.";
    return name != "." && name != ".." && std::ranges::all_of(name, [&](char c) {
               return isalnum(static_cast<unsigned char>(c)) != 0 ||
                      kOthers.find(c) != std::string_view::npos;
           });
}

void ReadName(TomlReader& reader, std::string_view key, size_t longest, std::string& name)
{
    const auto given = reader.Text(key, 1, longest);
    if (given && !IsInterfaceName(*given))
        reader.Complain(key, "expected letters, digits, '_', '-' and '.'");
    else if (given)
        name = *given;
}

void ReadAddresses(TomlReader& reader, PortDescription& port)
{
    const auto address = reader.Text("address", 1, kMaxText);
    if (address && !ParseInterfaceAddress(*address))
        reader.Complain("address", "expected an address with prefix length, \"192.0.2.1/24\"");
    port.address = address.value_or("");
    const auto mac = reader.Text("mac", 1, kMaxText);
    MacAddress parsed{};
    if (mac && ParseMac(*mac, parsed) && IsStation(parsed))
        port.mac = parsed;
    else if (mac)
        reader.Complain("mac", "expected an address of one station, \"02:00:00:00:00:01\"");
}

void ReadPort(TomlReader& reader, SwitchDescription& spec, std::set<uint32_t>& described)
{
    reader.Require("port");
    const uint32_t number = reader.Number("port", kLastPort).value_or(0);
    if (reader.Has("port") && !described.insert(number).second)
        reader.Complain("port", "expected a port without a table before");
    PortDescription& port = spec.ports[number];
    ReadName(reader, "interface", kMaxInterfaceName, port.interface);
    port.host = port.interface;
    ReadName(reader, "host", kMaxText, port.host);
    if (port.host == kNoHost)
        port.host.clear();
    ReadAddresses(reader, port);
}

bool Shares(const SwitchDescription& spec, const std::vector<SwitchDescription>& switches)
{
    const auto taken = [&](const SwitchDescription& other, const PortDescription& port) {
        return std::ranges::any_of(other.ports, [&](const PortDescription& theirs) {
            const bool sameHost = &other != &spec && !port.host.empty() && theirs.host == port.host;
            return &theirs != &port && (theirs.interface == port.interface || sameHost);
        });
    };
    return std::ranges::any_of(switches, [&](const SwitchDescription& other) {
        return std::ranges::any_of(spec.ports,
                                   [&](const PortDescription& port) { return taken(other, port); });
    });
}

}  // namespace

void ReadPorts(TomlReader& reader, std::vector<SwitchDescription>& switches)
{
    SwitchDescription& spec = switches.back();
    const std::string name = "sw" + std::to_string(switches.size() - 1);
    for (uint32_t p = 0; p <= kLastPort; ++p) {
        spec.ports[p].interface = name + (p == spec.internalPort ? "soc" : "p" + std::to_string(p));
        spec.ports[p].host = spec.ports[p].interface;
    }
    std::set<uint32_t> described;
    reader.Tables("port", kLastPort + 1,
                  [&](TomlReader& port) { ReadPort(port, spec, described); });
    if (Shares(spec, switches))
        reader.Complain("port",
                        "expected interfaces, and hosts of another switch, with names of "
                        "their own");
}

}  // namespace vboard

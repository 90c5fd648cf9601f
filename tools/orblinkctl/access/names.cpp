#include "tools/orblinkctl/access/names.h"

#include <unistd.h>

#include <map>

#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/model.h"
#include "tools/orblinkctl/access/text_safety.h"
#include "tools/orblinkctl/access/toml_file.h"

namespace ctl {

namespace {

constexpr char kUsualFile[] = "/etc/orblink/names.toml";

struct Names {
    std::string path = kUsualFile;
    bool loaded = false;
    std::map<std::string, PortId, std::less<>> ports;
    std::map<std::string, unsigned, std::less<>> phys;
};

Names& TheNames()
{
    static Names names;
    return names;
}

[[noreturn]] void Refuse(const std::string& path, const std::string& key, const char* allowed)
{
    throw Failure{kUsage, path + ": " + key + " must be " + allowed};
}

void AddPort(Names& names, const std::string& label, const Model& value)
{
    const auto port = value.is_string() ? ParsePort(value.get<std::string>()) : std::nullopt;
    if (!port)
        Refuse(names.path, "port." + label, "\"SWITCH:PORT\", switch 0 or 1 and port 0 to 7");
    names.ports[label] = *port;
}

void AddPhy(Names& names, const std::string& label, const Model& value)
{
    if (!value.is_number_integer() || value < 0 || value > 1)
        Refuse(names.path, "phy." + label, "0 or 1");
    names.phys[label] = value.get<unsigned>();
}

void Fill(Names& names, const Model& file)
{
    for (const auto& [table, entries] : file.items()) {
        if ((table != "port" && table != "phy") || !entries.is_object())
            Refuse(names.path, table, "a table [port] or [phy]");
        for (const auto& [label, value] : entries.items()) {
            if (label.empty() || ParsePort(label))
                Refuse(names.path, table + "." + label, "a label that is not itself an index");
            table == "port" ? AddPort(names, label, value) : AddPhy(names, label, value);
        }
    }
}

Names& Loaded()
{
    Names& names = TheNames();
    if (names.loaded)
        return names;
    names.loaded = true;
    if (names.path != kUsualFile || access(kUsualFile, F_OK) == 0)
        Fill(names, ReadTomlFile(names.path));
    return names;
}

}  // namespace

void UseNamesFile(const std::string& path)
{
    TheNames() = Names{};
    TheNames().path = path;
}

std::optional<PortId> FindPort(std::string_view word)
{
    if (const auto port = ParsePort(word))
        return port;
    const auto& ports = Loaded().ports;
    const auto found = ports.find(word);
    return found == ports.end() ? std::nullopt : std::optional(found->second);
}

std::optional<unsigned> FindPhy(std::string_view word)
{
    if (const auto number = ParseNumber(word, 0, 1))
        return static_cast<unsigned>(*number);
    const auto& phys = Loaded().phys;
    const auto found = phys.find(word);
    return found == phys.end() ? std::nullopt : std::optional(found->second);
}

std::string PortLabel(unsigned device, unsigned port)
{
    for (const auto& [label, id] : Loaded().ports)
        if (id.device == device && id.port == port)
            return Printable(label);
    return {};
}

std::string PhyLabel(unsigned device)
{
    for (const auto& [label, index] : Loaded().phys)
        if (index == device)
            return Printable(label);
    return {};
}

}  // namespace ctl

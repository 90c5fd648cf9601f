#include "virtual_board/description/board_file.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>

#include "toml/text_check.h"
#include "virtual_board/description/board_ports.h"
#include "virtual_board/description/toml_reader.h"

namespace vboard {
namespace {

constexpr std::string_view kModes[] = {"UNKNOWN", "MII",   "RMII",  "GMII",
                                       "RGMII",   "SGMII", "HSGMII"};
constexpr std::string_view kSpeeds[] = {"UNKNOWN", "AUTONEG", "10M", "100M", "1G", "2.5G", "10G"};
constexpr std::string_view kPortKinds[] = {"none", "tap"};
constexpr std::string_view kResetStates[] = {"released", "held"};
constexpr size_t kMaxLibraryName = 31;
constexpr uint32_t kMaxMdioAddress = 31;
constexpr uint32_t kMaxMdioBuses = 8;
constexpr uint32_t kMaxPort = 7;
constexpr uint32_t kMaxNegotiationMs = 60'000;

template <typename Value, typename Given>
void Assign(Value& value, const std::optional<Given>& given)
{
    if (given)
        value = static_cast<Value>(*given);
}

void ReadWiring(TomlReader& reader, std::span<const std::string_view> chips, Wiring& wiring)
{
    reader.Require("hal");
    reader.Require("serdes");
    Assign(wiring.halLibName, reader.Text("hal", 1, kMaxLibraryName));
    auto chip = reader.Word("chip", chips);
    wiring.chip = chips[chip.value_or(0)];
    Assign(wiring.serdesId, reader.Number("serdes", 1));
    Assign(wiring.enableGpioPin, reader.NumberOrNone("enable_pin", kNoPin - 1, kNoPin));
    Assign(wiring.resetGpioPin, reader.NumberOrNone("reset_pin", kNoPin - 1, kNoPin));
    Assign(wiring.mdioBus, reader.NumberOrNone("mdio_bus", kMaxMdioBuses - 1, kNoMdio));
    Assign(wiring.mdioAddr, reader.NumberOrNone("mdio_address", kMaxMdioAddress, kNoMdio));
}

void ReadSwitch(TomlReader& reader, SwitchDescription& spec)
{
    static constexpr std::string_view kChips[] = {"vswitch", "none"};
    ReadWiring(reader, kChips, spec.wiring);
    Assign(spec.wiring.mode, reader.Word("internal_mode", kModes));
    Assign(spec.wiring.speed, reader.Word("internal_speed", kSpeeds));
    Assign(spec.internalPort, reader.Number("internal_port", kMaxPort));
    Assign(spec.preResetArg, reader.Number("pre_reset_arg", UINT32_MAX));
    Assign(spec.reservedWord, reader.Number("reserved_word", UINT32_MAX));
    spec.linksUp = reader.Numbers("links_up", kMaxPort);
}

struct PartnerMode {
    std::string_view word;
    bool LinkPartner::*member;
};
constexpr PartnerMode kPartnerModes[] = {
    {"10half", &LinkPartner::half10},     {"10full", &LinkPartner::full10},
    {"100half", &LinkPartner::half100},   {"100full", &LinkPartner::full100},
    {"1000half", &LinkPartner::half1000}, {"1000full", &LinkPartner::full1000},
    {"2500full", &LinkPartner::full2500},
};

void ReadModes(TomlReader& reader, LinkPartner& end)
{
    if (reader.Has("modes"))
        for (const PartnerMode& mode : kPartnerModes)
            end.*mode.member = false;
    size_t count = 0;
    auto take = [&](const std::string& word) {
        const auto* mode = std::ranges::find(kPartnerModes, word, &PartnerMode::word);
        ++count;
        if (mode == std::end(kPartnerModes))
            return false;
        end.*mode->member = true;
        return true;
    };
    constexpr std::string_view kExpected =
        "\"10half\", \"10full\", \"100half\", \"100full\", \"1000half\", \"1000full\" or "
        "\"2500full\"";
    if (reader.Texts("modes", kExpected, take) && count == 0)
        reader.Complain("modes", "expected at least one mode");
}

void ReadPartner(TomlReader& reader, LinkPartner& partner)
{
    Assign(partner.connected, reader.Bool("connected"));
    Assign(partner.negotiates, reader.Bool("autoneg"));
    Assign(partner.eee, reader.Bool("eee"));
    ReadModes(reader, partner);
}

void ReadPhy(TomlReader& reader, PhyDescription& spec)
{
    static constexpr std::string_view kChips[] = {"ieee8023", "none"};
    ReadWiring(reader, kChips, spec.wiring);
    Assign(spec.wiring.mode, reader.Word("port_mode", kModes));
    Assign(spec.wiring.speed, reader.Word("port_speed", kSpeeds));
    Assign(spec.identifier, reader.Number("identifier", UINT32_MAX));
    Assign(spec.clause45, reader.Bool("clause45"));
    Assign(spec.laneGood, reader.Bool("lane_good"));
    Assign(spec.negotiationMs, reader.Number("negotiation_ms", kMaxNegotiationMs));
    Assign(spec.abilities.eee, reader.Bool("eee"));
    ReadModes(reader, spec.abilities);
    reader.Table("partner", [&](TomlReader& partner) { ReadPartner(partner, spec.partner); });
}

void ReadFaultValue(TomlReader& reader, Fault& fault)
{
    const FaultKind& kind = *fault.kind;
    fault.value = kind.defaultValue;
    fault.times = kind.defaultTimes;
    if (!reader.Has("value"))
        return;
    if (kind.valueName.empty()) {
        reader.Complain("value", "the fault '" + std::string(kind.name) + "' takes no value");
        return;
    }
    Assign(fault.value, reader.Number("value", kind.maxValue, kind.valueName == "ERRNO" ? 1 : 0));
}

void ReadFault(TomlReader& reader, std::vector<Fault>& faults)
{
    reader.Require("name");
    auto name = reader.Text("name", 1, 64);
    Fault fault{name ? FindFault(*name) : nullptr, 0};
    if (name && fault.kind == nullptr)
        reader.Complain("name", "expected one of " + FaultNames());
    if (fault.kind != nullptr)
        ReadFaultValue(reader, fault);
    reader.Number("value", UINT32_MAX);
    Assign(fault.at, reader.Number("at", UINT32_MAX, 1));
    Assign(fault.times, reader.Number("times", UINT32_MAX));
    if (fault.kind != nullptr)
        faults.push_back(fault);
}

void ReadMacs(TomlReader& reader, std::array<MacAddress, 5>& macs)
{
    size_t count = 0;
    auto take = [&](const std::string& text) {
        MacAddress mac{};
        const bool good = ParseMac(text, mac) && IsStation(mac);
        if (count < macs.size())
            macs[count] = mac;
        ++count;
        return good;
    };
    bool given = reader.Texts("mac_addresses",
                              "an address of one station such as \"02:00:00:00:00:01\"", take);
    if (given && count != macs.size())
        reader.Complain("mac_addresses", "expected five addresses");
}

// Families with devices first, so that a board of PHYs alone need not wait for a switch receiver.
std::vector<Family> DefaultOrder(const BoardDescription& spec)
{
    if (spec.switches.empty() && !spec.phys.empty())
        return {Family::kPhy, Family::kSwitch};
    return {Family::kSwitch, Family::kPhy};
}

void ReadOrder(TomlReader& reader, BoardDescription& spec)
{
    auto take = [&](const std::string& word) {
        auto family = word == kFamilyNames[1] ? Family::kPhy : Family::kSwitch;
        bool known = std::ranges::find(kFamilyNames, word) != std::end(kFamilyNames);
        if (!known || std::ranges::find(spec.order, family) != spec.order.end())
            return false;
        spec.order.push_back(family);
        return true;
    };
    reader.Texts("mailbox_order", "\"switch\" and \"phy\", each at most once", take);
    if (!reader.Has("mailbox_order"))
        spec.order = DefaultOrder(spec);
}

void ReadDevices(TomlReader& reader, BoardDescription& spec)
{
    std::map<std::pair<uint8_t, uint8_t>, bool> taken;
    auto check = [&](TomlReader& device, const Wiring& wiring) {
        if (wiring.mdioBus == kNoMdio || wiring.mdioAddr == kNoMdio)
            return;
        if (wiring.mdioBus >= spec.mdioBuses)
            device.Complain("mdio_bus",
                            "expected a bus below mdio_buses = " + std::to_string(spec.mdioBuses));
        if (!taken.emplace(std::pair{wiring.mdioBus, wiring.mdioAddr}, true).second)
            device.Complain("mdio_address", "expected an address that no other device has");
    };
    reader.Tables("switch", kMaxDevices, [&](TomlReader& device) {
        ReadSwitch(device, spec.switches.emplace_back());
        ReadPorts(device, spec.switches);
        check(device, spec.switches.back().wiring);
    });
    reader.Tables("phy", kMaxDevices, [&](TomlReader& device) {
        ReadPhy(device, spec.phys.emplace_back());
        check(device, spec.phys.back().wiring);
    });
}

void ReadBoard(TomlReader& reader, BoardDescription& spec)
{
    Assign(spec.name, reader.Text("name", 0, 200));
    Assign(spec.isolation, reader.Bool("isolation"));
    Assign(spec.ulp, reader.Bool("ulp"));
    Assign(spec.battery, reader.Number("battery", INT32_MAX));
    Assign(spec.mdioBuses, reader.Number("mdio_buses", kMaxMdioBuses, 1));
    Assign(spec.tapPorts, reader.Word("ports", kPortKinds));
    Assign(spec.resetHeldAtPowerOn, reader.Word("reset_lines_at_power_on", kResetStates));
    ReadMacs(reader, spec.macAddresses);
    ReadDevices(reader, spec);
    ReadOrder(reader, spec);
    reader.Tables("fault", SIZE_MAX, [&](TomlReader& fault) { ReadFault(fault, spec.faults); });
}

}  // namespace

std::variant<BoardDescription, BoardFileErrors> ParseBoard(std::string_view text,
                                                           std::string_view path)
{
    Problems problems{path};
    if (const auto refused = toml_text::Check(text)) {
        const toml::source_position where{refused->line, refused->column};
        problems.Add({where, where, nullptr}, refused->what);
        return problems.InFileOrder();
    }
    BoardDescription spec;
    try {
        toml::table table = toml::parse(text, path);
        TomlReader reader{table, problems};
        ReadBoard(reader, spec);
    } catch (const toml::parse_error& error) {
        problems.Add(error.source(), std::string(error.description()));
    }
    BoardFileErrors errors = problems.InFileOrder();
    if (!errors.empty())
        return errors;
    return spec;
}

std::variant<BoardDescription, BoardFileErrors> LoadBoardFile(const std::string& path)
{
    std::error_code error;
    const auto kind = std::filesystem::status(path, error).type();
    if (error || kind != std::filesystem::file_type::regular)
        return BoardFileErrors{path + (error ? ": cannot be read" : ": is no regular file")};
    std::ifstream file{path, std::ios::binary};
    std::string text(toml_text::kLongestFile + 1, '\0');
    file.read(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.is_open() || file.bad())
        return BoardFileErrors{path + ": cannot be read"};
    text.resize(static_cast<size_t>(file.gcount()));
    return ParseBoard(text, path);
}

}  // namespace vboard

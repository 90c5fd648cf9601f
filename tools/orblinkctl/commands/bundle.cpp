// All that support needs of a board, in one archive.
#include <sys/utsname.h>

#include <cstring>
#include <functional>
#include <map>
#include <regex>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/config/config_model.h"
#include "tools/orblinkctl/facts/board_model.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/mac_table.h"
#include "tools/orblinkctl/facts/phy_counters.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/line/session.h"
#include "tools/orblinkctl/output/archive.h"
#include "tools/orblinkctl/output/file.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

// The same address gets the same name everywhere in the bundle.
class Anonymiser {
public:
    std::string operator()(const std::string& text)
    {
        static const std::regex address("[0-9A-Fa-f]{2}(:[0-9A-Fa-f]{2}){5}");
        std::string out;
        std::sregex_iterator at(text.begin(), text.end(), address);
        size_t copied = 0;
        for (; at != std::sregex_iterator(); ++at) {
            const auto position = static_cast<size_t>(at->position());
            out += text.substr(copied, position - copied) + Name(at->str());
            copied = position + static_cast<size_t>(at->length());
        }
        return out + text.substr(copied);
    }

private:
    std::string Name(std::string address)
    {
        for (char& c : address)
            c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
        const auto known = names_.emplace(address, names_.size() + 1).first;
        return "address-" + std::to_string(known->second);
    }

    std::map<std::string, size_t> names_;
};

class Bundle {
public:
    explicit Bundle(bool anonymise) : anonymise_(anonymise) {}

    void Add(const std::string& name, const std::string& text)
    {
        files_.emplace_back("orblink/" + name, anonymise_ ? anonymiser_(text) : text);
    }

    void AddBytes(const std::string& name, const void* data, size_t size)
    {
        files_.emplace_back("orblink/" + name, std::string(static_cast<const char*>(data), size));
    }

    // A part that cannot be had does not keep the others out.
    void Try(const std::string& name, const std::function<Model()>& read)
    {
        Model model;
        try {
            model = read();
        } catch (const Failure& failure) {
            model["failure"] = failure.text;
        }
        model["schema"] = kSchema;
        Add(name, model.dump(2, ' ', false, Model::error_handler_t::replace) + "\n");
    }

    bool Anonymises() const { return anonymise_; }
    const std::vector<ArchiveFile>& Files() const { return files_; }

private:
    bool anonymise_;
    Anonymiser anonymiser_;
    std::vector<ArchiveFile> files_;
};

std::string Versions()
{
    utsname system{};
    uname(&system);
    return VersionText() + "kernel " + system.sysname + " " + system.release + " " +
           system.machine + "\nregion format: switch " +
           std::to_string(sizeof(SwitchDeviceRegion)) + " bytes, PHY " +
           std::to_string(sizeof(PhyDeviceRegion)) + " bytes\n";
}

void AddSwitchRegion(Bundle& bundle)
{
    auto region = ReadSwitches();
    if (bundle.Anonymises()) {
        for (auto& record : region.device)
            for (auto& entry : record.config.macToVlanTable)
                std::memset(entry.Mac, 0, sizeof entry.Mac);
        // What a HAL keeps there is its own; it may well be an address.
        std::memset(region.halPrivData, 0, sizeof region.halPrivData);
    }
    bundle.AddBytes("switch-region.bin", &region, sizeof region);
}

void AddPhyRegion(Bundle& bundle)
{
    auto region = ReadPhys();
    if (bundle.Anonymises())
        std::memset(region.halPrivData, 0, sizeof region.halPrivData);
    bundle.AddBytes("phy-region.bin", &region, sizeof region);
}

Model AllCounters()
{
    const auto region = ReadSwitches();
    Model model;
    model["ports"] = Model::array();
    for (auto& port : StoredPorts(region)) {
        const PortId id{port["switch"].get<unsigned>(), port["port"].get<unsigned>()};
        Model entry;
        entry["switch"] = id.device;
        entry["port"] = id.port;
        entry["counters"] = IsEnabled(region.device[id.device])
                                ? PortCounters(region.device[id.device], id)
                                : Model();
        model["ports"].push_back(std::move(entry));
    }
    return model;
}

Model AllMacs()
{
    const auto region = ReadSwitches();
    Model model;
    model["entries"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device)
        if (IsEnabled(region.device[device]))
            for (auto& entry : MacEntries(region.device[device], device))
                model["entries"].push_back(std::move(entry));
    return model;
}

// The direct registers of a switch are those that every chip behind an MDIO address has.
Model SwitchRegisters()
{
    const auto region = ReadSwitches();
    Model model;
    model["registers"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        for (uint16_t reg = 0; reg < 32 && IsEnabled(region.device[device]); ++reg) {
            uint16_t value[32] = {};
            const bool read = ORBLINK_SmiRead(static_cast<uint8_t>(device), reg, value) == 0;
            Model entry;
            entry["object"] = SwitchObject(device);
            entry["register"] = reg;
            entry["value"] = read ? Model(value[0]) : Model();
            model["registers"].push_back(std::move(entry));
        }
    }
    return model;
}

// What the VS08 has at most at a port; other chips answer to what they have of it.
constexpr uint16_t kPortRegisters = 0x1D;

void AddPortRegisters(Model& registers, unsigned device, unsigned port)
{
    const std::string object = SwitchObject(device) + " port " + std::to_string(port);
    for (uint16_t reg = 0; reg < kPortRegisters; ++reg) {
        uint16_t value[32] = {};
        const bool read = ORBLINK_ReadPortReg(static_cast<uint8_t>(device),
                                              static_cast<uint16_t>(port), reg, value) == 0;
        Model entry;
        entry["object"] = object;
        entry["register"] = reg;
        entry["value"] = read ? Model(value[0]) : Model();
        registers.push_back(std::move(entry));
    }
}

Model PortRegisters()
{
    const auto region = ReadSwitches();
    Model model;
    model["registers"] = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        for (unsigned port = 0; port < PortCount(record) && IsEnabled(record); ++port)
            AddPortRegisters(model["registers"], device, port);
    }
    return model;
}

Model PhyRegisters()
{
    const auto region = ReadPhys();
    Model model;
    model["registers"] = Model::array();
    for (unsigned device = 0; device < region.NumOfPhys; ++device) {
        if (region.phy[device].config.hwState != EP_HW_STATE_ENABLED)
            continue;
        for (uint32_t reg = 0; reg < 32; ++reg) {
            uint16_t value = 0;
            const bool read = ETHPHY_ReadMdio(static_cast<uint8_t>(device), reg, &value) == 0;
            Model entry;
            entry["object"] = PhyObject(device);
            entry["register"] = reg;
            entry["value"] = read ? Model(value) : Model();
            model["registers"].push_back(std::move(entry));
        }
    }
    return model;
}

void CollectSwitches(Bundle& bundle)
{
    AddSwitchRegion(bundle);
    bundle.Try("counters.json", AllCounters);
    bundle.Try("mac-table.json", AllMacs);
    bundle.Try("switch-registers.json", SwitchRegisters);
    bundle.Try("port-registers.json", PortRegisters);
}

void CollectPhys(Bundle& bundle)
{
    AddPhyRegion(bundle);
    bundle.Try("phy-registers.json", PhyRegisters);
}

ExitCode Collect(Call& call)
{
    Bundle bundle(call.Has("--anonymise"));
    RecordAllLines();
    bundle.Add("versions.txt", Versions());
    bundle.Try("board.json", LiveBoard);
    bundle.Try("configuration.json", CurrentConfig);
    if (IsInitialised(Family::kSwitch))
        CollectSwitches(bundle);
    if (IsInitialised(Family::kPhy))
        CollectPhys(bundle);
    bundle.Add("library.log", RecordedLines());
    DropHeldLogLines();
    WriteArchive(call.Word("FILE"), bundle.Files());
    Model model;
    model["file"] = call.Word("FILE");
    model["contents"] = Model::array();
    for (const auto& [name, content] : bundle.Files())
        model["contents"].push_back(name);
    WriteOut(Rendered(call, model));
    return kDone;
}

constexpr Command kBundleCommands[] = {
    {"bundle FILE", "--anonymise",
     "versions, board data, regions, registers, counters and the library's log as .tar.gz",
     "ORBLINK_GetSwitchDevices ORBLINK_GetPortCounters ORBLINK_ForEachMacEntry ORBLINK_SmiRead "
     "ORBLINK_ReadPortReg ETHPHY_ReadMdio",
     nullptr, PrintModel, Collect},
};

}  // namespace

std::span<const Command> BundleCommands()
{
    return kBundleCommands;
}

}  // namespace ctl

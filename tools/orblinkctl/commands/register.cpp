// Raw registers of switches and PHYs.
#include <cstring>
#include <fstream>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/log_lines.h"
#include "tools/orblinkctl/commands/hal_usage.h"
#include "tools/orblinkctl/commands/register_access.h"
#include "tools/orblinkctl/commands/register_lists.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/mii_decode.h"
#include "tools/orblinkctl/facts/vs08_decode.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

// What a HAL writes through the value pointer: 16 bits as a rule, with room for more.
struct HalValue {
    uint16_t low = 0;
    uint8_t room[62] = {};
};

RegisterAccess PortAccess(const Call& call)
{
    const SwitchTarget target(call);
    const auto device = target.device;
    const auto port = call.As<uint16_t>("PORT-NUMBER");
    const std::string object = target.object + " port " + std::to_string(port);
    return {object,
            [=](uint16_t reg) {
                HalValue value;
                Enter(Family::kSwitch);
                Check(ORBLINK_ReadPortReg(device, port, reg, &value),
                      object + " register " + Hex(reg, 4), "ORBLINK_ReadPortReg");
                return value.low;
            },
            [=](uint16_t reg, uint16_t value) {
                Enter(Family::kSwitch);
                Check(ORBLINK_WritePortReg(device, port, reg, value),
                      object + " register " + Hex(reg, 4), "ORBLINK_WritePortReg");
            }};
}

RegisterAccess SmiAccess(const Call& call)
{
    const SwitchTarget target(call);
    const auto device = target.device;
    const std::string object = target.object;
    return {object,
            [=](uint16_t reg) {
                HalValue value;
                Enter(Family::kSwitch);
                Check(ORBLINK_SmiRead(device, reg, &value), object + " register " + Hex(reg, 4),
                      "ORBLINK_SmiRead");
                return value.low;
            },
            [=](uint16_t reg, uint16_t value) {
                Enter(Family::kSwitch);
                Check(ORBLINK_SmiWrite(device, reg, value), object + " register " + Hex(reg, 4),
                      "ORBLINK_SmiWrite");
            }};
}

template <typename Read, typename Write>
RegisterAccess PhyAccess(const Call& call, const char* readName, const char* writeName, Read read,
                         Write write)
{
    const PhyTarget target(call);
    const auto device = target.device;
    const std::string object = target.object;
    return {object,
            [=](uint16_t reg) {
                uint16_t value = 0;
                Enter(Family::kPhy);
                Check(read(device, reg, &value), object + " register " + Hex(reg, 4), readName);
                return value;
            },
            [=](uint16_t reg, uint16_t value) {
                Enter(Family::kPhy);
                Check(write(device, reg, value), object + " register " + Hex(reg, 4), writeName);
            }};
}

RegisterAccess MdioAccess(const Call& call)
{
    if (ParseRange(call.Word("REGISTERS"))->last > 31)
        throw Failure{kUsage, "bad REGISTERS '" + call.Word("REGISTERS") +
                                  "': allowed is a clause-22 register or a range, 0 to 31"};
    return PhyAccess(call, "ETHPHY_ReadMdio", "ETHPHY_WriteMdio", ETHPHY_ReadMdio,
                     ETHPHY_WriteMdio);
}

RegisterAccess MmdAccess(const Call& call)
{
    const auto mmd = call.As<uint8_t>("PARTITION");
    return PhyAccess(
        call, "ETHPHY_ReadMmd", "ETHPHY_WriteMmd",
        [mmd](uint8_t device, uint16_t reg, uint16_t* value) {
            return ETHPHY_ReadMmd(device, mmd, reg, value);
        },
        [mmd](uint8_t device, uint16_t reg, uint16_t value) {
            return ETHPHY_WriteMmd(device, mmd, reg, value);
        });
}

RegisterAccess ChipAccess(const Call& call)
{
    return PhyAccess(call, "ETHPHY_ReadChipReg", "ETHPHY_WriteChipReg", ETHPHY_ReadChipReg,
                     ETHPHY_WriteChipReg);
}

template <RegisterAccess (*Access)(const Call&)>
Model Read(Call& call)
{
    return ReadRegisters(call, Access(call));
}

template <RegisterAccess (*Access)(const Call&)>
Model Write(Call& call)
{
    return WriteRegisters(call, Access(call));
}

// All that clause 22 has; null where the PHY does not answer. The first one every PHY has.
Model ReadAllMdio(Call& call)
{
    call.values["REGISTERS"] = "0";
    const RegisterAccess access = MdioAccess(call);
    Model model = ReadRegisters(call, access);
    for (uint16_t reg = 1; reg < 32; ++reg) {
        Model entry = model["registers"].front();
        entry["register"] = reg;
        try {
            entry["value"] = access.read(reg);
        } catch (const Failure& failure) {
            if (failure.code != kFailed)
                throw;
            DropHeldLogLines();
            entry["value"] = nullptr;
        }
        model["registers"].push_back(std::move(entry));
    }
    if (call.Has("--decode"))
        DecodeRegisters(model, std::nullopt);
    return model;
}

// What the bits mean is known of one chip.
void RequireKnownRegisters(const Call& call)
{
    const SwitchTarget target(call);
    if (!IsVs08(target.Record()))
        throw Failure{kUnsupported, target.object +
                                        ": the registers of its chip are not known here: again "
                                        "without --decode"};
}

Model ReadPortRegisters(Call& call)
{
    if (call.Has("--decode"))
        RequireKnownRegisters(call);
    Model model = ReadRegisters(call, PortAccess(call));
    if (call.Has("--decode"))
        DecodeChipRegisters(model, PortBlock(call.As<unsigned>("PORT-NUMBER")));
    return model;
}

Model ReadSmi(Call& call)
{
    if (call.Has("--decode"))
        RequireKnownRegisters(call);
    Model model = ReadRegisters(call, SmiAccess(call));
    if (call.Has("--decode"))
        DecodeChipRegisters(model, 0);
    return model;
}

Model ReadMdio(Call& call)
{
    Model model = ReadRegisters(call, MdioAccess(call));
    if (call.Has("--decode"))
        DecodeRegisters(model, std::nullopt);
    return model;
}

Model ReadMmd(Call& call)
{
    Model model = ReadRegisters(call, MmdAccess(call));
    if (call.Has("--decode"))
        DecodeRegisters(model, call.As<unsigned>("PARTITION"));
    return model;
}

// A line "0x0001: 0x796d" as "mdio" prints them; what follows on a line is left alone.
Model DumpLine(const std::string& line, const std::string& where)
{
    const auto words = SplitWords(line);
    const auto reg = words.size() < 2 || !words[0].ends_with(':')
                         ? std::nullopt
                         : ParseNumber(words[0].substr(0, words[0].size() - 1), 0, 0xFFFF);
    const auto value = reg ? ParseNumber(words[1], 0, 0xFFFF) : std::nullopt;
    if (!value)
        throw Failure{kUsage, where + ": expected REGISTER: VALUE, not '" + line + "'"};
    Model entry;
    entry["object"] = nullptr;
    entry["register"] = *reg;
    entry["value"] = *value;
    return entry;
}

Model DecodeDump(Call& call)
{
    const std::string& path = call.Word("FILE");
    std::ifstream file(path);
    if (!file)
        throw Failure{kUsage, path + ": " + std::strerror(errno)};
    Model model;
    model["registers"] = Model::array();
    std::string line;
    for (int number = 1; std::getline(file, line); ++number)
        if (line.find_first_not_of(" \t") == 0)
            model["registers"].push_back(DumpLine(line, path + ":" + std::to_string(number)));
    DecodeRegisters(model, call.Has("PARTITION") ? std::optional(call.As<unsigned>("PARTITION"))
                                                 : std::nullopt);
    return model;
}

Model Ioctl(Call& call)
{
    const SwitchTarget target(call);
    const std::string& word = call.Word("COMMAND-NUMBER");
    const bool negative = word.starts_with("-");
    const auto magnitude = static_cast<int64_t>(*ParseNumber(word.substr(negative ? 1 : 0)));
    std::vector<uint8_t> parameter;
    if (call.Has("PARAMETER"))
        parameter = *ParseBytes(call.Word("PARAMETER"));
    const size_t size = parameter.size();
    // A HAL may answer with more than it was given.
    parameter.resize(4096);
    Check(ORBLINK_VendorSpecificIoctl(target.device,
                                      static_cast<int>(negative ? -magnitude : magnitude),
                                      call.Has("PARAMETER") ? parameter.data() : nullptr),
          target.object, "ORBLINK_VendorSpecificIoctl");
    return Change(target.object, "ioctl " + word,
                  size == 0 ? Model() : Model(BytesWord(parameter.data(), size)), true);
}

constexpr Command kRegisterCommands[] = {
    {"reg", "", "the switches and ports whose registers can be named", "ORBLINK_GetSwitchDevices",
     PortRegisterTargets, PrintModel},
    {"reg SWITCH PORT-NUMBER REGISTERS", "--decode", "read registers of a switch port",
     "ORBLINK_ReadPortReg", ReadPortRegisters, PrintRegisters},
    {"reg SWITCH PORT-NUMBER REGISTERS VALUE", "", "write registers of a switch port",
     "ORBLINK_WritePortReg", Write<PortAccess>, PrintChanges},
    {"smi", "", "where each switch is on the MDIO buses", "ORBLINK_GetSwitchDevices", SmiTargets,
     PrintModel},
    {"smi SWITCH REGISTERS", "--decode", "read SMI registers of a switch", "ORBLINK_SmiRead",
     ReadSmi, PrintRegisters},
    {"smi SWITCH REGISTERS VALUE", "", "write SMI registers of a switch", "ORBLINK_SmiWrite",
     Write<SmiAccess>, PrintChanges},
    {"ioctl", "", "the commands that the HAL of each switch knows", "", IoctlUsage, PrintUsage},
    {"ioctl SWITCH COMMAND-NUMBER [PARAMETER]", "", "a command of the switch's HAL",
     "ORBLINK_VendorSpecificIoctl", Ioctl, PrintChanges},
    {"mdio", "", "every PHY with its MDIO address and identifier", "ETHPHY_ReadMdio", MdioTargets,
     PrintMdioTargets},
    {"mdio PHY", "--decode", "read every clause-22 register of a PHY", "ETHPHY_ReadMdio",
     ReadAllMdio, PrintRegisters},
    {"mdio PHY REGISTERS", "--decode", "read clause-22 registers of a PHY", "ETHPHY_ReadMdio",
     ReadMdio, PrintRegisters},
    {"mdio PHY REGISTERS VALUE", "", "write clause-22 registers of a PHY", "ETHPHY_WriteMdio",
     Write<MdioAccess>, PrintChanges},
    {"mdio decode FILE", "", "decode a dump of clause-22 registers", "", DecodeDump,
     PrintRegisters},
    {"mmd", "", "every PHY with its clause-45 partitions", "ETHPHY_ReadMmd", MmdTargets,
     PrintMmdTargets},
    {"mmd PHY PARTITION REGISTERS", "--decode", "read clause-45 registers of a PHY",
     "ETHPHY_ReadMmd", ReadMmd, PrintRegisters},
    {"mmd PHY PARTITION REGISTERS VALUE", "", "write clause-45 registers of a PHY",
     "ETHPHY_WriteMmd", Write<MmdAccess>, PrintChanges},
    {"mmd decode PARTITION FILE", "", "decode a dump of clause-45 registers", "", DecodeDump,
     PrintRegisters},
    {"phy PHY reg REGISTERS", "", "read registers by the HAL's own numbering", "ETHPHY_ReadChipReg",
     Read<ChipAccess>, PrintRegisters},
    {"phy PHY reg REGISTERS VALUE", "", "write registers by the HAL's own numbering",
     "ETHPHY_WriteChipReg", Write<ChipAccess>, PrintChanges},
};

}  // namespace

std::span<const Command> RegisterCommands()
{
    return kRegisterCommands;
}

}  // namespace ctl

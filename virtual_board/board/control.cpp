#include "virtual_board/board/control.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "virtual_board/board/cable_verbs.h"
#include "virtual_board/board/control_answer.h"

namespace vboard {
namespace {

constexpr unsigned kLastRegister = 31;
constexpr std::string_view kAllFaults = "clear";

Json Refused(const Refusal& refusal)
{
    return {{"schema", kControlSchema},
            {"ok", false},
            {"error", refusal.text},
            {"exit", refusal.exitCode}};
}

const Device& FindDevice(const VirtualBoard& board, const Json& command)
{
    auto name = command.at("device").get<std::string>();
    std::string names;
    for (const Device& device : board.Devices()) {
        if (device.name == name)
            return device;
        names += (names.empty() ? "" : ", ") + device.name;
    }
    throw Refusal{kExitNoSuchObject, "no device '" + name + "' on this board, which has " +
                                         (names.empty() ? "none" : names)};
}

MdioDevice& FindChip(const VirtualBoard& board, const Json& command)
{
    const Device& device = FindDevice(board, command);
    if (!device.chip)
        throw Refusal{kExitNotSupported, device.name + " has no chip on this board"};
    device.chip->Advance(board.Clock().Now());
    return *device.chip;
}

Json ShowDevice(const VirtualBoard& board, const Device& device)
{
    const Wiring& wiring = *device.wiring;
    Json shown = {{"chip", wiring.chip},         {"halLibName", wiring.halLibName},
                  {"serdesId", wiring.serdesId}, {"resetGpioPin", wiring.resetGpioPin},
                  {"mdioBus", wiring.mdioBus},   {"mdioAddr", wiring.mdioAddr}};
    if (device.chip) {
        device.chip->Advance(board.Clock().Now());
        shown["state"] = device.chip->State();
    }
    return shown;
}

Json ShowDevices(const VirtualBoard& board)
{
    Json shown = Json::object();
    for (const Device& device : board.Devices())
        shown[device.name] = ShowDevice(board, device);
    return shown;
}

Json ShowState(VirtualBoard& board, const Json& command)
{
    if (command.contains("device")) {
        Json shown = Json::object();
        shown[command["device"].get<std::string>()] = ShowDevice(board, FindDevice(board, command));
        return Done({{"devices", shown}});
    }
    Json macs = Json::array();
    for (const MacAddress& mac : board.Description().macAddresses)
        macs.push_back(FormatMac(mac));
    Json state = {
        {"board", board.Description().name},  {"timeNs", board.Clock().Now().count()},
        {"timeScale", board.Clock().Scale()}, {"isolation", board.Description().isolation},
        {"ulp", board.Description().ulp},     {"macAddresses", macs},
        {"mailbox", board.Cpu().State()}};
    state.update(board.SystemOnChip().State());
    state["faults"] = board.ActiveFaults().Show();
    state["journal"] = {{"entries", board.Log().Size()}, {"dropped", board.Log().Dropped()}};
    state["devices"] = ShowDevices(board);
    return Done(state);
}

Json ShowJournal(VirtualBoard& board, const Json& command)
{
    JournalQuery query;
    if (command.contains("kind"))
        query.kind = JournalKindFromName(command["kind"].get<std::string>());
    if (command.contains("kind") && !query.kind)
        throw Refusal{kExitUsage, "unknown kind of journal entry"};
    query.tail = command.value("tail", query.tail);
    return Done(board.Log().Show(query));
}

Json SetBattery(VirtualBoard& board, const Json& command)
{
    board.SystemOnChip().SetBattery(command.at("value").get<uint32_t>());
    return Done();
}

Json SetLink(VirtualBoard& board, const Json& command)
{
    MdioDevice& chip = FindChip(board, command);
    bool done = chip.SetLink(command.at("port").get<unsigned>(), command.at("up").get<int>() != 0,
                             command.at("speed").get<unsigned>(), !command.value("half", false));
    if (!done)
        throw Refusal{kExitNoSuchObject,
                      PortName(command) + " is no port, or has no link of this speed and duplex"};
    return Done();
}

Json AddFault(VirtualBoard& board, const Json& command)
{
    auto name = command.at("name").get<std::string>();
    if (name == kAllFaults)
        return Done({{"cleared", board.ActiveFaults().Clear()}});
    const FaultKind* kind = FindFault(name);
    if (kind == nullptr)
        throw Refusal{kExitNoSuchObject,
                      "no fault '" + name + "': expected one of " + FaultNames()};
    Fault fault{kind, kind->defaultValue, command.value("at", 1U),
                command.value("times", kind->defaultTimes)};
    if (command.contains("value")) {
        auto value = ParseFaultValue(*kind, command["value"].get<std::string>());
        if (!value || kind->valueName.empty())
            throw Refusal{kExitUsage, "'" + command["value"].get<std::string>() +
                                          "' is no value for " + name + ": expected " +
                                          DescribeFaultValue(*kind)};
        fault.value = *value;
    }
    board.ActiveFaults().Add(fault);
    return Done();
}

Json Learn(VirtualBoard& board, const Json& command)
{
    MacAddress mac{};
    auto text = command.at("mac").get<std::string>();
    if (!ParseMac(text, mac))
        throw Refusal{kExitUsage, "'" + text + "' is no MAC address: expected 02:00:00:00:00:01"};
    MdioDevice& chip = FindChip(board, command);
    if (!chip.Learn(mac, command.at("port").get<unsigned>(), command.at("vid").get<unsigned>()))
        throw Refusal{kExitNotSupported, PortName(command) + " cannot learn " + text + " now"};
    return Done();
}

Json Forget(VirtualBoard& board, const Json& command)
{
    if (!FindChip(board, command).Forget())
        throw Refusal{kExitNotSupported,
                      command["device"].get<std::string>() + " has nothing that it can forget now"};
    return Done();
}

Json AddCounter(VirtualBoard& board, const Json& command)
{
    auto name = command.at("name").get<std::string>();
    MdioDevice& chip = FindChip(board, command);
    if (!chip.AddCounter(command.at("port").get<unsigned>(), name,
                         command.at("value").get<uint64_t>()))
        throw Refusal{kExitNoSuchObject,
                      PortName(command) + " has no counter '" + name + "', or cannot count now"};
    return Done();
}

Json ShowRegisters(VirtualBoard& board, const Json& command)
{
    const auto last = command.at("last").get<uint64_t>();
    if (last > kLastRegister)
        throw Refusal{kExitUsage, "no register above " + std::to_string(kLastRegister)};
    MdioDevice& chip = FindChip(board, command);
    Json registers = Json::array();
    for (auto reg = command.at("first").get<uint64_t>(); reg <= last; ++reg)
        if (auto value = chip.Peek22(static_cast<uint8_t>(reg)))
            registers.push_back({{"reg", reg}, {"value", *value}});
    if (registers.empty())
        throw Refusal{kExitNotSupported,
                      command["device"].get<std::string>() + " shows no such register"};
    return Done({{"registers", registers}});
}

Json SendAgain(VirtualBoard& board, const Json& command)
{
    std::optional<Family> family;
    if (command.contains("family"))
        family = command["family"] == kFamilyNames[0] ? Family::kSwitch : Family::kPhy;
    board.Cpu().SendAgain(family);
    return Done();
}

using Argument = ControlArgument;
using Form = ControlArgument::Form;
using Words = ControlArgument::Word;

constexpr Argument kSwitchPort = {"device", "", Form::kPort, "a switch port such as sw0:2", true};

constexpr Words kOnOff[] = {{"on", 1}, {"off", 0}};
constexpr Words kUpDown[] = {{"up", 1}, {"down", 0}};
constexpr Words kSpeeds[] = {{"auto", 1}, {"10", 2}, {"100", 3}, {"1000", 4}, {"2500", 5}};
constexpr Words kKinds[] = {{"mailbox"}, {"mdio"}, {"gpio"},   {"lane"},
                            {"gmac"},    {"attr"}, {"control"}};
constexpr Words kResend[] = {{"resend"}};
constexpr Words kFamilies[] = {{kFamilyNames[0]}, {kFamilyNames[1]}};

constexpr Argument kStateArguments[] = {
    {"device", "device", Form::kDevice, "only that of sw0, phy0..."}};
constexpr Argument kJournalArguments[] = {
    {"--kind", "kind", Form::kWord, "only entries of this kind", false, kKinds},
    {"--tail", "tail", Form::kNumber, "only the last N entries", false, {}, 0, UINT32_MAX}};
constexpr Argument kBatteryArguments[] = {
    {"state", "value", Form::kNumber, "on (1), off (0) or a number", true, kOnOff, 0, INT32_MAX}};
// Where a number has words only, none but theirs are taken: min is above max.
constexpr Argument kLinkArguments[] = {
    {"device", "", Form::kPort, "a switch port such as sw0:2, or a PHY such as phy0", true},
    {"state", "up", Form::kNumber, "up or down", true, kUpDown, 1, 0},
    {"--speed", "speed", Form::kNumber, "Mb/s; auto is the best of both ends", false, kSpeeds, 1, 0,
     1},
    {"--half", "half", Form::kFlag, "half duplex"}};
constexpr Argument kFaultArguments[] = {
    {"name", "name", Form::kText, "one of the faults below, or clear", true},
    {"value", "value", Form::kText, "what the fault needs; each has a default"},
    {"--at",
     "at",
     Form::kNumber,
     "strike at the N-th occurrence from now (1)",
     false,
     {},
     1,
     UINT32_MAX},
    {"--times",
     "times",
     Form::kNumber,
     "strike N times in a row, 0 = always",
     false,
     {},
     0,
     UINT32_MAX}};
constexpr Argument kLearnArguments[] = {
    kSwitchPort,
    {"mac", "mac", Form::kText, "its address", true},
    {"vid", "vid", Form::kNumber, "in this VLAN (1)", false, {}, 0, 4095, 1}};
constexpr Argument kForgetArguments[] = {
    {"device", "device", Form::kDevice, "a switch such as sw0", true}};
constexpr Argument kCounterArguments[] = {
    kSwitchPort,
    {"name", "name", Form::kText, "the counter's name in the register manual", true},
    {"value", "value", Form::kNumber, "what to add", true}};
constexpr Argument kRegisterArguments[] = {
    {"device", "device", Form::kDevice, "sw0, phy0...", true},
    {"register", "", Form::kRegisters, "number or range, 0x0-0x1f", true}};
constexpr Argument kMailboxArguments[] = {
    {"action", "action", Form::kWord, "resend: send the board data again", true, kResend},
    {"family", "family", Form::kWord, "only that of switch or phy", false, kFamilies}};
constexpr Argument kWireArguments[] = {
    kSwitchPort,
    {"--fcs-errors", "fcsErrors", Form::kChance, "a wrong frame check sequence: 1%"},
    {"--loss", "loss", Form::kChance, "not there any more: 1%"},
    {"--duplicate", "duplicate", Form::kChance, "there twice: 1%"},
    {"--undersize", "undersize", Form::kChance, "cut off below 64 octets, otherwise good: 1%"},
    {"--fragments", "fragments", Form::kChance, "the rest of a frame after a collision: 1%"},
    {"--collisions", "collisions", Form::kChance, "a collision, on a half-duplex link: 1%"},
    {"--delay", "delay", Form::kTime, "later by so much of the board's time: 10ms"},
    {"--jitter", "jitter", Form::kTime, "earlier or later by up to so much: 2ms"}};
constexpr Argument kCaptureArguments[] = {
    kSwitchPort,
    {"-w,--write", "file", Form::kFile, "the pcapng file to write", true},
    {"--count", "count", Form::kNumber, "end after N frames", false, {}, 1, UINT32_MAX}};
constexpr Argument kTraceArguments[] = {
    {"--from", "", Form::kPort, "the port on which it comes in, sw0:1", true},
    {"frame", "frame", Form::kFrame, "hexadecimal, from the destination address on", true}};

constexpr ControlVerb kVerbs[] = {
    {"state", "print what the board is like now", kStateArguments, ShowState,
     ControlVerb::Answer::kTree, false},
    {"journal", "print what was done to the board", kJournalArguments, ShowJournal,
     ControlVerb::Answer::kJournal, false},
    {"battery", "set the system-state attribute", kBatteryArguments, SetBattery},
    {"link", "plug or unplug the cable of a port or PHY", kLinkArguments, SetLink},
    {.name = "fault",
     .help = "make something go wrong",
     .arguments = kFaultArguments,
     .run = AddFault,
     .faults = true},
    {"learn", "let a station speak behind a switch port", kLearnArguments, Learn},
    {"forget", "empty the MAC table of a switch", kForgetArguments, Forget},
    {"counter", "add to a counter of a switch port", kCounterArguments, AddCounter},
    {"reg", "print clause-22 registers without touching the bus", kRegisterArguments, ShowRegisters,
     ControlVerb::Answer::kRegisters, false},
    {"mailbox", "let the application CPU send again", kMailboxArguments, SendAgain},
    {"hosts",
     "the hosts behind the ports of the switches",
     {},
     ShowHosts,
     ControlVerb::Answer::kTree,
     false},
    {"wire", "what a cable does to frames; without options it is a good one", kWireArguments,
     SetWire},
    {"capture", "write the frames of a port to a file", kCaptureArguments, CaptureFrames,
     ControlVerb::Answer::kCapture, false},
    {"trace", "why a frame goes where it goes", kTraceArguments, TraceFrame,
     ControlVerb::Answer::kTrace, false},
    {"network",
     "where a host's network is",
     {},
     ShowNetwork,
     ControlVerb::Answer::kNothing,
     false,
     false},
};

void Note(VirtualBoard& board, const Json& command)
{
    Json facts = command;
    facts.erase("verb");
    board.Log().SetCaller(0);
    board.Log().Note({JournalKind::kControl, command["verb"], std::move(facts)});
}

// All of them are numbers of something, or times in nanoseconds.
void CheckNumbers(const Json& command)
{
    for (const auto& [key, value] : command.items())
        if (value.is_number_float() || (value.is_number() && value < 0))
            throw Refusal{kExitUsage, "bad command: " + key + " is no whole number of 0 or more"};
}

Json Run(VirtualBoard& board, const Json& command)
{
    const auto name = command.at("verb").get<std::string>();
    CheckNumbers(command);
    const auto* verb = std::ranges::find(kVerbs, name, &ControlVerb::name);
    if (verb == std::end(kVerbs))
        throw Refusal{kExitUsage, "unknown verb '" + name + "'"};
    Json answer = verb->run(board, command);
    if (verb->changes)
        Note(board, command);
    return answer;
}

}  // namespace

std::span<const ControlVerb> ControlVerbs()
{
    return kVerbs;
}

Json Control(VirtualBoard& board, const Json& command)
{
    try {
        return Run(board, command);
    } catch (const Refusal& refusal) {
        return Refused(refusal);
    } catch (const Json::exception& error) {
        return Refused({kExitUsage, std::string("bad command: ") + error.what()});
    }
}

}  // namespace vboard

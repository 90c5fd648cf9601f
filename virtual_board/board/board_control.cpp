#include "virtual_board/board/board_control.h"

#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace vboard {
namespace {

constexpr int kSchema = 1;

struct Refusal {
    int exitCode;
    std::string text;
};

Json Done(Json facts = Json::object())
{
    Json answer = {{"schema", kSchema}, {"ok", true}};
    answer.update(facts);
    return answer;
}

Json Refused(const Refusal& refusal)
{
    return {
        {"schema", kSchema}, {"ok", false}, {"error", refusal.text}, {"exit", refusal.exitCode}};
}

std::string PortName(const Json& command)
{
    return command.at("device").get<std::string>() + ":" +
           std::to_string(command.at("port").get<unsigned>());
}

}  // namespace

const std::map<std::string_view, BoardControl::Verb>& BoardControl::Verbs()
{
    static const std::map<std::string_view, Verb> verbs = {
        {"state", &BoardControl::ShowState},
        {"journal", &BoardControl::ShowJournal},
        {"battery", &BoardControl::SetBattery},
        {"link", &BoardControl::SetLink},
        {"fault", &BoardControl::AddFault},
        {"fault-clear", &BoardControl::ClearFaults},
        {"learn", &BoardControl::Learn},
        {"forget", &BoardControl::Forget},
        {"counter", &BoardControl::AddCounter},
        {"reg", &BoardControl::ShowRegisters},
        {"mailbox-resend", &BoardControl::SendAgain},
        {"hosts", &BoardControl::ShowHosts},
        {"network", &BoardControl::ShowNetwork},
    };
    return verbs;
}

Json BoardControl::Run(const Json& command)
{
    try {
        auto name = command.at("verb").get<std::string>();
        auto verb = Verbs().find(name);
        if (verb == Verbs().end())
            return Refused({kExitUsage, "unknown verb '" + name + "'"});
        Json answer = (this->*verb->second)(command);
        constexpr std::string_view kShowing[] = {"state", "journal", "reg", "hosts", "network"};
        bool shows = std::ranges::find(kShowing, name) != std::end(kShowing);
        if (!shows)
            Note(command);
        return answer;
    } catch (const Refusal& refusal) {
        return Refused(refusal);
    } catch (const Json::exception& error) {
        return Refused({kExitUsage, std::string("bad command: ") + error.what()});
    }
}

void BoardControl::Note(const Json& command)
{
    Json facts = command;
    facts.erase("verb");
    board_.journal_.SetCaller(0);
    board_.journal_.Note({JournalKind::kControl, command["verb"], std::move(facts)});
}

const Device& BoardControl::FindDevice(const Json& command)
{
    auto name = command.at("device").get<std::string>();
    std::string names;
    for (const Device& device : board_.devices_) {
        if (device.name == name)
            return device;
        names += (names.empty() ? "" : ", ") + device.name;
    }
    throw Refusal{kExitNoSuchObject, "no device '" + name + "' on this board, which has " +
                                         (names.empty() ? "none" : names)};
}

MdioDevice& BoardControl::FindChip(const Json& command)
{
    const Device& device = FindDevice(command);
    if (!device.chip)
        throw Refusal{kExitNotSupported, device.name + " has no chip on this board"};
    device.chip->Advance(board_.clock_.Now());
    return *device.chip;
}

Json BoardControl::ShowDevice(const Device& device)
{
    const Wiring& wiring = *device.wiring;
    Json shown = {{"chip", wiring.chip},         {"halLibName", wiring.halLibName},
                  {"serdesId", wiring.serdesId}, {"resetGpioPin", wiring.resetGpioPin},
                  {"mdioBus", wiring.mdioBus},   {"mdioAddr", wiring.mdioAddr}};
    if (device.chip) {
        device.chip->Advance(board_.clock_.Now());
        shown["state"] = device.chip->State();
    }
    return shown;
}

Json BoardControl::ShowDevices()
{
    Json shown = Json::object();
    for (const Device& device : board_.devices_)
        shown[device.name] = ShowDevice(device);
    return shown;
}

Json BoardControl::ShowState(const Json& command)
{
    if (command.contains("device")) {
        Json shown = Json::object();
        shown[command["device"].get<std::string>()] = ShowDevice(FindDevice(command));
        return Done({{"devices", shown}});
    }
    Json macs = Json::array();
    for (const MacAddress& mac : board_.spec_.macAddresses)
        macs.push_back(FormatMac(mac));
    Json state = {{"board", board_.spec_.name},
                  {"timeNs", board_.clock_.Now().count()},
                  {"timeScale", board_.clock_.Scale()},
                  {"isolation", board_.spec_.isolation},
                  {"ulp", board_.spec_.ulp},
                  {"macAddresses", macs},
                  {"mailbox", board_.applicationCpu_.State()}};
    state.update(board_.soc_.State());
    state["faults"] = board_.faults_.Show();
    state["journal"] = {{"entries", board_.journal_.Size()},
                        {"dropped", board_.journal_.Dropped()}};
    state["devices"] = ShowDevices();
    return Done(state);
}

Json BoardControl::ShowJournal(const Json& command)
{
    JournalQuery query;
    if (command.contains("kind"))
        query.kind = JournalKindFromName(command["kind"].get<std::string>());
    if (command.contains("kind") && !query.kind)
        throw Refusal{kExitUsage, "unknown kind of journal entry"};
    query.tail = command.value("tail", query.tail);
    return Done(board_.journal_.Show(query));
}

Json BoardControl::SetBattery(const Json& command)
{
    board_.soc_.SetBattery(command.at("value").get<uint32_t>());
    return Done();
}

Json BoardControl::SetLink(const Json& command)
{
    MdioDevice& chip = FindChip(command);
    bool done = chip.SetLink(command.at("port").get<unsigned>(), command.at("up").get<bool>(),
                             command.at("speed").get<unsigned>(), command.at("full").get<bool>());
    if (!done)
        throw Refusal{kExitNoSuchObject,
                      PortName(command) + " is no port, or has no link of this speed and duplex"};
    return Done();
}

Json BoardControl::AddFault(const Json& command)
{
    auto name = command.at("name").get<std::string>();
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
    board_.faults_.Add(fault);
    return Done();
}

Json BoardControl::ClearFaults(const Json&)
{
    return Done({{"cleared", board_.faults_.Clear()}});
}

Json BoardControl::Learn(const Json& command)
{
    MacAddress mac{};
    auto text = command.at("mac").get<std::string>();
    if (!ParseMac(text, mac))
        throw Refusal{kExitUsage, "'" + text + "' is no MAC address: expected 02:00:00:00:00:01"};
    MdioDevice& chip = FindChip(command);
    if (!chip.Learn(mac, command.at("port").get<unsigned>(), command.at("vid").get<unsigned>()))
        throw Refusal{kExitNotSupported, PortName(command) + " cannot learn " + text + " now"};
    return Done();
}

Json BoardControl::Forget(const Json& command)
{
    if (!FindChip(command).Forget())
        throw Refusal{kExitNotSupported,
                      command["device"].get<std::string>() + " has nothing that it can forget now"};
    return Done();
}

Json BoardControl::AddCounter(const Json& command)
{
    auto name = command.at("name").get<std::string>();
    MdioDevice& chip = FindChip(command);
    if (!chip.AddCounter(command.at("port").get<unsigned>(), name,
                         command.at("value").get<uint64_t>()))
        throw Refusal{kExitNoSuchObject,
                      PortName(command) + " has no counter '" + name + "', or cannot count now"};
    return Done();
}

Json BoardControl::ShowRegisters(const Json& command)
{
    MdioDevice& chip = FindChip(command);
    Json registers = Json::array();
    for (unsigned reg = command.at("first"); reg <= command.at("last").get<unsigned>(); ++reg)
        if (auto value = chip.Peek22(static_cast<uint8_t>(reg)))
            registers.push_back({{"reg", reg}, {"value", *value}});
    if (registers.empty())
        throw Refusal{kExitNotSupported,
                      command["device"].get<std::string>() + " shows no such register"};
    return Done({{"registers", registers}});
}

Json BoardControl::SendAgain(const Json& command)
{
    std::optional<Family> family;
    if (command.contains("family"))
        family = command["family"] == kFamilyNames[0] ? Family::kSwitch : Family::kPhy;
    board_.applicationCpu_.SendAgain(family);
    return Done();
}

Json BoardControl::ShowHosts(const Json&)
{
    return Done({{"hosts", Lans().Show()}});
}

Json BoardControl::ShowNetwork(const Json& command)
{
    auto host = command.at("host").get<std::string>();
    int fd = Lans().NetworkOf(host);
    if (fd < 0)
        throw Refusal{kExitNoSuchObject,
                      "no host '" + host + "' on this board, which has " + Lans().HostNames()};
    return Done({{"pid", getpid()}, {"fd", fd}});
}

const cables::Lans& BoardControl::Lans() const
{
    if (!board_.lans_)
        throw Refusal{kExitNotSupported,
                      "this board's ports have no interfaces: run it with --ports tap"};
    return *board_.lans_;
}

Json VirtualBoard::Control(const Json& command)
{
    return BoardControl{*this}.Run(command);
}

}  // namespace vboard

#include "virtual_board/program/control_command.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>

#include "virtual_board/board/board_control.h"
#include "virtual_board/description/fault_kinds.h"
#include "virtual_board/program/control_client.h"
#include "virtual_board/program/verbs.h"

namespace vboard {
namespace {

struct Words {
    std::string socket;
    bool json = false;
    Json command = Json::object();
    std::string device;
    std::string state;
    std::string name;
    std::string text;
    unsigned number = 0;
    uint64_t value = 0;
    std::string speed = "auto";
    bool half = false;
};

struct Context {
    Words words;
    std::function<int()>* run;
};
using Shared = std::shared_ptr<Context>;

constexpr size_t kFaultColumn = 36;

const std::map<std::string, unsigned> kSpeedCodes = {
    {"auto", 1}, {"10", 2}, {"100", 3}, {"1000", 4}, {"2500", 5}};

int Print(const Words& words, const Json& answer, std::string (*toText)(const Json&))
{
    if (!answer.value("ok", false)) {
        fprintf(stderr, "orblink-vboard: %s\n", answer.value("error", "refused").c_str());
        return answer.value("exit", kExitFailed);
    }
    if (words.json)
        printf("%s\n", answer.dump(2).c_str());
    else if (toText != nullptr)
        printf("%s", toText(answer).c_str());
    return 0;
}

int Send(const Words& words, std::string (*toText)(const Json&))
{
    const char* inside = getenv(wire::kSocketVariable);
    std::string path = !words.socket.empty() ? words.socket : inside != nullptr ? inside : "";
    if (path.empty()) {
        fprintf(stderr,
                "orblink-vboard: no board named: give --socket PATH, or run inside "
                "'orblink-vboard run'\n");
        return kExitUsage;
    }
    try {
        return Print(words, AskBoard(path, words.command), toText);
    } catch (const std::system_error& error) {
        fprintf(stderr, "orblink-vboard: %s\n", error.what());
        return kExitFailed;
    }
}

// When the verb has been given: fill the command, send it, print the answer.
void OnVerb(CLI::App* verb, const Shared& context, const std::function<void(Words&)>& fill,
            std::string (*toText)(const Json&) = nullptr)
{
    verb->fallthrough();  // --socket and --json may stand behind the verb
    verb->final_callback([=] {
        fill(context->words);
        *context->run = [=] { return Send(context->words, toText); };
    });
}

void AddDevice(CLI::App* verb, Words& words, const char* form)
{
    verb->add_option("device", words.device, form)->required();
}

// "sw0:2" -> device and port; a PHY has port 0 only and needs none.
void FillPort(Words& words)
{
    size_t colon = words.device.find(':');
    std::string name = words.device.substr(0, colon);
    std::string port = colon == std::string::npos ? "" : words.device.substr(colon + 1);
    if (colon == std::string::npos && name.starts_with("phy"))
        port = "0";
    if (port.empty() || port.size() > 2 || port.find_first_not_of("0123456789") != port.npos)
        throw CLI::ValidationError("'" + words.device +
                                   "' names no port: expected for example sw0:2 or phy0");
    words.command["device"] = name;
    words.command["port"] = std::stoul(port);
}

void AddState(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("state", "print what the board is like now");
    auto* device = verb->add_option("device", context->words.device, "only that of sw0, phy0...");
    OnVerb(
        verb, context,
        [=](Words& words) {
            words.command["verb"] = "state";
            if (device->count() > 0)
                words.command["device"] = words.device;
        },
        StateText);
}

void AddJournal(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("journal", "print what was done to the board");
    Words& words = context->words;
    auto* kind = verb->add_option("--kind", words.name, "only entries of this kind")
                     ->check(CLI::IsMember(std::vector<std::string>(std::begin(kJournalKindNames),
                                                                    std::end(kJournalKindNames))));
    auto* tail = verb->add_option("--tail", words.number, "only the last N entries");
    OnVerb(
        verb, context,
        [=](Words& given) {
            given.command["verb"] = "journal";
            if (kind->count() > 0)
                given.command["kind"] = given.name;
            if (tail->count() > 0)
                given.command["tail"] = given.number;
        },
        JournalText);
}

void AddBattery(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("battery", "set the system-state attribute");
    const std::map<std::string, unsigned> words = {{"on", 1}, {"off", 0}};
    verb->add_option("state", context->words.number, "on (1), off (0) or a number")
        ->required()
        ->transform(CLI::Transformer(words))
        ->check(CLI::Range(0U, 0x7FFFFFFFU));
    OnVerb(verb, context, [](Words& given) {
        given.command = {{"verb", "battery"}, {"value", given.number}};
    });
}

void AddLink(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("link", "plug or unplug the cable of a port or PHY");
    Words& words = context->words;
    AddDevice(verb, words, "a switch port such as sw0:2, or a PHY such as phy0");
    verb->add_option("state", words.state, "up or down")
        ->required()
        ->check(CLI::IsMember({"up", "down"}));
    verb->add_option("--speed", words.speed, "Mb/s; auto is the best of both ends")
        ->check(CLI::IsMember({"auto", "10", "100", "1000", "2500"}));
    verb->add_flag("--half", words.half, "half duplex");
    OnVerb(verb, context, [](Words& given) {
        FillPort(given);
        given.command.update(Json{{"verb", "link"},
                                  {"up", given.state == "up"},
                                  {"speed", kSpeedCodes.at(given.speed)},
                                  {"full", !given.half}});
    });
}

std::string FaultHelp()
{
    std::string help = "The faults, their value [default] and what they do:\n";
    for (const FaultKind& kind : FaultKinds()) {
        std::string name = std::string(kind.name) + " " + std::string(kind.valueName);
        if (kind.valueName == "ERRNO")
            name += " [" + ErrnoName(static_cast<int>(kind.defaultValue)) + "]";
        else if (!kind.valueName.empty())
            name += " [" + std::to_string(kind.defaultValue) + "]";
        name.resize(std::max<size_t>(name.size(), kFaultColumn), ' ');
        help += "  " + name + " " + std::string(kind.help) + "\n";
    }
    return help + "  clear: take all faults away\n";
}

void AddFault(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("fault", "make something go wrong");
    Words& words = context->words;
    verb->add_option("name", words.name, "one of the faults below, or clear")->required();
    auto* value = verb->add_option("value", words.text, "what the fault needs; each has a default");
    auto* at = verb->add_option("--at", words.number, "strike at the N-th occurrence from now (1)")
                   ->check(CLI::Range(1U, UINT32_MAX));
    auto* times = verb->add_option("--times", words.value, "strike N times in a row, 0 = always")
                      ->check(CLI::Range(0U, UINT32_MAX));
    verb->footer(FaultHelp);
    OnVerb(verb, context, [=](Words& given) {
        given.command = {{"verb", given.name == "clear" ? "fault-clear" : "fault"}};
        if (given.name == "clear")
            return;
        given.command["name"] = given.name;
        if (value->count() > 0)
            given.command["value"] = given.text;
        if (at->count() > 0)
            given.command["at"] = given.number;
        if (times->count() > 0)
            given.command["times"] = given.value;
    });
}

void AddLearning(CLI::App* control, const Shared& context)
{
    Words& words = context->words;
    words.number = 1;
    auto* learn = control->add_subcommand("learn", "let a station speak behind a switch port");
    AddDevice(learn, words, "a switch port such as sw0:2");
    learn->add_option("mac", words.text, "its address")->required();
    learn->add_option("vid", words.number, "in this VLAN (1)")->check(CLI::Range(0U, 4095U));
    OnVerb(learn, context, [](Words& given) {
        FillPort(given);
        given.command.update(Json{{"verb", "learn"}, {"mac", given.text}, {"vid", given.number}});
    });
    auto* forget = control->add_subcommand("forget", "empty the MAC table of a switch");
    AddDevice(forget, words, "a switch such as sw0");
    OnVerb(forget, context, [](Words& given) {
        given.command = {{"verb", "forget"}, {"device", given.device}};
    });
}

void AddCounter(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("counter", "add to a counter of a switch port");
    Words& words = context->words;
    AddDevice(verb, words, "a switch port such as sw0:2");
    verb->add_option("name", words.name, "the counter's name in the register manual")->required();
    verb->add_option("value", words.value, "what to add")->required();
    OnVerb(verb, context, [](Words& given) {
        FillPort(given);
        given.command.update(
            Json{{"verb", "counter"}, {"name", given.name}, {"value", given.value}});
    });
}

// "0x10" or "0x10-0x1f".
void FillRegisters(Words& words)
{
    size_t dash = words.text.find('-');
    auto number = [&](const std::string& text) {
        size_t used = 0;
        unsigned long value = 32;
        if (!text.empty() && isdigit(static_cast<unsigned char>(text[0])) != 0)
            value = std::stoul(text, &used, 0);
        if (used != text.size() || value > 31)
            throw CLI::ValidationError("'" + words.text +
                                       "' is no register: expected 0 to 31 or a range 0x0-0x1f");
        return static_cast<unsigned>(value);
    };
    unsigned first = number(words.text.substr(0, dash));
    unsigned last = dash == std::string::npos ? first : number(words.text.substr(dash + 1));
    words.command = {{"verb", "reg"}, {"device", words.device}, {"first", first}, {"last", last}};
}

void AddRegisters(CLI::App* control, const Shared& context)
{
    auto* verb =
        control->add_subcommand("reg", "print clause-22 registers without touching the bus");
    AddDevice(verb, context->words, "sw0, phy0...");
    verb->add_option("register", context->words.text, "number or range, 0x0-0x1f")->required();
    OnVerb(verb, context, FillRegisters, RegistersText);
}

void AddMailbox(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("mailbox", "let the application CPU send again");
    verb->add_option("action", context->words.state, "resend: send the board data again")
        ->required()
        ->check(CLI::IsMember({"resend"}));
    auto* family = verb->add_option("family", context->words.name, "only that of switch or phy")
                       ->check(CLI::IsMember({"switch", "phy"}));
    OnVerb(verb, context, [=](Words& given) {
        given.command = {{"verb", "mailbox-resend"}};
        if (family->count() > 0)
            given.command["family"] = given.name;
    });
}

void AddHosts(CLI::App* control, const Shared& context)
{
    auto* verb = control->add_subcommand("hosts", "the hosts behind the ports of the switches");
    OnVerb(
        verb, context,
        [](Words& given) {
            given.command = {{"verb", "hosts"}};
        },
        StateText);
}

}  // namespace

void AddControlCommand(CLI::App& program, std::function<int()>& run)
{
    auto context = std::make_shared<Context>();
    context->run = &run;
    auto* control = program.add_subcommand("control", "look at a running board and change it");
    control->add_option("--socket", context->words.socket,
                        "the board's socket; inside 'run' the board that is running");
    control->add_flag("--json", context->words.json, "print JSON");
    for (auto* add : {AddState, AddJournal, AddBattery, AddLink, AddFault, AddLearning, AddCounter,
                      AddRegisters, AddMailbox, AddHosts})
        add(control, context);
    RequireVerb(*control);
}

}  // namespace vboard

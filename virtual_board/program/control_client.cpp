#include "virtual_board/program/control_client.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/board/wire.h"

namespace vboard {
namespace {

constexpr size_t kPacket = 65536;

std::string Format(const char* format, auto... values)
{
    char text[256];
    int length = snprintf(text, sizeof text, format, values...);
    return length < 0 ? std::string() : text;
}

bool IsScalar(const Json& value)
{
    return !value.is_structured();
}

std::string Scalar(const Json& value)
{
    return value.is_string() ? value.get<std::string>() : value.dump();
}

// A list of scalars as one word.
std::string Word(const Json& value)
{
    if (IsScalar(value))
        return Scalar(value);
    std::string word;
    for (const Json& element : value)
        word += (word.empty() ? "" : ",") + Scalar(element);
    return word;
}

bool FitsOneLine(const Json& value)
{
    return std::ranges::all_of(value, [](const Json& element) {
        return IsScalar(element) || (element.is_array() && std::ranges::all_of(element, IsScalar));
    });
}

std::string Line(const Json& value)
{
    std::string line;
    for (const auto& [key, element] : value.items()) {
        line += line.empty() ? "" : " ";
        line += value.is_object() ? key + "=" + Word(element) : Word(element);
    }
    return line;
}

// Registers and their values as register manuals write them.
Json WithHexadecimalRegisters(Json facts)
{
    for (const char* key : {"reg", "value"})
        if (facts.contains(key))
            facts[key] = Format("0x%04x", facts[key].get<unsigned>());
    return facts;
}

// Text leaves out the many counters that count nothing.
Json WithoutZeros(const Json& counters)
{
    Json counting = Json::object();
    for (const auto& [name, count] : counters.items())
        if (count != 0)
            counting[name] = count;
    return counting;
}

void AppendTree(std::string& text, const Json& tree, const std::string& indent)
{
    for (const auto& [key, value] : tree.items()) {
        std::string label = tree.is_array() ? "-" : key + ":";
        if (!value.is_structured())
            text += indent + label + " " + Scalar(value) + "\n";
        else if (FitsOneLine(value))
            text +=
                indent + label + " " + Line(key == "counters" ? WithoutZeros(value) : value) + "\n";
        else {
            text += indent + label + "\n";
            AppendTree(text, value, indent + "  ");
        }
    }
}

std::string EntryText(const Json& entry)
{
    constexpr double kNanoseconds = 1e9;
    std::string text = Format("%6llu %12.6f %7d %-8s", entry["number"].get<unsigned long long>(),
                              entry["timeNs"].get<double>() / kNanoseconds, entry["pid"].get<int>(),
                              entry["kind"].get<std::string>().c_str());
    bool registers = entry["kind"] == "mdio";
    text += entry["call"].get<std::string>() + " " +
            Line(registers ? WithHexadecimalRegisters(entry["facts"]) : entry["facts"]);
    text += " -> " + entry["result"].get<std::string>();
    if (entry.contains("note"))
        text += " (" + entry["note"].get<std::string>() + ")";
    return text + "\n";
}

}  // namespace

std::optional<std::string> BoardSocket(const std::string& given)
{
    const char* inside = getenv(wire::kSocketVariable);
    if (!given.empty())
        return given;
    if (inside != nullptr && *inside != '\0')
        return inside;
    fprintf(stderr,
            "orblink-vboard: no board named: give --socket PATH, or run inside "
            "'orblink-vboard run'\n");
    return std::nullopt;
}

UniqueFd ConnectToBoard(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    UniqueFd fd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
    if (path.size() >= sizeof address.sun_path)
        errno = ENAMETOOLONG;
    else if (fd && connect(fd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) == 0)
        return fd;
    throw std::system_error(errno, std::generic_category(), "no board at " + path);
}

Json AskBoard(const std::string& path, const Json& command)
{
    UniqueFd fd = ConnectToBoard(path);
    const std::string text = command.dump(-1, ' ', false, Json::error_handler_t::replace);
    wire::Request request{wire::kMagic, wire::Op::kControl, 0, static_cast<uint32_t>(text.size()),
                          0};
    std::string packet(sizeof request, '\0');
    memcpy(packet.data(), &request, sizeof request);
    packet += text;
    if (send(fd.Get(), packet.data(), packet.size(), MSG_NOSIGNAL) < 0)
        throw std::system_error(errno, std::generic_category(), "board at " + path);
    std::string answer;
    std::string part(kPacket, '\0');
    ssize_t size = 0;
    while ((size = recv(fd.Get(), part.data(), part.size(), 0)) > 0)
        answer.append(part, 0, static_cast<size_t>(size));
    Json parsed = Json::parse(answer, nullptr, false);
    if (size < 0 || !parsed.is_object())
        throw std::system_error(size < 0 ? errno : EPROTO, std::generic_category(),
                                "board at " + path);
    return parsed;
}

std::string StateText(const Json& answer)
{
    Json tree = answer;
    tree.erase("schema");
    tree.erase("ok");
    std::string text;
    AppendTree(text, tree, "");
    return text;
}

std::string JournalText(const Json& answer)
{
    std::string text;
    if (answer["dropped"] != 0)
        text =
            Format("(%llu older entries dropped)\n", answer["dropped"].get<unsigned long long>());
    for (const Json& entry : answer["entries"])
        text += EntryText(entry);
    return text;
}

std::string RegistersText(const Json& answer)
{
    std::string text;
    for (const Json& one : answer["registers"])
        text += Format("0x%02x 0x%04x\n", one["reg"].get<unsigned>(), one["value"].get<unsigned>());
    return text;
}

std::string TraceText(const Json& answer)
{
    std::string text;
    for (const Json& step : answer["steps"]) {
        const auto registers = step["registers"].get<std::string>();
        text += step["decision"].get<std::string>();
        text += registers.empty() ? "\n" : " (" + registers + ")\n";
    }
    return text;
}

}  // namespace vboard

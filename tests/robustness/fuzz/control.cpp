// The board's server and what clients send it: requests of the supervisor, commands of
// `orblink-vboard control`, and anything else, from several connections.
#include <fuzzer/FuzzedDataProvider.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <nlohmann/json.hpp>

#include "virtual_board/board/board_server.h"
#include "virtual_board/description/board_file.h"

namespace {

using namespace vboard;

constexpr char kBoard[] = R"(
mac_addresses = ["02:00:00:00:00:01", "02:00:00:00:00:02", "02:00:00:00:00:03",
                 "02:00:00:00:00:04", "02:00:00:00:00:05"]
[[switch]]
hal = "liborblink_velmar.so"
chip = "vswitch"
serdes = 0
mdio_bus = 0
mdio_address = 1
reset_pin = 18
internal_port = 0
[[phy]]
hal = "libphyk20.so"
chip = "ieee8023"
serdes = 1
mdio_bus = 0
mdio_address = 2
reset_pin = 19
)";
constexpr unsigned kRounds = 6;  // of the server after the last packet
constexpr auto kLastOp = static_cast<uint32_t>(wire::Op::kControl);

UniqueFd Connect(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    UniqueFd fd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0)};
    if (connect(fd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
        __builtin_trap();
    return fd;
}

std::string Packet(FuzzedDataProvider& input)
{
    if (input.ConsumeIntegral<uint8_t>() >= 0xF0)
        return input.ConsumeRandomLengthString(200);
    wire::Request request{wire::kMagic, wire::Op{input.ConsumeIntegralInRange(0U, kLastOp)},
                          input.ConsumeIntegral<uint8_t>(), 0, 0};
    std::string data = input.ConsumeRandomLengthString(4000);
    bool honest = input.ConsumeIntegral<uint8_t>() < 0xF0;
    request.dataSize =
        honest ? static_cast<uint32_t>(data.size()) : input.ConsumeIntegral<uint32_t>();
    std::string packet(sizeof request, '\0');
    memcpy(packet.data(), &request, sizeof request);
    return packet + data;
}

void Play(FuzzedDataProvider& input, const std::string& path)
{
    auto read = ParseBoard(kBoard, "board.toml");
    auto* description = std::get_if<BoardDescription>(&read);
    if (description == nullptr)
        __builtin_trap();
    VirtualBoard board{*description, 1000};
    BoardServer server{board, path};
    UniqueFd wake{eventfd(1, EFD_NONBLOCK)};
    std::array<UniqueFd, 3> clients = {Connect(path), Connect(path), Connect(path)};
    // Stays readable: the server asks after each round whether it is to stop.
    unsigned rounds = 0;
    server.Run(wake.Get(), [&] {
        if (input.remaining_bytes() == 0)
            return ++rounds > kRounds;
        std::string packet = Packet(input);
        UniqueFd& client = clients[input.ConsumeIntegral<uint8_t>() % clients.size()];
        if (send(client.Get(), packet.data(), packet.size(), MSG_NOSIGNAL) < 0)
            client = Connect(path);
        char answer[40000];
        while (recv(client.Get(), answer, sizeof answer, 0) > 0) {
        }
        return false;
    });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    FuzzedDataProvider input{data, size};
    Play(input, "/tmp/orblink-fuzz-control." + std::to_string(getpid()));
    return 0;
}

// The board process's socket and its clients, in one poll loop without threads.
#pragma once

#include <poll.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <span>
#include <string>
#include <vector>

#include "virtual_board/board/unique_fd.h"
#include "virtual_board/board/virtual_board.h"

namespace vboard {

class BoardServer {
public:
    // Listens at the path, which goes with the server. Throws std::system_error.
    BoardServer(VirtualBoard& served, std::string socketPath);
    ~BoardServer();

    // Something else to serve in the same loop; not owned.
    void Add(Background& background) { backgrounds.push_back(&background); }

    // Serves until stop, called whenever `wakeFd` is readable, says true.
    void Run(int wakeFd, const std::function<bool()>& stop);

private:
    struct Packet {
        std::vector<uint8_t> bytes;
        UniqueFd descriptor = {};
    };
    struct Session {
        UniqueFd fd;
        pid_t peer;
        std::deque<Packet> outbox = {};
        bool closing = false;  // once the outbox is empty
        bool gone = false;
    };

    void Accept();
    void ReadPackets(Session& session);
    void HandlePacket(Session& session, std::span<const uint8_t> packet, int descriptor);
    void HandleControl(Session& session, std::span<const uint8_t> json);
    static void Queue(Session& session, Reply reply);
    static void Flush(Session& session);
    void DropGone();
    void PollOnce(int wakeFd, bool& woken);

    VirtualBoard& board;
    std::string path;
    UniqueFd listener;
    std::list<Session> sessions;
    std::vector<Background*> backgrounds;
    std::vector<pollfd> polled;
};

}  // namespace vboard

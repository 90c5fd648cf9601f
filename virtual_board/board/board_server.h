// The board process's socket and its clients, in one poll loop without threads.
#pragma once

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

    // Serves until stop, called whenever `wakeFd` is readable, says true.
    void Run(int wakeFd, const std::function<bool()>& stop);

private:
    struct Session {
        UniqueFd fd;
        Client client;
        std::deque<std::vector<uint8_t>> outbox = {};
        uint64_t waitingSince = 0;  // ticket, so that receivers are served in their order
        bool closing = false;       // once the outbox is empty
        bool gone = false;
    };

    void Accept();
    void ReadPackets(Session& session);
    void HandlePacket(Session& session, std::span<const uint8_t> packet);
    void HandleControl(Session& session, std::span<const uint8_t> json);
    void Queue(Session& session, const Answer& answer);
    void Flush(Session& session);
    void ServeWaiting();
    void DropGone();
    void PollOnce(int wakeFd, bool& woken);

    VirtualBoard& board;
    std::string path;
    UniqueFd listener;
    std::list<Session> sessions;
    uint64_t nextTicket = 1;
};

}  // namespace vboard

// The board process's socket and its clients, in one loop without threads.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "virtual_board/board/awake_processors.h"
#include "virtual_board/board/poller.h"
#include "virtual_board/board/unique_fd.h"
#include "virtual_board/board/virtual_board.h"

namespace vboard {

class BoardServer {
public:
    // Listens at the path, which goes with the server. Throws std::system_error.
    BoardServer(VirtualBoard& served, std::string socketPath);
    ~BoardServer();
    BoardServer(const BoardServer&) = delete;
    BoardServer& operator=(const BoardServer&) = delete;

    // Something else to serve in the same loop; not owned.
    void Add(Background& background);
    // The same of programs whose calls the board answers, at most one.
    void AddCallers(Background& background);
    // While frames pass. Throws std::system_error where the kernel refuses it.
    void KeepProcessorsAwake();

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
        bool sends = false;  // when there is room again
    };

    void Accept();
    void ReadPackets(Session& session);
    void HandlePacket(Session& session, std::span<const uint8_t> packet, int descriptor);
    void HandleControl(Session& session, std::span<const uint8_t> json);
    static void Queue(Session& session, Reply reply);
    static void Flush(Session& session);
    void WaitForRoom(Session& session);
    void DropGone();
    Poller::Limit Limit() const;
    void AwaitCall(bool await);
    bool ServeCall();
    bool ServeReady(std::chrono::nanoseconds eager);
    void ServeSession(Session& session, uint32_t events);
    bool Round();

    VirtualBoard& board_;
    std::string path_;
    UniqueFd listener_;
    Poller poller_;
    std::map<int, Session> sessions_;  // by descriptor
    std::optional<AwakeProcessors> awake_;
    std::vector<Background*> backgrounds_;
    Background* callers_ = nullptr;
    uint32_t callersNumber_ = 0;
    bool awaitsCall_ = false;  // and the poller does not
    unsigned callsInARow_ = 0;
    std::vector<uint32_t> readyCables_;
};

}  // namespace vboard

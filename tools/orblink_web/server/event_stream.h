// One client of the events. It is sent the newest of what it has not got yet: a slow one skips what
// came in between, and one that takes nothing for a while is dropped.
#pragma once

#include <array>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <string>
#include <vector>

#include "tools/orblink_web/view/board_view.h"

namespace web {

class EventStream : public std::enable_shared_from_this<EventStream> {
public:
    EventStream(boost::asio::ip::tcp::socket socket, const BoardView& view);

    // `head` is the answer's header.
    void Start(std::string head);
    // Whatever has changed, unless the client still has to take the last of it.
    void Send();
    void Close();

private:
    void Queue(SharedText text) { sending_.push_back(std::move(text)); }
    void QueueChanges();
    void Write();
    void WatchForEnd();

    boost::asio::ip::tcp::socket socket_;
    boost::asio::steady_timer patience_;
    const BoardView& view_;
    std::array<uint64_t, kTopics> sent_{};
    // Until they are written.
    std::vector<SharedText> sending_;
    bool writing_ = false;
    std::array<char, 256> ignored_{};
};

}  // namespace web

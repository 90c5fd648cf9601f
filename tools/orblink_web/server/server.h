// The server: who is connected, what is known of the board, and when to tell.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tools/orblink_web/reader/reader.h"
#include "tools/orblink_web/server/reader_process.h"
#include "tools/orblink_web/server/routes.h"
#include "tools/orblink_web/view/board_view.h"

namespace web {

class EventStream;
class HttpSession;

struct ServerOptions {
    boost::asio::ip::tcp::endpoint listen;
    // Names beside addresses and localhost under which it may be asked.
    std::vector<std::string> hostNames;
    ReaderOptions reader;
};

// One thread does it all: nothing here waits for the board or for a client.
class Server {
public:
    // Fails with a system error when it cannot listen.
    explicit Server(const ServerOptions& options);
    ~Server();
    Server(const Server&) = delete;
    Server& operator=(const Server&) = delete;

    boost::asio::ip::tcp::endpoint Endpoint() const { return acceptor_.local_endpoint(); }
    // Until SIGTERM, SIGINT or SIGHUP.
    void Run();

    // What the connections need.
    const BoardView& View() const { return view_; }
    const std::vector<std::string>& HostNames() const { return options_.hostNames; }
    ServerFigures Figures() const;
    void CountRequest() { ++requests_; }
    bool HasRoomForStream();
    void Follow(const std::shared_ptr<EventStream>& stream, std::string head);
    void Forget(HttpSession* session) { sessions_.erase(session); }

private:
    void Accept();
    void AcceptLater();
    void Tick();
    void TellSoon();
    void Tell();
    void DropClosed();
    void End();

    ServerOptions options_;
    // Lives longer than what is pending: the last of a connection takes it out of here.
    std::set<HttpSession*> sessions_;
    boost::asio::io_context io_{1};
    boost::asio::ip::tcp::acceptor acceptor_;
    boost::asio::signal_set signals_;
    boost::asio::steady_timer tick_;
    boost::asio::steady_timer tell_;
    boost::asio::steady_timer acceptAgain_;
    bool telling_ = false;
    uint64_t requests_ = 0;
    BoardView view_;
    ReaderProcess reader_;
    std::vector<std::weak_ptr<EventStream>> streams_;
};

}  // namespace web

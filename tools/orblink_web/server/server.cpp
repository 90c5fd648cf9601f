#include "tools/orblink_web/server/server.h"

#include <fcntl.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <utility>

#include "tools/orblink_web/server/event_stream.h"
#include "tools/orblink_web/server/http_session.h"

namespace web {

namespace {

using boost::system::error_code;
using std::chrono::milliseconds;

constexpr size_t kMostSessions = 256;
constexpr size_t kMostStreams = 128;

// Answers come in groups; what they change is told together.
constexpr milliseconds kGathering{50};

// The reader is a new program: no connection is to live on in it.
template <typename Socket>
void CloseOnExec(Socket& socket)
{
    fcntl(socket.native_handle(), F_SETFD, FD_CLOEXEC);  // cannot fail on an open descriptor
}

boost::asio::ip::tcp::acceptor Listening(boost::asio::io_context& io,
                                         const boost::asio::ip::tcp::endpoint& endpoint)
{
    boost::asio::ip::tcp::acceptor acceptor(io);
    acceptor.open(endpoint.protocol());
    CloseOnExec(acceptor);
    acceptor.set_option(boost::asio::socket_base::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen();
    return acceptor;
}

}  // namespace

Server::Server(const ServerOptions& options)
    : options_(options),
      acceptor_(Listening(io_, options.listen)),
      signals_(io_, SIGTERM, SIGINT, SIGHUP),
      tick_(io_),
      tell_(io_),
      acceptAgain_(io_),
      reader_(io_, options.reader)
{
    reader_.onMessage = [this](Message message) { view_.Take(std::move(message)); };
    reader_.onEnd = [this](const std::string& why) { view_.ReaderStopped(why); };
    view_.OnChange([this] { TellSoon(); });
}

Server::~Server() = default;

void Server::Run()
{
    signals_.async_wait([this](error_code error, int) {
        if (!error)
            End();
    });
    reader_.Start();
    Accept();
    Tick();
    io_.run();
}

void Server::End()
{
    acceptor_.close();
    reader_.Stop();
    io_.stop();
}

void Server::Accept()
{
    acceptor_.async_accept([this](error_code error, boost::asio::ip::tcp::socket socket) {
        if (error == boost::asio::error::operation_aborted)
            return;
        if (error)
            return AcceptLater();
        CloseOnExec(socket);
        // One more is closed at once; those that are served stay served.
        if (sessions_.size() < kMostSessions) {
            const auto session = std::make_shared<HttpSession>(std::move(socket), *this);
            sessions_.insert(session.get());
            session->Read();
        }
        Accept();
    });
}

// Out of descriptors, most likely.
void Server::AcceptLater()
{
    acceptAgain_.expires_after(milliseconds(100));
    acceptAgain_.async_wait([this](error_code error) {
        if (!error)
            Accept();
    });
}

void Server::Tick()
{
    view_.Tick(MonotonicMilliseconds());
    tick_.expires_after(std::chrono::seconds(1));
    tick_.async_wait([this](error_code error) {
        if (!error)
            Tick();
    });
}

void Server::TellSoon()
{
    if (std::exchange(telling_, true))
        return;
    tell_.expires_after(kGathering);
    tell_.async_wait([this](error_code error) {
        if (!error)
            Tell();
    });
}

void Server::Tell()
{
    telling_ = false;
    view_.Render();
    DropClosed();
    for (const auto& weak : streams_)
        if (const auto stream = weak.lock())
            stream->Send();
}

void Server::DropClosed()
{
    std::erase_if(streams_, [](const std::weak_ptr<EventStream>& one) { return one.expired(); });
}

bool Server::HasRoomForStream()
{
    DropClosed();
    return streams_.size() < kMostStreams;
}

void Server::Follow(const std::shared_ptr<EventStream>& stream, std::string head)
{
    streams_.push_back(stream);
    stream->Start(std::move(head));
}

ServerFigures Server::Figures() const
{
    return {static_cast<size_t>(std::count_if(streams_.begin(), streams_.end(),
                                              [](const auto& one) { return !one.expired(); })),
            requests_, reader_.Starts()};
}

}  // namespace web

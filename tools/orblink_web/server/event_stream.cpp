#include "tools/orblink_web/server/event_stream.h"

#include <boost/asio/buffer.hpp>
#include <boost/asio/write.hpp>
#include <chrono>
#include <utility>

namespace web {

namespace {

constexpr std::chrono::seconds kWritePatience{10};
// What the kernel keeps for a client that does not read.
constexpr int kSendBuffer = 64 * 1024;

}  // namespace

EventStream::EventStream(boost::asio::ip::tcp::socket socket, const BoardView& view)
    : socket_(std::move(socket)), patience_(socket_.get_executor()), view_(view)
{
    boost::system::error_code ignored;
    socket_.set_option(boost::asio::socket_base::send_buffer_size(kSendBuffer), ignored);
    socket_.set_option(boost::asio::ip::tcp::no_delay(true), ignored);
}

void EventStream::Start(std::string head)
{
    head += "retry: 1000\n\n";
    Queue(std::make_shared<const std::string>(std::move(head)));
    Queue(view_.History());
    QueueChanges();
    Write();
    WatchForEnd();
}

void EventStream::QueueChanges()
{
    for (size_t i = 0; i < kTopics; ++i) {
        const auto topic = static_cast<Topic>(i);
        if (sent_[i] == view_.Version(topic))
            continue;
        sent_[i] = view_.Version(topic);
        Queue(view_.Event(topic));
    }
}

void EventStream::Send()
{
    if (writing_ || !socket_.is_open())
        return;
    QueueChanges();
    if (!sending_.empty())
        Write();
}

void EventStream::Write()
{
    std::vector<boost::asio::const_buffer> buffers;
    for (const auto& text : sending_)
        buffers.emplace_back(boost::asio::buffer(*text));
    writing_ = true;
    patience_.expires_after(kWritePatience);
    patience_.async_wait([self = shared_from_this()](boost::system::error_code error) {
        if (!error)
            self->Close();
    });
    boost::asio::async_write(socket_, buffers,
                             [self = shared_from_this()](boost::system::error_code error, size_t) {
                                 self->patience_.cancel();
                                 self->writing_ = false;
                                 self->sending_.clear();
                                 if (error)
                                     self->Close();
                                 else
                                     self->Send();
                             });
}

// A client has nothing to say; when it goes the read ends.
void EventStream::WatchForEnd()
{
    socket_.async_read_some(boost::asio::buffer(ignored_),
                            [self = shared_from_this()](boost::system::error_code error, size_t) {
                                if (error)
                                    self->Close();
                                else
                                    self->WatchForEnd();
                            });
}

void EventStream::Close()
{
    patience_.cancel();
    boost::system::error_code ignored;
    socket_.close(ignored);
}

}  // namespace web

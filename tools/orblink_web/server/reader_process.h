// The process that reads the board: started, listened to, and started again when it has ended.
#pragma once

#include <sys/types.h>

#include <boost/asio/io_context.hpp>
#include <boost/asio/posix/stream_descriptor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/orblink_web/reader/message.h"
#include "tools/orblink_web/reader/reader.h"

namespace web {

class ReaderProcess {
public:
    ReaderProcess(boost::asio::io_context& io, const ReaderOptions& options);
    ~ReaderProcess();
    ReaderProcess(const ReaderProcess&) = delete;
    ReaderProcess& operator=(const ReaderProcess&) = delete;

    std::function<void(Message)> onMessage;
    // Why it has ended; empty when it only wants to begin anew.
    std::function<void(const std::string&)> onEnd;

    void Start();
    // Lets it finish the reading that it is at; what takes longer than a third of a second is cut
    // off.
    void Stop();
    uint64_t Starts() const { return starts_; }

private:
    void Read();
    void TakeLines();
    void Ended();
    void StartLater(std::chrono::milliseconds delay);

    ReaderOptions options_;
    boost::asio::posix::stream_descriptor pipe_;
    boost::asio::steady_timer again_;
    pid_t process_ = -1;
    uint64_t starts_ = 0;
    std::string received_;
};

}  // namespace web

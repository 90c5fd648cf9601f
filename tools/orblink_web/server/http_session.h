// One connection: requests one after the other, each answered from what is known already.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <memory>
#include <optional>
#include <string>

#include "tools/orblink_web/server/routes.h"

namespace web {

class Server;

class HttpSession : public std::enable_shared_from_this<HttpSession> {
public:
    HttpSession(boost::asio::ip::tcp::socket socket, Server& server);
    ~HttpSession();
    HttpSession(const HttpSession&) = delete;
    HttpSession& operator=(const HttpSession&) = delete;

    void Read();
    void Close();

private:
    using Request = boost::beast::http::request_parser<boost::beast::http::empty_body>;
    using Response = boost::beast::http::response<boost::beast::http::string_body>;

    void Answer();
    void Refuse(boost::beast::error_code error);
    // The status of a request that is not to be looked at further; 0 for a good one.
    unsigned Fault() const;
    void Write(Reply reply, bool keepAlive);
    void WriteEvents();

    boost::beast::tcp_stream stream_;
    Server& server_;
    boost::beast::flat_buffer buffer_;
    std::optional<Request> request_;
    std::optional<Response> response_;
    std::optional<boost::beast::http::response_serializer<boost::beast::http::string_body>>
        serializer_;
};

}  // namespace web

#include "tools/orblink_web/server/http_session.h"

#include <chrono>
#include <sstream>
#include <utility>

#include "tools/orblink_web/server/event_stream.h"
#include "tools/orblink_web/server/host_check.h"
#include "tools/orblink_web/server/server.h"

namespace web {

namespace http = boost::beast::http;

namespace {

// For a request to come in full, and for an answer to be taken.
constexpr std::chrono::seconds kPatience{10};
constexpr uint32_t kLongestHeader = 8192;
constexpr int kHttp11 = 11;

// No script, style or picture but this server's own, nothing that could be sent elsewhere, and no
// page around this one.
constexpr char kPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
    "form-action 'self'; base-uri 'none'; frame-ancestors 'none'";

template <typename Message>
void Protect(Message& message)
{
    message.set(http::field::cache_control, "no-store");
    message.set("Content-Security-Policy", kPolicy);
    message.set("Cross-Origin-Resource-Policy", "same-origin");
    message.set("Referrer-Policy", "no-referrer");
    message.set("X-Content-Type-Options", "nosniff");
    message.set("X-Frame-Options", "DENY");
}

const char* Reason(unsigned status)
{
    switch (status) {
        case 400:
            return "This is no request that can be understood.\n";
        case 405:
            return "The board can be looked at here, not changed: GET and HEAD.\n";
        case 421:
            return "This server does not go by that name; --host NAME allows one.\n";
        case 431:
            return "The request's header is too long.\n";
        default:
            return "Too many clients follow the events.\n";
    }
}

}  // namespace

HttpSession::HttpSession(boost::asio::ip::tcp::socket socket, Server& server)
    : stream_(std::move(socket)), server_(server), buffer_(size_t{2} * kLongestHeader)
{
}

HttpSession::~HttpSession()
{
    server_.Forget(this);
}

void HttpSession::Read()
{
    request_.emplace();
    request_->header_limit(kLongestHeader);
    stream_.expires_after(kPatience);
    http::async_read_header(stream_, buffer_, *request_,
                            [self = shared_from_this()](boost::beast::error_code error, size_t) {
                                if (error)
                                    self->Refuse(error);
                                else
                                    self->Answer();
                            });
}

void HttpSession::Refuse(boost::beast::error_code error)
{
    if (error == http::error::header_limit || error == http::error::buffer_overflow)
        return Write({431, "text/plain; charset=utf-8", Reason(431)}, false);
    // Nobody is there to be answered.
    if (error == http::error::end_of_stream || error == http::error::partial_message ||
        error.category() != http::make_error_code(http::error::bad_method).category())
        return Close();
    Write({400, "text/plain; charset=utf-8", Reason(400)}, false);
}

unsigned HttpSession::Fault() const
{
    const auto& request = request_->get();
    const std::string_view target(request.target().data(), request.target().size());
    if (request.count(http::field::host) != 1 || !target.starts_with('/'))
        return 400;
    const auto host = request[http::field::host];
    if (!HostIsMeant({host.data(), host.size()}, server_.HostNames()))
        return 421;
    if (request.method() != http::verb::get && request.method() != http::verb::head)
        return 405;
    return 0;
}

void HttpSession::Answer()
{
    const auto& request = request_->get();
    server_.CountRequest();
    // What follows a header that is refused, or a body, is not looked at.
    if (const unsigned fault = Fault())
        return Write({fault, "text/plain; charset=utf-8", Reason(fault)}, false);
    const bool hasBody = request.count(http::field::content_length) != 0 ||
                         request.count(http::field::transfer_encoding) != 0;
    const std::string target(request.target().data(), request.target().size());
    if (PathOf(target) == "/events" && request.method() == http::verb::get)
        return WriteEvents();
    Reply reply = PathOf(target) == "/events" ? Reply{200, "text/event-stream", ""}
                                              : Route(server_.View(), server_.Figures(), target);
    Write(std::move(reply), request.keep_alive() && !hasBody);
}

void HttpSession::Write(Reply reply, bool keepAlive)
{
    response_.emplace(static_cast<http::status>(reply.status), kHttp11);
    Protect(*response_);
    response_->set(http::field::content_type, reply.type);
    if (reply.age >= 0)
        response_->set(http::field::age, std::to_string(reply.age));
    if (reply.status == 405)
        response_->set(http::field::allow, "GET, HEAD");
    response_->keep_alive(keepAlive);
    response_->content_length(reply.body.size());
    response_->body() = std::move(reply.body);
    serializer_.emplace(*response_);
    const auto done = [self = shared_from_this(), keepAlive](boost::beast::error_code error,
                                                             size_t) {
        if (error || !keepAlive)
            self->Close();
        else
            self->Read();
    };
    stream_.expires_after(kPatience);
    if (request_->get().method() == http::verb::head)
        http::async_write_header(stream_, *serializer_, done);
    else
        http::async_write(stream_, *serializer_, done);
}

void HttpSession::WriteEvents()
{
    if (!server_.HasRoomForStream())
        return Write({503, "text/plain; charset=utf-8", Reason(503)}, false);
    http::response<http::empty_body> head(http::status::ok, kHttp11);
    Protect(head);
    head.set(http::field::content_type, "text/event-stream");
    head.keep_alive(false);
    std::ostringstream text;
    text << head.base();
    stream_.expires_never();
    server_.Follow(std::make_shared<EventStream>(stream_.release_socket(), server_.View()),
                   text.str());
}

void HttpSession::Close()
{
    boost::beast::error_code ignored;
    stream_.socket().shutdown(boost::asio::ip::tcp::socket::shutdown_send, ignored);
    stream_.close();
}

}  // namespace web

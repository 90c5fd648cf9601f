// Requests as they go over the wire, good ones and others.
#pragma once

#include <map>
#include <string>

namespace webtest {

struct Response {
    // 0 when the connection ended without an answer.
    int status = 0;
    // Names in lower case.
    std::map<std::string, std::string> headers;
    std::string body;
};

// A connection to a server of this machine; what does not come within five seconds does not come.
class Connection {
public:
    explicit Connection(int port);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    bool IsOpen() const { return socket_ >= 0; }
    // Bytes that the kernel keeps for this side; to be called before much has come.
    void KeepLittle() const;
    void Send(const std::string& bytes) const;
    // What has come when the text is in it, or all until the end or the time-out.
    std::string ReadUntil(const std::string& text);
    std::string ReadAll();
    // Whether the other side has ended the connection, nothing else being read.
    bool IsClosed() const;

private:
    int socket_;
    std::string received_;
};

// One request with a good Host header on a connection of its own.
Response Get(int port, const std::string& target);
// The same with another method, Host header or further lines, which end with \r\n.
Response Ask(int port, const std::string& method, const std::string& target,
             const std::string& host, const std::string& lines = "");
Response Parsed(const std::string& bytes);

}  // namespace webtest

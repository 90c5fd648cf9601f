#include "tests/tools/orblink_web/http_client.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>

namespace webtest {

Connection::Connection(int port) : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const timeval patience = {5, 0};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    setsockopt(socket_, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(port));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == -1) {
        close(socket_);
        socket_ = -1;
    }
}

Connection::~Connection()
{
    if (socket_ >= 0)
        close(socket_);
}

void Connection::KeepLittle() const
{
    const int size = 4096;
    setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
}

void Connection::Send(const std::string& bytes) const
{
    for (size_t sent = 0; sent < bytes.size();) {
        const ssize_t count = send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (count <= 0)
            return;
        sent += static_cast<size_t>(count);
    }
}

std::string Connection::ReadUntil(const std::string& text)
{
    char piece[16384];
    while (text.empty() || received_.find(text) == std::string::npos) {
        const ssize_t count = recv(socket_, piece, sizeof piece, 0);
        if (count <= 0)
            break;
        received_.append(piece, static_cast<size_t>(count));
    }
    return received_;
}

std::string Connection::ReadAll()
{
    return ReadUntil("");
}

bool Connection::IsClosed() const
{
    char byte = 0;
    return recv(socket_, &byte, 1, MSG_PEEK) == 0;
}

Response Parsed(const std::string& bytes)
{
    Response response;
    const size_t end = bytes.find("\r\n\r\n");
    if (end == std::string::npos || !bytes.starts_with("HTTP/1.1 "))
        return response;
    response.status = std::stoi(bytes.substr(9));
    for (size_t begin = bytes.find("\r\n") + 2; begin < end;) {
        const size_t stop = bytes.find("\r\n", begin);
        const std::string line = bytes.substr(begin, stop - begin);
        std::string name = line.substr(0, line.find(':'));
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        response.headers[name] = line.substr(std::min(line.size(), name.size() + 2));
        begin = stop + 2;
    }
    response.body = bytes.substr(end + 4);
    return response;
}

Response Ask(int port, const std::string& method, const std::string& target,
             const std::string& host, const std::string& lines)
{
    Connection connection(port);
    connection.Send(method + " " + target + " HTTP/1.1\r\nHost: " + host + "\r\n" +
                    "Connection: close\r\n" + lines + "\r\n");
    return Parsed(connection.ReadAll());
}

Response Get(int port, const std::string& target)
{
    return Ask(port, "GET", target, "127.0.0.1");
}

}  // namespace webtest

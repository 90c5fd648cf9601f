#include "virtual_board/board/board_server.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "virtual_board/board/control.h"
#include "virtual_board/board/descriptor_passing.h"
#include "virtual_board/board/system_failure.h"

namespace vboard {
namespace {

constexpr size_t kControlPacket = 32768;

UniqueFd MakeSocket(const std::string& path)
{
    UniqueFd fd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    if (!fd)
        Fail(path);
    return fd;
}

bool Bind(const UniqueFd& fd, const sockaddr_un& address)
{
    return bind(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

// A socket that a killed board has left: nobody listens there any more. Connecting to a file of
// another kind is refused as well.
bool IsDeserted(const sockaddr_un& address)
{
    struct stat file {};
    if (lstat(address.sun_path, &file) != 0 || !S_ISSOCK(file.st_mode))
        return false;
    const UniqueFd fd = MakeSocket(address.sun_path);
    return connect(fd.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
           errno == ECONNREFUSED;
}

UniqueFd Listen(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        Fail(path, ENAMETOOLONG);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    UniqueFd fd = MakeSocket(path);
    if (!Bind(fd, address)) {
        const int error = errno;
        if (error != EADDRINUSE || !IsDeserted(address) || unlink(path.c_str()) != 0)
            Fail(path, error);
        if (!Bind(fd, address))
            Fail(path);
    }
    if (listen(fd.Get(), SOMAXCONN) != 0)
        Fail(path);
    return fd;
}

pid_t PeerPid(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

// Until something is ready, or until the cables or one of the backgrounds have to go on.
int Wait(std::vector<pollfd>& polled, const Cables* traffic,
         const std::vector<Background*>& backgrounds)
{
    auto limit = traffic != nullptr ? traffic->Wait() : std::nullopt;
    for (const Background* background : backgrounds)
        if (const auto wait = background->Wait())
            limit = limit ? std::min(*limit, *wait) : *wait;
    timespec time{};
    if (limit) {
        time.tv_sec = static_cast<time_t>(limit->count() / 1'000'000'000);
        time.tv_nsec = static_cast<long>(limit->count() % 1'000'000'000);
    }
    return ppoll(polled.data(), polled.size(), limit ? &time : nullptr, nullptr);
}

// One that has nothing to do is not asked: it would cost each frame a system call.
void ServeBackground(Background& background, bool ready)
{
    const auto wait = background.Wait();
    if (ready || (wait && wait->count() <= 0))
        background.Serve();
}

}  // namespace

BoardServer::BoardServer(VirtualBoard& served, std::string socketPath)
    : board{served}, path{std::move(socketPath)}, listener{Listen(path)}
{
    Add(board.Mailboxes());
}

BoardServer::~BoardServer()
{
    unlink(path.c_str());  // result dropped: its directory goes as well
}

void BoardServer::Accept()
{
    for (;;) {
        UniqueFd fd{accept4(listener.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!fd)
            return;
        const pid_t peer = PeerPid(fd.Get());
        sessions.push_back({std::move(fd), peer});
        ReadPackets(sessions.back());
    }
}

void BoardServer::ReadPackets(Session& session)
{
    static uint8_t packet[sizeof(wire::Request) + wire::kMaxData];
    while (!session.gone) {
        const Received received = ReceiveWithDescriptor(session.fd.Get(), packet, sizeof packet);
        if (received.size > 0)
            HandlePacket(session, {packet, static_cast<size_t>(received.size)},
                         received.descriptor.Get());
        else if (received.size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK))
            return;
        else
            session.gone = true;
    }
}

void BoardServer::HandlePacket(Session& session, std::span<const uint8_t> packet, int descriptor)
{
    wire::Request request{};
    if (packet.size() < sizeof request)
        return Queue(session, {-1, EPROTO});
    memcpy(&request, packet.data(), sizeof request);
    const auto data = packet.subspan(sizeof request);
    if (request.magic == wire::kMagic && request.op == wire::Op::kControl)
        return HandleControl(session, data);
    if (request.magic != wire::kMagic || request.dataSize != data.size())
        return Queue(session, {-1, EPROTO});
    const pid_t process = request.process != 0 ? request.process : session.peer;
    Queue(session, board.Ask({process, request.op, request.arg, data, descriptor}));
}

void BoardServer::HandleControl(Session& session, std::span<const uint8_t> json)
{
    Json command = Json::parse(json.begin(), json.end(), nullptr, false);
    board.Mailboxes().Serve();  // what programs have sent comes before what is asked
    const std::string text =
        Control(board, command).dump(-1, ' ', false, Json::error_handler_t::replace);
    for (size_t at = 0; at < text.size(); at += kControlPacket) {
        std::string part = text.substr(at, kControlPacket);
        session.outbox.push_back({{part.begin(), part.end()}});
    }
    session.closing = true;
    Flush(session);
}

void BoardServer::Queue(Session& session, Reply reply)
{
    const wire::Reply head{reply.result, reply.error, static_cast<uint32_t>(reply.data.size())};
    std::vector<uint8_t> packet(sizeof head);
    memcpy(packet.data(), &head, sizeof head);
    packet.insert(packet.end(), reply.data.begin(), reply.data.end());
    session.outbox.push_back({std::move(packet), std::move(reply.descriptor)});
    Flush(session);
}

void BoardServer::Flush(Session& session)
{
    while (!session.outbox.empty()) {
        const Packet& packet = session.outbox.front();
        if (!SendWithDescriptor(session.fd.Get(), packet.bytes.data(), packet.bytes.size(),
                                packet.descriptor.Get())) {
            session.gone = errno != EAGAIN;
            return;
        }
        session.outbox.pop_front();
    }
    session.gone = session.gone || session.closing;
}

void BoardServer::DropGone()
{
    std::erase_if(sessions, [](const Session& session) { return session.gone; });
}

void BoardServer::PollOnce(int wakeFd, bool& woken)
{
    polled.assign({{wakeFd, POLLIN, 0}, {listener.Get(), POLLIN, 0}});
    std::vector<Session*> order;
    for (Session& session : sessions) {
        const short events = session.outbox.empty() ? POLLIN : POLLOUT;
        polled.push_back({session.fd.Get(), events, 0});
        order.push_back(&session);
    }
    const size_t afterSessions = polled.size();
    for (const Background* background : backgrounds)
        polled.push_back({background->Fd(), POLLIN, 0});
    const size_t afterBackgrounds = polled.size();
    Cables* traffic = board.Plugged();
    if (traffic != nullptr)
        traffic->Poll(polled);
    if (Wait(polled, traffic, backgrounds) < 0)
        return;
    for (size_t i = 0; i < backgrounds.size(); ++i)
        ServeBackground(*backgrounds[i], polled[afterSessions + i].revents != 0);
    woken = polled[0].revents != 0;
    for (size_t i = 0; i < order.size(); ++i) {
        const short happened = polled[i + 2].revents;
        if ((happened & POLLOUT) != 0)
            Flush(*order[i]);
        if ((happened & (POLLIN | POLLHUP | POLLERR)) != 0)
            ReadPackets(*order[i]);
    }
    if (polled[1].revents != 0)
        Accept();
    // A control command may have made a message due.
    board.Mailboxes().Serve();
    // Last, so that what clients have changed shows at the cables at once.
    if (traffic != nullptr)
        traffic->Serve(std::span{polled}.subspan(afterBackgrounds));
}

void BoardServer::Run(int wakeFd, const std::function<bool()>& stop)
{
    for (;;) {
        bool woken = false;
        PollOnce(wakeFd, woken);
        DropGone();
        if (woken && stop())
            return;
    }
}

}  // namespace vboard

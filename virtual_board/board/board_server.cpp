#include "virtual_board/board/board_server.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

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
constexpr unsigned kCallsInARow = 16;  // then the rest of the board has its turn
// A frame is often followed by its answer, or by the next one.
constexpr std::chrono::microseconds kEager{50};
constexpr std::chrono::microseconds kNoTime{0};

// What becomes ready.
enum Kind : uint32_t { kWake, kListener, kSession, kBackground, kCable };

UniqueFd MakeSocket(const std::string& path)
{
    UniqueFd fd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)};
    if (!fd)
        Fail(path);
    return fd;
}

sockaddr_un AddressOf(const std::string& path)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path)
        Fail(path, ENAMETOOLONG);
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    return address;
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

// 0, or the error's number.
int GiveName(const sockaddr_un& first, const sockaddr_un& wanted)
{
    if (link(first.sun_path, wanted.sun_path) == 0)
        return 0;
    if (errno != EEXIST)
        return errno;
    if (!IsDeserted(wanted) || unlink(wanted.sun_path) != 0)
        return EADDRINUSE;
    return link(first.sun_path, wanted.sun_path) == 0 ? 0 : errno;
}

// A socket gets its name when somebody listens there: who sees it can connect, and no other board
// takes it for a deserted one. Until then it has another one beside it.
UniqueFd Listen(const std::string& path)
{
    const sockaddr_un wanted = AddressOf(path);
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    const sockaddr_un first = AddressOf(folder + "." + std::to_string(getpid()));
    UniqueFd fd = MakeSocket(path);
    unlink(first.sun_path);  // result dropped: of an earlier process with this number, if any
    if (bind(fd.Get(), reinterpret_cast<const sockaddr*>(&first), sizeof first) != 0)
        Fail(path);
    const int error = listen(fd.Get(), SOMAXCONN) == 0 ? GiveName(first, wanted) : errno;
    unlink(first.sun_path);  // result dropped: whether the wanted name is there counts
    if (error != 0)
        Fail(path, error);
    return fd;
}

pid_t PeerPid(int fd)
{
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

}  // namespace

BoardServer::BoardServer(VirtualBoard& served, std::string socketPath)
    : board_{served}, path_{std::move(socketPath)}, listener_{Listen(path_)}
{
    poller_.Watch(listener_.Get(), {kListener, 0});
    Add(board_.Mailboxes());
}

BoardServer::~BoardServer()
{
    unlink(path_.c_str());  // result dropped: its directory goes as well
}

void BoardServer::Add(Background& background)
{
    poller_.Watch(background.Fd(), {kBackground, static_cast<uint32_t>(backgrounds_.size())});
    backgrounds_.push_back(&background);
}

void BoardServer::AddCallers(Background& background)
{
    callersNumber_ = static_cast<uint32_t>(backgrounds_.size());
    callers_ = &background;
    Add(background);
}

void BoardServer::KeepProcessorsAwake()
{
    Add(awake_.emplace());
}

void BoardServer::Accept()
{
    for (;;) {
        UniqueFd fd{accept4(listener_.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK)};
        if (!fd)
            return;
        const int number = fd.Get();
        const pid_t peer = PeerPid(number);
        poller_.Watch(number, {kSession, static_cast<uint32_t>(number)});
        Session& session = sessions_[number] = {std::move(fd), peer};
        ReadPackets(session);
        WaitForRoom(session);
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
    Queue(session, board_.Ask({process, request.op, request.arg, data, descriptor}));
}

void BoardServer::HandleControl(Session& session, std::span<const uint8_t> json)
{
    Json command = Json::parse(json.begin(), json.end(), nullptr, false);
    board_.Mailboxes().Serve();  // what programs have sent comes before what is asked
    const std::string text =
        Control(board_, command).dump(-1, ' ', false, Json::error_handler_t::replace);
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

void BoardServer::WaitForRoom(Session& session)
{
    const bool sends = !session.outbox.empty();
    if (std::exchange(session.sends, sends) == sends)
        return;
    const int fd = session.fd.Get();
    poller_.WatchFor(fd, {kSession, static_cast<uint32_t>(fd)}, sends ? EPOLLOUT : EPOLLIN);
}

void BoardServer::DropGone()
{
    std::erase_if(sessions_, [this](const auto& entry) {
        if (entry.second.gone)
            poller_.Forget(entry.first);
        return entry.second.gone;
    });
}

// Until the cables or one of the backgrounds have to go on.
Poller::Limit BoardServer::Limit() const
{
    const Cables* traffic = board_.Plugged();
    auto limit = traffic != nullptr ? traffic->Wait() : std::nullopt;
    for (const Background* background : backgrounds_)
        if (const auto wait = background->Wait())
            limit = limit ? std::min(*limit, *wait) : *wait;
    return limit;
}

void BoardServer::ServeSession(Session& session, uint32_t events)
{
    if ((events & EPOLLOUT) != 0)
        Flush(session);
    if ((events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0)
        ReadPackets(session);
    WaitForRoom(session);
}

// One call of a program is followed by the next, which is waited for at itself as long as nothing
// else happens.
void BoardServer::AwaitCall(bool await)
{
    if (std::exchange(awaitsCall_, await) == await)
        return;
    if (await)
        poller_.Forget(callers_->Fd());
    else
        poller_.Watch(callers_->Fd(), {kBackground, callersNumber_});
}

// False when something else is to be looked at.
bool BoardServer::ServeCall()
{
    if (!awaitsCall_ || callsInARow_ == kCallsInARow || !poller_.WaitAt(callers_->Fd(), Limit()))
        return false;
    ++callsInARow_;
    callers_->ServeOne();
    return true;
}

// True when the one that may stop the loop is ready.
bool BoardServer::ServeReady(std::chrono::nanoseconds eager)
{
    bool woken = false;
    const auto ready = poller_.Wait(awaitsCall_ ? Poller::Limit{0} : Limit(), eager);
    if (!ready.empty())
        AwaitCall(false);
    callsInARow_ = 0;
    for (const auto& [mark, events] : ready) {
        if (mark.kind == kWake) {
            woken = true;
        } else if (mark.kind == kListener) {
            Accept();
        } else if (mark.kind == kCable) {
            readyCables_.push_back(mark.number);
        } else if (mark.kind == kSession) {
            ServeSession(sessions_.at(static_cast<int>(mark.number)), events);
        } else {
            backgrounds_[mark.number]->Serve();
            AwaitCall(backgrounds_[mark.number] == callers_ || awaitsCall_);
        }
    }
    return woken;
}

bool BoardServer::Round()
{
    std::chrono::nanoseconds eager = readyCables_.empty() ? kNoTime : kEager;
    if (awake_)
        eager = std::max(eager, awake_->Left());
    readyCables_.clear();
    const bool woken = !ServeCall() && ServeReady(eager);
    if (awake_ && !readyCables_.empty())
        awake_->FramesPass();
    // One that has nothing to do is not asked: it would cost each frame a system call.
    for (Background* background : backgrounds_) {
        const auto wait = background->Wait();
        if (wait && wait->count() <= 0)
            background->Serve();
    }
    // A control command may have made a message due.
    board_.Mailboxes().Serve();
    // Last, so that what clients have changed shows at the cables at once.
    if (Cables* traffic = board_.Plugged())
        traffic->Serve(readyCables_);
    DropGone();
    return woken;
}

void BoardServer::Run(int wakeFd, const std::function<bool()>& stop)
{
    poller_.Watch(wakeFd, {kWake, 0});
    if (Cables* traffic = board_.Plugged())
        traffic->Watch(poller_, kCable);
    while (!Round() || !stop()) {
    }
    poller_.Forget(wakeFd);
}

}  // namespace vboard

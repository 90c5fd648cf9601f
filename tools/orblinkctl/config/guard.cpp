#include "tools/orblinkctl/config/guard.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ipc.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstring>
#include <optional>

#include "common/shared_names.h"
#include "tools/orblinkctl/access/failure.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

constexpr char kMeetingPoint[] = "orblink/confirm/";

constexpr char kStart[] = "start";
constexpr char kKeep[] = "keep";
constexpr char kTakeBack[] = "take back";
constexpr char kStatus[] = "status";
constexpr char kKept[] = "kept";

using Clock = std::chrono::steady_clock;

volatile std::sig_atomic_t toldToEnd = 0;

// Named after the key of the lock: whoever has a lock of his own, on another board, has changes of
// his own that wait. The key stays what it was when the process first asked.
const std::string& MeetingName()
{
    static const std::string name = [] {
        for (const char* file : {OB_SWITCH_KEY_FILE, OB_PHY_KEY_FILE}) {
            const key_t key = ftok(file, OB_KEY_NUMBER);
            if (key != -1)
                return kMeetingPoint + Hex(static_cast<uint32_t>(key), 8);
        }
        return std::string(kMeetingPoint);
    }();
    return name;
}

// Abstract: it needs no file, which a guard that is killed would leave.
class MeetingPoint {
public:
    MeetingPoint()
    {
        address_.sun_family = AF_UNIX;
        const size_t length =
            MeetingName().copy(address_.sun_path + 1, sizeof address_.sun_path - 1);
        size_ = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + length);
    }

    const sockaddr* Address() const { return reinterpret_cast<const sockaddr*>(&address_); }
    socklen_t Size() const { return size_; }

private:
    sockaddr_un address_ = {};
    socklen_t size_;
};

bool Say(int socket, const std::string& text)
{
    return send(socket, text.data(), text.size(), MSG_NOSIGNAL) >= 0;
}

// Nothing when the other side has gone.
std::optional<std::string> Hear(int socket)
{
    std::string text(1 << 16, '\0');
    ssize_t size = 0;
    do {
        size = recv(socket, text.data(), text.size(), 0);
    } while (size < 0 && errno == EINTR);
    if (size <= 0)
        return std::nullopt;
    text.resize(static_cast<size_t>(size));
    return text;
}

// Root's word counts, and that of the user who made the change.
bool IsTrusted(int socket)
{
    ucred peer = {};
    socklen_t size = sizeof peer;
    return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 &&
           (peer.uid == 0 || peer.uid == geteuid());
}

UniqueDescriptor Connected()
{
    UniqueDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const MeetingPoint meeting;
    if (connect(socket.Get(), meeting.Address(), meeting.Size()) != 0)
        return {};
    if (!IsTrusted(socket.Get()))
        throw Failure{kPermission, "the socket @" + MeetingName() +
                                       " belongs to a process of another user: end that process"};
    return socket;
}

UniqueDescriptor RequirePending()
{
    UniqueDescriptor socket = Connected();
    if (socket.Get() < 0)
        throw Failure{kNoSuchObject, "no change waits for its confirmation"};
    return socket;
}

UniqueDescriptor Listener()
{
    if (Connected().Get() >= 0)
        throw Failure{kUnsupported,
                      "another change waits for its confirmation: orblinkctl config confirm, or "
                      "orblinkctl config rollback"};
    UniqueDescriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const MeetingPoint meeting;
    if (bind(socket.Get(), meeting.Address(), meeting.Size()) != 0 || listen(socket.Get(), 8) != 0)
        throw Failure{kFailed, "the socket @" + MeetingName() + ": " + std::strerror(errno)};
    return socket;
}

std::string OutcomeText(const GuardOutcome& outcome)
{
    return outcome.kept ? kKept : "taken back" + outcome.failure;
}

GuardOutcome ParseOutcome(const std::optional<std::string>& text)
{
    if (!text)
        return {false, "the guarding process has ended"};
    if (*text == kKept)
        return {true, ""};
    return {false, text->substr(std::strlen("taken back"))};
}

// The process that holds the old configuration.
class Watch {
public:
    Watch(int caller, int listener, const PendingChange& change, std::function<void()> takeBack)
        : caller_(caller), listener_(listener), change_(change), takeBack_(std::move(takeBack))
    {
    }

    void Run()
    {
        while (!decided_)
            Step();
        GuardOutcome outcome;
        outcome.kept = keep_;
        if (!keep_)
            outcome.failure = TakeBack();
        Say(caller_, OutcomeText(outcome));
        if (client_.Get() >= 0)
            Say(client_.Get(), OutcomeText(outcome));
    }

private:
    void Decide(bool keep)
    {
        decided_ = true;
        keep_ = keep;
    }

    void Step()
    {
        pollfd sources[] = {{caller_, POLLIN, 0}, {listener_, POLLIN, 0}};
        const int ready = poll(sources, 2, Patience());
        if (toldToEnd != 0 || ready == 0)
            return Decide(false);
        if (ready > 0 && sources[0].revents != 0)
            return HearCaller();
        if (ready > 0 && sources[1].revents != 0)
            HearClient();
    }

    int Patience() const
    {
        if (!end_)
            return -1;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end_ - Clock::now());
        return static_cast<int>(std::max<int64_t>(0, left.count()));
    }

    void HearCaller()
    {
        const auto word = Hear(caller_);
        if (word == kStart)
            end_ = Clock::now() + std::chrono::duration_cast<Clock::duration>(
                                      std::chrono::duration<double>(change_.seconds));
        else
            Decide(word == kKeep);
    }

    void HearClient()
    {
        UniqueDescriptor client(accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC));
        // One that says nothing does not hold up the others for long. Result dropped: a client that
        // was not accepted is not trusted either.
        const timeval patience = {.tv_sec = 1, .tv_usec = 0};
        setsockopt(client.Get(), SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
        if (!IsTrusted(client.Get()))
            return;
        const auto word = Hear(client.Get());
        if (word == kStatus) {
            Say(client.Get(), Status());
        } else if (word == kKeep || word == kTakeBack) {
            client_ = std::move(client);
            Decide(word == kKeep);
        }
    }

    std::string Status() const
    {
        Model model;
        model["file"] = change_.file;
        model["seconds_left"] = end_ ? Model(Patience() / 1000) : Model();
        model["differences"] = change_.differences;
        return model.dump(-1, ' ', false, Model::error_handler_t::replace);
    }

    std::string TakeBack() const
    {
        try {
            takeBack_();
        } catch (const Failure& failure) {
            return failure.text;
        } catch (const std::exception& error) {
            return error.what();
        }
        return {};
    }

    int caller_;
    int listener_;
    const PendingChange& change_;
    std::function<void()> takeBack_;
    UniqueDescriptor client_;
    std::optional<Clock::time_point> end_;
    bool decided_ = false;
    bool keep_ = false;
};

void TellToEnd(int)
{
    toldToEnd = 1;
}

// Neither the terminal, nor its session, nor whoever reads the caller's output knows this process.
void Detach()
{
    setsid();
    if (chdir("/") != 0)
        _exit(kFailed);
    const UniqueDescriptor nowhere(open("/dev/null", O_RDWR | O_CLOEXEC));
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        dup2(nowhere.Get(), stream);  // result dropped: the old stream is no reason not to guard
    for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE})
        std::signal(number, SIG_IGN);
    struct sigaction action = {};
    action.sa_handler = TellToEnd;
    sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

Guard::Guard(const PendingChange& change, const std::function<void()>& takeBack)
{
    const UniqueDescriptor listener = Listener();
    int ends[2];
    if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) != 0)
        throw Failure{kFailed, std::string("socketpair: ") + std::strerror(errno)};
    channel_ = UniqueDescriptor(ends[0]);
    const UniqueDescriptor theirs(ends[1]);
    const pid_t first = fork();
    if (first < 0)
        throw Failure{kFailed, std::string("fork: ") + std::strerror(errno)};
    if (first == 0) {
        // The guard is nobody's child, so that nobody who waits for the caller waits for it.
        if (const pid_t second = fork(); second != 0)
            _exit(second < 0 ? kFailed : kDone);
        channel_ = UniqueDescriptor();
        Detach();
        Watch(theirs.Get(), listener.Get(), change, takeBack).Run();
        _exit(kDone);
    }
    int status = 0;
    waitpid(first, &status, 0);
    if (status != 0)
        throw Failure{kFailed, "no process could be started that guards the change"};
}

void Guard::StartCountdown()
{
    Say(channel_.Get(), kStart);
}

GuardOutcome Guard::Keep()
{
    Say(channel_.Get(), kKeep);
    return Wait();
}

GuardOutcome Guard::TakeBack()
{
    Say(channel_.Get(), kTakeBack);
    return Wait();
}

GuardOutcome Guard::Wait()
{
    return ParseOutcome(Hear(channel_.Get()));
}

Model PendingModel()
{
    const UniqueDescriptor socket = RequirePending();
    Say(socket.Get(), kStatus);
    const auto text = Hear(socket.Get());
    return text ? Model::parse(*text, nullptr, false) : Model();
}

GuardOutcome ConfirmPending()
{
    const UniqueDescriptor socket = RequirePending();
    Say(socket.Get(), kKeep);
    return ParseOutcome(Hear(socket.Get()));
}

GuardOutcome TakeBackPending()
{
    const UniqueDescriptor socket = RequirePending();
    Say(socket.Get(), kTakeBack);
    return ParseOutcome(Hear(socket.Get()));
}

bool AnythingPending()
{
    return Connected().Get() >= 0;
}

}  // namespace ctl

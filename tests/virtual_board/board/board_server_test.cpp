// What the board process does with clients that do not keep to the protocol.

#include "virtual_board/board/board_server.h"

#include <gmock/gmock.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "virtual_board/board/descriptor_passing.h"
#include "virtual_board/program/control_client.h"

namespace {

// A name that is looked for whenever somebody begins to listen, and whether it was there.
std::string nameAtListen;
bool wasNamed;

}  // namespace

// In the place of the C library's.
extern "C" int listen(int fd, int backlog) noexcept
{
    wasNamed = wasNamed || (!nameAtListen.empty() && access(nameAtListen.c_str(), F_OK) == 0);
    return static_cast<int>(syscall(SYS_listen, fd, backlog));
}

namespace vboard {
namespace {

class BoardServerTest : public testing::Test {
protected:
    BoardServerTest()
    {
        std::string pattern = "/tmp/vboard_server.XXXXXX";
        directory = mkdtemp(pattern.data());
        path = directory + "/socket";
        server = std::make_unique<BoardServer>(board, path);
        stop = UniqueFd{eventfd(0, EFD_CLOEXEC)};
        thread = std::thread{[this] { server->Run(stop.Get(), [] { return true; }); }};
    }
    ~BoardServerTest() override
    {
        uint64_t one = 1;
        EXPECT_EQ(write(stop.Get(), &one, sizeof one), 8);
        thread.join();
        server.reset();
        EXPECT_FALSE(std::filesystem::exists(path));
        std::filesystem::remove_all(directory);
    }
    UniqueFd Connect() const
    {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        UniqueFd fd{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
        EXPECT_EQ(connect(fd.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        return fd;
    }
    static wire::Reply Ask(const UniqueFd& fd, const wire::Request& request,
                           const std::string& data = "")
    {
        std::string packet(sizeof request, '\0');
        memcpy(packet.data(), &request, sizeof request);
        packet += data;
        EXPECT_GT(send(fd.Get(), packet.data(), packet.size(), 0), 0);
        wire::Reply reply{};
        EXPECT_GE(recv(fd.Get(), &reply, sizeof reply, 0), ssize_t{sizeof reply});
        return reply;
    }

    // A mailbox whose board's end went to the board; the other end.
    UniqueFd BoundMailbox(const UniqueFd& asker) const
    {
        const wire::Reply bound = Ask(asker, {kMagic, wire::Op::kBind, 0, 16, 7},
                                      std::string("\x2b\0\0\x0c", 4) + std::string(12, '\0'));
        EXPECT_EQ(bound.error, 0);
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        const UniqueFd boards{ends[0]};
        const wire::Request request{kMagic, wire::Op::kMailboxEnd,
                                    static_cast<uint32_t>(bound.result), 0, 7};
        EXPECT_TRUE(SendWithDescriptor(asker.Get(), &request, sizeof request, boards.Get()));
        wire::Reply reply{};
        EXPECT_EQ(recv(asker.Get(), &reply, sizeof reply, 0), ssize_t{sizeof reply});
        EXPECT_EQ(reply.error, 0);
        return UniqueFd{ends[1]};
    }
    static int MessageType(const UniqueFd& fd)
    {
        uint8_t message[256] = {};
        EXPECT_GT(recv(fd.Get(), message, sizeof message, 0), 8);
        return message[3];
    }
    static BoardDescription Spec()
    {
        BoardDescription spec;
        spec.order = {Family::kSwitch, Family::kPhy};
        return spec;
    }

    static constexpr uint32_t kMagic = wire::kMagic;
    std::string directory;
    std::string path;
    VirtualBoard board{Spec(), 1};
    std::unique_ptr<BoardServer> server;
    UniqueFd stop;
    std::thread thread;
};

TEST_F(BoardServerTest, RefusesWhatIsNoRequest)
{
    UniqueFd fd = Connect();
    ASSERT_EQ(send(fd.Get(), "x", 1, 0), 1);
    wire::Reply reply{};
    ASSERT_EQ(recv(fd.Get(), &reply, sizeof reply, 0), ssize_t{sizeof reply});
    EXPECT_EQ(reply.error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic + 1, wire::Op::kLaneOpen, 0, 0, 0}).error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op{99}, 0, 0, 0}).error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMii, 0, 5, 0}, "abcd").error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMii, 0, 4, 0}, "abcd").error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kGmac, 0, 0, 0}).error, EPROTO);
}

TEST_F(BoardServerTest, RefusesWhatDoesNotExist)
{
    UniqueFd fd = Connect();
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kBind, 0, 0, 0}).error, EINVAL);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kSend, 1, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kStartReceive, 1, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMailboxEnd, 1, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeRead, 3, 0, 0}).error, ENOENT);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeWrite, 3, 0, 0}).error, ENOENT);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeOpen, 2, 0, 0}).error, EACCES);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kInterface, 4, 0, 0}).error, EINVAL);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMiiAddress, 2, 0, 0}).error, EOPNOTSUPP);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kPrivateStat, 0, 0, 0}).error, ENOENT);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kPrivateOpen, 9, 0, 0}).error, ENOENT);
}

TEST_F(BoardServerTest, AClientThatGoesAwayDisturbsNobody)
{
    {
        UniqueFd going = Connect();
        const UniqueFd mailbox = BoundMailbox(going);
        const wire::Request half{kMagic, wire::Op::kLaneOpen, 0, 5, 0};
        EXPECT_EQ(send(going.Get(), &half, sizeof half, 0), ssize_t{sizeof half});
    }
    EXPECT_EQ(Ask(Connect(), {kMagic, wire::Op::kLaneOpen, 0, 0, 0}).error, 0);
}

TEST_F(BoardServerTest, MailboxesAreServedInTheOrderInWhichTheyWereBound)
{
    AskBoard(path, {{"verb", "fault"}, {"name", "silent"}});
    const UniqueFd asker = Connect();
    const UniqueFd first = BoundMailbox(asker);
    const UniqueFd second = BoundMailbox(asker);
    char nothing = 0;
    EXPECT_EQ(recv(first.Get(), &nothing, 1, MSG_DONTWAIT), -1);
    AskBoard(path, {{"verb", "fault"}, {"name", "clear"}});
    EXPECT_EQ(MessageType(first), 10);
    EXPECT_EQ(MessageType(second), 11);
}

TEST_F(BoardServerTest, AMessageIsReceivedWhenItIsReadAndNotBefore)
{
    const UniqueFd asker = Connect();
    const UniqueFd mailbox = BoundMailbox(asker);
    EXPECT_EQ(AskBoard(path, {{"verb", "state"}})["mailbox"]["switch"], "due");
    EXPECT_EQ(MessageType(mailbox), 10);
    EXPECT_EQ(AskBoard(path, {{"verb", "state"}})["mailbox"]["switch"], "sent");
    EXPECT_EQ(send(mailbox.Get(), "\0\0\0\x0c\0\0\0\0", 8, 0), 8);
    EXPECT_EQ(AskBoard(path, {{"verb", "state"}})["mailbox"]["switch"], "acknowledged");
}

TEST_F(BoardServerTest, AMailboxClosedUnreadLeavesItsMessageToTheNext)
{
    const UniqueFd asker = Connect();
    BoundMailbox(asker);
    EXPECT_EQ(AskBoard(path, {{"verb", "state"}})["mailbox"]["switch"], "due");
    const UniqueFd next = BoundMailbox(asker);
    EXPECT_EQ(MessageType(next), 10);
}

TEST_F(BoardServerTest, SaysToWhoeverJoinsHowItsTimeRuns)
{
    const UniqueFd fd = Connect();
    const wire::Request request{kMagic, wire::Op::kHello, 0, 0, 0};
    ASSERT_EQ(send(fd.Get(), &request, sizeof request, 0), ssize_t{sizeof request});
    struct {
        wire::Reply head;
        uint8_t hello[sizeof(wire::Hello)];
    } packet{};
    ASSERT_EQ(recv(fd.Get(), &packet, sizeof packet, 0), ssize_t{sizeof packet});
    wire::Hello hello{};
    memcpy(&hello, packet.hello, sizeof hello);
    EXPECT_EQ(hello.timeScale, 1);
    EXPECT_EQ(hello.privateNames, 0U);
}

TEST_F(BoardServerTest, ControlRefusesWhatIsNoCommand)
{
    for (const Json& command :
         {Json(5), Json::object(), Json{{"verb", "explode"}}, Json{{"verb", 5}},
          Json{{"verb", "battery"}}, Json{{"verb", "link"}, {"device", "sw0"}},
          Json{{"verb", "reg"}, {"device", "sw0"}, {"first", 0}, {"last", 4294967295U}},
          Json{{"verb", "battery"}, {"value", 4.4e56}}, Json{{"verb", "battery"}, {"value", -1}},
          Json{{"verb", "fault"}, {"name", "mdio-error"}, {"at", 1.5}}}) {
        Json answer = AskBoard(path, command);
        EXPECT_EQ(answer["ok"], false) << command;
        EXPECT_EQ(answer["schema"], 1);
        EXPECT_NE(answer["exit"], 0) << command;
    }
}

TEST_F(BoardServerTest, TheJournalTakesBytesThatAreNoText)
{
    UniqueFd fd = Connect();
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeWrite, 0, 2, 0}, "\377\300").error, EINVAL);
    Json journal = AskBoard(path, {{"verb", "journal"}});
    ASSERT_EQ(journal["ok"], true);
    EXPECT_EQ(journal["entries"].back()["facts"]["text"], "\uFFFD\uFFFD");
}

TEST_F(BoardServerTest, ASocketThatAKilledBoardHasLeftIsTakenOver)
{
    const std::string other = directory + "/left";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    other.copy(address.sun_path, sizeof address.sun_path - 1);
    {
        UniqueFd left{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
        ASSERT_EQ(bind(left.Get(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        ASSERT_EQ(listen(left.Get(), 1), 0);
        EXPECT_THROW(BoardServer(board, other), std::system_error);
    }
    EXPECT_NO_THROW(BoardServer(board, other));
    std::ofstream{other} << "no socket\n";
    EXPECT_THROW(BoardServer(board, other), std::system_error);
    EXPECT_TRUE(std::filesystem::is_regular_file(other));
}

TEST_F(BoardServerTest, ASocketThatIsSeenCanBeConnectedTo)
{
    nameAtListen = directory + "/other";
    const BoardServer other(board, nameAtListen);
    EXPECT_FALSE(wasNamed);
    EXPECT_TRUE(std::filesystem::is_socket(nameAtListen));
    const std::filesystem::directory_iterator entries(directory);
    EXPECT_EQ(std::distance(begin(entries), end(entries)), 2) << "and nothing beside the two";
}

}  // namespace
}  // namespace vboard

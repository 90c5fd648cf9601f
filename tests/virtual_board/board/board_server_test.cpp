// What the board process does with clients that do not keep to the protocol.

#include "virtual_board/board/board_server.h"

#include <gmock/gmock.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <thread>

#include "virtual_board/program/control_client.h"

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

    UniqueFd BoundMailbox() const
    {
        UniqueFd fd = Connect();
        EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kSocket, 1, 0}).error, 0);
        EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kBind, 0, 16},
                      std::string("\x2b\0\0\x0c", 4) + std::string(12, '\0'))
                      .error,
                  0);
        return fd;
    }
    static void StartReceiving(const UniqueFd& fd)
    {
        wire::Request receive{kMagic, wire::Op::kReceive, 0, 0};
        EXPECT_EQ(send(fd.Get(), &receive, sizeof receive, 0), ssize_t{sizeof receive});
    }
    static int MessageType(const UniqueFd& fd)
    {
        uint8_t packet[256] = {};
        EXPECT_GT(recv(fd.Get(), packet, sizeof packet, 0), ssize_t{sizeof(wire::Reply)});
        return packet[sizeof(wire::Reply) + 3];
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
    EXPECT_EQ(Ask(fd, {kMagic + 1, wire::Op::kLaneOpen, 0, 0}).error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op{99}, 0, 0}).error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMii, 0, 5}, "abcd").error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kMii, 0, 4}, "abcd").error, EPROTO);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kGmac, 0, 0}).error, EPROTO);
}

TEST_F(BoardServerTest, RefusesCallsOnTheWrongKindOfDescriptor)
{
    UniqueFd fd = Connect();
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kBind, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kSend, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kReceive, 0, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kLaneReset, 3, 0}).error, EBADF);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeRead, 3, 0}).error, ENOENT);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeWrite, 3, 0}).error, ENOENT);
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kInterface, 4, 0}).error, EINVAL);
}

TEST_F(BoardServerTest, AClientThatGoesAwayDisturbsNobody)
{
    {
        UniqueFd waiting = Connect();
        EXPECT_EQ(Ask(waiting, {kMagic, wire::Op::kSocket, 1, 0}).error, 0);
        wire::Request receive{kMagic, wire::Op::kReceive, 0, 0};
        EXPECT_EQ(send(waiting.Get(), &receive, sizeof receive, 0), ssize_t{sizeof receive});
    }
    EXPECT_EQ(Ask(Connect(), {kMagic, wire::Op::kLaneOpen, 0, 0}).error, 0);
}

TEST_F(BoardServerTest, ReceiversAreServedInTheOrderInWhichTheyBegan)
{
    AskBoard(path, {{"verb", "fault"}, {"name", "silent"}});
    UniqueFd second = BoundMailbox();
    UniqueFd first = BoundMailbox();
    StartReceiving(first);
    AskBoard(path, {{"verb", "state"}});  // answered after what the board had received before
    StartReceiving(second);
    AskBoard(path, {{"verb", "fault"}, {"name", "clear"}});
    EXPECT_EQ(MessageType(first), 10);
    EXPECT_EQ(MessageType(second), 11);
}

TEST_F(BoardServerTest, ControlRefusesWhatIsNoCommand)
{
    for (const Json& command :
         {Json(5), Json::object(), Json{{"verb", "explode"}}, Json{{"verb", 5}},
          Json{{"verb", "battery"}}, Json{{"verb", "link"}, {"device", "sw0"}},
          Json{{"verb", "reg"}, {"device", "sw0"}, {"first", 0}, {"last", 4294967295U}}}) {
        Json answer = AskBoard(path, command);
        EXPECT_EQ(answer["ok"], false) << command;
        EXPECT_EQ(answer["schema"], 1);
        EXPECT_NE(answer["exit"], 0) << command;
    }
}

TEST_F(BoardServerTest, TheJournalTakesBytesThatAreNoText)
{
    UniqueFd fd = Connect();
    EXPECT_EQ(Ask(fd, {kMagic, wire::Op::kAttributeWrite, 0, 0}).error, 0);
    ASSERT_EQ(send(fd.Get(), "\377\300", 2, 0), 2);
    wire::Reply reply{};
    ASSERT_EQ(recv(fd.Get(), &reply, sizeof reply, 0), ssize_t{sizeof reply});
    EXPECT_EQ(reply.error, EINVAL);
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

}  // namespace
}  // namespace vboard

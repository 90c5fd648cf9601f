// The commander's exchange: send, wait for the reply, again until one arrives.
#include <cerrno>

#include "tests/hwmbox/mailbox_fixture.h"

namespace obtest {
namespace {

const std::string kCommander = "out HWMB_Commander:# ";
const std::string kSendRecv = "out HWMB_sendRecvMsg:# ";
const std::string kRecv = "out HWMB_recvMsg:# ";
const std::string kSend = "out HWMB_sendMsg:# ";
const Lines kEnd = {"call parser", kCommander + "HWMB_Commander Failed", "sys close()"};
const Lines kWaited = {kCommander + "HWMB_sendRecvMsg Done",
                       kCommander + "internal error, retry in 1000 msec...",
                       "wait usleep(1000000)"};
const Lines kRefused = {kRecv + "Receiving message...", "sys recv(4096, MSG_TRUNC)",
                        kRecv + "failed to recv!!! [ret=-1, errno=111: Connection refused]",
                        kRecv + "Socket on other side is not ready yet, try again in 1000 msec...",
                        kSendRecv + "internal error on recv..."};

class HwmbCommander : public MailboxTest {
protected:
    HwmbCommander()
    {
        platform.mailbox = {Message("PONG")};
        toBuild = Message("PINGsize");
    }

    static Lines Built()
    {
        // "size" as a little-endian word.
        return Opened(SOCK_COMMANDER) +
               Lines{"call builder",
                     kCommander + "CreateMsg Done with msgSize 8, payload_len 1702521203",
                     kCommander + "Padded msgSize = 8"};
    }

    static Lines ToSend()
    {
        return {kSendRecv + "Send-Recv message...", kSendRecv + "Sending message... [msgSize=8]"};
    }

    // An exchange up to the receive.
    Lines ToReceive() const
    {
        return ToSend() + Sent(8) + Lines{kSendRecv + "Msg successfully sent!"} +
               ShortDump(transmitBuffer, "PINGsize") +
               Lines{kSendRecv + "Receiving reply message..."};
    }

    Lines Replied() const
    {
        return Received("PONG") + Lines{kSendRecv + "Reply Msg is ready in buffer! [totalSize=4]"};
    }
};

TEST_F(HwmbCommander, ReportsFailureEvenAfterACompletedExchange)
{
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    EXPECT_LINES(Built() + ToReceive() + Replied() + kEnd);
    EXPECT_THAT(platform.sent, testing::ElementsAre(Message("PINGsize")));
}

TEST_F(HwmbCommander, HandsTheParserTheReplyButNoDestination)
{
    parsedDest = &dest;
    parsedDestSize = 99;
    Run(SOCK_COMMANDER);
    EXPECT_EQ(parsedSize, 4U);
    EXPECT_EQ(Bytes(parsed.begin(), parsed.begin() + 4), Message("PONG"));
    EXPECT_EQ(parsedDest, nullptr);
    EXPECT_EQ(parsedDestSize, 0);
}

TEST_F(HwmbCommander, GoesOnAfterAFailedBuilder)
{
    builderResult = 3;
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    Lines expected = Built() + ToReceive() + Replied() + kEnd;
    const auto builder = std::find(expected.begin(), expected.end(), "call builder");
    expected.insert(builder + 1, kCommander + "msg builder failed");
    EXPECT_LINES(expected);
}

TEST_F(HwmbCommander, PadsTenBytesToTwelveWithWhatTheBufferHolds)
{
    toBuild = Message("0123456789xy");
    builtSize = 10;
    Run(SOCK_COMMANDER);
    EXPECT_TRUE(transcript.Has(kCommander + "CreateMsg Done with msgSize 10, "));
    EXPECT_TRUE(transcript.Has(kCommander + "Padded msgSize = 12"));
    EXPECT_THAT(platform.sent, testing::ElementsAre(Message("0123456789xy")));
}

TEST_F(HwmbCommander, PadsUpToTheNextMultipleOfFourOnly)
{
    const std::pair<uint32_t, size_t> sizes[] = {{0, 0}, {1, 4}, {4, 4}, {5, 8}, {4095, 4096}};
    for (const auto& [built, sent] : sizes) {
        builtSize = built;
        platform.mailbox = {Message("PONG")};
        platform.sent.clear();
        Run(SOCK_COMMANDER);
        ASSERT_EQ(platform.sent.size(), 1U) << built;
        EXPECT_EQ(platform.sent[0].size(), sent) << built;
    }
}

TEST_F(HwmbCommander, RepeatsARefusedExchangeEverySecond)
{
    platform.FailEach("recv", ECONNREFUSED, 2);
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    EXPECT_LINES(Built() + ToReceive() + kRefused + kWaited + ToReceive() + kRefused + kWaited +
                 ToReceive() + Replied() + kEnd);
    EXPECT_EQ(transcript.Only({"call builder"}).size(), 1U);
}

TEST_F(HwmbCommander, PrintsTheCountAtTheEleventhRefusal)
{
    platform.FailEach("recv", ECONNREFUSED, 11);
    Run(SOCK_COMMANDER);
    EXPECT_EQ(transcript.Only({"wait"}).size(), 11U);
    const Lines counts = transcript.Only({(kRecv + "recvMsg failed for").c_str()});
    EXPECT_EQ(counts, (Lines{kRecv + "recvMsg failed for 10 times!!!"}));
}

TEST_F(HwmbCommander, RepeatsAFailedReceiveAtOnceWithTheReceivesErrno)
{
    platform.Fail("recv", EIO);
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    const Lines failed = {kRecv + "Receiving message...",
                          "sys recv(4096, MSG_TRUNC)",
                          kRecv + "failed to recv!!! [ret=-1, errno=5: Input/output error]",
                          kRecv + "Critical failure in recv!!! [ret=" +
                              std::to_string(HWMB_socket) + ", errno=5: Input/output error]",
                          kSendRecv + "failed to recv Reply Msg!",
                          kCommander + "HWMB_sendRecvMsg Done",
                          kCommander + "HWMB_sendRecvMsg failed - errno 5"};
    EXPECT_LINES(Built() + ToReceive() + failed + ToReceive() + Replied() + kEnd);
}

TEST_F(HwmbCommander, RepeatsAFailedSendAtOnceWithTheSendsErrno)
{
    platform.Fail("send", ENOBUFS);
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    const std::string why = "errno=105: No buffer space available]";
    const Lines failed = {
        kSend + "Sending message [msgSize=8]...",
        "sys send(8, 0)",
        kSend + "failed to send!!! [ret=-1, " + why,
        kSend + "Critical failure in send!!! [ret=" + std::to_string(HWMB_socket) + ", " + why,
        kSendRecv + "failed to send Msg!",
        kCommander + "HWMB_sendRecvMsg Done",
        kCommander + "HWMB_sendRecvMsg failed - errno 105"};
    EXPECT_LINES(Built() + ToSend() + failed + ToReceive() + Replied() + kEnd);
}

TEST_F(HwmbCommander, RepeatsAnExchangeOfWhichOnlyAPartWasSent)
{
    platform.Fail("send", 0, 1, 4);
    EXPECT_EQ(Run(SOCK_COMMANDER), -1);
    const Lines failed = {kSend + "Sending message [msgSize=8]...",
                          "sys send(8, 0)",
                          kSend + "failed to sent entire message (msgSize=8), sent only 4 bytes!",
                          kSendRecv + "failed to send Msg!",
                          kCommander + "HWMB_sendRecvMsg Done",
                          kCommander + "HWMB_sendRecvMsg failed - errno 0"};
    EXPECT_LINES(Built() + ToSend() + failed + ToReceive() + Replied() + kEnd);
}

TEST_F(HwmbCommander, TheParserSeesOnlyWhatTheBufferHoldsOfALongerReply)
{
    platform.mailbox = {Bytes(HWMB_BUFFER_SIZE, 'r')};
    platform.mailboxFullLength = HWMB_BUFFER_SIZE + 1;
    Run(SOCK_COMMANDER);
    EXPECT_EQ(parsedSize, 4096U);
    EXPECT_TRUE(transcript.Has(kRecv + "successfully received 4097 bytes!"));
    EXPECT_TRUE(transcript.Has("[4097]====="));
    EXPECT_TRUE(transcript.Has(kSendRecv + "Reply Msg is ready in buffer! [totalSize=4097]"));
}

// The last would be padded to nothing, and nothing can be sent.
TEST_F(HwmbCommander, EndsWithAMessageThatIsLongerThanTheTransmitBuffer)
{
    const std::pair<uint32_t, const char*> sizes[] = {
        {4097, "4100"}, {8192, "8192"}, {0xFFFFFFFE, "4294967294"}};
    for (const auto& [built, padded] : sizes) {
        transcript.Clear();
        builtSize = built;
        errno = 0;
        EXPECT_EQ(Run(SOCK_COMMANDER), -1);
        const std::string size = padded;
        EXPECT_LINES(
            Opened(SOCK_COMMANDER) +
            Lines{
                "call builder",
                kCommander + "CreateMsg Done with msgSize " +
                    std::to_string(static_cast<int>(built)) + ", payload_len 1702521203",
                kCommander + "Padded msgSize = " +
                    std::to_string(static_cast<int>(static_cast<uint32_t>(std::stoul(size)))),
                kSendRecv + "Send-Recv message...",
                kSendRecv + "Sending message... [msgSize=" + size + "]",
                kSend + "Sending message [msgSize=" + size + "]...",
                kSend + "failed to sent entire message (msgSize=" + size + "), sent only 0 bytes!",
                kSendRecv + "failed to send Msg!", kCommander + "HWMB_sendRecvMsg Done",
                kCommander + "HWMB_sendRecvMsg failed - errno 0",
                kCommander + "HWMB_Commander Failed", "sys close()"});
    }
    EXPECT_EQ(parsedSize, 0U);
}

}  // namespace
}  // namespace obtest

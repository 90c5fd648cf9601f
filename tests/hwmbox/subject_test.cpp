// The subject's exchange: receive, answer, parse.
#include <cerrno>
#include <numeric>

#include "tests/hwmbox/mailbox_fixture.h"

namespace obtest {
namespace {

const std::string kSubject = "out HWMB_Subject:# ";
const std::string kSubjectRecv = "out HWMB_recvMsg:# ";
const std::string kSubjectSend = "out HWMB_sendMsg:# ";
const Lines kFailedReceive = {kSubject + "failed to recv Msg!", kSubject + "HWMB_Subject Failed",
                              "sys close()"};
const Lines kRefusedReceive = {kSubject + "internal error on recv...",
                               kSubject + "HWMB_Subject Failed", "sys close()"};

class HwmbSubject : public MailboxTest {
protected:
    HwmbSubject() { platform.mailbox = {Message("PING")}; }

    // The lines up to the receive, and the receive's own when it fails.
    static Lines ToReceive()
    {
        return Opened(SOCK_SUBJECT) + Lines{kSubject + "Receiving message...",
                                            kSubjectRecv + "Receiving message...",
                                            "sys recv(4096, MSG_TRUNC)"};
    }

    // The lines from the start to the reply's send, without it.
    Lines ToSend(uint32_t size) const
    {
        return Opened(SOCK_SUBJECT) + Lines{kSubject + "Receiving message..."} + Received("PING") +
               Lines{kSubject + "Reply Msg is ready in buffer! [totalSize=4]", "call builder",
                     kSubject + "Sending reply message... [msgSize=" + std::to_string(size) + "]"};
    }

    Lines CriticalReceive(const std::string& why) const
    {
        return {kSubjectRecv + "failed to recv!!! [ret=-1, " + why + "]",
                kSubjectRecv + "Critical failure in recv!!! [ret=" + std::to_string(HWMB_socket) +
                    ", " + why + "]"};
    }
};

TEST_F(HwmbSubject, AnswersBeforeItParses)
{
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_LINES(ToSend(4) + Sent(4) +
                 Lines({kSubject + "Msg successfully sent!", "call parser", "sys close()"}));
    EXPECT_THAT(platform.sent, testing::ElementsAre(Message("PONG")));
}

TEST_F(HwmbSubject, HandsTheParserTheMessageAndTheCallersDestination)
{
    Run(SOCK_SUBJECT);
    EXPECT_EQ(parsedSize, 4U);
    EXPECT_EQ(Bytes(parsed.begin(), parsed.begin() + 4), Message("PING"));
    EXPECT_EQ(parsedDest, &dest);
    EXPECT_EQ(parsedDestSize, static_cast<int>(sizeof(dest)));
}

TEST_F(HwmbSubject, IgnoresTheCallbacksResults)
{
    builderResult = -1;
    parserResult = -1;
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_LINES(ToSend(4) + Sent(4) +
                 Lines({kSubject + "Msg successfully sent!", "call parser", "sys close()"}));
}

TEST_F(HwmbSubject, DoesNotPadItsReply)
{
    toBuild = Message("0123456789");
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_THAT(platform.sent, testing::ElementsAre(Message("0123456789")));
}

TEST_F(HwmbSubject, AnswersAnEmptyMessage)
{
    platform.mailbox = {{}};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_TRUE(transcript.Has(kSubjectRecv + "successfully received 0 bytes!"));
    EXPECT_EQ(parsedSize, 0U);
    EXPECT_EQ(parsed, Bytes(HWMB_BUFFER_SIZE));
}

TEST_F(HwmbSubject, EndsWithNotReadyWhenTheReceiveIsRefused)
{
    platform.mailbox.clear();
    EXPECT_EQ(Run(SOCK_SUBJECT), 256);
    EXPECT_LINES(
        ToReceive() +
        Lines({kSubjectRecv + "failed to recv!!! [ret=-1, errno=111: Connection refused]",
               kSubjectRecv + "Socket on other side is not ready yet, try again in 1000 msec..."}) +
        kRefusedReceive);
}

TEST_F(HwmbSubject, FailsWhenTheReceiveFails)
{
    platform.Fail("recv", EIO);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_LINES(ToReceive() + CriticalReceive("errno=5: Input/output error") + kFailedReceive);
}

TEST_F(HwmbSubject, DoesNotRepeatAnInterruptedReceive)
{
    platform.Fail("recv", EINTR);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_LINES(ToReceive() + CriticalReceive("errno=4: Interrupted system call") +
                 kFailedReceive);
}

TEST_F(HwmbSubject, SaysThatTheConnectionTimedOut)
{
    platform.Fail("recv", ETIMEDOUT);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_LINES(ToReceive() + CriticalReceive("errno=110: Connection timed out") +
                 Lines({kSubjectRecv +
                        "HW_MBOX connection timed out!!! [errno=110: Connection timed out]"}) +
                 kFailedReceive);
}

TEST_F(HwmbSubject, CountsConsecutiveRefusalsAcrossRuns)
{
    platform.mailbox.clear();
    for (int run = 0; run < 10; ++run)
        EXPECT_EQ(Run(SOCK_SUBJECT), 256);
    EXPECT_FALSE(transcript.Has("recvMsg failed for"));
    transcript.Clear();
    EXPECT_EQ(Run(SOCK_SUBJECT), 256);
    EXPECT_LINES(
        ToReceive() +
        Lines({kSubjectRecv + "failed to recv!!! [ret=-1, errno=111: Connection refused]",
               kSubjectRecv + "recvMsg failed for 10 times!!!",
               kSubjectRecv + "Socket on other side is not ready yet, try again in 1000 msec..."}) +
        kRefusedReceive);
}

TEST_F(HwmbSubject, CountsAgainAtTheTwentyFirstRefusal)
{
    platform.mailbox.clear();
    for (int run = 0; run < 20; ++run)
        Run(SOCK_SUBJECT);
    EXPECT_FALSE(transcript.Has("recvMsg failed for 20 times!!!"));
    Run(SOCK_SUBJECT);
    EXPECT_TRUE(transcript.Has(kSubjectRecv + "recvMsg failed for 20 times!!!"));
}

TEST_F(HwmbSubject, AMessageEndsTheCountOfRefusals)
{
    platform.mailbox.clear();
    for (int run = 0; run < 10; ++run)
        Run(SOCK_SUBJECT);
    platform.mailbox = {Message("PING")};
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_EQ(Run(SOCK_SUBJECT), 256);
    EXPECT_FALSE(transcript.Has("recvMsg failed for"));
}

TEST_F(HwmbSubject, ACriticalFailureShowsTheCountOfRefusals)
{
    platform.mailbox.clear();
    for (int run = 0; run < 10; ++run)
        Run(SOCK_SUBJECT);
    platform.Fail("recv", EIO);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_TRUE(transcript.Has(kSubjectRecv + "recvMsg failed for 10 times!!!"));
}

TEST_F(HwmbSubject, ACriticalFailureEndsTheCountOfRefusals)
{
    platform.mailbox.clear();
    for (int run = 0; run < 9; ++run)
        Run(SOCK_SUBJECT);
    platform.Fail("recv", EIO);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    EXPECT_EQ(Run(SOCK_SUBJECT), 256);
    EXPECT_FALSE(transcript.Has("recvMsg failed for"));
}

TEST_F(HwmbSubject, FailsWithoutParsingWhenTheReplyIsRefused)
{
    platform.Fail("send", EPIPE);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    const Lines tail(transcript.All().end() - 7, transcript.All().end());
    EXPECT_EQ(
        tail,
        (Lines{kSubjectSend + "Sending message [msgSize=4]...", "sys send(4, 0)",
               kSubjectSend + "failed to send!!! [ret=-1, errno=32: Broken pipe]",
               kSubjectSend + "Critical failure in send!!! [ret=" + std::to_string(HWMB_socket) +
                   ", errno=32: Broken pipe]",
               kSubject + "failed to send Msg!", kSubject + "HWMB_Subject Failed", "sys close()"}));
    EXPECT_FALSE(transcript.Has("call parser"));
}

TEST_F(HwmbSubject, NeverReachesTenConsecutiveSendFailures)
{
    for (int run = 0; run < 12; ++run) {
        platform.mailbox = {Message("PING")};
        platform.Fail("send", EPIPE);
        EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    }
    EXPECT_FALSE(transcript.Has("sendMsg failed for"));
}

TEST_F(HwmbSubject, FailsWhenOnlyAPartOfTheReplyIsSent)
{
    platform.Fail("send", 0, 1, 3);
    EXPECT_EQ(Run(SOCK_SUBJECT), -1);
    const Lines tail(transcript.All().end() - 4, transcript.All().end());
    EXPECT_EQ(
        tail,
        (Lines{kSubjectSend + "failed to sent entire message (msgSize=4), sent only 3 bytes!",
               kSubject + "failed to send Msg!", kSubject + "HWMB_Subject Failed", "sys close()"}));
    EXPECT_FALSE(transcript.Has("call parser"));
}

TEST_F(HwmbSubject, SendsNothingOfAReplyThatIsLongerThanTheTransmitBuffer)
{
    for (const uint32_t size : {HWMB_BUFFER_SIZE + 1U, 0xFFFFFFFE}) {
        transcript.Clear();
        platform.mailbox = {Message("PING")};
        builtSize = size;
        EXPECT_EQ(Run(SOCK_SUBJECT), -1);
        const std::string bytes = std::to_string(size);
        EXPECT_LINES(ToSend(size) +
                     Lines{kSubjectSend + "Sending message [msgSize=" + bytes + "]...",
                           kSubjectSend + "failed to sent entire message (msgSize=" + bytes +
                               "), sent only 0 bytes!",
                           kSubject + "failed to send Msg!", kSubject + "HWMB_Subject Failed",
                           "sys close()"});
    }
}

TEST_F(HwmbSubject, SendsAReplyOfTheWholeTransmitBuffer)
{
    builtSize = HWMB_BUFFER_SIZE;
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    ASSERT_EQ(platform.sent.size(), 1U);
    EXPECT_EQ(platform.sent[0].size(), 4096U);
}

TEST_F(HwmbSubject, LeavesTheTransmitBufferAsItIsBetweenRuns)
{
    toBuild = Message("LONG REPLY");
    Run(SOCK_SUBJECT);
    platform.mailbox = {Message("PING")};
    toBuild = Message("Tiny");
    builtSize = 10;
    Run(SOCK_SUBJECT);
    EXPECT_THAT(platform.sent, testing::ElementsAre(Message("LONG REPLY"), Message("Tiny REPLY")));
}

TEST_F(HwmbSubject, AShortMessageIsFollowedByZerosNotByAnEarlierOne)
{
    platform.mailbox = {Bytes(HWMB_BUFFER_SIZE, 0xEE)};
    Run(SOCK_SUBJECT);
    EXPECT_EQ(parsed, Bytes(HWMB_BUFFER_SIZE, 0xEE));
    platform.mailbox = {Message("AB")};
    Run(SOCK_SUBJECT);
    Bytes expected(HWMB_BUFFER_SIZE);
    expected[0] = 'A';
    expected[1] = 'B';
    EXPECT_EQ(parsed, expected);
}

TEST_F(HwmbSubject, TheParserSeesOnlyWhatTheBufferHoldsOfALongerMessage)
{
    Bytes message(HWMB_BUFFER_SIZE);
    std::iota(message.begin(), message.end(), uint8_t{0});
    platform.mailbox = {message};
    platform.mailboxFullLength = 5000;
    EXPECT_EQ(Run(SOCK_SUBJECT), 0);
    EXPECT_EQ(parsedSize, 4096U);
    EXPECT_EQ(parsed, message);
    EXPECT_TRUE(transcript.Has(kSubjectRecv + "successfully received 5000 bytes!"));
    EXPECT_TRUE(transcript.Has(kSubject + "Reply Msg is ready in buffer! [totalSize=5000]"));
    EXPECT_TRUE(transcript.Has("[5000]====="));
    const Lines dump = transcript.Only({"out HWMB_dumpBuffer:#  ["});
    ASSERT_EQ(dump.size(), 256U);
    EXPECT_EQ(dump.back().substr(0, 48), "out HWMB_dumpBuffer:#  [0x00000ff0] f0 f1 f2 f3 ");
}

}  // namespace
}  // namespace obtest

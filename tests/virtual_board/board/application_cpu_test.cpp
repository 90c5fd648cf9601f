#include "virtual_board/board/application_cpu.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <cstring>

#include "virtual_board/board/board_data.h"

namespace vboard {
namespace {

class ApplicationCpuTest : public testing::Test {
protected:
    static BoardDescription Spec()
    {
        BoardDescription spec;
        spec.order = {Family::kSwitch, Family::kPhy};
        return spec;
    }
    static std::vector<uint8_t> Address(uint16_t family, uint8_t mid, uint16_t appid)
    {
        std::vector<uint8_t> address(16);
        memcpy(address.data(), &family, 2);
        address[2] = mid;
        memcpy(address.data() + 3, &appid, 2);
        return address;
    }
    MailboxEnd Bound()
    {
        MailboxEnd end;
        EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), 0);
        return end;
    }
    void Set(std::string_view name, std::optional<uint32_t> value = {}, uint32_t times = 1)
    {
        const FaultKind* kind = FindFault(name);
        faults.Add({kind, value.value_or(kind->defaultValue), 1, times});
    }
    int Send(MailboxEnd& end, const std::vector<uint8_t>& message)
    {
        return cpu.Send(end, message, taken);
    }
    // What the program at this end reads.
    std::vector<uint8_t> Message(MailboxEnd& end)
    {
        const auto* offered = cpu.Offer(end);
        if (offered == nullptr)
            return {};
        const std::vector<uint8_t> message = *offered;
        cpu.Taken(end);
        return message;
    }
    std::string Last(const char* key) { return journal.Show({{}, 1})["entries"][0].value(key, ""); }

    BoardDescription spec = Spec();
    BoardClock clock{1};
    Journal journal{clock};
    Faults faults;
    ApplicationCpu cpu{spec, faults, journal};
    size_t taken = 0;
    const std::vector<uint8_t> ack{0, 0, 0, 12, 0, 0, 0, 0};
};

TEST_F(ApplicationCpuTest, SendsBothFamiliesInOrderAndThenNothing)
{
    MailboxEnd first = Bound();
    EXPECT_EQ(Message(first), BoardDataMessage(spec, Family::kSwitch));
    EXPECT_EQ(Send(first, ack), 0);
    MailboxEnd second = Bound();
    EXPECT_EQ(Message(second), BoardDataMessage(spec, Family::kPhy));
    EXPECT_EQ(Send(second, ack), 0);
    EXPECT_EQ(cpu.Offer(second), nullptr);
    EXPECT_EQ(cpu.State(), (Json{{"switch", "acknowledged"}, {"phy", "acknowledged"}}));
}

TEST_F(ApplicationCpuTest, TwoReceiversAtOnceGetOneFamilyEach)
{
    MailboxEnd first = Bound();
    MailboxEnd second = Bound();
    EXPECT_EQ(Message(first)[3], 10);
    EXPECT_EQ(Message(second)[3], 11);
    EXPECT_EQ(cpu.State(), (Json{{"switch", "sent"}, {"phy", "sent"}}));
}

TEST_F(ApplicationCpuTest, EveryByteOfTheAcknowledgementCounts)
{
    for (size_t i = 0; i < ack.size(); ++i) {
        MailboxEnd end = Bound();
        ASSERT_EQ(Message(end)[3], 10);
        auto wrong = ack;
        wrong[i] ^= 1;
        EXPECT_EQ(Send(end, wrong), 0);
        EXPECT_EQ(taken, 8U);
        EXPECT_EQ(cpu.State()["switch"], "due");
        EXPECT_EQ(Last("note"), "not an acknowledgement: the board data will be sent again");
    }
    MailboxEnd end = Bound();
    Message(end);
    Send(end, {0, 0, 0, 12, 0, 0, 0, 0, 0});
    EXPECT_EQ(cpu.State()["switch"], "due");
}

TEST_F(ApplicationCpuTest, WithoutAcknowledgementTheDataIsDueAgain)
{
    MailboxEnd end = Bound();
    Message(end);
    cpu.Close(end);
    EXPECT_EQ(cpu.State()["switch"], "due");
    EXPECT_EQ(Last("note"), "no acknowledgement: the board data will be sent again");
    EXPECT_FALSE(end.bound);
}

TEST_F(ApplicationCpuTest, AMessageThatNobodyAskedForIsTakenAndNoted)
{
    MailboxEnd end = Bound();
    EXPECT_EQ(Send(end, ack), 0);
    EXPECT_EQ(Last("note"), "nothing was to be acknowledged");
    EXPECT_EQ(cpu.State()["switch"], "due");
}

TEST_F(ApplicationCpuTest, ChecksTheAddress)
{
    MailboxEnd end;
    EXPECT_EQ(cpu.Bind(end, Address(2, 0, 12)), EAFNOSUPPORT);
    EXPECT_EQ(cpu.Bind(end, Address(43, 1, 12)), EADDRNOTAVAIL);
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 0x0C00)), EADDRNOTAVAIL);
    auto longer = Address(43, 0, 12);
    longer.push_back(0);
    EXPECT_EQ(cpu.Bind(end, longer), EINVAL);
    EXPECT_EQ(cpu.Bind(end, {}), EINVAL);
    EXPECT_FALSE(end.bound);
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), 0);
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), EINVAL);
    EXPECT_TRUE(end.bound);
}

TEST_F(ApplicationCpuTest, NothingWorksBeforeBind)
{
    MailboxEnd end;
    EXPECT_EQ(cpu.StartReceive(end), EINVAL);
    EXPECT_EQ(cpu.Offer(end), nullptr);
    EXPECT_EQ(Send(end, ack), ENOTCONN);
}

TEST_F(ApplicationCpuTest, FaultsOfTheSocket)
{
    Set("mailbox-down", {}, 2);
    EXPECT_EQ(cpu.Open(1), ENETDOWN);
    EXPECT_EQ(cpu.Open(1), ENETDOWN);
    EXPECT_EQ(cpu.Open(1), 0);
    Set("socket-error", EMFILE);
    EXPECT_EQ(cpu.Open(0), EMFILE);
    MailboxEnd end;
    Set("app-cpu-down");
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), EHOSTDOWN);
    Set("bind-error");
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), EADDRINUSE);
    EXPECT_EQ(cpu.Bind(end, Address(43, 0, 12)), 0);
}

TEST_F(ApplicationCpuTest, FaultsOfTheExchange)
{
    MailboxEnd end = Bound();
    Set("receive-error", ETIMEDOUT);
    EXPECT_EQ(cpu.StartReceive(end), ETIMEDOUT);
    EXPECT_EQ(cpu.StartReceive(end), 0);
    Set("silent", {}, 0);
    EXPECT_EQ(cpu.Offer(end), nullptr);
    EXPECT_EQ(cpu.Offer(end), nullptr);
    faults.Clear();
    EXPECT_EQ(Message(end)[3], 10);
    Set("send-error", EPIPE);
    EXPECT_EQ(Send(end, ack), EPIPE);
    Set("send-short", 5);
    EXPECT_EQ(Send(end, ack), 0);
    EXPECT_EQ(taken, 5U);
    EXPECT_EQ(cpu.State()["switch"], "due");
}

TEST_F(ApplicationCpuTest, OneMessageAtATimeIsOnItsWay)
{
    MailboxEnd end = Bound();
    ASSERT_NE(cpu.Offer(end), nullptr);
    EXPECT_EQ(cpu.Offer(end), nullptr);
    cpu.Taken(end);
    EXPECT_EQ(cpu.Offer(end), nullptr);
    EXPECT_EQ(Send(end, ack), 0);
    EXPECT_NE(cpu.Offer(end), nullptr);
}

TEST_F(ApplicationCpuTest, WhatNobodyHasReadComesBackAsItWas)
{
    Set("message-type", 99);
    MailboxEnd end = Bound();
    const auto* offered = cpu.Offer(end);
    ASSERT_NE(offered, nullptr);
    const std::vector<uint8_t> message = *offered;
    EXPECT_EQ(message[3], 99);
    EXPECT_EQ(cpu.State()["switch"], "due");
    cpu.Close(end);
    EXPECT_EQ(Last("note"), "");
    MailboxEnd next = Bound();
    EXPECT_EQ(Message(next), message);
    EXPECT_EQ(cpu.State()["switch"], "sent");
}

TEST_F(ApplicationCpuTest, AMessageThatWasReplacedMeanwhileDoesNotComeBack)
{
    MailboxEnd end = Bound();
    ASSERT_NE(cpu.Offer(end), nullptr);
    cpu.SendAgain(Family::kSwitch);
    MailboxEnd next = Bound();
    EXPECT_EQ(Message(next)[3], 10);
    Send(next, ack);
    cpu.Close(end);
    EXPECT_EQ(cpu.State()["switch"], "acknowledged");
}

TEST_F(ApplicationCpuTest, FaultsOfTheMessage)
{
    auto good = BoardDataMessage(spec, Family::kSwitch);
    Set("message-type", 0x01020304);
    Set("payload-length", 175);
    Set("device-count", 200);
    Set("message-size", 150);
    MailboxEnd end = Bound();
    auto bad = Message(end);
    good[0] = 1;
    good[1] = 2;
    good[2] = 3;
    good[3] = 4;
    good[7] = 175;
    good[8 + 136] = 200;
    good.resize(150);
    EXPECT_EQ(bad, good);
    Send(end, ack);
    Set("message-size", 5000);
    auto filled = Message(end);
    EXPECT_EQ(filled.size(), 5000U);
    EXPECT_EQ(filled[3], 11);
}

TEST_F(ApplicationCpuTest, ATooLongMessageIsRefused)
{
    MailboxEnd end = Bound();
    EXPECT_EQ(Send(end, std::vector<uint8_t>(4096)), 0);
    EXPECT_EQ(Send(end, std::vector<uint8_t>(4097)), EMSGSIZE);
}

TEST_F(ApplicationCpuTest, SendsAgainOnDemand)
{
    MailboxEnd end = Bound();
    Message(end);
    Send(end, ack);
    cpu.SendAgain(Family::kSwitch);
    EXPECT_EQ(Message(end)[3], 10);
    Send(end, ack);
    EXPECT_EQ(Message(end)[3], 11);
    Send(end, ack);
    cpu.SendAgain(std::nullopt);
    EXPECT_EQ(cpu.State(), (Json{{"switch", "due"}, {"phy", "due"}}));
}

TEST_F(ApplicationCpuTest, JournalTellsTheWholeExchange)
{
    cpu.Open(1);
    MailboxEnd end = Bound();
    Message(end);
    Send(end, ack);
    cpu.Close(end);
    std::vector<std::string> calls;
    Json entries = journal.Show({})["entries"];
    for (const auto& entry : entries)
        calls.push_back(entry["call"]);
    EXPECT_THAT(calls, testing::ElementsAre("socket", "bind", "receive", "send", "close"));
    EXPECT_EQ(entries[3]["facts"]["bytes"], "0000000c00000000");
    EXPECT_EQ(Last("note"), "");
}

}  // namespace
}  // namespace vboard

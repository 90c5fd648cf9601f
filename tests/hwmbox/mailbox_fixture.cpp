#include "tests/hwmbox/mailbox_fixture.h"

#include <cstring>

namespace obtest {

MailboxTest* MailboxTest::current_ = nullptr;

Lines operator+(Lines left, const Lines& right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

Bytes Message(const std::string& text)
{
    return {text.begin(), text.end()};
}

Lines ShortDump(const void* buffer, const std::string& text)
{
    char head[80];
    snprintf(head, sizeof(head),
             "out HWMB_dumpBuffer:# =====_HWMB_BUFFER_DUMP_ 0x%p[%zu]=====", buffer, text.size());
    std::string hex;
    for (char c : text) {
        char byte[4];
        snprintf(byte, sizeof(byte), "%02x ", static_cast<unsigned>(c));
        hex += byte;
    }
    hex.resize(48, ' ');
    return {head, "out HWMB_dumpBuffer:#  [0x00000000] " + hex + "   " + text,
            "out HWMB_dumpBuffer:# =====_HWMB_BUFFER_DUMP_====="};
}

MailboxTest::MailboxTest()
{
    current_ = this;
    platform = ScriptedPlatform();
    platform.mailbox = {Message("PING")};
    Run(SOCK_SUBJECT);
    parsed.clear();
    parsedSize = 0;
    parsedDest = nullptr;
    platform = ScriptedPlatform();
}

int MailboxTest::Run(int role)
{
    return HWMB_Start(role, kAppid, kMid, Build, Parse, &dest, sizeof(dest));
}

int MailboxTest::Build(void* msg, uint32_t* size)
{
    Platform().transcript.Add("call builder");
    MailboxTest& test = *current_;
    test.transmitBuffer = msg;
    memcpy(msg, test.toBuild.data(), test.toBuild.size());
    *size = test.builtSize.value_or(static_cast<uint32_t>(test.toBuild.size()));
    return test.builderResult;
}

int MailboxTest::Parse(void* msg, uint32_t size, void* dest, int destSize)
{
    Platform().transcript.Add("call parser");
    MailboxTest& test = *current_;
    test.receiveBuffer = msg;
    test.parsed.assign(static_cast<uint8_t*>(msg), static_cast<uint8_t*>(msg) + HWMB_BUFFER_SIZE);
    test.parsedSize = size;
    test.parsedDest = dest;
    test.parsedDestSize = destSize;
    return test.parserResult;
}

Lines MailboxTest::Opened(int role)
{
    const std::string init = "out HWMB_initializeSocket:# ";
    return {std::string("out HWMB_Start:# Start. Socket type ") +
                (role != 0 ? "SOCK_SUBJECT" : "SOCK_COMMANDER"),
            "sys socket(43, " + std::to_string(role) + ", 0)",
            init + "socket successfully opened! [HWMB_socket=" + std::to_string(HWMB_socket) + "]",
            init + "hwmbox_addr values: mid=86, appid=4660",
            "sys bind(16)",
            init + "socket is ready!!!",
            init + "HWMB_initializeSocket done"};
}

Lines MailboxTest::Received(const std::string& text) const
{
    return Lines{"out HWMB_recvMsg:# Receiving message...", "sys recv(4096, MSG_TRUNC)",
                 "out HWMB_recvMsg:# successfully received " + std::to_string(text.size()) +
                     " bytes!"} +
           ShortDump(receiveBuffer, text);
}

Lines MailboxTest::Sent(uint32_t size) const
{
    const std::string bytes = std::to_string(size);
    return {"out HWMB_sendMsg:# Sending message [msgSize=" + bytes + "]...",
            "sys send(" + bytes + ", 0)",
            "out HWMB_sendMsg:# successfully sent " + bytes + " bytes!"};
}

}  // namespace obtest

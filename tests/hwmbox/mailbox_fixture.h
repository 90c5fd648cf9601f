// Runs of the mailbox client over the scripted platform, with callbacks that the test scripts.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "hwmbox/hwmbox.h"
#include "tests/support/scripted_platform.h"

namespace obtest {

using Bytes = std::vector<uint8_t>;

Lines operator+(Lines left, const Lines& right);

// "ABCD", ... as a message.
Bytes Message(const std::string& text);

// Lines of a dump of up to 16 printable characters.
Lines ShortDump(const void* buffer, const std::string& text);

class MailboxTest : public testing::Test {
protected:
    static constexpr uint16_t kAppid = 0x1234;
    static constexpr uint8_t kMid = 0x56;

    // Leaves the client as a completed exchange does, and the platform without a script.
    MailboxTest();

    // HWMB_Start with the played callbacks.
    int Run(int role);

    // What the played builder writes into the transmit buffer, the size it reports (the message's
    // own when none) and its result.
    Bytes toBuild = Message("PONG");
    std::optional<uint32_t> builtSize;
    int builderResult = 0;

    // What the played parser was given.
    Bytes parsed;
    uint32_t parsedSize = 0;
    void* parsedDest = nullptr;
    int parsedDestSize = 0;
    int parserResult = 0;

    // The client's buffers, as the callbacks saw them.
    void* transmitBuffer = nullptr;
    void* receiveBuffer = nullptr;

    int dest = 0;
    ScriptedPlatform& platform = Platform();
    Transcript& transcript = Platform().transcript;

    // The lines from the start of a run to the bound socket.
    static Lines Opened(int role);
    // A step's receive and send that go well.
    Lines Received(const std::string& text) const;
    Lines Sent(uint32_t size) const;

private:
    static int Build(void* msg, uint32_t* size);
    static int Parse(void* msg, uint32_t size, void* dest, int destSize);
    static MailboxTest* current_;
};

}  // namespace obtest

// The whole transcript, as Lines or as a list in braces.
#define EXPECT_LINES(...)                              \
    EXPECT_THAT(::obtest::Platform().transcript.All(), \
                testing::ElementsAreArray(::obtest::Lines(__VA_ARGS__)))

// Board-data messages byte by byte, and a local source of board data that a test can play.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "board/board_services.h"
#include "tests/support/scripted_platform.h"

namespace obtest {

// A message with a zeroed payload; offsets are the payload's.
class BsdMessage {
public:
    BsdMessage(uint32_t type, uint32_t payloadLength, size_t payloadBytes);

    BsdMessage& Word(size_t offset, uint32_t value);
    BsdMessage& Byte(size_t offset, int value);
    BsdMessage& Text(size_t offset, const std::string& text);
    BsdMessage& Header(uint32_t type, uint32_t payloadLength);

    // Whatever the offset: 01 02 03 ... over the whole payload.
    BsdMessage& Numbered();
    BsdMessage& Mac(int index, std::vector<int> bytes);

    std::vector<uint8_t> bytes;
};

// Takes OBOS_InitBsdFromIni over while it is set.
inline std::function<int(SwitchBsd*)> localSource;

class BoardTest : public testing::Test {
protected:
    BoardTest();
    ~BoardTest() override;  // leaves no MAC addresses behind

    // Delivers the message to the next receiver.
    void Deliver(const BsdMessage& message) { platform.mailbox.push_back(message.bytes); }

    // Log lines of every severity, and calls of the local source.
    Lines Logged() const { return transcript.Only({"log", "phy", "call"}); }

    ScriptedPlatform& platform = Platform();
    Transcript& transcript = Platform().transcript;
};

}  // namespace obtest

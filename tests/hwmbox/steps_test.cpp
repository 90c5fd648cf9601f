#include <gtest/gtest.h>

#include <regex>

#include "hwmbox/mailbox.h"

namespace orblink {
namespace {

TEST(HwmbRecvMsg, RefusesANullSize)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(HWMB_recvMsg(nullptr), -1);
    fflush(stdout);
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(std::regex_match(out, std::regex("HWMB_recvMsg:[0-9]+ rtnMsgSize is NULL!!!\n")))
        << out;
}

TEST(MailboxState, StartsWithoutASocketAndWithZeroedBuffersAndCounts)
{
    EXPECT_EQ(HWMB_socket, -1);
    EXPECT_EQ(mailbox.receiveFailures, 0U);
    EXPECT_EQ(mailbox.sendFailures, 0U);
    for (int i = 0; i < HWMB_BUFFER_SIZE; ++i) {
        ASSERT_EQ(mailbox.receiveBuffer[i], 0);
        ASSERT_EQ(mailbox.transmitBuffer[i], 0);
    }
}

TEST(HwmbPrint, LeavesErrnoAlone)
{
    errno = EHOSTDOWN;
    testing::internal::CaptureStdout();
    HWMB_PRINT("value %d", 1);
    EXPECT_EQ(errno, EHOSTDOWN);
    testing::internal::GetCapturedStdout();
}

TEST(CountLine, IsDueAtEachTenthFailureButNotAtTheFirst)
{
    for (uint32_t failures : {10U, 20U, 100U})
        EXPECT_TRUE(IsCountLineDue(failures)) << failures;
    for (uint32_t failures : {0U, 1U, 9U, 11U, 19U, 21U})
        EXPECT_FALSE(IsCountLineDue(failures)) << failures;
}

}  // namespace
}  // namespace orblink

// The hex dump of a caller's own buffer.
#include <numeric>

#include "tests/hwmbox/mailbox_fixture.h"

namespace obtest {
namespace {

const std::string kDump = "out HWMB_dumpBuffer:# ";
const std::string kClosing = kDump + "=====_HWMB_BUFFER_DUMP_=====";

std::string Opening(const void* buffer, int length)
{
    char text[80];
    snprintf(text, sizeof(text), "=====_HWMB_BUFFER_DUMP_ 0x%p[%d]=====", buffer, length);
    return kDump + text;
}

class HwmbDumpBuffer : public MailboxTest {
protected:
    const std::string blanks = std::string(48, ' ');
};

TEST_F(HwmbDumpBuffer, OfNothingHasOnlyTheOpeningAndTheClosingLine)
{
    const char buffer[] = "x";
    HWMB_dumpBuffer(buffer, 0);
    EXPECT_LINES({Opening(buffer, 0), kClosing});
}

TEST_F(HwmbDumpBuffer, OfANegativeLengthReadsNothing)
{
    const char buffer[] = "x";
    HWMB_dumpBuffer(buffer, -1);
    EXPECT_LINES({Opening(buffer, -1), kClosing});
}

TEST_F(HwmbDumpBuffer, OfANullBufferReadsNothing)
{
    HWMB_dumpBuffer(nullptr, 16);
    EXPECT_LINES({Opening(nullptr, 16), kClosing});
}

TEST_F(HwmbDumpBuffer, OfOneByteIsPaddedToTheFullWidth)
{
    HWMB_dumpBuffer("A", 1);
    const Lines lines = transcript.All();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_EQ(lines[1], kDump + " [0x00000000] 41 " + blanks.substr(3) + "   A");
}

TEST_F(HwmbDumpBuffer, OfSixteenBytesHasOneFullLine)
{
    const char buffer[] = "ABCDEFGHIJKLMNOP";
    HWMB_dumpBuffer(buffer, 16);
    EXPECT_LINES({Opening(buffer, 16),
                  kDump + " [0x00000000] 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50    "
                          "ABCDEFGHIJKLMNOP",
                  kClosing});
}

TEST_F(HwmbDumpBuffer, OfSeventeenBytesHasAFullLineAndOneOfOneByte)
{
    const char buffer[] = "ABCDEFGHIJKLMNOPQ";
    HWMB_dumpBuffer(buffer, 17);
    EXPECT_LINES({Opening(buffer, 17),
                  kDump + " [0x00000000] 41 42 43 44 45 46 47 48 49 4a 4b 4c 4d 4e 4f 50    "
                          "ABCDEFGHIJKLMNOP",
                  kDump + " [0x00000010] 51 " + blanks.substr(3) + "   Q", kClosing});
}

TEST_F(HwmbDumpBuffer, ShowsCharactersFrom21To7DAndDotsForAllOthers)
{
    Bytes buffer(256);
    std::iota(buffer.begin(), buffer.end(), uint8_t{0});
    HWMB_dumpBuffer(buffer.data(), 256);
    const Lines lines = transcript.Only({(kDump + " [").c_str()});
    ASSERT_EQ(lines.size(), 16U);
    for (size_t i = 0; i < 256; ++i) {
        const char shown = lines[i / 16][lines[i / 16].size() - 16 + i % 16];
        const bool printable = i >= 0x21 && i <= 0x7D;
        EXPECT_EQ(shown, printable ? static_cast<char>(i) : '.') << i;
    }
    EXPECT_EQ(lines[2], kDump +
                            " [0x00000020] 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f    "
                            ".!\"#$%&'()*+,-./");
    EXPECT_EQ(lines[7], kDump +
                            " [0x00000070] 70 71 72 73 74 75 76 77 78 79 7a 7b 7c 7d 7e 7f    "
                            "pqrstuvwxyz{|}..");
    EXPECT_EQ(lines[15], kDump +
                             " [0x000000f0] f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff"
                             "    ................");
}

TEST_F(HwmbDumpBuffer, OfACallersBufferIsNotLimited)
{
    const Bytes buffer(HWMB_BUFFER_SIZE + 20, 'z');
    HWMB_dumpBuffer(buffer.data(), static_cast<int>(buffer.size()));
    const Lines lines = transcript.Only({(kDump + " [").c_str()});
    ASSERT_EQ(lines.size(), 258U);
    EXPECT_EQ(lines.back(), kDump + " [0x00001010] 7a 7a 7a 7a " + blanks.substr(12) + "   zzzz");
}

TEST_F(HwmbDumpBuffer, GoesOnWhenTheFormatterFails)
{
    const char buffer[] = "ABC";
    platform.Fail("kova_vsnprintf_s", 0, 2);
    HWMB_dumpBuffer(buffer, 3);
    EXPECT_LINES({Opening(buffer, 3),
                  kDump + "Runtime-constraint violation error in function kova_snprintf_s",
                  kDump + " [0x00000000] 41 " + blanks.substr(3) + "   ABC", kClosing});
}

TEST_F(HwmbDumpBuffer, ReportsEachByteThatTheFormatterRefused)
{
    const char buffer[] = "ABC";
    platform.FailEach("kova_vsnprintf_s", 0);
    HWMB_dumpBuffer(buffer, 3);
    const std::string refused =
        kDump + "Runtime-constraint violation error in function kova_snprintf_s";
    EXPECT_LINES({Opening(buffer, 3), refused, refused, refused,
                  kDump + " [0x00000000] " + blanks + "   ABC", kClosing});
}

}  // namespace
}  // namespace obtest

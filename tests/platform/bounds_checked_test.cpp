#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdint>
#include <cstring>
#include <string>

#include "platform/ob_platform.h"

namespace {

constexpr size_t kTooLarge = SIZE_MAX / 2 + 1;

// A destination with a byte on either side that must stay as it is.
struct Guarded {
    char before = '<';
    char room[8] = {'o', 'l', 'd', 'o', 'l', 'd', 'o', 'l'};
    char after = '>';

    std::string Room() const { return {room, sizeof(room)}; }
    bool GuardsStand() const { return before == '<' && after == '>'; }
};

const std::string kZeros(8, '\0');

TEST(MemcpyS, CopiesUpToTheWholeDestination)
{
    Guarded dest;
    EXPECT_EQ(memcpy_s(dest.room, 8, "12345678", 8), 0);
    EXPECT_EQ(dest.Room(), "12345678");
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(MemcpyS, LeavesTheRestOfTheDestinationAlone)
{
    Guarded dest;
    EXPECT_EQ(memcpy_s(dest.room, 8, "123", 3), 0);
    EXPECT_EQ(dest.Room(), "123oldol");
}

TEST(MemcpyS, CopiesNothingForACountOfZero)
{
    Guarded dest;
    EXPECT_EQ(memcpy_s(dest.room, 8, "123", 0), 0);
    EXPECT_EQ(memcpy_s(dest.room, 0, "123", 0), 0);
    EXPECT_EQ(dest.Room(), "oldoldol");
}

TEST(MemcpyS, RefusesOneByteTooManyAndZeroesTheDestination)
{
    Guarded dest;
    EXPECT_NE(memcpy_s(dest.room, 8, "123456789", 9), 0);
    EXPECT_EQ(dest.Room(), kZeros);
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(MemcpyS, RefusesANullSourceAndZeroesTheDestination)
{
    Guarded dest;
    EXPECT_NE(memcpy_s(dest.room, 8, nullptr, 3), 0);
    EXPECT_EQ(dest.Room(), kZeros);
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(MemcpyS, RefusesANullDestination)
{
    EXPECT_NE(memcpy_s(nullptr, 8, "123", 3), 0);
}

TEST(MemcpyS, RefusesADestinationSizeThatWentAstray)
{
    Guarded dest;
    EXPECT_NE(memcpy_s(dest.room, kTooLarge, "123", 3), 0);
    EXPECT_EQ(dest.Room(), "oldoldol");
}

TEST(MemcpyS, RefusesOverlapFromEitherSide)
{
    char text[12] = "abcdefghijk";
    EXPECT_NE(memcpy_s(text, 4, text + 3, 4), 0);
    EXPECT_EQ(std::string(text, 4), std::string(4, '\0'));
    EXPECT_STREQ(text + 4, "efghijk");
    EXPECT_NE(memcpy_s(text + 7, 4, text + 4, 4), 0);
    EXPECT_EQ(std::string(text + 4, 7), std::string("efg\0\0\0\0", 7));
}

TEST(MemcpyS, CopiesBetweenNeighbours)
{
    char text[9] = "abcdefgh";
    EXPECT_EQ(memcpy_s(text, 4, text + 4, 4), 0);
    EXPECT_STREQ(text, "efghefgh");
}

TEST(StrncpyS, CopiesAndTerminates)
{
    Guarded dest;
    EXPECT_EQ(strncpy_s(dest.room, 8, "abc", 8), 0);
    EXPECT_STREQ(dest.room, "abc");
}

TEST(StrncpyS, TakesAtMostCountCharacters)
{
    Guarded dest;
    EXPECT_EQ(strncpy_s(dest.room, 8, "abcdef", 4), 0);
    EXPECT_STREQ(dest.room, "abcd");
}

TEST(StrncpyS, ReadsNoFurtherThanCount)
{
    const char unterminated[3] = {'a', 'b', 'c'};
    Guarded dest;
    EXPECT_EQ(strncpy_s(dest.room, 8, unterminated, sizeof(unterminated)), 0);
    EXPECT_STREQ(dest.room, "abc");
}

TEST(StrncpyS, FillsTheDestinationWithItsLastByteAsNul)
{
    Guarded dest;
    EXPECT_EQ(strncpy_s(dest.room, 8, "1234567", 100), 0);
    EXPECT_STREQ(dest.room, "1234567");
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(StrncpyS, RefusesTextThatLeavesNoRoomForTheNul)
{
    Guarded dest;
    EXPECT_NE(strncpy_s(dest.room, 8, "12345678", 8), 0);
    EXPECT_EQ(dest.room[0], '\0');
    EXPECT_TRUE(dest.GuardsStand());
    EXPECT_NE(strncpy_s(dest.room, 8, "123456789012", 12), 0);
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(StrncpyS, RefusesNullPointersAndImpossibleSizes)
{
    Guarded dest;
    EXPECT_NE(strncpy_s(nullptr, 8, "abc", 3), 0);
    EXPECT_NE(strncpy_s(dest.room, 0, "abc", 3), 0);
    EXPECT_NE(strncpy_s(dest.room, kTooLarge, "abc", 3), 0);
    EXPECT_EQ(dest.Room(), "oldoldol");
    EXPECT_NE(strncpy_s(dest.room, 8, nullptr, 3), 0);
    EXPECT_EQ(dest.Room(), std::string("\0ldoldol", 8));
    dest.room[0] = 'o';
    EXPECT_NE(strncpy_s(dest.room, 8, "abc", kTooLarge), 0);
    EXPECT_EQ(dest.room[0], '\0');
}

TEST(StrncpyS, RefusesOverlap)
{
    char text[12] = "abcdefghijk";
    EXPECT_NE(strncpy_s(text + 2, 8, text, 4), 0);
    EXPECT_EQ(std::string(text, 11), std::string("ab\0defghijk", 11));
}

__attribute__((format(printf, 3, 4))) int Format(char* dest, size_t max, const char* format, ...)
{
    va_list args;
    va_start(args, format);
    const int result = vsnprintf_s(dest, max, format, args);
    va_end(args);
    return result;
}

TEST(VsnprintfS, WritesTheTextAndReturnsItsLength)
{
    Guarded dest;
    EXPECT_EQ(Format(dest.room, 4, "%02x ", 0xA5U), 3);
    EXPECT_STREQ(dest.room, "a5 ");
}

TEST(VsnprintfS, CutsTheTextButReturnsItsWholeLength)
{
    Guarded dest;
    EXPECT_EQ(Format(dest.room, 8, "%d", 1234567890), 10);
    EXPECT_STREQ(dest.room, "1234567");
    EXPECT_TRUE(dest.GuardsStand());
}

TEST(VsnprintfS, IsNegativeForNullPointersAndImpossibleSizes)
{
    Guarded dest;
    const char* noFormat = nullptr;
    EXPECT_LT(Format(nullptr, 8, "%d", 1), 0);
    EXPECT_LT(Format(dest.room, 0, "%d", 1), 0);
    EXPECT_LT(Format(dest.room, kTooLarge, "%d", 1), 0);
    EXPECT_EQ(dest.Room(), "oldoldol");
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-security"
    EXPECT_LT(Format(dest.room, 8, noFormat), 0);
#pragma GCC diagnostic pop
    EXPECT_EQ(dest.room[0], '\0');
}

}  // namespace

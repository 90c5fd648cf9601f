// One test for each way in which a test ends; each_by_itself.sh says what becomes of them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>

namespace {

int testsOfThisProcess = 0;

TEST(Endings, First)
{
    EXPECT_EQ(++testsOfThisProcess, 1);
}

TEST(Endings, SecondSeesNothingOfTheFirst)
{
    EXPECT_EQ(++testsOfThisProcess, 1);
}

class Named : public testing::TestWithParam<int> {};

TEST_P(Named, Passes)
{
    EXPECT_EQ(GetParam(), 1);
}

INSTANTIATE_TEST_SUITE_P(Names, Named, testing::Values(1));

TEST(Endings, Skipped)
{
    GTEST_SKIP() << "said by the skipped test";
}

TEST(Endings, Failing)
{
    EXPECT_EQ(++testsOfThisProcess, 2) << "said by the failing test";
}

TEST(Endings, Aborting)
{
    abort();
}

TEST(Endings, EndingTheProgram)
{
    exit(0);
}

TEST(Endings, HangingWithAChild)
{
    if (fork() == 0)
        execlp("sleep", "sleep", "86399", nullptr);
    pause();
}

}  // namespace

#include "common/hal_library.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

using namespace orblink;

namespace {

TEST(HalLibrary, WithoutANameIsNotTheProgramItself)
{
    const HalLibrary library = LoadHalLibrary("", "main");
    EXPECT_EQ(library.failed, HalStep::kOpen);
    EXPECT_EQ(library.table, nullptr);
    EXPECT_EQ(library.error, ENOENT);
    EXPECT_STREQ(library.reason, "the library has no name");
}

TEST(HalLibrary, ThatIsNotThereIsNamedByTheLoader)
{
    const HalLibrary library = LoadHalLibrary("/nonexistent/hal.so", "table");
    EXPECT_EQ(library.failed, HalStep::kOpen);
    EXPECT_NE(std::string(library.reason).find("/nonexistent/hal.so"), std::string::npos);
}

TEST(HalLibrary, WithoutTheTableFailsAtTheSymbol)
{
    const HalLibrary library = LoadHalLibrary("libc.so.6", "no_such_table");
    EXPECT_EQ(library.failed, HalStep::kSymbol);
    EXPECT_NE(std::string(library.reason).find("no_such_table"), std::string::npos);
}

TEST(HalLibrary, GivesTheAddressOfItsTable)
{
    const HalLibrary library = LoadHalLibrary("libc.so.6", "environ");
    EXPECT_EQ(library.failed, HalStep::kDone);
    EXPECT_NE(library.table, nullptr);
    EXPECT_STREQ(library.reason, "");
}

}  // namespace

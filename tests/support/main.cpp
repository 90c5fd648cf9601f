#include <gtest/gtest.h>

#include "tests/support/private_names.h"

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    if (!obtest::TakePrivateNames())
        return 1;
    const int result = RUN_ALL_TESTS();
    obtest::RemovePrivateNames();
    return result;
}

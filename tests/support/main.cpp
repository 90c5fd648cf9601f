#include <gtest/gtest.h>

#include <cstring>

#include "tests/support/namespaces.h"

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    if (!testing::GTEST_FLAG(list_tests) && !obtest::EnterPrivateNamespaces())
        return 1;
    return RUN_ALL_TESTS();
}

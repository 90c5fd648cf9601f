#include <gtest/gtest.h>

#include "tests/platform/log_daemon.h"
#include "tests/platform/namespaces.h"

int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const bool listing = testing::GTEST_FLAG(list_tests);
    if (!listing && (!obtest::EnterPrivateNamespaces() || !obtest::EnterPrivateDev()))
        return 1;
    return RUN_ALL_TESTS();
}

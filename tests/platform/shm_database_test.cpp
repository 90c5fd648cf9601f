#include <gtest/gtest.h>

#include "platform/ob_platform.h"

TEST(ShmDatabase, HasNothingToInitialiseOnAPlainMachine)
{
    EXPECT_EQ(shm_init(3, 0, 0), 0);
    EXPECT_EQ(shm_init(3, 0, 0), 0);
}

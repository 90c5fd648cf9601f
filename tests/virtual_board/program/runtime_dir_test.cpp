// The directory of a running board, among others that start and end.
#include "virtual_board/program/runtime_dir.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace vboard;

namespace {

// Whether each of so many directories was there as long as it was this process's own.
bool KeepsEach(int rounds)
{
    for (int round = 0; round < rounds; ++round) {
        const RuntimeDir directory;
        if (!std::ofstream(directory.DefaultSocket()))
            return false;
    }
    return true;
}

TEST(RuntimeDir, IsNotTakenForADesertedOneWhileItIsNew)
{
    char base[] = "/tmp/orblink-runtime-XXXXXX";
    ASSERT_NE(mkdtemp(base), nullptr);
    ASSERT_EQ(setenv("XDG_RUNTIME_DIR", base, 1), 0);
    std::vector<pid_t> boards;
    for (int i = 0; i < 8; ++i) {
        boards.push_back(fork());
        if (boards.back() == 0)
            _exit(KeepsEach(200) ? 0 : 1);
    }
    for (const pid_t board : boards) {
        int status = -1;
        ASSERT_EQ(waitpid(board, &status, 0), board);
        EXPECT_EQ(status, 0);
    }
    EXPECT_TRUE(std::filesystem::is_empty(base));
    std::filesystem::remove_all(base);
}

}  // namespace

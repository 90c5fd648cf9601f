#include "tests/support/each_by_itself.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace obtest {
namespace {

struct Count {
    int passed = 0;
    int skipped = 0;
    int failed = 0;
};

// A group of its own, so that a test that hangs goes with all that it has started.
[[noreturn]] void RunInChild(const testing::TestInfo& test, int output)
{
    setpgid(0, 0);
    dup2(output, STDOUT_FILENO);
    dup2(output, STDERR_FILENO);
    close(output);
    testing::GTEST_FLAG(filter) = std::string(test.test_suite_name()) + "." + test.name();
    exit(RUN_ALL_TESTS());
}

bool EndsInTime(pid_t child, int seconds)
{
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, child, 0));
    pollfd ended{handle, POLLIN, 0};
    const bool inTime = handle != -1 && poll(&ended, 1, seconds * 1000) == 1;
    if (!inTime)
        kill(-child, SIGKILL);
    close(handle);
    return inTime;
}

std::string Contents(int file)
{
    std::string text(static_cast<size_t>(lseek(file, 0, SEEK_END)), '\0');
    const ssize_t length = pread(file, text.data(), text.size(), 0);
    text.resize(static_cast<size_t>(std::max<ssize_t>(length, 0)));
    return text;
}

const char* Verdict(bool inTime, int status, const std::string& output, Count& count)
{
    const bool passed = inTime && WIFEXITED(status) && WEXITSTATUS(status) == 0;
    // A test that ended the program has not come to its end.
    if (!passed || output.find("[==========] 1 test from") == std::string::npos) {
        ++count.failed;
        return inTime ? "failed" : "timed out";
    }
    if (output.find("[  SKIPPED ]") != std::string::npos) {
        ++count.skipped;
        return "skipped";
    }
    ++count.passed;
    return "passed";
}

void RunByItself(const testing::TestInfo& test, int seconds, Count& count)
{
    const auto start = std::chrono::steady_clock::now();
    const int file = memfd_create("output", MFD_CLOEXEC);
    const pid_t child = fork();
    if (child == 0)
        RunInChild(test, file);
    if (child == -1) {
        perror("fork");
        exit(1);
    }
    const bool inTime = EndsInTime(child, seconds);
    int status = 0;
    waitpid(child, &status, 0);
    const std::string output = Contents(file);
    close(file);
    const char* const verdict = Verdict(inTime, status, output, count);
    if (strcmp(verdict, "passed") != 0)
        fputs(output.c_str(), stdout);
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    printf("%s %.2f s %s.%s\n", verdict, took.count(), test.test_suite_name(), test.name());
    fflush(stdout);
}

int RunEachByItself(int seconds, void (*end)())
{
    Count count;
    const testing::UnitTest& all = *testing::UnitTest::GetInstance();
    for (int i = 0; i < all.total_test_suite_count(); ++i)
        for (int j = 0; j < all.GetTestSuite(i)->total_test_count(); ++j) {
            RunByItself(*all.GetTestSuite(i)->GetTestInfo(j), seconds, count);
            end();
        }
    printf("%d tests by themselves: %d passed, %d skipped, %d failed\n",
           count.passed + count.skipped + count.failed, count.passed, count.skipped, count.failed);
    return count.failed == 0 && count.passed + count.skipped > 0 ? 0 : 1;
}

}  // namespace

int RunTests(int argc, char** argv, bool (*begin)(), void (*end)())
{
    testing::InitGoogleTest(&argc, argv);
    if (testing::GTEST_FLAG(list_tests))
        return RUN_ALL_TESTS();
    const bool asked = argc == 3 && strcmp(argv[1], "--each-by-itself") == 0;
    const int seconds = asked ? static_cast<int>(strtol(argv[2], nullptr, 10)) : 0;
    if (argc > 1 && seconds <= 0) {
        fprintf(stderr, "usage: %s [--each-by-itself SECONDS | --gtest_OPTION...]\n", argv[0]);
        return 2;
    }
    if (!begin())
        return 1;
    if (seconds > 0)
        return RunEachByItself(seconds, end);
    const int result = RUN_ALL_TESTS();
    end();
    return result;
}

}  // namespace obtest

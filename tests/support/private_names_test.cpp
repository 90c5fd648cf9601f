// A test's names on the machine: apart from the library's own, and gone when the test is.
#include <dirent.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "tests/support/private_names.h"
#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

// Files of the machine's shared folders whose names contain the text.
int FilesNamed(const std::string& text)
{
    int count = 0;
    for (const char* folder : {"/dev/shm", "/var/tmp"}) {
        DIR* const entries = opendir(folder);
        while (const dirent* entry = readdir(entries))
            count += strstr(entry->d_name, text.c_str()) != nullptr ? 1 : 0;
        closedir(entries);
    }
    return count;
}

bool SemaphoreExists(int id)
{
    std::ifstream sets("/proc/sysvipc/sem");
    std::string line;
    while (std::getline(sets, line)) {
        std::istringstream words(line);
        int key = -1, found = -1;
        words >> key >> found;
        if (found == id)
            return true;
    }
    return false;
}

int OwnSemaphore()
{
    return ::semget(::ftok("/var/tmp/orblink_sem", 97), 1, 0);
}

bool Soon(const std::function<bool()>& condition)
{
    for (int tries = 0; tries < 500; ++tries) {
        if (condition())
            return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

class PrivateNames : public SwitchTest {};

TEST_F(PrivateNames, StandForTheLibrarysNames)
{
    Init();
    EXPECT_EQ(access("/dev/shm/obos_orblink_driver", F_OK), 0);
    const std::string own = PrivatePath("/dev/shm/").substr(strlen("/dev/shm/"));
    EXPECT_EQ(own.rfind("orblink-test-", 0), 0U);
    EXPECT_EQ(FilesNamed(own), 2) << "the region and the key file";
}

// A test process beside this one, with a family in use by itself and by a child that lives until it
// is told to end.
class Another {
public:
    Another()
    {
        int in[2];
        int out[2];
        if (pipe(in) != 0 || pipe(out) != 0)
            throw std::runtime_error("pipe");
        pid_ = fork();
        if (pid_ == 0)
            UseTheFamily(in, out);
        close(in[0]);
        close(out[1]);
        input_ = in[1];
        FILE* const said = fdopen(out[0], "r");
        char line[256];
        while (fgets(line, sizeof(line), said) != nullptr)
            if (strncmp(line, "using ", 6) == 0) {
                semaphore_ = std::stoi(line + 6);
                break;
            }
        fclose(said);
    }
    ~Another() { LetTheChildEnd(); }
    Another(const Another&) = delete;
    Another& operator=(const Another&) = delete;

    void Kill()
    {
        kill(pid_, SIGKILL);
        waitpid(pid_, nullptr, 0);
    }
    void LetTheChildEnd()
    {
        if (input_ != -1)
            close(input_);
        input_ = -1;
    }
    bool LeftNothing() const { return FilesNamed(Own()) == 0 && !SemaphoreExists(semaphore_); }
    bool HasAll() const { return FilesNamed(Own()) == 2 && SemaphoreExists(semaphore_); }

private:
    std::string Own() const { return "orblink-test-" + std::to_string(pid_) + "-"; }

    [[noreturn]] static void UseTheFamily(const int (&in)[2], const int (&out)[2])
    {
        dup2(in[0], STDIN_FILENO);
        dup2(out[1], STDOUT_FILENO);
        for (int fd = 3; fd < 1024; ++fd)
            close(fd);  // what keeps the names of this test, too
        unsetenv("ORBLINK_TEST_NAMES");
        Platform().mailbox.push_back(SwitchBoard::With({{}}).Message());
        if (!TakePrivateNames() || ORBLINK_InitOnce(1) != 0)
            _exit(1);
        if (fork() == 0) {
            char never = 0;
            _exit(read(STDIN_FILENO, &never, 1) == 0 ? 0 : 1);
        }
        std::cout << "using " << OwnSemaphore() << std::endl;
        pause();
        _exit(1);
    }

    pid_t pid_ = -1;
    int input_ = -1;
    int semaphore_ = -1;
};

TEST_F(PrivateNames, StayWhileAChildOfAKilledTestLivesAndGoWithIt)
{
    Another test;
    ASSERT_TRUE(test.HasAll());
    test.Kill();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_TRUE(test.HasAll());
    test.LetTheChildEnd();
    EXPECT_TRUE(Soon([&] { return test.LeftNothing(); }));
}

TEST_F(PrivateNames, OfTwoTestsAtATimeDiffer)
{
    Another first;
    Another second;
    Init();
    EXPECT_TRUE(first.HasAll());
    EXPECT_TRUE(second.HasAll());
    for (Another* test : {&first, &second}) {
        test->Kill();
        test->LetTheChildEnd();
        EXPECT_TRUE(Soon([&] { return test->LeftNothing(); }));
    }
    EXPECT_EQ(SemaphoreValue(), 1);
}

}  // namespace

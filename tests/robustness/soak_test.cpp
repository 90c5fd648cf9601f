// Many processes of both ABIs change the settings of one board, and some of them are killed.
#include <dirent.h>
#include <signal.h>
#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <random>

#include "tests/robustness/child.h"
#include "tests/robustness/effort.h"
#include "tests/robustness/scripted_board.h"
#include "tests/robustness/soak_board.h"
#include "tests/support/private_names.h"

using namespace obtest;

namespace {

// In kB, of a worker's whole life: the library has no heap that could grow. A sanitizer keeps what the
// worker has freed.
constexpr uint32_t kGrowth = OBTEST_SANITIZED ? 512 * 1024 : 1024;

// The worker of this build, and that of the build for the other ABI where there is one.
std::vector<std::string> WorkerPrograms()
{
    const std::string build = getenv("ORBLINK_BUILD");
    const std::string mark = "-i386";
    const bool marked = build.size() > mark.size() &&
                        build.compare(build.size() - mark.size(), mark.size(), mark) == 0;
    const std::string other = marked ? build.substr(0, build.size() - mark.size()) : build + mark;
    std::vector<std::string> programs;
    for (const std::string& folder : {build, other})
        if (const std::string path = folder + "/tests/soak_worker"; access(path.c_str(), X_OK) == 0)
            programs.push_back(path);
    return programs;
}

int PhySemaphore()
{
    return semget(ftok("/var/tmp/ethphy_sem", 97), 1, 0);
}

// Entries of the folder that are the test's own.
int OwnFiles(const char* folder)
{
    const std::string own = PrivatePath("/dev/shm/x");
    const std::string prefix = own.substr(own.rfind('/') + 1, own.size() - own.rfind('/') - 2);
    int count = 0;
    DIR* const entries = opendir(folder);
    while (const dirent* entry = readdir(entries))
        count += std::string(entry->d_name).rfind(prefix, 0) == 0 ? 1 : 0;
    closedir(entries);
    return count;
}

struct Crowd {
    size_t size;
    bool kills;
};

void PrintTo(const Crowd& crowd, std::ostream* out)
{
    *out << crowd.size << (crowd.kills ? " with kills" : "");
}

class Soak : public testing::TestWithParam<Crowd> {
protected:
    Soak()
    {
        InitialiseElsewhere();
        Log();
    }

    ~Soak() override
    {
        for (const auto& [pid, worker] : alive)
            End(pid);
    }

    static void End(pid_t pid)
    {
        kill(pid, SIGKILL);
        waitpid(pid, nullptr, 0);
    }

    void Start()
    {
        ASSERT_LT(started, kMostWorkers);
        const std::string& program = programs[started % programs.size()];
        const std::string number = std::to_string(started);
        const std::string until = std::to_string(end);
        const pid_t pid = fork();
        if (pid == 0) {
            execl(program.c_str(), program.c_str(), number.c_str(), until.c_str(), nullptr);
            _exit(127);
        }
        alive[pid] = started++;
    }

    // One that works: killing those that are being started would prove little.
    std::map<pid_t, uint32_t>::iterator Victim()
    {
        for (int tries = 0; tries < 20; ++tries) {
            auto victim = alive.begin();
            std::advance(victim, static_cast<long>(random() % alive.size()));
            if (Log().worker[victim->second].calls > 0)
                return victim;
        }
        return alive.end();
    }

    // Kills one; what an administrator does about the PHY family's lock, if the dead held it.
    void KillOne()
    {
        const auto victim = Victim();
        if (victim == alive.end())
            return;
        const pid_t pid = victim->first;
        End(pid);
        alive.erase(victim);
        ++killed;
        if (semctl(PhySemaphore(), 0, GETVAL) == 0 && semctl(PhySemaphore(), 0, GETPID) == pid) {
            FreeLock(Family::kPhy);
            ++freed;
        }
    }

    void Run()
    {
        while (alive.size() < crowd.size)
            Start();
        while (crowd.kills && Milliseconds() + 100 < end && started < kMostWorkers) {
            usleep(10000);
            KillOne();
            if (alive.size() < crowd.size)
                Start();
        }
        for (const auto& [pid, worker] : alive) {
            int status = -1;
            EXPECT_EQ(waitpid(pid, &status, 0), pid);
            EXPECT_EQ(status, 0) << "worker " << worker;
            survivors.push_back(worker);
        }
        alive.clear();
    }

    // A write whose call has returned stands; one whose caller was killed stands or does not.
    void ExpectLastWriters()
    {
        for (size_t s = 0; s < Settings().size(); ++s) {
            const Setting& setting = Settings()[s];
            for (uint8_t port = 1; port <= setting.ports; ++port)
                ExpectLastWriter(setting, port, Log().last[s][port]);
        }
    }

    void ExpectLastWriter(const Setting& setting, uint8_t port, const LastWriter& last)
    {
        if (last.sequence == 0)
            return;
        const auto family = static_cast<int>(setting.family);
        const bool completed = Log().worker[last.worker].completed[family] >= last.sequence;
        const uint32_t stored = setting.stored(port);
        EXPECT_TRUE(stored == last.value || (!completed && stored == last.before) ||
                    DiedWriting(setting, port, stored))
            << setting.name << " of port " << +port << " is " << stored << ", last written "
            << last.value << " over " << last.before
            << (completed ? "" : " by one that was killed");
        ++compared;
    }

    // Some operations store before they come to the slot in which the log is written.
    bool DiedWriting(const Setting& setting, uint8_t port, uint32_t value) const
    {
        const auto index = static_cast<uint32_t>(&setting - Settings().data());
        return std::any_of(Log().worker, Log().worker + started, [&](const WorkerRecord& record) {
            return record.setting == index && record.port == port && record.value == value;
        });
    }

    const Crowd crowd = GetParam();
    const std::vector<std::string> programs = WorkerPrograms();
    // Time to start, and time to work.
    const uint64_t end =
        Milliseconds() + 20 * crowd.size + static_cast<uint64_t>(Seconds(1)) * 1000;
    std::minstd_rand random;
    std::map<pid_t, uint32_t> alive;
    std::vector<uint32_t> survivors;
    uint32_t started = 0;
    int killed = 0, freed = 0, compared = 0;
};

TEST_P(Soak, LeavesWhatTheLastWriterOfEachSettingWrote)
{
    ASSERT_FALSE(programs.empty());
    const int files = OwnFiles("/dev/shm") + OwnFiles("/var/tmp");
    const int descriptors = OpenDescriptors();
    Run();
    ExpectLastWriters();
    EXPECT_GT(compared, 0);
    EXPECT_EQ(LockValue(Family::kSwitch), 1);
    EXPECT_EQ(LockValue(Family::kPhy), 1);
    EXPECT_EQ(OwnFiles("/dev/shm") + OwnFiles("/var/tmp"), files);
    EXPECT_EQ(OpenDescriptors(), descriptors);
    uint32_t calls = 0, worst = 0;
    for (uint32_t worker = 0; worker < started; ++worker) {
        calls += Log().worker[worker].calls;
        worst = std::max(worst, Log().worker[worker].worstWait);
        EXPECT_EQ(Log().worker[worker].failures, 0U) << "worker " << worker;
    }
    for (const uint32_t worker : survivors) {
        const WorkerRecord& record = Log().worker[worker];
        if (record.descriptors[0] == 0)
            continue;  // had no time for as much as twenty calls
        EXPECT_EQ(record.descriptors[0], record.descriptors[1]) << "worker " << worker;
        EXPECT_LE(record.resident[1], record.resident[0] + kGrowth) << "worker " << worker;
    }
    EXPECT_GT(calls, crowd.size);
    EXPECT_TRUE(!crowd.kills || killed > 0);
    printf(
        "| soak | %zu processes, %zu ABI, %d s: %u calls, %d kills, %d PHY locks freed, "
        "%d settings compared, worst call %.1f ms |\n",
        crowd.size, programs.size(), Seconds(1), calls, killed, freed, compared, worst / 1e3);
}

INSTANTIATE_TEST_SUITE_P(Crowds, Soak,
                         testing::ValuesIn(std::vector<Crowd>{
                             {2, false}, {8, true}, {64, false}, {64, true}}),
                         [](const auto& info) {
                             return std::to_string(info.param.size) +
                                    (info.param.kills ? "WithKills" : "Processes");
                         });

}  // namespace

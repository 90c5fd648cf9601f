// Two real processes change settings of one switch that lie in the same bytes and tables.
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>

#include "tests/switch/operations/switch_model.h"

using namespace obtest;

namespace {

constexpr int kRounds = 20;

// A worker's own ports; what it sets there it must find there.
class Worker {
public:
    Worker(uint8_t first, uint8_t last) : first_(first), last_(last) {}

    // What went wrong; empty = nothing.
    std::string Work()
    {
        for (int round = 0; round < kRounds && trouble_.empty(); ++round) {
            Platform().transcript.Clear();
            for (uint8_t port = first_; port <= last_; ++port)
                ChangePort(port, round);
        }
        return trouble_;
    }

    void ExpectLeft(const SwitchProvConfig& config) const
    {
        const bool on = (kRounds - 1) % 2 == 0;
        for (uint8_t port = first_; port <= last_; ++port) {
            EXPECT_EQ(Bit(config.enabledPorts, port), on) << +port;
            EXPECT_EQ(Bit(config.eeePorts, port), on) << +port;
            EXPECT_EQ(config.lanPortVlan[port], VlanOf(kRounds - 1)) << +port;
            EXPECT_EQ(IsMapped(config, port), on) << +port;
        }
    }

private:
    static uint16_t VlanOf(int round) { return static_cast<uint16_t>(2 + round % 4000); }

    static bool IsMapped(const SwitchProvConfig& config, uint8_t port)
    {
        for (const auto& entry : config.macToVlanTable)
            if (entry.LogPort == port && entry.EnableMapping != 0)
                return true;
        return false;
    }

    void Check(bool holds, const char* what, uint8_t port)
    {
        if (!holds && trouble_.empty())
            trouble_ = what + (" of port " + std::to_string(port));
    }

    void ChangePort(uint8_t port, int round)
    {
        const SwitchProvConfig& config = Record(0).config;
        const bool on = round % 2 == 0;
        const uint8_t mac[6] = {2, 0, 0, 0, 0, port};
        Check(Bit(config.enabledPorts, port) != on, "lost enabling", port);
        Check((on ? ORBLINK_EnablePort : ORBLINK_DisablePort)(0, port) == 0, "enabling", port);
        Check(Bit(config.eeePorts, port) != on, "lost EEE", port);
        Check((on ? ORBLINK_EnablePhyPortEee : ORBLINK_DisablePhyPortEee)(0, port) == 0, "EEE",
              port);
        Check(round == 0 || config.lanPortVlan[port] == VlanOf(round - 1), "lost VLAN", port);
        Check(ORBLINK_SetLanPortVlan(0, port, VlanOf(round)) == 0, "VLAN", port);
        Check(IsMapped(config, port) != on, "lost mapping", port);
        Check(ORBLINK_MapMactoVlan(0, port, mac, 0xFFF, 5, on) == 0, "mapping", port);
    }

    uint8_t first_, last_;
    std::string trouble_;
};

// Runs the worker in a process of its own, once the pipe says so.
pid_t Fork(Worker worker, const int (&start)[2], int report)
{
    const pid_t pid = fork();
    if (pid != 0)
        return pid;
    close(start[1]);
    char go = 0;
    const bool told = read(start[0], &go, 1) == 1;
    const std::string text = told ? worker.Work() : "never started";
    const bool reported = text.empty() || write(report, text.data(), text.size()) > 0;
    _exit(reported ? 0 : 1);
}

class TwoProcesses : public SwitchTest {
protected:
    TwoProcesses()
    {
        // Each HAL call counts, in shared memory and without any care: only the lock keeps it.
        for (const char* slot : {"EnablePort", "DisablePort", "SetLanPortVlan", "MapSetMacToVlan",
                                 "EnablePhyPortEee", "DisablePhyPortEee"})
            platform.slots[slot] = [](const SlotArgs&) {
                Count(1);
                return 0;
            };
    }

    static uint32_t Count(uint32_t more)
    {
        uint8_t* counter = Region().halPrivData[1];
        uint32_t count = 0;
        memcpy(&count, counter, sizeof(count));
        if (more != 0)
            sched_yield();  // the other process would come in between, if it could
        count += more;
        memcpy(counter, &count, sizeof(count));
        return count;
    }
};

TEST_F(TwoProcesses, LoseNoSettingOfEachOther)
{
    const Worker workers[] = {{1, 3}, {4, 6}};
    int start[2];
    int report[2];
    ASSERT_EQ(pipe(start), 0);
    ASSERT_EQ(pipe(report), 0);
    // Forked before the library is used: each attaches by itself.
    const pid_t processes[] = {Fork(workers[0], start, report[1]),
                               Fork(workers[1], start, report[1])};
    close(report[1]);
    InitEnabled();
    Record(0).config.enabledPorts = 0;
    Record(0).config.eeePorts = 0;
    ASSERT_EQ(write(start[1], "gg", 2), 2);

    char trouble[256] = {};
    EXPECT_EQ(read(report[0], trouble, sizeof(trouble) - 1), 0) << trouble;
    for (const pid_t process : processes) {
        int status = -1;
        ASSERT_EQ(waitpid(process, &status, 0), process);
        EXPECT_EQ(status, 0);
    }
    for (const Worker& worker : workers)
        worker.ExpectLeft(Record(0).config);
    // In each round and on each of six ports: enabling or disabling, EEE with the link taken down,
    // VLAN and mapping; enabling also restores EEE, and EEE that is switched on brings the link up.
    EXPECT_EQ(Count(0), 6U * (kRounds / 2 * (2 + 3 + 1 + 1) + kRounds / 2 * (1 + 2 + 1 + 1)));
    EXPECT_EQ(SemaphoreValue(), 1);
}

}  // namespace

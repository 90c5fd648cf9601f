#include "tests/phy/phy_fixture.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <sys/ipc.h>
#include <sys/mman.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>
#include <stdexcept>

#include "tests/support/played_files.h"

namespace obtest {
namespace {

void Put32(std::vector<uint8_t>& out, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<uint8_t>(value >> shift));
}

void PutEntry(std::vector<uint8_t>& out, const PhyBoard::Entry& entry)
{
    char name[OB_HAL_NAME_SIZE] = {};
    entry.halLibName.copy(name, sizeof(name));
    out.insert(out.end(), name, name + sizeof(name));
    for (uint32_t word : {entry.serdesId, entry.enableGpioPin, entry.resetGpioPin})
        Put32(out, word);
    out.insert(out.end(), {entry.mdioBus, entry.mdioAddr, 0, 0});
    for (uint32_t word : {entry.ifaceSpeed, entry.ifaceMode})
        Put32(out, word);
}

int PhySemaphore()
{
    const key_t key = ::ftok("/var/tmp/ethphy_sem", 97);
    return key == -1 ? -1 : ::semget(key, 1, 0);
}

bool StartsWith(const std::string& line, const char* text)
{
    return line.rfind(text, 0) == 0;
}

void WriteReport(int fd, int result)
{
    FILE* const report = fdopen(fd, "w");
    fprintf(report, "%d\n%s", result, Joined(Platform().transcript.All()).c_str());
    fclose(report);
}

ProcessReport ReadReport(int fd)
{
    std::string text;
    char buffer[4096];
    for (ssize_t size = 0; (size = read(fd, buffer, sizeof(buffer))) > 0;)
        text.append(buffer, static_cast<size_t>(size));
    std::istringstream lines(text);
    std::string line;
    ProcessReport report;
    std::getline(lines, line);
    report.result = std::stoi(line);
    while (std::getline(lines, line))
        report.transcript.push_back(line);
    return report;
}

}  // namespace

std::vector<uint8_t> PhyBoard::Message() const
{
    std::vector<uint8_t> out;
    Put32(out, 11);
    Put32(out, 120);
    for (size_t i = 0; i < OB_MAX_DEVICES; ++i) {
        if (i < entries.size())
            PutEntry(out, entries[i]);
        else
            out.resize(out.size() + sizeof(PhyBoardEntry));
    }
    out.insert(out.end(), {static_cast<uint8_t>(entries.size()), 0, 0, 0});
    Put32(out, ulpMode);
    return out;
}

PhyDeviceRegion& PhyRegion()
{
    static PhyDeviceRegion* region = [] {
        const int fd = ::open("/dev/shm/ethphy_driver", O_RDWR);
        void* address =
            ::mmap(nullptr, sizeof(PhyDeviceRegion), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
        ::close(fd);
        return static_cast<PhyDeviceRegion*>(address);
    }();
    return *region;
}

int PhySemaphoreValue()
{
    const int id = PhySemaphore();
    return id == -1 ? -1 : ::semctl(id, 0, GETVAL);
}

void RemovePhySemaphore()
{
    ::semctl(PhySemaphore(), 0, IPC_RMID);
}

struct ETHPHY_HalFuncs& PhyHalTable(const std::string& which)
{
    void* library = ::dlopen(ScriptedLibraryPath(which).c_str(), RTLD_NOW);
    return *static_cast<struct ETHPHY_HalFuncs*>(::dlsym(library, "ETHPHY_HalFuncs"));
}

FreshProcess::FreshProcess(const std::function<int()>& work)
{
    int go[2];
    int report[2];
    if (pipe(go) != 0 || pipe(report) != 0)
        throw std::runtime_error("pipe");
    fflush(nullptr);
    pid_ = fork();
    if (pid_ == 0) {
        char token = 0;
        close(go[1]);
        if (read(go[0], &token, 1) == 1)
            WriteReport(report[1], work());
        exit(0);  // not _exit: what measures the library writes its findings at exit
    }
    close(go[0]);
    close(report[1]);
    go_ = go[1];
    report_ = report[0];
}

ProcessReport FreshProcess::Run()
{
    if (write(go_, "g", 1) != 1)
        throw std::runtime_error("write");
    ProcessReport report = ReadReport(report_);
    waitpid(pid_, nullptr, 0);
    return report;
}

PhyTest::PhyTest()
{
    platform.libraries = {
        {"libphyk20.so", "phy-a"}, {"libsecond.so", "phy-b"}, {"libnohal.so", "empty"}};
}

void PhyTest::Init(const PhyBoard& board)
{
    platform.mailbox.push_back(board.Message());
    ASSERT_EQ(ETHPHY_InitOnce(), 0) << Joined(transcript.All());
    transcript.Clear();
}

void PhyTest::InitEnabled(const PhyBoard& board)
{
    Init(board);
    for (size_t phy = 0; phy < board.entries.size(); ++phy)
        Record(static_cast<int>(phy)).config.hwState = EP_HW_STATE_ENABLED;
}

Lines PhyTest::Steps() const
{
    constexpr const char* kReception = "phy3 [EP_InitBoardSpecificData] ";
    Lines steps;
    bool receiving = false;
    for (const std::string& line : transcript.All()) {
        if (StartsWith(line, kReception))
            receiving = line.find("Waiting") != std::string::npos;
        else if (!receiving && !StartsWith(line, "log") && !StartsWith(line, "sys fopen"))
            steps.push_back(line);
    }
    return steps;
}

}  // namespace obtest

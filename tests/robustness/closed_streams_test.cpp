// Callers that have closed their standard streams: the first descriptors that are free are those
// into which every careless line of output goes.
#include <fcntl.h>
#include <unistd.h>

#include <sstream>

#include "tests/robustness/child.h"
#include "tests/robustness/scripted_board.h"

using namespace obtest;

namespace {

void CloseStreams()
{
    for (int fd : {0, 1, 2})
        close(fd);
}

// The standard descriptors that are open now.
std::string TakenStreams()
{
    std::string taken;
    for (int fd : {0, 1, 2})
        if (fcntl(fd, F_GETFD) != -1)
            taken += std::to_string(fd);
    return taken;
}

// What a program with closed streams finds on them after each call; calls that leave none open are
// not named.
std::string TakenBy(const std::vector<ExportedCall>& calls)
{
    CloseStreams();
    std::ostringstream text;
    for (const ExportedCall& call : calls) {
        call.run();
        if (const std::string taken = TakenStreams(); !taken.empty())
            text << call.name << ": " << taken << '\n';
    }
    return text.str();
}

TEST(ClosedStreams, AreNotTakenByAnInitialisation)
{
    for (Family family : {Family::kSwitch, Family::kPhy}) {
        const Ended ended = InChild([=] {
            CloseStreams();
            return std::to_string(Initialise(family)) + " " + TakenStreams();
        });
        EXPECT_EQ(ended.text, "0 ");
    }
}

TEST(ClosedStreams, AreNotTakenByAnyCall)
{
    InitialiseElsewhere();
    for (Family family : {Family::kSwitch, Family::kPhy, Family::kNone})
        EXPECT_EQ(InChild([=] { return TakenBy(CallsOf(family)); }).text, "");
}

TEST(ClosedStreams, LeaveTheSharedStateToItself)
{
    InitialiseElsewhere();
    const std::string before = RegionBytes(Family::kSwitch) + RegionBytes(Family::kPhy);
    const Ended ended = InChild([] {
        CloseStreams();
        uint8_t count = 0;
        const int result = ORBLINK_GetNumOfSwitches(&count) | ETHPHY_GetNumOfPhys(&count);
        const char text[] = "a line that goes astray";
        int written = 0;
        for (int fd : {0, 1, 2})
            written += write(fd, text, sizeof(text)) == -1 ? 0 : 1;
        return std::to_string(result) + " " + std::to_string(written);
    });
    EXPECT_EQ(ended.text, "0 0");
    EXPECT_EQ(RegionBytes(Family::kSwitch) + RegionBytes(Family::kPhy), before);
}

TEST(ClosedStreams, LeaveNoDescriptorToAProgramThatIsExecuted)
{
    InitialiseElsewhere();
    const Ended ended = InChild([] {
        bool before[100] = {};
        for (int fd = 0; fd < 100; ++fd)
            before[fd] = fcntl(fd, F_GETFD) != -1;
        uint8_t count = 0;
        uint16_t value = 0;
        ORBLINK_GetNumOfSwitches(&count);
        ETHPHY_ReadMdio(0, 2, &value);
        std::ostringstream left;
        for (int fd = 0; fd < 100; ++fd)
            if (const int flags = fcntl(fd, F_GETFD); flags != -1 && !before[fd])
                left << ((flags & FD_CLOEXEC) != 0 ? "closed " : "left ");
        return left.str();
    });
    // Two regions and the socket of the PHY family.
    EXPECT_EQ(ended.text, "closed closed closed ");
}

}  // namespace

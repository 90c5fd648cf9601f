#include "tests/robustness/death.h"
#include "tests/robustness/effort.h"

#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <sstream>

#include "tests/robustness/child.h"
#include "tests/support/scripted_platform.h"
#include "tests/support/watched_region.h"

namespace obtest {
namespace {

constexpr int kNever = -1;
// What the dying process has behind it.
struct Death {
    int target = kNever;
    int passed = 0;
    bool counting = false;
    std::vector<DeathPoint> points;
};

Death death;

void Pass(PointKind kind, const std::string& what)
{
    if (death.passed++ == death.target) {
        kill(getpid(), SIGKILL);
        pause();
    }
    if (death.target == kNever)
        death.points.push_back({kind, what});
}

// A store of the library or of a HAL: never within the allocator.
void BeforeWrite(const Mapping& mapping, uintptr_t address)
{
    Pass(PointKind::kRecordWrite, "+" + std::to_string(address - mapping.first));
}

void OnLine(const std::string& line)
{
    if (!death.counting)
        return;
    FollowMappings(line);
    if (line.rfind("sys ", 0) == 0 || line.rfind("wait ", 0) == 0)
        Pass(PointKind::kSystemCall, line);
    else if (line.rfind("hal", 0) == 0)
        Pass(PointKind::kHalCall, line);
}

void Live(int target, const std::function<void()>& before, const std::function<void()>& call)
{
    death.target = target;
    ExcludeOwnMappings();
    Platform().transcript.watch = OnLine;
    before();
    WatchRegions({PROT_READ, BeforeWrite});
    death.counting = true;
    call();
    death.counting = false;
    StopWatching();
}

}  // namespace

std::vector<DeathPoint> PointsOf(const std::function<void()>& before,
                                 const std::function<void()>& call)
{
    const Ended ended = InChild([&] {
        Live(kNever, before, call);
        std::ostringstream text;
        for (const DeathPoint& point : death.points)
            text << static_cast<int>(point.kind) << ' ' << point.what << '\n';
        return text.str();
    });
    std::vector<DeathPoint> points;
    std::istringstream text(ended.text);
    int kind = 0;
    for (std::string what; text >> kind && text.ignore(1) && std::getline(text, what);)
        points.push_back({static_cast<PointKind>(kind), what});
    return points;
}

std::vector<size_t> Chosen(const std::vector<DeathPoint>& points)
{
    constexpr size_t kEach = 8;
    const bool all = Thorough() || points.size() < 30;
    std::vector<size_t> chosen;
    for (size_t at = 0; at < points.size(); ++at)
        if (all || points[at].kind != PointKind::kRecordWrite || at % kEach == 0)
            chosen.push_back(at);
    return chosen;
}

bool DiesAt(int point, const std::function<void()>& before, const std::function<void()>& call)
{
    const Ended ended = InChild([&] {
        Live(point, before, call);
        return std::string("lives");
    });
    return ended.inTime && ended.signal == SIGKILL;
}

}  // namespace obtest

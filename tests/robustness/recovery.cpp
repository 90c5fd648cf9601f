#include "tests/robustness/recovery.h"

#include <cstdio>
#include <cstdlib>

#include "tests/robustness/child.h"
#ifdef OBTEST_RECOVERY
#include "tools/orblinkctl/line/session.h"
#endif

namespace obtest {

#ifdef OBTEST_RECOVERY

bool CanRecover()
{
    return true;
}

int Recover(Family family, Certainty certainty)
{
    std::vector<std::string> words = {"recover", "--apply",
                                      family == Family::kPhy ? "--phy" : "--switch"};
    if (certainty == Certainty::kForced)
        words.push_back("--force");
    const Ended ended = InChild([&] {
        if (freopen("/dev/null", "w", stdout) == nullptr)
            abort();
        return std::to_string(ctl::RunLine(words));
    });
    return ended.text.empty() ? -1 : std::stoi(ended.text);
}

#else

bool CanRecover()
{
    return false;
}

int Recover(Family, Certainty)
{
    abort();
}

#endif

}  // namespace obtest

// The mailbox client's call sites, for programs that use it themselves.
#include <algorithm>
#include <cstring>

#include "hwmbox/hwmbox.h"
#include "tests/robustness/fault_table.h"
#include "tests/robustness/scripted_board.h"

namespace obtest {
namespace {

int Build(void* message, uint32_t* size)
{
    memset(message, 0x5A, 8);
    *size = 8;
    return 0;
}

int Parse(void*, uint32_t, void*, int)
{
    return 0;
}

int Exchange(int role)
{
    Platform().mailbox = {{1, 2, 3, 4}};
    return HWMB_Start(role, 12, 0, Build, Parse, nullptr, 0);
}

}  // namespace

const std::vector<FaultScenario>& MailboxFaults()
{
    static const std::vector<FaultScenario> scenarios = {
        {"Subject",
         Family::kNone,
         Before::kNothing,
         [] { return Exchange(SOCK_SUBJECT); },
         {
             {"socket", 1, -1, {}, "Critical failure in open socket!!! [ret=-1, errno={e}:"},
             {"bind", 1, -1, {}, "Critical failure in bind socket!!! [ret=-1, errno={e}:", 1, 0, 1},
             {"recv", 1, -1, {}, "failed to recv!!! [ret=-1, errno={e}:"},
             {"send", 1, -1, {}, "failed to send!!! [ret=-1, errno={e}:"},
         }},
        // The commander repeats a failed exchange, and fails in the end even after a good one.
        {"Commander",
         Family::kNone,
         Before::kNothing,
         [] { return Exchange(SOCK_COMMANDER); },
         {
             {"socket", 1, -1, {}, "Critical failure in open socket!!! [ret=-1, errno={e}:", 1, -1},
             {"bind",
              1,
              -1,
              {},
              "Critical failure in bind socket!!! [ret=-1, errno={e}:",
              1,
              -1,
              1},
             {"send", 1, -1, {}, "failed to send!!! [ret=-1, errno={e}:", 1, -1},
             {"recv", 1, -1, {}, "failed to recv!!! [ret=-1, errno={e}:", 1, -1},
         }},
    };
    return scenarios;
}

}  // namespace obtest

// The way back to settings that the board had.
#include "tools/orblinkctl/line/undo.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/config/config_apply.h"
#include "tools/orblinkctl/config/config_model.h"

namespace ctl {

Model SettingsNow()
{
    return CurrentConfig();
}

void ReturnTo(const Model& settings)
{
    const Model now = CurrentConfig();
    RunSteps(StepsFor(now, Differences(now, settings)));
}

}  // namespace ctl

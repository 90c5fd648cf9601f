// Why a frame goes where it goes.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "virtual_board/datapath/switch_engine.h"

namespace vboard::datapath {

struct TraceStep {
    std::string decision;
    std::string registers;  // that made it, "PORT_VID 0x1203"; empty: the frame itself
};

// What the switch would do with a frame that came in now. Nothing changes by it.
std::vector<TraceStep> Trace(SwitchEngine& engine, unsigned port, Bytes frame,
                             std::chrono::nanoseconds now);

}  // namespace vboard::datapath

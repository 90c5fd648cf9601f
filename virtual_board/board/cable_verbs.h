// The verbs of `control` that are about cables.
#pragma once

#include "virtual_board/board/virtual_board.h"

namespace vboard {

Json ShowHosts(VirtualBoard& board, const Json& command);
Json ShowNetwork(VirtualBoard& board, const Json& command);
Json SetWire(VirtualBoard& board, const Json& command);
Json CaptureFrames(VirtualBoard& board, const Json& command);
Json TraceFrame(VirtualBoard& board, const Json& command);

}  // namespace vboard

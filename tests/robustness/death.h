// A process that dies at a chosen point of a call: before each system call, wait, HAL call and
// write to the shared record. What comes after a point comes before the next one, so that these and
// the end of the call are all the moments that others can tell apart.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace obtest {

enum class PointKind { kSystemCall, kHalCall, kRecordWrite };

struct DeathPoint {
    PointKind kind;
    std::string what;  // line of the transcript, or the offset that is written
};

// The points of a call that lives. Runs in a child; `before` is done there first and not counted.
std::vector<DeathPoint> PointsOf(const std::function<void()>& before,
                                 const std::function<void()>& call);

// The numbers of the points that are tried: all of them where ORBLINK_THOROUGH is set, otherwise
// all but most of the writes to the record.
std::vector<size_t> Chosen(const std::vector<DeathPoint>& points);

// Lets a child die right before the point of that number; true when it did.
bool DiesAt(int point, const std::function<void()>& before, const std::function<void()>& call);

}  // namespace obtest

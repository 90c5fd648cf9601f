#include "virtual_board/cables/capture.h"

#include <algorithm>

namespace vboard::cables {

using datapath::Bytes;
using datapath::EgressQueues;
using datapath::Frame;

Captured Capture::Take(unsigned port, std::optional<uint64_t> from)
{
    Look& look = looks_[port];
    if (!from)
        look.frames.clear();
    look.watched = true;
    look.asked = std::chrono::steady_clock::now();
    FollowWatching();
    Captured captured{{}, look.next, 0, 0};
    if (!from)
        return captured;
    const uint64_t oldest = look.next - look.frames.size();
    const uint64_t first = std::clamp(*from, oldest, look.next);
    captured.lost = first - std::min(*from, first);
    const auto begin = look.frames.begin() + static_cast<long>(first - oldest);
    const auto end = begin + static_cast<long>(std::min(look.next - first, kAtOnce));
    captured.frames.assign(begin, end);
    look.frames.erase(look.frames.begin(), end);
    captured.kept = look.frames.size();
    captured.next = look.next - captured.kept;
    return captured;
}

bool Capture::Watches(unsigned port)
{
    Look& look = looks_[port];
    if (look.watched && std::chrono::steady_clock::now() - look.asked > kPatience) {
        look.watched = false;
        look.frames.clear();
        FollowWatching();
    }
    return look.watched;
}

void Capture::FollowWatching()
{
    engine_.Watch(std::ranges::any_of(looks_, &Look::watched) ? this : nullptr);
}

void Capture::Keep(unsigned port, CapturedFrame frame)
{
    Look& look = looks_[port];
    if (look.frames.size() >= kMaxFrames)
        look.frames.pop_front();
    frame.timeNs = clock_.Now().count();
    look.frames.push_back(std::move(frame));
    ++look.next;
}

void Capture::Received(const Frame& frame, const char* lost)
{
    if (!Watches(frame.port))
        return;
    CapturedFrame kept{0, true, "VLAN " + std::to_string(frame.tag.vid), {}};
    if (lost != nullptr)
        kept.comment += std::string(", dropped: ") + lost;
    kept.bytes.assign(frame.bytes.begin(), frame.bytes.end());
    Keep(frame.port, std::move(kept));
}

namespace {

std::string Describe(const EgressQueues::Admission& admission)
{
    return "VLAN " + std::to_string(admission.vid) + ", queue " +
           std::to_string(EgressQueues::QueueOf(admission.pcp)) +
           (admission.copy ? ", mirrored" : ", from port " + std::to_string(admission.ingress));
}

}  // namespace

void Capture::Sent(const EgressQueues::Admission& admission, std::span<const iovec> frame)
{
    if (!Watches(admission.port))
        return;
    CapturedFrame kept{0, false, Describe(admission), {}};
    for (const iovec& piece : frame) {
        const auto* start = static_cast<const uint8_t*>(piece.iov_base);
        kept.bytes.insert(kept.bytes.end(), start, start + piece.iov_len);
    }
    Keep(admission.port, std::move(kept));
}

void Capture::Discarded(const EgressQueues::Admission& admission, Bytes frame, const char* why)
{
    if (!Watches(admission.port))
        return;
    CapturedFrame kept{0, false, Describe(admission) + ", dropped: " + why, {}};
    kept.bytes.assign(frame.begin(), frame.end());
    Keep(admission.port, std::move(kept));
}

}  // namespace vboard::cables

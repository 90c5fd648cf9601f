#include "virtual_board/cables/lans.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "virtual_board/cables/network_namespace.h"

namespace vboard::cables {
namespace {

using datapath::Bytes;
using datapath::SwitchEngine;
using datapath::Wires;
using vswitch::kPorts;

constexpr unsigned kBestSpeed = 1;
constexpr size_t kMaxLans = 2;
// A client of the board waits no longer than a turn and one round of batches.
constexpr std::chrono::microseconds kTurn{250};
constexpr int kBatch = 8;
constexpr size_t kRoom = 65536;

// What an event of the interfaces is about.
constexpr uint64_t MarkOf(size_t lan, unsigned port, bool change)
{
    return lan << 8 | port << 1 | (change ? 1 : 0);
}

}  // namespace

struct Lans::Lan : public Wires {
    Lan(VswitchChip& switchChip, size_t number) : chip(switchChip), index(number) {}

    void Send(unsigned port, std::span<const iovec> frame) override
    {
        ports[port].tap->Write(frame);
    }

    VswitchChip& chip;
    size_t index;
    std::array<Port, kPorts> ports;
    std::optional<uint32_t> linksShown;  // of the chip's changes
    SwitchEngine engine{chip, *this};
    std::array<uint8_t, kRoom> room;
};

Lans::Lans(const BoardDescription& spec, const std::vector<Device>& devices,
           const BoardClock& boardClock)
    : clock(boardClock), events(epoll_create1(EPOLL_CLOEXEC))
{
    if (!events)
        throw std::system_error(errno, std::generic_category(), "epoll");
    for (size_t i = 0; i < spec.switches.size(); ++i) {
        if (devices[i].switchChip != nullptr)
            MakeHosts(MakeLan(spec.switches[i], devices[i], *devices[i].switchChip));
    }
}

Lans::~Lans() = default;

Lans::Lan& Lans::MakeLan(const SwitchDescription& spec, const Device& device, VswitchChip& chip)
{
    Lan& lan = *lans.emplace_back(std::make_unique<Lan>(chip, lans.size()));
    for (unsigned p = 0; p < kPorts; ++p) {
        lan.ports[p].name = device.name + ":" + std::to_string(p);
        lan.ports[p].spec = spec.ports[p];
    }
    chip.SetLink(spec.internalPort, true, kBestSpeed, true);
    return lan;
}

void Lans::MakeHosts(Lan& lan)
{
    for (const Port& first : lan.ports) {
        const std::string host = first.spec.host;
        const auto plugIn = [&] {
            for (Port& port : lan.ports) {
                if (port.spec.host == host)
                    port.tap = std::make_unique<TapPort>(port.spec);
            }
        };
        if (first.tap)
            continue;
        if (host.empty())
            plugIn();
        else
            hosts.push_back({host, MakeNetwork([&] {
                                 TakeLoopbackUp();
                                 plugIn();
                             })});
    }
    for (unsigned p = 0; p < kPorts; ++p)
        Watch(lan, p);
}

void Lans::Watch(Lan& lan, unsigned port)
{
    Add(lan.ports[port].tap->FrameFd(), MarkOf(lan.index, port, false));
    Add(lan.ports[port].tap->ChangeFd(), MarkOf(lan.index, port, true));
    FollowInterface(lan, port);
}

void Lans::Add(int fd, uint64_t mark)
{
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.u64 = mark;
    if (epoll_ctl(events.Get(), EPOLL_CTL_ADD, fd, &event) != 0)
        throw std::system_error(errno, std::generic_category(), "epoll");
}

std::optional<std::chrono::nanoseconds> Lans::Wait() const
{
    std::optional<std::chrono::nanoseconds> next;
    for (const auto& lan : lans) {
        if (const auto time = lan->engine.NextTransmission())
            next = next ? std::min(*next, *time) : *time;
    }
    if (!next)
        return std::nullopt;
    const std::chrono::duration<double, std::nano> left = *next - clock.Now();
    const double real = std::max(left.count(), 0.0) * clock.Scale();
    return std::chrono::nanoseconds(static_cast<std::chrono::nanoseconds::rep>(real));
}

void Lans::Serve()
{
    const auto end = std::chrono::steady_clock::now() + kTurn;
    do {
        std::array<epoll_event, 2 * kPorts * kMaxLans> ready;
        const int count = epoll_wait(events.Get(), ready.data(), ready.size(), 0);
        for (int i = 0; i < count; ++i)
            Handle(ready[i].data.u64);
        if (count <= 0)
            break;
    } while (std::chrono::steady_clock::now() < end);
    for (const auto& lan : lans) {
        lan->engine.Transmit(clock.Now());
        ShowLinks(*lan);
    }
}

void Lans::Handle(uint64_t mark)
{
    Lan& lan = *lans[static_cast<size_t>(mark >> 8)];
    const unsigned port = mark >> 1 & (kPorts - 1);
    if (mark & 1)
        FollowInterface(lan, port);
    else
        ReadFrames(lan, port);
}

void Lans::ReadFrames(Lan& lan, unsigned port)
{
    TapPort& tap = *lan.ports[port].tap;
    for (int i = 0; i < kBatch; ++i) {
        const Bytes frame = tap.Read(lan.room);
        if (frame.empty()) {
            if (tap.IsGone())
                Unplug(lan, port);
            return;
        }
        const auto now = clock.Now();
        lan.chip.Advance(now);
        lan.engine.Receive(port, frame, now);
    }
}

// What a deleted interface has ready is an error, for ever.
void Lans::Unplug(Lan& lan, unsigned port)
{
    const TapPort& tap = *lan.ports[port].tap;
    for (const int fd : {tap.FrameFd(), tap.ChangeFd()})
        epoll_ctl(events.Get(), EPOLL_CTL_DEL, fd, nullptr);
    FollowInterface(lan, port);
}

void Lans::FollowInterface(Lan& lan, unsigned port)
{
    lan.chip.Advance(clock.Now());
    lan.chip.SetPartnerPower(port, lan.ports[port].tap->IsUp());
}

void Lans::ShowLinks(Lan& lan)
{
    if (lan.linksShown == lan.chip.ForwardingChanges())
        return;
    const vswitch::ForwardingView& view = lan.chip.Forwarding();
    for (unsigned p = 0; p < kPorts; ++p) {
        const auto& rules = view.ports[p];
        const Shown now{(view.links & vswitch::MaskOf(p)) != 0, rules.megabits, rules.fullDuplex};
        if (std::exchange(lan.ports[p].shown, now) != now)
            lan.ports[p].tap->ShowLink(now.up, now.megabits, now.fullDuplex);
    }
    lan.linksShown = lan.chip.ForwardingChanges();
}

std::vector<CableEnd> Lans::Ends() const
{
    std::vector<CableEnd> ends;
    for (const auto& lan : lans) {
        for (const Port& port : lan->ports)
            ends.push_back({port.name, port.spec.interface, port.spec.host, port.spec.address});
    }
    return ends;
}

int Lans::NetworkOf(const std::string& host) const
{
    const auto found = std::ranges::find(hosts, host, &Host::name);
    return found == hosts.end() ? -1 : found->network.Get();
}

}  // namespace vboard::cables

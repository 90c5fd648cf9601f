#include "virtual_board/cables/lans.h"

#include <sys/epoll.h>

#include <algorithm>
#include <cerrno>
#include <optional>
#include <system_error>
#include <utility>

#include "virtual_board/cables/capture.h"
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
    Lan(std::string device, VswitchChip& switchChip, size_t number, const BoardClock& boardClock)
        : name(std::move(device)), chip(switchChip), index(number), clock(boardClock)
    {
    }

    void Send(unsigned port, std::span<const iovec> frame) override
    {
        Wire& wire = ports[port].wire;
        if (wire.IsGood())
            return ports[port].tap->Write(frame);
        std::vector<uint8_t> bytes;
        for (const iovec& piece : frame) {
            const auto* start = static_cast<const uint8_t*>(piece.iov_base);
            bytes.insert(bytes.end(), start, start + piece.iov_len);
        }
        wire.Send(false, bytes, clock.Now());
    }

    std::string name;
    VswitchChip& chip;
    size_t index;
    const BoardClock& clock;
    std::array<Port, kPorts> ports;
    std::optional<uint32_t> linksShown;  // of the chip's changes
    SwitchEngine engine{chip, *this};
    cables::Capture capture{engine, clock};
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
    Lan& lan = *lans.emplace_back(std::make_unique<Lan>(device.name, chip, lans.size(), clock));
    for (unsigned p = 0; p < kPorts; ++p) {
        lan.ports[p].name = device.name + ":" + std::to_string(p);
        lan.ports[p].spec = spec.ports[p];
        lan.ports[p].wire = Wire{p + 1};
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
        for (const Port& port : lan->ports) {
            if (const auto time = port.wire.NextArrival())
                next = next ? std::min(*next, *time) : *time;
        }
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
        for (unsigned p = 0; p < kPorts; ++p)
            Arrive(*lan, p);
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
        Wire& wire = lan.ports[port].wire;
        if (!wire.IsGood()) {
            wire.Send(true, frame, now);
            continue;
        }
        lan.chip.Advance(now);
        lan.engine.Receive(port, frame, now);
    }
}

// What has come out of a cable. An interface takes no frame with a wrong check sequence.
void Lans::Arrive(Lan& lan, unsigned port)
{
    while (const auto arrival = lan.ports[port].wire.Receive(clock.Now())) {
        const auto now = clock.Now();
        lan.chip.Advance(now);
        if (arrival->atSwitch && arrival->bad) {
            lan.engine.ReceiveBad(port, arrival->frame, now);
        } else if (arrival->atSwitch) {
            lan.engine.Receive(port, arrival->frame, now);
        } else if (!arrival->bad) {
            const iovec piece{const_cast<uint8_t*>(arrival->frame.data()), arrival->frame.size()};
            lan.ports[port].tap->Write({&piece, 1});
        }
    }
}

// What a deleted interface has ready is an error, for ever.
void Lans::Unplug(Lan& lan, unsigned port)
{
    const TapPort& tap = *lan.ports[port].tap;
    for (const int fd : {tap.FrameFd(), tap.ChangeFd()})  // result dropped: one may be out already
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
            ends.push_back({port.name, port.spec.interface, port.spec.host, port.spec.address,
                            port.wire.Faults()});
    }
    return ends;
}

Lans::Lan* Lans::FindLan(const std::string& device, unsigned port) const
{
    for (const auto& lan : lans)
        if (lan->name == device && port < kPorts)
            return lan.get();
    return nullptr;
}

bool Lans::SetWire(const std::string& device, unsigned port, const WireFaults& faults)
{
    Lan* lan = FindLan(device, port);
    if (lan != nullptr)
        lan->ports[port].wire.Set(faults);
    return lan != nullptr;
}

std::optional<Captured> Lans::Capture(const std::string& device, unsigned port,
                                      std::optional<uint64_t> from)
{
    Lan* lan = FindLan(device, port);
    return lan != nullptr ? std::optional{lan->capture.Take(port, from)} : std::nullopt;
}

std::optional<std::vector<datapath::TraceStep>> Lans::Trace(const std::string& device,
                                                            unsigned port,
                                                            const std::vector<uint8_t>& frame)
{
    Lan* lan = FindLan(device, port);
    if (lan == nullptr)
        return std::nullopt;
    lan->chip.Advance(clock.Now());
    return datapath::Trace(lan->engine, port, frame, clock.Now());
}

int Lans::NetworkOf(const std::string& host) const
{
    const auto found = std::ranges::find(hosts, host, &Host::name);
    return found == hosts.end() ? -1 : found->network.Get();
}

}  // namespace vboard::cables

#include "virtual_board/cables/lans.h"

#include <algorithm>
#include <bit>
#include <optional>
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
// A client of the board waits no longer than a turn.
constexpr std::chrono::microseconds kTurn{500};
// A port that has something ready in one turn after the other, without a rest between them, has
// probably more than one packet; from another a second read would get nothing.
constexpr std::chrono::microseconds kRest{20};
constexpr unsigned kLongestBurst = 64;

// What is ready: frames of a port, of all switches in a row, or news of its interface.
constexpr uint32_t kNews = 32;

constexpr uint32_t NumberOf(size_t lan, unsigned port)
{
    return static_cast<uint32_t>(lan * kPorts + port);
}

}  // namespace

struct Lans::Lan : public Wires {
    Lan(std::string device, VswitchChip& switchChip, size_t number, const BoardClock& boardClock)
        : name(std::move(device)), chip(switchChip), index(number), clock(boardClock)
    {
    }

    void Send(unsigned port, std::span<const iovec> frame) override
    {
        if (ports[port].wire.IsGood())
            return ports[port].tap->Write(frame);
        std::vector<uint8_t> bytes;
        for (const iovec& piece : frame) {
            const auto* start = static_cast<const uint8_t*>(piece.iov_base);
            bytes.insert(bytes.end(), start, start + piece.iov_len);
        }
        IntoWire(port, false, bytes, clock.Now());
    }

    bool TakesPackets(unsigned port) const override
    {
        return ports[port].wire.IsGood() && ports[port].tap->TakesPackets();
    }

    void SendPacket(unsigned port, std::span<const iovec> packet,
                    const datapath::Offload& left) override
    {
        ports[port].tap->Write(packet, left);
    }

    // From a host into a cable that does something to each frame.
    void SendFrames(unsigned port, const TapPort::Packet& packet, std::chrono::nanoseconds now)
    {
        if (packet.left.IsDone())
            return IntoWire(port, true, packet.bytes, now);
        datapath::Cutter cutter{packet.bytes, packet.left, cut.data()};
        for (Bytes frame = cutter.Next(); !frame.empty(); frame = cutter.Next())
            IntoWire(port, true, frame, now);
    }

    void IntoWire(unsigned port, bool toSwitch, Bytes frame, std::chrono::nanoseconds now)
    {
        const bool halfDuplex = !engine.View().ports[port].fullDuplex;
        engine.CountCollisions(port, ports[port].wire.Send(toSwitch, frame, now, halfDuplex));
    }

    std::string name;
    VswitchChip& chip;
    size_t index;
    const BoardClock& clock;
    std::array<Port, kPorts> ports;
    std::optional<uint32_t> linksShown;  // of the chip's changes
    SwitchEngine engine{chip, *this};
    cables::Capture capture{engine, clock};
    std::array<uint8_t, TapPort::kRoom> room;
    std::array<uint8_t, datapath::kLongestPacket> cut;  // frames of a packet
};

Lans::Lans(const BoardDescription& spec, const std::vector<Device>& devices,
           const BoardClock& boardClock)
    : clock_(boardClock)
{
    for (size_t i = 0; i < spec.switches.size(); ++i) {
        if (devices[i].switchChip != nullptr)
            MakeHosts(MakeLan(spec.switches[i], devices[i], *devices[i].switchChip));
    }
}

Lans::~Lans() = default;

Lans::Lan& Lans::MakeLan(const SwitchDescription& spec, const Device& device, VswitchChip& chip)
{
    Lan& lan = *lans_.emplace_back(std::make_unique<Lan>(device.name, chip, lans_.size(), clock_));
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
            hosts_.push_back({host, MakeNetwork([&] {
                                  TakeLoopbackUp();
                                  plugIn();
                              })});
    }
    for (unsigned p = 0; p < kPorts; ++p)
        FollowInterface(lan, p);
}

void Lans::Watch(Poller& watching, uint32_t kind)
{
    poller_ = &watching;
    for (const auto& lan : lans_) {
        for (unsigned p = 0; p < kPorts; ++p) {
            const TapPort& tap = *lan->ports[p].tap;
            const uint32_t number = NumberOf(lan->index, p);
            poller_->Watch(tap.FrameFd(), {kind, number});
            poller_->Watch(tap.ChangeFd(), {kind, kNews + number});
        }
    }
}

std::optional<std::chrono::nanoseconds> Lans::Wait() const
{
    std::optional<std::chrono::nanoseconds> next;
    for (const auto& lan : lans_) {
        if (const auto time = lan->engine.NextTransmission())
            next = next ? std::min(*next, *time) : *time;
        for (const Port& port : lan->ports) {
            if (const auto time = port.wire.NextArrival())
                next = next ? std::min(*next, *time) : *time;
        }
    }
    if (!next)
        return std::nullopt;
    const std::chrono::duration<double, std::nano> left = *next - clock_.Now();
    const double real = std::max(left.count(), 0.0) * clock_.Scale();
    return std::chrono::nanoseconds(static_cast<std::chrono::nanoseconds::rep>(real));
}

void Lans::Serve(std::span<const uint32_t> ready)
{
    const auto start = std::chrono::steady_clock::now();
    const auto end = start + kTurn;
    turn_ += start - rested_ < kRest ? 1 : 2;
    uint32_t waiting = 0;  // ports, a bit each
    for (const uint32_t number : ready) {
        if (number < kNews)
            waiting |= uint32_t{1} << number;
        else
            FollowInterface(*lans_[(number - kNews) / kPorts], number % kPorts);
    }
    while (waiting != 0 && std::chrono::steady_clock::now() < end) {
        // The next turn goes on where this one ends.
        const int after = static_cast<int>(served_) + 1;
        served_ = static_cast<uint32_t>(after + std::countr_zero(std::rotr(waiting, after))) % 32;
        waiting &= ~(uint32_t{1} << served_);
        ReadPackets(*lans_[served_ / kPorts], served_ % kPorts, end);
    }
    for (const auto& lan : lans_) {
        for (unsigned p = 0; p < kPorts; ++p)
            Arrive(*lan, p);
        lan->engine.Transmit(clock_.Now());
        ShowLinks(*lan);
    }
    rested_ = std::chrono::steady_clock::now();
}

void Lans::ReadPackets(Lan& lan, unsigned p, RealTime end)
{
    Port& port = lan.ports[p];
    port.burst = port.readIn + 1 == turn_ ? std::min(2 * port.burst, kLongestBurst) : 1;
    port.readIn = turn_;
    for (unsigned i = 0; i < port.burst && std::chrono::steady_clock::now() < end; ++i) {
        if (!ReadPacket(lan, p)) {
            port.burst = 1;
            return;
        }
    }
}

// False: none was there.
bool Lans::ReadPacket(Lan& lan, unsigned port)
{
    TapPort& tap = *lan.ports[port].tap;
    const TapPort::Packet packet = tap.Read(lan.room);
    if (packet.bytes.empty()) {
        if (tap.IsGone())
            Unplug(lan, port);
        return false;
    }
    const auto now = clock_.Now();
    if (!lan.ports[port].wire.IsGood()) {
        lan.SendFrames(port, packet, now);
        return true;
    }
    lan.chip.Advance(now);
    lan.engine.Receive(port, packet.bytes, now, packet.left);
    return true;
}

// What has come out of a cable. An interface takes no damaged frame.
void Lans::Arrive(Lan& lan, unsigned port)
{
    if (lan.ports[port].wire.IsGood())
        return;
    while (auto arrival = lan.ports[port].wire.Receive(clock_.Now())) {
        const auto now = clock_.Now();
        lan.chip.Advance(now);
        if (arrival->atSwitch && arrival->damage) {
            lan.engine.ReceiveBad(port, arrival->frame, now, *arrival->damage);
        } else if (arrival->atSwitch) {
            lan.engine.Receive(port, arrival->frame, now);
        } else if (!arrival->damage) {
            const iovec piece{arrival->frame.data(), arrival->frame.size()};
            lan.ports[port].tap->Write({&piece, 1});
        }
    }
}

void Lans::Unplug(Lan& lan, unsigned port)
{
    // What a deleted interface has ready is an error, for ever.
    poller_->Forget(lan.ports[port].tap->FrameFd());
    poller_->Forget(lan.ports[port].tap->ChangeFd());
    FollowInterface(lan, port);
}

void Lans::FollowInterface(Lan& lan, unsigned port)
{
    lan.chip.Advance(clock_.Now());
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
    for (const auto& lan : lans_) {
        for (const Port& port : lan->ports)
            ends.push_back({port.name, port.spec.interface, port.spec.host, port.spec.address,
                            port.wire.Faults()});
    }
    return ends;
}

Lans::Lan* Lans::FindLan(const std::string& device, unsigned port) const
{
    for (const auto& lan : lans_)
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
    lan->chip.Advance(clock_.Now());
    return datapath::Trace(lan->engine, port, frame, clock_.Now());
}

int Lans::NetworkOf(const std::string& host) const
{
    const auto found = std::ranges::find(hosts_, host, &Host::name);
    return found == hosts_.end() ? -1 : found->network.Get();
}

}  // namespace vboard::cables

#include "virtual_board/datapath/trace.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace vboard::datapath {
namespace {

using vswitch::ForwardingView;
using vswitch::kPorts;
using vswitch::MaskOf;
using vswitch::PortMask;

std::string Register(const char* name, unsigned address)
{
    char text[40];
    snprintf(text, sizeof text, "%s 0x%04x", name, address);
    return text;
}

std::string PortRegister(const char* name, unsigned port, vswitch::PortRegister offset)
{
    return Register(name, 0x1000 + 0x100 * port + offset);
}

std::string Number(unsigned value)
{
    return std::to_string(value);
}

std::string Ports(PortMask mask)
{
    std::string text;
    for (unsigned p = 0; p < kPorts; ++p)
        if (mask & MaskOf(p))
            text += (text.empty() ? "" : " ") + Number(p);
    return text.empty() ? "none" : text;
}

class Tracer {
public:
    Tracer(SwitchEngine& traced, std::chrono::nanoseconds time)
        : engine_(traced), view_(traced.View()), now_(time)
    {
    }

    std::vector<TraceStep> Follow(unsigned port, Bytes given)
    {
        std::array<uint8_t, kShortest> padded{};
        Bytes bytes = given;
        if (given.size() < kShortest) {
            std::ranges::copy(given, padded.begin());
            bytes = padded;
        }
        if (ComesIn(port, given)) {
            const Frame frame = engine_.Classify(port, bytes);
            Classified(frame);
            if (IsTaken(frame, given.size()))
                GoesOut(frame);
        }
        return std::move(steps_);
    }

private:
    void Say(const std::string& decision, const std::string& registers = "")
    {
        steps_.push_back({decision, registers});
    }
    bool Refuse(const std::string& why, const std::string& registers = "")
    {
        Say("dropped: " + why, registers);
        return false;
    }

    bool ComesIn(unsigned port, Bytes given)
    {
        const std::string link = PortRegister("PORT_STATUS", port, vswitch::kPortStatus);
        if (!(view_.links & MaskOf(port)))
            return Refuse("port " + Number(port) + " has no link", link);
        if (!engine_.Open(port))
            return Refuse("port " + Number(port) + " is in a test, or its chip in reset",
                          PortRegister("PHY_DVT", port, vswitch::kPhyDvt) + ", R2");
        Say("comes in on port " + Number(port), link);
        if (given.size() < kHeader)
            return Refuse("shorter than an Ethernet header");
        if (LengthOf(given) > view_.mtu)
            return Refuse(Number(static_cast<unsigned>(LengthOf(given))) +
                              " octets are longer than the MTU of " + Number(view_.mtu),
                          Register("MTU", vswitch::kMtu));
        return true;
    }

    void Classified(const Frame& frame)
    {
        const auto& rules = view_.ports[frame.port];
        char tpid[8];
        snprintf(tpid, sizeof tpid, "0x%04x", view_.tpid);
        std::string what = "no tag of " + std::string(tpid);
        if (rules.customer)
            what = "a customer port: tags are data";
        else if (frame.tagged)
            what = "a tag of " + std::string(tpid);
        Say(what, Register("PB_CTRL", vswitch::kProviderCtrl) + ", " +
                      Register("PB_TPID", vswitch::kProviderTpid));
        Say("VLAN " + Number(frame.tag.vid), VlanSource(frame));
        Say("priority " + Number(frame.tag.pcp) + ", queue " +
                Number(EgressQueues::QueueOf(frame.tag.pcp)),
            frame.tagged ? "" : PortRegister("PORT_PCP", frame.port, vswitch::kPortPcp));
    }

    std::string VlanSource(const Frame& frame) const
    {
        if (frame.tagged && (Word(frame.bytes.data() + kAddresses + 2) & 0x0FFF) != 0)
            return "";
        const uint64_t source = vswitch::NumberOf(frame.Source());
        for (unsigned i = view_.firstRule[frame.port]; i < view_.firstRule[frame.port + 1]; ++i) {
            const auto& rule = view_.macVlanRules[i];
            if ((source & rule.mask) == rule.mac)
                return Register("source-MAC-to-VLAN table", vswitch::kMacVlanFirst);
        }
        return PortRegister("PORT_VID", frame.port, vswitch::kPortVid);
    }

    bool IsTaken(const Frame& frame, size_t length)
    {
        if (const char* why = SwitchEngine::WhyNoFrame(frame, length))
            return Refuse(why);
        const int mirror = view_.ports[frame.port].mirrorTo;
        if (mirror != ForwardingView::kNoMirror)
            Say("mirrored to port " + Number(static_cast<unsigned>(mirror)),
                PortRegister("PORT_MIRROR", frame.port, vswitch::kPortMirror));
        if (!engine_.Admitted(frame))
            return Refuse("port " + Number(frame.port) + " is not in VLAN " + Number(frame.tag.vid),
                          PortRegister("PORT_VID", frame.port, vswitch::kPortVid));
        if (IsStation(AddressAt(frame.Source())))
            Say("its source is learnt at port " + Number(frame.port));
        if (IsPause(frame.Destination()))
            return Refuse("a PAUSE frame ends here");
        return true;
    }

    void GoesOut(const Frame& frame)
    {
        const MacAddress source = AddressAt(frame.Source());
        if (IsStation(source) && source == AddressAt(frame.Destination())) {
            Refuse("it is for the station that sends it, which is learnt there", "MAC table");
            return;
        }
        const Route route = engine_.RouteOf(frame, now_);
        Wanted(route);
        const auto others = static_cast<PortMask>(route.wanted & ~MaskOf(frame.port));
        Without(others, route.members, "not in its VLAN", "PORT_VID", vswitch::kPortVid);
        const auto inVlan = static_cast<PortMask>(others & route.members);
        Without(inVlan, route.forwarding, "no link, or in a test", "PORT_STATUS",
                vswitch::kPortStatus);
        const auto linked = static_cast<PortMask>(inVlan & route.forwarding);
        Without(linked, route.reachable, "isolated, or in another group", "PORT_GROUP",
                vswitch::kPortGroup);
        if (route.Ports() == 0)
            Say("dropped: no port to go to");
        for (unsigned p = 0; p < kPorts; ++p)
            if (route.Ports() & MaskOf(p))
                Say("goes out on port " + Number(p) +
                        (engine_.TaggedOn(p, frame.tag.vid) ? ", tagged" : ", untagged"),
                    PortRegister("PORT_TAG", p, vswitch::kPortTag));
    }

    void Wanted(const Route& route)
    {
        constexpr const char* kWhy[] = {"a reserved address: to the CPU on port ",
                                        "a known station: to port ",
                                        "to all ports: ", "a multicast group: to ports "};
        const std::string registers[] = {Register("PB_CTRL", vswitch::kProviderCtrl), "MAC table",
                                         "MAC table", Register("SNOOPING", vswitch::kSnooping)};
        const auto by = static_cast<size_t>(route.by);
        Say(kWhy[by] + Ports(route.wanted), registers[by]);
    }

    void Without(PortMask before, PortMask left, const char* why, const char* name,
                 vswitch::PortRegister offset)
    {
        for (unsigned p = 0; p < kPorts; ++p)
            if (before & ~left & MaskOf(p))
                Say("not on port " + Number(p) + ": " + why, PortRegister(name, p, offset));
    }

    SwitchEngine& engine_;
    const ForwardingView& view_;
    std::chrono::nanoseconds now_;
    std::vector<TraceStep> steps_;
};

}  // namespace

std::vector<TraceStep> Trace(SwitchEngine& engine, unsigned port, Bytes frame,
                             std::chrono::nanoseconds now)
{
    return Tracer(engine, now).Follow(port, frame);
}

}  // namespace vboard::datapath

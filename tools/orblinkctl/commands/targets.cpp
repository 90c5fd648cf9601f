#include "tools/orblinkctl/commands/targets.h"

#include "tools/orblinkctl/access/names.h"

namespace ctl {

SwitchTarget::SwitchTarget(const Call& call)
    : region(ReadSwitches()), device(call.As<uint8_t>("SWITCH")), object(SwitchObject(device))
{
    SwitchOf(region, device);
}

PortTarget::PortTarget(const Call& call)
    : region(ReadSwitches()), id(*FindPort(call.Word("PORT"))), object(PortObject(id))
{
    RequirePort(region, id);
}

void PortTarget::RequireLanPort() const
{
    if (id.port == 0)
        throw Failure{kUnsupported, object + ": not a LAN port; those are ports 1 to " +
                                        std::to_string(PortCount(Record()) - 1)};
}

void PortTarget::RequireForceForInternal(const Call& call, const char* consequence) const
{
    if (Record().board.internalPortPidx == id.port && !call.Has("--force"))
        throw Failure{kUnsupported, object + " is the port to the SoC: --force " + consequence};
}

void PortTarget::RequirePhyPort() const
{
    if (!HasPhy())
        throw Failure{kUnsupported, object + ": no PHY is attached to it"};
}

void PortTarget::RequireCapability(uint8_t flag, const char* name) const
{
    if ((Record().caps.capsFlags & flag) == 0)
        throw Failure{kUnsupported, SwitchObject(id.device) + " does not support " + name};
}

PhyTarget::PhyTarget(const Call& call)
    : region(ReadPhys()),
      device(static_cast<uint8_t>(*FindPhy(call.Word("PHY")))),
      object(PhyObject(device))
{
    PhyOf(region, device);
}

std::vector<unsigned> SwitchesOf(const Call& call, const SwitchDeviceRegion& region)
{
    if (call.Has("SWITCH")) {
        const auto device = call.As<unsigned>("SWITCH");
        SwitchOf(region, device);
        return {device};
    }
    std::vector<unsigned> all;
    for (unsigned device = 0; device < region.NumOfSwitches; ++device)
        all.push_back(device);
    return all;
}

}  // namespace ctl

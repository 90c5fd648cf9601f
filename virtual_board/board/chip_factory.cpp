#include "virtual_board/board/chip_factory.h"

#include "virtual_board/chips/ieee8023/phy_model.h"
#include "virtual_board/chips/vs08/chip.h"

namespace vboard {
namespace {

constexpr unsigned kBestSpeed = 1;

Device MakeSwitch(const SwitchDescription& spec, size_t index)
{
    Device device{"sw" + std::to_string(index), &spec.wiring, nullptr, nullptr};
    if (spec.wiring.chip == "vswitch") {
        auto chip = std::make_unique<VswitchChip>(spec.internalPort);
        device.switchChip = chip.get();
        device.chip = std::move(chip);
    }
    for (uint32_t port : spec.linksUp)
        if (device.chip)
            device.chip->SetLink(port, true, kBestSpeed, true);
    return device;
}

PhyConfig ConfigOf(const PhyDescription& spec)
{
    PhyConfig config;
    config.identifier = spec.identifier;
    config.modes = ModesOf(spec.abilities);
    config.eee = spec.abilities.eee ? config.eee & config.modes : 0;
    config.clause45 = spec.clause45;
    config.laneGood = spec.laneGood;
    config.negotiationTime = std::chrono::milliseconds{spec.negotiationMs};
    config.partner = spec.partner;
    return config;
}

Device MakePhy(const PhyDescription& spec, size_t index)
{
    Device device{"phy" + std::to_string(index), &spec.wiring, nullptr, nullptr};
    if (spec.wiring.chip == "ieee8023")
        device.chip = std::make_unique<PhyModel>(ConfigOf(spec));
    return device;
}

}  // namespace

std::vector<Device> MakeDevices(const BoardDescription& spec)
{
    std::vector<Device> devices;
    for (size_t i = 0; i < spec.switches.size(); ++i)
        devices.push_back(MakeSwitch(spec.switches[i], i));
    for (size_t i = 0; i < spec.phys.size(); ++i)
        devices.push_back(MakePhy(spec.phys[i], i));
    return devices;
}

}  // namespace vboard

#include "tools/orblinkctl/facts/chip_view.h"

namespace ctl {

namespace {

constexpr uint16_t kReadiness = 0x02;
constexpr uint16_t kForwarding = 0x110;
constexpr uint16_t kBridging = 0x111;
constexpr uint16_t kBridgingTpid = 0x112;
constexpr uint16_t kAgeingStep = 0x113;
constexpr uint16_t kLongestFrame = 0x114;
constexpr uint16_t kSnooped = 0x115;
constexpr uint16_t kEarlyDetection = 0x120;
constexpr uint16_t kGreenMost = 0x122;
constexpr uint16_t kQueues = 0x2000;
constexpr uint16_t kTopBit = 0x8000;

uint16_t Chip(unsigned device, uint16_t address)
{
    uint16_t value[32] = {};
    Check(ORBLINK_SmiRead(static_cast<uint8_t>(device), address, value), SwitchObject(device),
          "ORBLINK_SmiRead");
    return value[0];
}

uint16_t Port(PortId id, uint16_t offset)
{
    uint16_t value[32] = {};
    Check(ORBLINK_ReadPortReg(static_cast<uint8_t>(id.device), static_cast<uint16_t>(id.port),
                              offset, value),
          PortObject(id), "ORBLINK_ReadPortReg");
    return value[0];
}

void ViewPhy(ChipPort& view)
{
    const uint16_t control = Port(view.id, 0x10);
    view.setSpeed = control & 7;
    view.setFullDuplex = (control & 8) != 0;
    view.eee = (Port(view.id, 0x11) & 1) != 0;
    view.testMode = Port(view.id, 0x12);
    view.verification = Port(view.id, 0x13);
}

}  // namespace

ChipView ViewChip(unsigned device)
{
    Enter(Family::kSwitch);
    ChipView view = {};
    view.isolation = (Chip(device, kForwarding) & 1) != 0;
    view.providerBridged = (Chip(device, kBridging) & 1) != 0;
    view.tpid = Chip(device, kBridgingTpid);
    view.ageing = Chip(device, kAgeingStep);
    view.mtu = Chip(device, kLongestFrame);
    view.snooping = Chip(device, kSnooped) != 0;
    view.earlyDetection = (Chip(device, kEarlyDetection) & 1) != 0;
    view.greenMost = Chip(device, kGreenMost);
    view.receives = (Chip(device, kReadiness) & 2) != 0;
    return view;
}

ChipPort ViewPort(const SwitchDeviceRecord& record, PortId id)
{
    Enter(Family::kSwitch);
    ChipPort view = {};
    view.id = id;
    view.isLan = record.board.internalPortPidx != id.port;
    view.hasPhy = record.caps.port[id.port].portHasPhy != 0;
    view.enabled = (Port(id, 0x01) & 1) != 0;
    const uint16_t status = Port(id, 0x02);
    view.link = (status & 1) != 0;
    view.fullDuplex = (status & 2) != 0;
    view.speed = status >> 2 & 7;
    view.vlan = Port(id, 0x03);
    view.tagged = (Port(id, 0x05) & 1) != 0;
    const uint16_t group = Port(id, 0x06);
    view.hasGroup = (group & kTopBit) != 0;
    view.group = group & 0xFF;
    const uint16_t mirror = Port(id, 0x07);
    view.mirrored = (mirror & kTopBit) != 0;
    view.mirrorTo = mirror & 7;
    view.xoff = Port(id, 0x08);
    view.xon = Port(id, 0x09);
    if (view.hasPhy)
        ViewPhy(view);
    view.isRgmii = !view.hasPhy && record.caps.port[id.port].portIfaceType == OB_IFACE_RGMII;
    view.delay = view.isRgmii && (Port(id, 0x18) & 1) != 0;
    return view;
}

uint16_t QueueLimit(PortId id)
{
    // Priority 0 takes the second of the eight queues of a port.
    const unsigned queue = 8 * id.port + 1;
    return Chip(id.device, static_cast<uint16_t>(kQueues + 8 * queue + 1));
}

}  // namespace ctl

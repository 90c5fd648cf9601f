#include "tools/orblinkctl/facts/chip_settings.h"

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/meanings.h"
#include "tools/orblinkctl/facts/switch_model.h"

namespace ctl {

namespace {

// Registers of the VS08: offsets within a port, and internal addresses.
constexpr uint16_t kPortControl = 0x01;
constexpr uint16_t kPortVid = 0x03;
constexpr uint16_t kPortPcp = 0x04;
constexpr uint16_t kPortTag = 0x05;
constexpr uint16_t kPortGroup = 0x06;
constexpr uint16_t kPortMirror = 0x07;
constexpr uint16_t kPhyControl = 0x10;
constexpr uint16_t kRgmiiControl = 0x18;
constexpr uint16_t kBridgeControl = 0x111;
constexpr uint16_t kBridgeTpid = 0x112;
constexpr uint16_t kAgeing = 0x113;
constexpr uint16_t kMtu = 0x114;
constexpr uint16_t kSnooping = 0x115;
constexpr uint16_t kValid = 0x8000;

class Reader {
public:
    Reader(const SwitchDeviceRecord& record, unsigned device)
        : record_(record), stored_(StoredSwitch(record, device)), device_(device)
    {
    }

    Model Read()
    {
        ReadLed();
        if (IsVs08(record_))
            ReadWide();
        for (unsigned port = 0; port < PortCount(record_); ++port) {
            ReadEee(port);
            if (IsVs08(record_))
                ReadPort({device_, port});
        }
        return std::move(list_);
    }

private:
    uint8_t Device() const { return static_cast<uint8_t>(device_); }

    void Add(const std::string& object, const char* setting, Model stored, Model chip)
    {
        Model entry;
        entry["object"] = object;
        entry["setting"] = setting;
        entry["record"] = std::move(stored);
        entry["chip"] = std::move(chip);
        list_.push_back(std::move(entry));
    }

    uint16_t Smi(uint16_t address)
    {
        uint16_t value[32] = {};
        Check(ORBLINK_SmiRead(Device(), address, value), SwitchObject(device_), "ORBLINK_SmiRead");
        return value[0];
    }

    uint16_t PortRegister(PortId id, uint16_t offset)
    {
        uint16_t value[32] = {};
        Check(ORBLINK_ReadPortReg(Device(), static_cast<uint16_t>(id.port), offset, value),
              PortObject(id), "ORBLINK_ReadPortReg");
        return value[0];
    }

    void ReadLed()
    {
        uint8_t mode = 0;
        if (ORBLINK_GetLEDConfig(Device(), &mode) == 0)
            Add(SwitchObject(device_), "led", stored_["led"], ValueModel("led", mode, record_));
    }

    void ReadEee(unsigned port)
    {
        uint32_t state = 0;
        const bool has =
            record_.caps.port[port].portHasPhy != 0 && (record_.caps.capsFlags & OB_CAPS_EEE) != 0;
        if (has && ORBLINK_GetEeePortState(Device(), static_cast<uint8_t>(port), &state) == 0)
            Add(PortObject({device_, port}), "eee", (record_.config.eeePorts >> port & 1) != 0,
                state != 0);
    }

    void ReadWide()
    {
        const std::string object = SwitchObject(device_);
        const bool bridging = (Smi(kBridgeControl) & 1) != 0;
        Add(object, "bridge_mode", stored_["bridge_mode"], bridging ? "provider" : "off");
        if (bridging)
            Add(object, "bridge_tpid", stored_["bridge_tpid"], Smi(kBridgeTpid));
        Add(object, "aging", stored_["aging"], ValueModel("aging", Smi(kAgeing), record_));
        Add(object, "mtu", stored_["mtu"], Smi(kMtu));
        Add(object, "igmp", stored_["igmp"], (Smi(kSnooping) & 1) != 0);
    }

    void ReadPort(PortId id)
    {
        const Model stored = StoredPort(record_, id);
        const std::string object = PortObject(id);
        Add(object, "enabled", stored["enabled"], (PortRegister(id, kPortControl) & 1) != 0);
        const uint16_t mirror = PortRegister(id, kPortMirror);
        Add(object, "mirror_to", stored["mirror_to"],
            (mirror & kValid) != 0 ? Model(mirror & 7) : Model());
        const auto& caps = record_.caps.port[id.port];
        if (caps.portHasPhy != 0)
            ReadPhyPort(id, stored);
        else if (caps.portIfaceType == OB_IFACE_RGMII)
            Add(object, "delay", stored["delay"], (PortRegister(id, kRgmiiControl) & 1) != 0);
    }

    // Bring-up gives these settings to ports with a PHY only.
    void ReadPhyPort(PortId id, const Model& stored)
    {
        const std::string object = PortObject(id);
        const uint16_t control = PortRegister(id, kPhyControl);
        Add(object, "speed", stored["speed"], SpeedModel(control & 7));
        Add(object, "duplex", stored["duplex"], (control & 8) != 0 ? "full" : "half");
        if (id.port == 0)
            return;
        Add(object, "vlan", stored["vlan"], PortRegister(id, kPortVid));
        Add(object, "pcp", stored["pcp"], PortRegister(id, kPortPcp));
        Add(object, "tagging", stored["tagging"],
            ValueModel("tagging", PortRegister(id, kPortTag), record_));
        const uint16_t group = PortRegister(id, kPortGroup);
        Add(object, "group", stored["group"],
            (group & kValid) != 0 ? Model(group & 0xFF) : Model());
    }

    const SwitchDeviceRecord& record_;
    const Model stored_;
    unsigned device_;
    Model list_ = Model::array();
};

}  // namespace

Model ChipSettings(const SwitchDeviceRecord& record, unsigned device)
{
    Enter(Family::kSwitch);
    return Reader(record, device).Read();
}

}  // namespace ctl

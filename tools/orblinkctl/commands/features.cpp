// Settings of a whole switch: snooping, MTU, LEDs, ageing, QoS.

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/commands/hal_usage.h"
#include "tools/orblinkctl/commands/tables.h"
#include "tools/orblinkctl/commands/targets.h"
#include "tools/orblinkctl/facts/meanings.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/output/model_text.h"

namespace ctl {

namespace {

Model ShowStored(Call& call, const char* key)
{
    const auto region = ReadSwitches();
    Model model;
    model["switches"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        const Model all = StoredSwitch(region.device[device], device);
        Model entry;
        entry["switch"] = device;
        entry[key] = all[key];
        model["switches"].push_back(std::move(entry));
    }
    return model;
}

Model ShowIgmp(Call& call)
{
    return ShowStored(call, "igmp");
}
Model ShowMtu(Call& call)
{
    return ShowStored(call, "mtu");
}
Model ShowAging(Call& call)
{
    return ShowStored(call, "aging");
}

Model SetIgmp(Call& call)
{
    const SwitchTarget target(call);
    if ((target.Record().caps.capsFlags & OB_CAPS_NO_SNOOPING) != 0)
        throw Failure{kUnsupported, target.object + " does not support IGMP/MLD snooping"};
    const bool on = call.Word("ON-OFF") == "on";
    if (on)
        Check(ORBLINK_EnableIgmpSnooping(target.device), target.object,
              "ORBLINK_EnableIgmpSnooping");
    else
        Check(ORBLINK_DisableIgmpSnooping(target.device), target.object,
              "ORBLINK_DisableIgmpSnooping");
    return Change(target.object, "igmp", on, target.Enabled());
}

Model SetMtu(Call& call)
{
    const SwitchTarget target(call);
    const auto mtu = call.As<uint16_t>("BYTES");
    RequireOffered("mtu", mtu, target.Record(), target.object);
    Check(ORBLINK_SetMtuSize(target.device, mtu), target.object, "ORBLINK_SetMtuSize");
    return Change(target.object, "mtu", mtu, true);
}

Model SetAging(Call& call)
{
    const SwitchTarget target(call);
    const uint32_t step = *ParseValue("aging", call.Word("STEP"));
    Check(ORBLINK_SetMacAging(target.device, static_cast<int>(step)), target.object,
          "ORBLINK_SetMacAging");
    return Change(target.object, "aging", ValueModel("aging", step, target.Record()),
                  target.Enabled());
}

Model ShowLed(Call& call)
{
    const auto region = ReadSwitches();
    Model model;
    model["switches"] = Model::array();
    for (const unsigned device : SwitchesOf(call, region)) {
        const auto& record = region.device[device];
        uint8_t mode = record.config.ledMode;
        Check(ORBLINK_GetLEDConfig(static_cast<uint8_t>(device), &mode), SwitchObject(device),
              "ORBLINK_GetLEDConfig");
        Model entry;
        entry["switch"] = device;
        entry["led"] = ValueModel("led", record.config.ledMode, record);
        entry["led_on_chip"] = IsEnabled(record) ? ValueModel("led", mode, record) : Model();
        model["switches"].push_back(std::move(entry));
    }
    return model;
}

Model SetLed(Call& call)
{
    const SwitchTarget target(call);
    const uint32_t mode = *ParseValue("led", call.Word("LED-MODE"));
    RequireOffered("led", mode, target.Record(), target.object);
    Check(ORBLINK_SetLEDConfig(target.device, static_cast<uint8_t>(mode)), target.object,
          "ORBLINK_SetLEDConfig");
    return Change(target.object, "led", ValueModel("led", mode, target.Record()), target.Enabled());
}

constexpr const char* kThresholds[] = {"GREEN-MIN",  "GREEN-MAX", "YELLOW-MIN",
                                       "YELLOW-MAX", "RED-MIN",   "RED-MAX"};

Model Thresholds(const Call& call, const SwitchTarget& target)
{
    Model values = Model::array();
    for (const char* name : kThresholds) {
        const auto threshold = call.As<uint16_t>(name);
        RequireOffered("threshold", threshold, target.Record(), target.object);
        values.push_back(threshold);
    }
    return values;
}

Model SetQueueWred(Call& call)
{
    const SwitchTarget target(call);
    const Model t = Thresholds(call, target);
    RequireOffered("queue", call.As<uint32_t>("QUEUE"), target.Record(), target.object);
    Check(ORBLINK_SetQWred(target.device, call.As<uint8_t>("QUEUE"), t[0], t[1], t[2], t[3], t[4],
                           t[5]),
          target.object, "ORBLINK_SetQWred");
    return Change(target.object, "wred of queue " + call.Word("QUEUE"), t, true);
}

Model SetGlobalWred(Call& call)
{
    const SwitchTarget target(call);
    const Model t = Thresholds(call, target);
    RequireOffered("global_wred_enable", call.As<uint32_t>("ENABLE"), target.Record(),
                   target.object);
    RequireOffered("weight", call.As<uint32_t>("WEIGHT"), target.Record(), target.object);
    RequireOffered("max_p", call.As<uint32_t>("MAX-P"), target.Record(), target.object);
    Model value =
        Model::array({call.Number("ENABLE"), call.Number("WEIGHT"), call.Number("MAX-P")});
    value.insert(value.end(), t.begin(), t.end());
    Check(ORBLINK_SetGlobWred(target.device, call.As<uint8_t>("ENABLE"), call.As<uint8_t>("WEIGHT"),
                              call.As<uint8_t>("MAX-P"), t[0], t[1], t[2], t[3], t[4], t[5]),
          target.object, "ORBLINK_SetGlobWred");
    return Change(target.object, "global wred", value, true);
}

Model SetReservation(Call& call)
{
    const SwitchTarget target(call);
    const auto buffers = call.As<uint16_t>("BUFFERS");
    RequireOffered("queue", call.As<uint32_t>("QUEUE"), target.Record(), target.object);
    RequireOffered("reservation", buffers, target.Record(), target.object);
    Check(ORBLINK_SetQRsrv(target.device, call.As<uint8_t>("QUEUE"), buffers), target.object,
          "ORBLINK_SetQRsrv");
    return Change(target.object, "reservation of queue " + call.Word("QUEUE"), buffers, true);
}

Model SetFlowControl(Call& call)
{
    const PortTarget target(call);
    const Model value = Model::array({call.Number("XOFF"), call.Number("XON")});
    RequireOffered("threshold", call.As<uint32_t>("XOFF"), target.Record(), target.object);
    RequireOffered("threshold", call.As<uint32_t>("XON"), target.Record(), target.object);
    Check(ORBLINK_SetPortFc(target.Device(), target.Port(), call.As<uint16_t>("XOFF"),
                            call.As<uint16_t>("XON")),
          target.object, "ORBLINK_SetPortFc");
    return Change(target.object, "flow control", value, true);
}

constexpr Command kFeaturesCommands[] = {
    {"igmp [SWITCH]", "", "IGMP/MLD snooping", "ORBLINK_GetSwitchDevices", ShowIgmp, PrintModel},
    {"igmp SWITCH ON-OFF", "", "switch IGMP/MLD snooping",
     "ORBLINK_EnableIgmpSnooping ORBLINK_DisableIgmpSnooping", SetIgmp, PrintChanges},
    {"mtu [SWITCH]", "", "the longest frame", "ORBLINK_GetSwitchDevices", ShowMtu, PrintModel},
    {"mtu SWITCH BYTES", "", "set the longest frame", "ORBLINK_SetMtuSize", SetMtu, PrintChanges},
    {"led [SWITCH]", "", "the LED mode, configured and on the chip", "ORBLINK_GetLEDConfig",
     ShowLed, PrintModel},
    {"led SWITCH LED-MODE", "", "set the LED mode", "ORBLINK_SetLEDConfig", SetLed, PrintChanges},
    {"aging [SWITCH]", "", "the ageing step of learnt addresses", "ORBLINK_GetSwitchDevices",
     ShowAging, PrintModel},
    {"aging SWITCH STEP", "", "set the ageing of learnt addresses", "ORBLINK_SetMacAging", SetAging,
     PrintChanges},
    {"qos", "", "what the values mean to the HAL of each switch", "", QosUsage, PrintUsage},
    {"qos SWITCH wred QUEUE GREEN-MIN GREEN-MAX YELLOW-MIN YELLOW-MAX RED-MIN RED-MAX", "",
     "early detection of one queue", "ORBLINK_SetQWred", SetQueueWred, PrintChanges},
    {"qos SWITCH global-wred ENABLE WEIGHT MAX-P GREEN-MIN GREEN-MAX YELLOW-MIN YELLOW-MAX "
     "RED-MIN RED-MAX",
     "", "early detection of all queues together", "ORBLINK_SetGlobWred", SetGlobalWred,
     PrintChanges},
    {"qos SWITCH reserve QUEUE BUFFERS", "", "buffers that only one queue may take",
     "ORBLINK_SetQRsrv", SetReservation, PrintChanges},
    {"qos flow-control PORT XOFF XON", "", "flow control thresholds of a port", "ORBLINK_SetPortFc",
     SetFlowControl, PrintChanges},
};

}  // namespace

std::span<const Command> FeatureCommands()
{
    return kFeaturesCommands;
}

}  // namespace ctl

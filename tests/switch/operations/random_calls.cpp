#include "tests/switch/operations/random_calls.h"

#include <cstdlib>

namespace obtest {
namespace {

// A call whose function and model take the same arguments behind the device.
template <typename Api, typename Expected, typename... Args>
RandomCall Make(const char* name, Api api, Expected expected, Args... args)
{
    return {.text = HalCall(name, args...),
            .api = [=] { return api(0, args...); },
            .model = [=](SwitchModel& model) { return (model.*expected)(args...); }};
}

}  // namespace

unsigned TestSeed()
{
    const char* given = getenv("ORBLINK_TEST_SEED");
    return given != nullptr ? static_cast<unsigned>(strtoul(given, nullptr, 0))
                            : std::random_device{}();
}

int CallSource::Draw(int first, int last)
{
    return std::uniform_int_distribution<int>(first, last)(random_);
}

// Mostly small, so that values come again.
uint32_t CallSource::DrawWord(uint32_t last)
{
    if (!OneIn(4))
        return static_cast<uint32_t>(Draw(0, last < 3 ? static_cast<int>(last) : 3));
    return std::uniform_int_distribution<uint32_t>(0, last)(random_);
}

RandomCall CallSource::Next()
{
    const int kind = Draw(1, 100);
    if (kind <= 30)
        return NextVlanCall();
    if (kind <= 38)
        return NextMapping();
    return kind <= 80 ? NextPortCall() : NextWideCall();
}

RandomCall CallSource::NextVlanCall()
{
    using Model = SwitchModel;
    switch (Draw(0, 6)) {
        case 0:
            return Make("EnableProviderBridgedMode", ORBLINK_EnableProviderBridgedMode,
                        &Model::EnableProviderBridgedMode,
                        OneIn(3) ? Draw(limits_.firstTpid, 0xFFFF) : 0x88A8);
        case 1:
            return Make("DisableProviderBridgedMode", ORBLINK_DisableProviderBridgedMode,
                        &Model::DisableProviderBridgedMode);
        case 2:
            return Make("SetLanPortVlan", ORBLINK_SetLanPortVlan, &Model::SetLanPortVlan, Port(),
                        OneIn(8) ? Draw(0, 1 << 20) : Vlan());
        case 3:
            return Make("SetLanPortPcp", ORBLINK_SetLanPortPcp, &Model::SetLanPortPcp, Port(),
                        Draw(0, 8));
        case 4:
            return Make("SetLanPortEgressTagging", ORBLINK_SetLanPortEgressTagging,
                        &Model::SetLanPortEgressTagging, Port(), DrawWord(limits_.lastTagging));
        default:
            return Make("SetLanPortGroupId", ORBLINK_SetLanPortGroupId, &Model::SetLanPortGroupId,
                        Port(), OneIn(6) ? 0xFFFFFFFFU : DrawWord(limits_.lastGroup), DrawWord(3));
    }
}

RandomCall CallSource::NextMapping()
{
    const int number = Draw(1, limits_.addresses);
    const Mac mac = {2, 0, 0, 0, static_cast<uint8_t>(number << 4), static_cast<uint8_t>(number)};
    const int port = OneIn(4) ? Port() : 1;
    const int mask = OneIn(4) ? Draw(0, limits_.lastMask) : 0xFFF;
    const int vlan = Vlan();
    const int enable = Draw(0, 2);
    return {
        .text = HalCall("MapMactoVlan", port, MacText(mac.data()), mask, vlan, enable),
        .api = [=] { return ORBLINK_MapMactoVlan(0, port, mac.data(), mask, vlan, enable); },
        .model =
            [=](SwitchModel& model) { return model.MapMactoVlan(port, mac, mask, vlan, enable); }};
}

RandomCall CallSource::NextPortCall()
{
    using Model = SwitchModel;
    switch (Draw(0, 11)) {
        case 0:
            return Make("ResetPortCounters", ORBLINK_ResetPortCounters, &Model::ResetPortCounters,
                        Port());
        case 1:
        case 2:
            return Make("SetPhyPortSpeedDuplex", ORBLINK_SetPhyPortSpeedDuplex,
                        &Model::SetPhyPortSpeedDuplex, Port(),
                        static_cast<uint32_t>(Draw(static_cast<int>(limits_.firstSpeed),
                                                   static_cast<int>(limits_.lastSpeed))),
                        static_cast<uint32_t>(Draw(0, 1)));
        case 3:
            return Make("EnablePort", ORBLINK_EnablePort, &Model::EnablePort, Port());
        case 4:
            return Make("DisablePort", ORBLINK_DisablePort, &Model::DisablePort, Port());
        case 5:
            return Make("EnableRgmiiDelay", ORBLINK_EnableRgmiiDelay, &Model::EnableRgmiiDelay,
                        Draw(6, 9));
        case 6:
            return Make("DisableRgmiiDelay", ORBLINK_DisableRgmiiDelay, &Model::DisableRgmiiDelay,
                        Draw(6, 9));
        case 7:
            return Make("EnablePhyPortEee", ORBLINK_EnablePhyPortEee, &Model::EnablePhyPortEee,
                        Port());
        case 8:
            return Make("DisablePhyPortEee", ORBLINK_DisablePhyPortEee, &Model::DisablePhyPortEee,
                        Port());
        case 9:
            return Make("SetPortMirror", ORBLINK_SetPortMirror, &Model::SetPortMirror, Port(),
                        OneIn(3) ? 255 : Port());
        case 10:
            return Make("EnablePhyPortDvt", ORBLINK_EnablePhyPortDvt, &Model::EnablePhyPortDvt,
                        Port(), Draw(0, 5));
        default:
            return Make("DisablePhyPortDvt", ORBLINK_DisablePhyPortDvt, &Model::DisablePhyPortDvt,
                        Port());
    }
}

RandomCall CallSource::NextWideCall()
{
    using Model = SwitchModel;
    switch (Draw(0, 9)) {
        case 0:
            return Make("EnableIgmpSnooping", ORBLINK_EnableIgmpSnooping,
                        &Model::EnableIgmpSnooping);
        case 1:
            return Make("DisableIgmpSnooping", ORBLINK_DisableIgmpSnooping,
                        &Model::DisableIgmpSnooping);
        case 2:
            return Make("SetMacAging", ORBLINK_SetMacAging, &Model::SetMacAging, Draw(0, 6));
        case 3:
            return Make("SetMtuSize", ORBLINK_SetMtuSize, &Model::SetMtuSize,
                        OneIn(3) ? 2000 : Draw(limits_.firstMtu, limits_.lastMtu));
        case 4:
            return Make("SetLEDConfig", ORBLINK_SetLEDConfig, &Model::SetLEDConfig,
                        Draw(0, limits_.lastLedMode));
        case 5:
            return Make("SetQRsrv", ORBLINK_SetQRsrv, &Model::SetQRsrv, Draw(0, 3),
                        Draw(0, limits_.lastBuffers));
        case 6:
            return Make("SetServiceStatus", ORBLINK_SetOrbLinkServiceStatus,
                        &Model::SetServiceStatus, DrawWord(0xFFFFFFFFU));
        case 7:
            if (OneIn(3))
                return Make("ResetEnable", ORBLINK_ResetEnable, &Model::ResetEnable);
            [[fallthrough]];
        default: {
            const int setDefault = OneIn(8) ? Draw(1, 2) : 0;
            return {.text = HalCall("ResetDisable", setDefault),
                    .api = [=] { return ORBLINK_ResetDisable(0, setDefault, nullptr, 0); },
                    .model = [=](SwitchModel& model) { return model.ResetDisable(setDefault); }};
        }
    }
}

}  // namespace obtest

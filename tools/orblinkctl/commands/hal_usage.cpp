#include "tools/orblinkctl/commands/hal_usage.h"

#include <algorithm>

#include "hals/vswitch/vswitch_ioctl.h"
#include "switch/orblink_hal.h"
#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/library.h"
#include "tools/orblinkctl/facts/counters.h"
#include "tools/orblinkctl/facts/switch_model.h"
#include "tools/orblinkctl/line/help.h"
#include "tools/orblinkctl/output/text.h"

namespace ctl {

namespace {

struct Meaning {
    std::string word;
    const char* meaning;
};

std::vector<Meaning> QosOfVs08()
{
    return {
        {"QUEUE", "0 to 63: 8 x port + queue of the port"},
        {"GREEN-MIN ... RED-MAX", "0 to 4095 buffers of 256 octets, minimum not above maximum"},
        {"ENABLE", "0 off, 1 on"},
        {"WEIGHT", "0 to 15, of the average"},
        {"MAX-P", "0 to 100 percent, the greatest discard probability"},
        {"BUFFERS", "0 to 63"},
        {"XOFF", "0 to 4095 buffers; XOFF 0 and XON 0: no flow control"},
        {"XON", "0 to 4095 buffers, not above XOFF"},
    };
}

std::vector<Meaning> IoctlOfVs08()
{
    return {
        {std::to_string(OBHAL_IOCTL_RX_RESET), "restarts the receive path; no PARAMETER"},
        {std::to_string(OBHAL_IOCTL_PRE_RESET),
         "arguments of the next reset; PARAMETER: lane, pre-reset argument"},
        {std::to_string(VSWITCH_IOCTL_FLUSH_MAC), "forgets every learnt address; no PARAMETER"},
        {std::to_string(VSWITCH_IOCTL_ADD_STATIC_MAC),
         "adds a static address; PARAMETER: address, VLAN (2 bytes, low one first), port, 00"},
        {std::to_string(VSWITCH_IOCTL_DELETE_MAC),
         "deletes an address, learnt or static; PARAMETER likewise, the port has no effect"},
    };
}

Model Listed(const std::vector<Meaning>& meanings)
{
    Model list = Model::array();
    for (const auto& [word, meaning] : meanings) {
        Model entry;
        entry["word"] = word;
        entry["meaning"] = meaning;
        list.push_back(std::move(entry));
    }
    return list;
}

// Null for a HAL that gives the values a meaning which is not known here.
Model MeaningsOnBoard(const std::vector<Meaning>& ofVs08)
{
    if (!IsInitialised(Family::kSwitch))
        return nullptr;
    const auto region = ReadSwitches();
    Model switches = Model::array();
    for (unsigned device = 0; device < region.NumOfSwitches; ++device) {
        const auto& record = region.device[device];
        const Model board = StoredSwitch(record, device)["board"];
        Model entry;
        entry["switch"] = device;
        entry["hal"] = board.is_null() ? Model() : board["hal"];
        entry["values"] = IsVs08(record) ? Listed(ofVs08) : Model();
        switches.push_back(std::move(entry));
    }
    return switches;
}

Model Usage(const char* word, const std::vector<Meaning>& ofVs08)
{
    Model model = CommandModel({word});
    // The word alone is what asked.
    model["commands"].erase(0);
    model["switches"] = MeaningsOnBoard(ofVs08);
    return model;
}

void PrintMeanings(const Model& entry, std::string& out)
{
    const bool known = !entry["values"].is_null();
    Line(out, {"switch ", Text(entry["switch"]), ", HAL ", Text(entry["hal"]),
               known ? ":" : ": the meaning of the values is not known"});
    for (const auto& value : entry["values"]) {
        std::string word = Text(value["word"]);
        word.resize(std::max<size_t>(word.size(), 21), ' ');
        Line(out, {"    ", word, "  ", Text(value["meaning"])});
    }
}

}  // namespace

Model QosUsage(Call&)
{
    return Usage("qos", QosOfVs08());
}

Model IoctlUsage(Call&)
{
    return Usage("ioctl", IoctlOfVs08());
}

void PrintUsage(const Model& model, std::string& out)
{
    for (const auto& command : model["commands"])
        Line(out, {"orblinkctl ", Text(command["synopsis"]), "\n    ", Text(command["summary"])});
    for (const auto& entry : model["switches"])
        PrintMeanings(entry, out);
}

}  // namespace ctl

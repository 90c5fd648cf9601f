#include "tools/orblinkctl/facts/mii_decode.h"

#include <iterator>
#include <vector>

#include "tools/orblinkctl/access/json.h"
#include "tools/orblinkctl/access/words.h"

namespace ctl {

namespace {

struct Register {
    int mmd;  // -1 = clause 22
    uint16_t number;
    const char* name;
    std::vector<BitField> fields;
};

const std::vector<Register>& StandardRegisters()
{
    static const std::vector<Register> registers = {
        {-1,
         0,
         "control",
         {{15, 15, "reset"},
          {14, 14, "loopback"},
          {13, 13, "speed selection low"},
          {12, 12, "auto-negotiation enable"},
          {11, 11, "power down"},
          {10, 10, "isolate"},
          {9, 9, "restart auto-negotiation"},
          {8, 8, "full duplex"},
          {7, 7, "collision test"},
          {6, 6, "speed selection high"},
          {5, 5, "unidirectional enable"}}},
        {-1,
         1,
         "status",
         {{15, 15, "100BASE-T4"},
          {14, 14, "100BASE-X full duplex"},
          {13, 13, "100BASE-X half duplex"},
          {12, 12, "10 Mb/s full duplex"},
          {11, 11, "10 Mb/s half duplex"},
          {10, 10, "100BASE-T2 full duplex"},
          {9, 9, "100BASE-T2 half duplex"},
          {8, 8, "extended status"},
          {7, 7, "unidirectional ability"},
          {6, 6, "preamble suppression"},
          {5, 5, "auto-negotiation complete"},
          {4, 4, "remote fault"},
          {3, 3, "auto-negotiation ability"},
          {2, 2, "link up"},
          {1, 1, "jabber detect"},
          {0, 0, "extended registers"}}},
        {-1, 2, "identifier 1", {{15, 0, "OUI bits 3 to 18"}}},
        {-1,
         3,
         "identifier 2",
         {{15, 10, "OUI bits 19 to 24"}, {9, 4, "model"}, {3, 0, "revision"}}},
        {-1,
         4,
         "auto-negotiation advertisement",
         {{15, 15, "next page"},
          {13, 13, "remote fault"},
          {12, 12, "extended next page"},
          {11, 11, "asymmetric pause"},
          {10, 10, "pause"},
          {9, 9, "100BASE-T4"},
          {8, 8, "100BASE-TX full duplex"},
          {7, 7, "100BASE-TX"},
          {6, 6, "10BASE-T full duplex"},
          {5, 5, "10BASE-T"},
          {4, 0, "selector"}}},
        {-1,
         5,
         "link partner ability",
         {{15, 15, "next page"},
          {14, 14, "acknowledge"},
          {13, 13, "remote fault"},
          {12, 12, "extended next page"},
          {11, 11, "asymmetric pause"},
          {10, 10, "pause"},
          {9, 9, "100BASE-T4"},
          {8, 8, "100BASE-TX full duplex"},
          {7, 7, "100BASE-TX"},
          {6, 6, "10BASE-T full duplex"},
          {5, 5, "10BASE-T"},
          {4, 0, "selector"}}},
        {-1,
         6,
         "auto-negotiation expansion",
         {{4, 4, "parallel detection fault"},
          {3, 3, "link partner next page able"},
          {2, 2, "next page able"},
          {1, 1, "page received"},
          {0, 0, "link partner auto-negotiation able"}}},
        {-1,
         9,
         "1000BASE-T control",
         {{15, 13, "test mode"},
          {12, 12, "manual master/slave"},
          {11, 11, "master"},
          {10, 10, "multiport device"},
          {9, 9, "1000BASE-T full duplex"},
          {8, 8, "1000BASE-T half duplex"}}},
        {-1,
         10,
         "1000BASE-T status",
         {{15, 15, "master/slave fault"},
          {14, 14, "master"},
          {13, 13, "local receiver ok"},
          {12, 12, "remote receiver ok"},
          {11, 11, "link partner 1000BASE-T full duplex"},
          {10, 10, "link partner 1000BASE-T half duplex"},
          {7, 0, "idle error count"}}},
        {-1,
         15,
         "extended status",
         {{15, 15, "1000BASE-X full duplex"},
          {14, 14, "1000BASE-X half duplex"},
          {13, 13, "1000BASE-T full duplex"},
          {12, 12, "1000BASE-T half duplex"}}},
        {7,
         32,
         "MultiGBASE-T control 1",
         {{15, 15, "manual master/slave"},
          {14, 14, "master"},
          {13, 13, "multiport device"},
          {12, 12, "10GBASE-T"},
          {8, 8, "5GBASE-T"},
          {7, 7, "2.5GBASE-T"}}},
        {7,
         33,
         "MultiGBASE-T status 1",
         {{15, 15, "master/slave fault"},
          {14, 14, "master"},
          {13, 13, "local receiver ok"},
          {12, 12, "remote receiver ok"},
          {11, 11, "link partner 10GBASE-T"},
          {6, 6, "link partner 5GBASE-T"},
          {5, 5, "link partner 2.5GBASE-T"}}},
        {7,
         60,
         "EEE advertisement 1",
         {{3, 3, "10GBASE-T EEE"}, {2, 2, "1000BASE-T EEE"}, {1, 1, "100BASE-TX EEE"}}},
        {7,
         61,
         "EEE link partner ability 1",
         {{3, 3, "10GBASE-T EEE"}, {2, 2, "1000BASE-T EEE"}, {1, 1, "100BASE-TX EEE"}}},
    };
    return registers;
}

const Register* Find(int mmd, uint32_t number)
{
    for (const auto& entry : StandardRegisters())
        if (entry.mmd == mmd && entry.number == number)
            return &entry;
    return nullptr;
}

std::string BitsWord(const BitField& field)
{
    return field.high == field.low ? std::to_string(field.low)
                                   : std::to_string(field.high) + ":" + std::to_string(field.low);
}

}  // namespace

void Describe(Model& entry, const std::string& name, std::span<const BitField> fields)
{
    entry["name"] = name.empty() ? Model() : Model(name);
    entry["bits"] = Model::array();
    if (entry["value"].is_null())
        return;
    const auto value = entry["value"].get<unsigned>();
    for (const auto& field : fields) {
        if (field.name == nullptr)
            continue;
        const unsigned mask = (1U << (field.high - field.low + 1)) - 1;
        Model bits;
        bits["bits"] = BitsWord(field);
        bits["name"] = field.name;
        bits["value"] = value >> field.low & mask;
        entry["bits"].push_back(std::move(bits));
    }
}

void DecodeRegisters(Model& model, std::optional<unsigned> mmd)
{
    for (auto& entry : model["registers"]) {
        const Register* known =
            Find(mmd ? static_cast<int>(*mmd) : -1, entry["register"].get<uint32_t>());
        if (known == nullptr)
            Describe(entry, "", {});
        else
            Describe(entry, known->name, known->fields);
    }
}

}  // namespace ctl

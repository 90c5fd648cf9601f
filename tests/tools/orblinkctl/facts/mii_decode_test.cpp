// Every bit of the standard PHY registers that is shown.
#include "tools/orblinkctl/facts/mii_decode.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

#include "tools/orblinkctl/access/json.h"

namespace ctl {
namespace {

// What a register with this value says, by the name of each field.
std::map<std::string, Model> Decoded(std::optional<unsigned> mmd, unsigned number, unsigned value)
{
    Model model;
    Model entry;
    entry["object"] = "PHY 0";
    entry["register"] = number;
    entry["value"] = value;
    model["registers"] = Model::array({entry});
    DecodeRegisters(model, mmd);
    std::map<std::string, Model> fields;
    for (const auto& field : model["registers"][0].value("bits", Model::array()))
        fields[field["name"].get<std::string>()] = field["value"];
    return fields;
}

// mmd -1: clause 22.
struct Bit {
    int mmd;
    unsigned number;
    int bit;
    const char* name;
};

constexpr Bit kBits[] = {
    {-1, 0, 15, "reset"},
    {-1, 0, 14, "loopback"},
    {-1, 0, 13, "speed selection low"},
    {-1, 0, 12, "auto-negotiation enable"},
    {-1, 0, 11, "power down"},
    {-1, 0, 10, "isolate"},
    {-1, 0, 9, "restart auto-negotiation"},
    {-1, 0, 8, "full duplex"},
    {-1, 0, 7, "collision test"},
    {-1, 0, 6, "speed selection high"},
    {-1, 0, 5, "unidirectional enable"},
    {-1, 1, 15, "100BASE-T4"},
    {-1, 1, 14, "100BASE-X full duplex"},
    {-1, 1, 13, "100BASE-X half duplex"},
    {-1, 1, 12, "10 Mb/s full duplex"},
    {-1, 1, 11, "10 Mb/s half duplex"},
    {-1, 1, 10, "100BASE-T2 full duplex"},
    {-1, 1, 9, "100BASE-T2 half duplex"},
    {-1, 1, 8, "extended status"},
    {-1, 1, 7, "unidirectional ability"},
    {-1, 1, 6, "preamble suppression"},
    {-1, 1, 5, "auto-negotiation complete"},
    {-1, 1, 4, "remote fault"},
    {-1, 1, 3, "auto-negotiation ability"},
    {-1, 1, 2, "link up"},
    {-1, 1, 1, "jabber detect"},
    {-1, 1, 0, "extended registers"},
    {-1, 4, 15, "next page"},
    {-1, 4, 13, "remote fault"},
    {-1, 4, 12, "extended next page"},
    {-1, 4, 11, "asymmetric pause"},
    {-1, 4, 10, "pause"},
    {-1, 4, 9, "100BASE-T4"},
    {-1, 4, 8, "100BASE-TX full duplex"},
    {-1, 4, 7, "100BASE-TX"},
    {-1, 4, 6, "10BASE-T full duplex"},
    {-1, 4, 5, "10BASE-T"},
    {-1, 6, 4, "parallel detection fault"},
    {-1, 6, 3, "link partner next page able"},
    {-1, 6, 2, "next page able"},
    {-1, 6, 1, "page received"},
    {-1, 6, 0, "link partner auto-negotiation able"},
    {-1, 9, 12, "manual master/slave"},
    {-1, 9, 11, "master"},
    {-1, 9, 10, "multiport device"},
    {-1, 9, 9, "1000BASE-T full duplex"},
    {-1, 9, 8, "1000BASE-T half duplex"},
    {-1, 10, 15, "master/slave fault"},
    {-1, 10, 14, "master"},
    {-1, 10, 13, "local receiver ok"},
    {-1, 10, 12, "remote receiver ok"},
    {-1, 10, 11, "link partner 1000BASE-T full duplex"},
    {-1, 10, 10, "link partner 1000BASE-T half duplex"},
    {-1, 15, 15, "1000BASE-X full duplex"},
    {-1, 15, 14, "1000BASE-X half duplex"},
    {-1, 15, 13, "1000BASE-T full duplex"},
    {-1, 15, 12, "1000BASE-T half duplex"},
    {7, 32, 15, "manual master/slave"},
    {7, 32, 14, "master"},
    {7, 32, 13, "multiport device"},
    {7, 32, 12, "10GBASE-T"},
    {7, 32, 8, "5GBASE-T"},
    {7, 32, 7, "2.5GBASE-T"},
    {7, 33, 15, "master/slave fault"},
    {7, 33, 14, "master"},
    {7, 33, 13, "local receiver ok"},
    {7, 33, 12, "remote receiver ok"},
    {7, 33, 11, "link partner 10GBASE-T"},
    {7, 33, 6, "link partner 5GBASE-T"},
    {7, 33, 5, "link partner 2.5GBASE-T"},
    {7, 60, 3, "10GBASE-T EEE"},
    {7, 60, 2, "1000BASE-T EEE"},
    {7, 60, 1, "100BASE-TX EEE"},
    {7, 61, 3, "10GBASE-T EEE"},
    {7, 61, 2, "1000BASE-T EEE"},
    {7, 61, 1, "100BASE-TX EEE"},
    {-1, 5, 15, "next page"},
    {-1, 5, 14, "acknowledge"},
    {-1, 5, 13, "remote fault"},
    {-1, 5, 12, "extended next page"},
    {-1, 5, 11, "asymmetric pause"},
    {-1, 5, 10, "pause"},
    {-1, 5, 9, "100BASE-T4"},
    {-1, 5, 8, "100BASE-TX full duplex"},
    {-1, 5, 7, "100BASE-TX"},
    {-1, 5, 6, "10BASE-T full duplex"},
    {-1, 5, 5, "10BASE-T"},
};

TEST(MiiDecode, EachBitIsTheFieldThatTheStandardNames)
{
    for (const auto& bit : kBits) {
        const auto mmd = bit.mmd < 0 ? std::nullopt : std::optional<unsigned>(bit.mmd);
        const auto alone = Decoded(mmd, bit.number, 1U << bit.bit);
        const auto others = Decoded(mmd, bit.number, 0xFFFF ^ 1U << bit.bit);
        ASSERT_EQ(alone.count(bit.name), 1U) << bit.number << "." << bit.bit;
        for (const auto& [name, value] : alone)
            EXPECT_EQ(value != 0, name == bit.name)
                << "bit " << bit.number << "." << bit.bit << " at " << name;
        for (const auto& [name, value] : others)
            EXPECT_EQ(value == 0, name == bit.name)
                << "all but bit " << bit.number << "." << bit.bit << " at " << name;
    }
}

TEST(MiiDecode, FieldsOfSeveralBitsAreNumbers)
{
    EXPECT_EQ(Decoded(std::nullopt, 3, 0xABCD).at("OUI bits 19 to 24"), 0xABCD >> 10);
    EXPECT_EQ(Decoded(std::nullopt, 3, 0xABCD).at("model"), 0xABCD >> 4 & 0x3F);
    EXPECT_EQ(Decoded(std::nullopt, 3, 0xABCD).at("revision"), 0xD);
    EXPECT_EQ(Decoded(std::nullopt, 4, 0x0001).at("selector"), 1);
    EXPECT_EQ(Decoded(std::nullopt, 9, 0x8000).at("test mode"), 4);
    EXPECT_EQ(Decoded(std::nullopt, 10, 0x00A5).at("idle error count"), 0xA5);
}

// In every register that is known, no bit belongs to two fields, and each field moves with its bits.
TEST(MiiDecode, NoBitOfAnyRegisterBelongsToTwoFields)
{
    unsigned registers = 0;
    for (const std::optional<unsigned> mmd :
         {std::optional<unsigned>(), std::optional(1U), std::optional(3U), std::optional(7U)}) {
        for (unsigned number = 0; number < 256; ++number) {
            const auto none = Decoded(mmd, number, 0);
            registers += none.empty() ? 0 : 1;
            for (int bit = 0; bit < 16 && !none.empty(); ++bit) {
                int moved = 0;
                for (const auto& [name, value] : Decoded(mmd, number, 1U << bit))
                    moved += value != none.at(name) ? 1 : 0;
                EXPECT_LE(moved, 1) << "register " << number << " bit " << bit;
            }
        }
    }
    EXPECT_GE(registers, 12U);
}

}  // namespace
}  // namespace ctl

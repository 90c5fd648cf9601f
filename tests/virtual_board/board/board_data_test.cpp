#include "virtual_board/board/board_data.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace vboard {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Part(const Bytes& bytes, size_t offset, size_t size)
{
    auto from = bytes.begin() + static_cast<std::ptrdiff_t>(offset);
    return {from, from + static_cast<std::ptrdiff_t>(size)};
}

BoardDescription Board()
{
    BoardDescription spec;
    SwitchDescription sw;
    sw.wiring = {"lib.so", "vswitch", 1, 0x01020304, 18, 3, 16, 5, 6};
    sw.internalPort = 0x0A0B0C0D;
    sw.preResetArg = 0x11223344;
    sw.reservedWord = 0x55667788;
    spec.switches = {SwitchDescription{}, sw};
    PhyDescription phy;
    phy.wiring = {"phy.so", "ieee8023", 1, 2, 0x00000013, 3, 4, 5, 6};
    spec.phys = {phy};
    for (uint8_t i = 0; i < 5; ++i)
        spec.macAddresses[i] = {i, 1, 2, 3, 4, 5};
    spec.isolation = true;
    spec.ulp = true;
    return spec;
}

TEST(BoardData, SwitchMessage)
{
    Bytes message = BoardDataMessage(Board(), Family::kSwitch);
    ASSERT_EQ(message.size(), 184U);
    EXPECT_EQ(Part(message, 0, 8), (Bytes{0, 0, 0, 10, 0, 0, 0, 176}));
    EXPECT_EQ(message[8 + 136], 2);
    EXPECT_EQ(Part(message, 8 + 140, 4), (Bytes{0, 0, 0, 1}));
    for (uint8_t i = 0; i < 5; ++i)
        EXPECT_EQ(Part(message, 8U + 144U + 6U * i, 6), (Bytes{i, 1, 2, 3, 4, 5}));
    EXPECT_EQ(Part(message, 8 + 174, 2), (Bytes{0, 0}));
}

TEST(BoardData, SwitchEntry)
{
    Bytes entry = Part(BoardDataMessage(Board(), Family::kSwitch), 8 + 68, 68);
    EXPECT_EQ(Part(entry, 0, 7), (Bytes{'l', 'i', 'b', '.', 's', 'o', 0}));
    EXPECT_TRUE(std::ranges::all_of(Part(entry, 7, 25), [](uint8_t byte) { return byte == 0; }));
    EXPECT_EQ(Part(entry, 32, 36),
              (Bytes{0, 0, 0, 1, 1, 2, 3, 4, 0, 0,    0,    18,   0x0A, 0x0B, 0x0C, 0x0D, 16,  3, 0,
                     0, 0, 0, 0, 5, 0, 0, 0, 6, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88}));
}

TEST(BoardData, PhyMessage)
{
    Bytes message = BoardDataMessage(Board(), Family::kPhy);
    ASSERT_EQ(message.size(), 128U);
    EXPECT_EQ(Part(message, 0, 8), (Bytes{0, 0, 0, 11, 0, 0, 0, 120}));
    EXPECT_EQ(message[8 + 112], 1);
    EXPECT_EQ(Part(message, 8 + 116, 4), (Bytes{0, 0, 0, 1}));
    EXPECT_EQ(Part(message, 8, 7), (Bytes{'p', 'h', 'y', '.', 's', 'o', 0}));
    EXPECT_EQ(Part(message, 8 + 32, 24),
              (Bytes{0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 0x13, 3, 4, 0, 0, 0, 0, 0, 5, 0, 0, 0, 6}));
}

TEST(BoardData, ABoardWithoutAnythingIsZeroBehindTheHeader)
{
    for (auto [family, size] : {std::pair{Family::kSwitch, 184U}, {Family::kPhy, 128U}}) {
        Bytes message = BoardDataMessage(BoardDescription{}, family);
        ASSERT_EQ(message.size(), size);
        EXPECT_EQ(Part(message, 8, size - 8), Bytes(size - 8));
    }
}

}  // namespace
}  // namespace vboard

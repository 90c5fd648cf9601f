#include "tests/board/board_fixture.h"

#include <algorithm>
#include <numeric>

#include "tests/support/interpose.h"

namespace obtest {
namespace {

constexpr size_t kHeaderSize = 8;

void PutWord(std::vector<uint8_t>& bytes, size_t at, uint32_t value)
{
    for (size_t i = 0; i < 4; ++i)
        bytes[at + i] = static_cast<uint8_t>(value >> (24 - 8 * i));
}

}  // namespace

BsdMessage::BsdMessage(uint32_t type, uint32_t payloadLength, size_t payloadBytes)
    : bytes(kHeaderSize + payloadBytes)
{
    Header(type, payloadLength);
}

BsdMessage& BsdMessage::Word(size_t offset, uint32_t value)
{
    PutWord(bytes, kHeaderSize + offset, value);
    return *this;
}

BsdMessage& BsdMessage::Byte(size_t offset, int value)
{
    bytes.at(kHeaderSize + offset) = static_cast<uint8_t>(value);
    return *this;
}

BsdMessage& BsdMessage::Text(size_t offset, const std::string& text)
{
    std::copy(text.begin(), text.end(), bytes.begin() + static_cast<long>(kHeaderSize + offset));
    return *this;
}

BsdMessage& BsdMessage::Header(uint32_t type, uint32_t payloadLength)
{
    PutWord(bytes, 0, type);
    PutWord(bytes, 4, payloadLength);
    return *this;
}

BsdMessage& BsdMessage::Numbered()
{
    std::iota(bytes.begin() + kHeaderSize, bytes.end(), uint8_t{1});
    return *this;
}

BsdMessage& BsdMessage::Mac(int index, std::vector<int> mac)
{
    for (size_t i = 0; i < mac.size(); ++i)
        Byte(144 + 6 * static_cast<size_t>(index) + i, mac[i]);
    return *this;
}

BoardTest::BoardTest()
{
    platform = ScriptedPlatform();
}

BoardTest::~BoardTest()
{
    localSource = nullptr;
    platform = ScriptedPlatform();
    SwitchBsd bsd;
    SwitchVendorRecord vendor[OB_MAX_DEVICES];
    OBOS_InitHwSpecificData(&bsd, vendor);
}

}  // namespace obtest

using namespace obtest;

// The library's own hook unless a test plays one.
extern "C" __attribute__((visibility("default"))) int OBOS_InitBsdFromIni(SwitchBsd* Bsd)
{
    if (localSource == nullptr)
        return Real<int(SwitchBsd*)>("OBOS_InitBsdFromIni")(Bsd);
    Platform().transcript.Add("call OBOS_InitBsdFromIni");
    return localSource(Bsd);
}

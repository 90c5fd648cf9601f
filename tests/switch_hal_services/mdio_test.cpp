#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/switch_fixture.h"

using namespace obtest;

namespace {

constexpr unsigned long kRead = 0x8948;
constexpr unsigned long kWrite = 0x8949;

class Mdio : public SwitchTest {
protected:
    Mdio()
    {
        SwitchBoard::Entry second;
        second.mdioAddr = 0xFE;
        second.mdioBus = 0;
        Init(SwitchBoard::With({{}, second}));
        platform.mii = [this](unsigned long code, MiiWords& words) {
            request = code;
            asked = words;
            words.valueOut = 0xBEEF;
            words.valueIn = 0x1111;
            return answers;
        };
        lowestFree = LowestFreeDescriptor();
    }

    // Every path closes the socket that it opened.
    void TearDown() override { EXPECT_EQ(LowestFreeDescriptor(), lowestFree); }

    static int LowestFreeDescriptor()
    {
        const int fd = open("/dev/null", O_RDONLY);
        close(fd);
        // cppcheck-suppress deallocret ; the number is what is asked for
        return fd;
    }

    void ExpectAsked(unsigned long code, uint16_t phyId, uint16_t reg, uint16_t value, uint16_t bus)
    {
        EXPECT_EQ(request, code);
        EXPECT_EQ(asked.phyId, phyId);
        EXPECT_EQ(asked.reg, reg);
        EXPECT_EQ(asked.valueIn, value);
        EXPECT_EQ(asked.bus, bus);
    }

    bool answers = true;
    unsigned long request = 0;
    MiiWords asked = {};
    uint16_t value = 77;
    int lowestFree = -1;
};

TEST_F(Mdio, ReadAsksTheInterfaceAndHandsOutTheValue)
{
    EXPECT_EQ(OBHAL_ReadMdio(0, 0x1D, &value), 0);
    EXPECT_TRANSCRIPT("log9 OBHAL_ReadMdio:# ", "sys socket(2, 2, 0)",
                      "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x10, reg=29, bus=1)", "sys close()");
    ExpectAsked(kRead, 16, 0x1D, 0, 1);
    EXPECT_EQ(value, 0xBEEF);
}

TEST_F(Mdio, WriteSendsTheValueAndReadsNothingBack)
{
    EXPECT_EQ(OBHAL_WriteMdio(0, 0x1E, 0xA55A), 0);
    EXPECT_TRANSCRIPT("log9 OBHAL_WriteMdio:# ", "sys socket(2, 2, 0)",
                      "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x10, reg=30, bus=1, 0xA55A)",
                      "sys close()");
    ExpectAsked(kWrite, 16, 0x1E, 0xA55A, 1);
}

TEST_F(Mdio, TheSecondSwitchHasItsOwnBusAndAddressOnTheSameInterface)
{
    EXPECT_EQ(OBHAL_ReadMdio(1, 0, &value), 0);
    ExpectAsked(kRead, 0xFE, 0, 0, 0);
    EXPECT_EQ(OBHAL_WriteMdio(1, 0, 1), 0);
    ExpectAsked(kWrite, 0xFE, 0, 1, 0);
    EXPECT_FALSE(transcript.Has("nsgmii1"));
}

TEST_F(Mdio, RegistersAreTheLow16Bits)
{
    EXPECT_EQ(OBHAL_ReadMdio(0, 0x12345, &value), 0);
    ExpectAsked(kRead, 16, 0x2345, 0, 1);
    EXPECT_EQ(OBHAL_WriteMdio(0, -1, 0xFFFF), 0);
    ExpectAsked(kWrite, 16, 0xFFFF, 0xFFFF, 1);
}

TEST_F(Mdio, WithoutABusFailsBeforeASocketIsOpened)
{
    Record(0).board.mdioBus = 0xFF;
    Record(0).board.mdioAddr = 0xFF;
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(0, 1, 2), -1);
    EXPECT_TRANSCRIPT(
        "log9 OBHAL_ReadMdio:# ",
        "log1 OBHAL_ReadMdio:# OBHAL_ReadMdio:# Invalid MDIO bus, check board specific data, "
        "DevIdx=0",
        "log9 OBHAL_WriteMdio:# ",
        "log1 OBHAL_WriteMdio:# OBHAL_WriteMdio:# Invalid MDIO bus, check board specific data, "
        "DevIdx=0");
    EXPECT_EQ(value, 77);
}

TEST_F(Mdio, WithoutAnAddressFailsBeforeASocketIsOpened)
{
    Record(1).board.mdioAddr = 0xFF;
    EXPECT_EQ(OBHAL_ReadMdio(1, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(1, 1, 2), -1);
    EXPECT_TRANSCRIPT(
        "log9 OBHAL_ReadMdio:# ",
        "log1 OBHAL_ReadMdio:# Invalid MDIO address, check board specific data, DevIdx=1",
        "log9 OBHAL_WriteMdio:# ",
        "log1 OBHAL_WriteMdio:# Invalid MDIO address, check board specific data, DevIdx=1");
    EXPECT_EQ(value, 77);
}

TEST_F(Mdio, FailsWithoutASocket)
{
    platform.FailEach("socket", EMFILE, 2);
    const std::string rest = " socket failed, errno=" + std::to_string(EMFILE) + ", DevIdx=0";
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(0, 1, 2), -1);
    EXPECT_TRANSCRIPT("log9 OBHAL_ReadMdio:# ", "sys socket(2, 2, 0)",
                      "log1 OBHAL_ReadMdio:#" + rest, "log9 OBHAL_WriteMdio:# ",
                      "sys socket(2, 2, 0)", "log1 OBHAL_WriteMdio:#" + rest);
    EXPECT_EQ(value, 77);
}

TEST_F(Mdio, FailsWhenTheNameCannotBeCopiedAndClosesTheSocket)
{
    platform.FailEach("kova_strncpy_s", 0, 2);
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(0, 1, 2), -1);
    EXPECT_TRANSCRIPT(
        "log9 OBHAL_ReadMdio:# ", "sys socket(2, 2, 0)",
        "log1 OBHAL_ReadMdio:# Runtime-constraint violation error in function kova_strncpy_s",
        "sys close()", "log9 OBHAL_WriteMdio:# ", "sys socket(2, 2, 0)",
        "log1 OBHAL_WriteMdio:# Runtime-constraint violation error in function kova_strncpy_s",
        "sys close()");
    EXPECT_EQ(value, 77);
}

TEST_F(Mdio, FailsWhenTheBusDoesNotAnswerAndClosesTheSocket)
{
    answers = false;
    const std::string rest = " ioctl failed, errno=" + std::to_string(EIO) + ", DevIdx=0";
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(0, 1, 2), -1);
    EXPECT_TRANSCRIPT("log9 OBHAL_ReadMdio:# ", "sys socket(2, 2, 0)",
                      "sys ioctl(SIOCGMIIREG, nsgmii0, phy=0x10, reg=1, bus=1)",
                      "log1 OBHAL_ReadMdio:#" + rest, "sys close()", "log9 OBHAL_WriteMdio:# ",
                      "sys socket(2, 2, 0)",
                      "sys ioctl(SIOCSMIIREG, nsgmii0, phy=0x10, reg=1, bus=1, 0x0002)",
                      "log1 OBHAL_WriteMdio:#" + rest, "sys close()");
    EXPECT_EQ(value, 77);
}

TEST_F(Mdio, FailsForADeviceBeyondTheRegionAndReadsIntoNoNullPointer)
{
    EXPECT_EQ(OBHAL_ReadMdio(2, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(255, 1, 2), -1);
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, nullptr), -1);
    EXPECT_EQ(transcript.Log().size(), 3U);
    EXPECT_TRUE(transcript.Only({"sys"}).empty());
    EXPECT_EQ(value, 77);
}

class MdioUnattached : public SwitchTest {};

TEST_F(MdioUnattached, FailsBeforeTheProcessIsAttached)
{
    uint16_t value = 77;
    EXPECT_EQ(OBHAL_ReadMdio(0, 1, &value), -1);
    EXPECT_EQ(OBHAL_WriteMdio(0, 1, 2), -1);
    EXPECT_TRUE(transcript.Only({"sys"}).empty());
    EXPECT_EQ(value, 77);
}

}  // namespace

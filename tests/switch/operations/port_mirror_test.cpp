#include "tests/switch/operations/enabled_switch.h"

using namespace obtest;

namespace {

class PortMirror : public EnabledSwitch {
protected:
    // Refused before the semaphore is taken.
    void ExpectRefusedAtOnce(uint8_t source, uint8_t destination, const std::string& message)
    {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetPortMirror(0, source, destination), -1);
        EXPECT_TRANSCRIPT("log9 ORBLINK_SetPortMirror:# SrcPortIdx=" + std::to_string(source) +
                              ", DstPortIdx=" + std::to_string(destination),
                          "log1 ORBLINK_SetPortMirror:# " + message);
    }
};

TEST_F(PortMirror, Destination255TurnsItOff)
{
    ASSERT_EQ(ORBLINK_SetPortMirror(0, 2, 5), 0);
    EXPECT_EQ(config.mirrorDst[2], 5);
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 255), 0);
    EXPECT_EQ(config.mirrorDst[2], 255);
    EXPECT_HALS("hal0 SetPortMirror(0, 2, 5)", "hal0 SetPortMirror(0, 2, 255)");
}

TEST_F(PortMirror, OffThatIsOffIsFound)
{
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 255), 0);
    EXPECT_HALS();
    EXPECT_TRUE(transcript.Has(
        "log9 ORBLINK_SetPortMirror:# Mirroring of PortIdx=2 is already set to port PortIdx=255"));
}

TEST_F(PortMirror, Source8FailsBeforeTheSemaphoreIsTaken)
{
    ExpectRefusedAtOnce(8, 2, "Illigal  SrcPortIdx ");
    ExpectRefusedAtOnce(255, 2, "Illigal  SrcPortIdx ");
    ExpectRefusedAtOnce(8, 8, "Illigal  SrcPortIdx ");
}

TEST_F(PortMirror, ToItselfFailsBeforeTheSemaphoreIsTaken)
{
    ExpectRefusedAtOnce(2, 2, "Cannot mirror port to itself, DevIdx");
    ExpectRefusedAtOnce(7, 7, "Cannot mirror port to itself, DevIdx");
}

TEST_F(PortMirror, RefusesADestinationOutOfRange)
{
    record.caps.numOfPorts = 6;
    for (const uint8_t destination : {6, 7, 254}) {
        transcript.Clear();
        EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, destination), -1);
        EXPECT_LOGS("log1 ORBLINK_SetPortMirror:# Invalid DstPortIdx=" +
                    std::to_string(destination) + ", DevIdx=0");
    }
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 5, 0), 0);
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 0, 5), 0);
    EXPECT_EQ(config.mirrorDst[5], 0);
    EXPECT_EQ(config.mirrorDst[0], 5);
    EXPECT_EQ(config.mirrorDst[2], 255);
}

TEST_F(PortMirror, ChecksSourceThenDestinationThenCapability)
{
    record.caps.numOfPorts = 6;
    record.caps.capsFlags = 0;
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 6, 7), -1);
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 5, 7), -1);
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 5, 4), -1);
    EXPECT_LOGS("log1 ORBLINK_SetPortMirror:# Invalid SrcPortIdx=6 DevIdx=0",
                "log1 ORBLINK_SetPortMirror:# Invalid DstPortIdx=7, DevIdx=0",
                "log1 ORBLINK_SetPortMirror:# Switch does not support mirroring, DevIdx=0");
}

TEST_F(PortMirror, NeedsTheCapabilityEvenForWhatIsStored)
{
    record.caps.capsFlags = static_cast<uint8_t>(~OB_CAPS_MIRRORING);
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 255), -1);
    EXPECT_LOGS("log1 ORBLINK_SetPortMirror:# Switch does not support mirroring, DevIdx=0");
}

TEST_F(PortMirror, NotesDvtModeOfTheDestinationThenOfTheSourceAndGoesOn)
{
    record.dvtPorts = 0x24;
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 5), 0);
    EXPECT_TRANSCRIPT("log9 ORBLINK_SetPortMirror:# SrcPortIdx=2, DstPortIdx=5",
                      "sys semop(0, -1, UNDO)",
                      "log2 ORBLINK_SetPortMirror:# DevIdx=0 DstPortIdx=5 is in DVT mode",
                      "log2 ORBLINK_SetPortMirror:# DevIdx=0 SrcPortIdx=2 is in DVT mode",
                      "hal0 SetPortMirror(0, 2, 5)", "sys semop(0, +1, UNDO)",
                      "log9 ORBLINK_SetPortMirror:# finished OK");
}

TEST_F(PortMirror, NotesDvtModeAlsoForWhatIsStored)
{
    config.mirrorDst[2] = 5;
    record.dvtPorts = 0x20;
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 5), 0);
    EXPECT_LOGS("log2 ORBLINK_SetPortMirror:# DevIdx=0 DstPortIdx=5 is in DVT mode");
    EXPECT_HALS();
}

TEST_F(PortMirror, Destination255IsNeverInDvtMode)
{
    config.mirrorDst[2] = 5;
    record.dvtPorts = 0xFB;
    EXPECT_EQ(ORBLINK_SetPortMirror(0, 2, 255), 0);
    EXPECT_LOGS();
}

}  // namespace

// The receiver of the switch family's board data: what it logs, a message, and its results.
#pragma once

#include <cstring>

#include "tests/board/board_fixture.h"

namespace obtest {

inline constexpr uint8_t kUntouched = 0xEE;

inline const std::string kInit = "OBOS_InitHwSpecificData:# ";
inline const std::string kArrow = "log9 " + kInit + "--->";
inline const std::string kWaiting = "log3 " + kInit + "Waiting for LAN BSD from ARM";
inline const std::string kReceived = "log3 " + kInit + "Received LAN BSD from ARM";
inline const std::string kIni = "log3 OBOS_InitBsdFromIni:# OBOS_InitBsdFromIni NOT IMPLEMETED";
inline const std::string kIniDone =
    "log9 " + kInit + "OBOS_InitBsdFromIni() done! NumOfSwitchDevices=0";
inline const std::string kBack = "log9 " + kInit + "<---";
inline const std::string kParse = "log9 ParseBsd:#  ---> ";
inline const std::string kParsed = "log9 ParseBsd:#  <--- ";
inline const std::string kHeader = "log9 ParseBsd:# mainMsg->msg_type a, mainMsg->payload_len b0";

// What is logged when no message is taken over; parsing stands between the two lines of waiting.
inline Lines Nothing(const Lines& parsing)
{
    Lines lines = {kArrow, kWaiting};
    lines.insert(lines.end(), parsing.begin(), parsing.end());
    lines.insert(lines.end(), {kReceived, kIni, kIniDone, kBack});
    return lines;
}

// Two switches, every field with a value of its own.
inline BsdMessage TwoSwitches()
{
    BsdMessage message(10, 176, 176);
    message.Text(0, "libfirst.so").Word(32, 1).Word(36, 20).Word(40, 18).Word(44, 5);
    message.Byte(48, 16).Byte(49, 3).Word(52, 5).Word(56, 6).Word(60, 0x12345678);
    message.Word(64, 0xCAFEBABE);
    message.Text(68, "libsecond.so").Word(100, 0).Word(104, 0xFFFFFFFF).Word(108, 19);
    message.Word(112, 7).Byte(116, 0xFF).Byte(117, 0x80).Word(120, 1).Word(124, 2);
    message.Word(128, 0xA0B0C0D0).Word(132, 0x01020304);
    message.Byte(136, 2).Word(140, 0x00000100);
    for (int mac = 0; mac < 5; ++mac)
        message.Mac(mac, {2, 0, 0, 0, 0, mac + 1});
    return message;
}

class SwitchBoardData : public BoardTest {
protected:
    SwitchBoardData()
    {
        memset(&bsd, kUntouched, sizeof(bsd));
        memset(vendor, kUntouched, sizeof(vendor));
    }

    int Receive() { return OBOS_InitHwSpecificData(&bsd, vendor); }

    void ExpectNothingReceived()
    {
        const SwitchBsd none = {};
        EXPECT_EQ(memcmp(&bsd, &none, sizeof(bsd)), 0);
        ExpectVendor(0);
        uint8_t mac[6];
        EXPECT_EQ(OBOS_GetMacAddresses(mac, mac, mac, mac, mac), -1);
    }

    // Size 8, the flag and zeros in the first record; nothing in the second.
    void ExpectVendor(uint32_t flag)
    {
        SwitchVendorRecord expected[2] = {};
        expected[0].vendorParamSize = 8;
        memcpy(expected[0].vendorParams, &flag, sizeof(flag));
        EXPECT_EQ(memcmp(vendor, expected, sizeof(vendor)), 0);
    }

    SwitchBsd bsd;
    SwitchVendorRecord vendor[2];
};

}  // namespace obtest

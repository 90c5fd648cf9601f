// The library, the general PHY HAL and the PHY model together, on the virtual board: each client is
// a process of its own.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {

constexpr char kDefaultHal[] = "libphyk20.so";
constexpr char kGeneralHal[] = "libethphy_ieee8023.so";

std::string Mac(int number)
{
    return "\"02:00:00:00:00:0" + std::to_string(number) + "\", ";
}

class PhyOnBoard : public testing::Test {
protected:
    PhyOnBoard()
    {
        std::string pattern = "/tmp/phy_board_test.XXXXXX";
        directory_ = mkdtemp(pattern.data());
        board_ = "mac_addresses = [" + Mac(1) + Mac(2) + Mac(3) + Mac(4) + Mac(5) + "]\n";
    }
    ~PhyOnBoard() override { std::filesystem::remove_all(directory_); }

    // A PHY at 2.5 Gb/s on lane 1, with its reset pin. Unless said, it negotiates in no time.
    void AddPhy(const std::string& hal, const std::string& more = "",
                const std::string& partner = "eee = true", const std::string& negotiation = "0")
    {
        board_ += "[[phy]]\nhal = \"" + hal +
                  "\"\nchip = \"ieee8023\"\nserdes = 1\nmdio_bus = 0\nmdio_address = " +
                  std::to_string(++phys_) + "\nport_mode = \"HSGMII\"\nport_speed = \"2.5G\"\n" +
                  "reset_pin = 19\nnegotiation_ms = " + negotiation + "\n" + more +
                  "\n[phy.partner]\n" + partner + "\n";
    }
    static std::string Modes(const std::string& modes) { return "modes = [" + modes + "]"; }

    // What a shell script on the board prints; "client" and "control" are at hand.
    std::string Run(const std::string& script)
    {
        std::string board = directory_ + "/board.toml";
        std::string inner = directory_ + "/inner";
        std::ofstream{board} << board_;
        std::ofstream{inner} << "client() { " BOARD_CLIENT " \"$@\" | sed '/^HWMB_/d'; }\n"
                             << "control() { " VBOARD " control \"$@\"; }\n"
                             << "lanes() { control journal --kind lane | sed 's/.* lane *//'; }\n"
                             << script << '\n';
        FILE* pipe = popen((VBOARD " run --time-scale 0.01 --board " + board + " -- sh " + inner +
                            " 2>" + directory_ + "/errors")
                               .c_str(),
                           "r");
        std::string output;
        std::array<char, 256> part{};
        while (fgets(part.data(), part.size(), pipe) != nullptr)
            output += part.data();
        EXPECT_EQ(pclose(pipe), 0) << output;
        return output;
    }

    std::string directory_;
    std::string board_;
    int phys_ = 0;
};

TEST_F(PhyOnBoard, BringsAPhyUpAndFindsItsLaneGood)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1 link:0 caps:0\nlanes\n"
                  "control journal --kind mdio | grep -c 'mmd=31 reg=0x0e23 value=0x0001 -> ok'"),
              "link 1 4 1\ncaps 0xb30ef\n1\n");
}

TEST_F(PhyOnBoard, ResetsALaneThatThePhyFindsBad)
{
    AddPhy(kDefaultHal, "lane_good = false");
    EXPECT_EQ(Run("client init up:0:1 link:0\nlanes"),
              "link 1 4 1\nopen  -> ok\nreset client=6 -> ok\n");
}

TEST_F(PhyOnBoard, LeavesTheLaneOfAPhyWithoutLinkAlone)
{
    AddPhy(kDefaultHal, "lane_good = false", "connected = false");
    EXPECT_EQ(Run("client init up:0:1 link:0\nlanes"), "link 0 0 0\n");
}

TEST_F(PhyOnBoard, ResetsTheLaneAlwaysUnderTheOtherName)
{
    AddPhy(kGeneralHal);
    EXPECT_EQ(Run("client init up:0:1 link:0\nlanes"),
              "link 1 4 1\nopen  -> ok\nreset client=6 -> ok\n");
}

TEST_F(PhyOnBoard, LinksInEveryForcedMode)
{
    for (const char* more : {"", "clause45 = false"}) {
        board_.erase(board_.find('\n') + 1);
        AddPhy(kGeneralHal, more,
               Modes("'10half', '10full', '100half', '100full', '1000full', '2500full'"));
        // The forced-speed routine writes MMD 7 in clause-45 frames, whatever the HAL could do.
        std::string speeds =
            "link 1 2 0\nlink 1 2 1\nlink 1 3 0\nlink 1 3 1\nlink 1 4 1\nlink 1 5 1\n";
        std::string script = "client init up:0:1 link:0\n";
        if (*more == '\0')
            script +=
                "client speed:0:1:0 link:0 speed:0:1:1 link:0 speed:0:2:0 link:0 speed:0:2:1 "
                "link:0 "
                "speed:0:3:1 link:0 speed:0:4:1 link:0";
        EXPECT_EQ(Run(script), "link 1 5 1\n" + (*more == '\0' ? speeds : std::string{}));
    }
}

TEST_F(PhyOnBoard, DetectsAPartnerThatDoesNotNegotiate)
{
    AddPhy(kDefaultHal, "", "autoneg = false\n" + Modes("'100full'"));
    EXPECT_EQ(Run("client init up:0:1 link:0"), "link 1 3 0\n");
}

TEST_F(PhyOnBoard, FollowsTheCable)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1 link:0\n"
                  "control link phy0 down; client link:0\n"
                  "control link phy0 up --speed 10 --half; client link:0\n"
                  "control link phy0 up; client link:0"),
              "link 1 4 1\nlink 0 0 0\nlink 1 2 0\nlink 1 4 1\n");
}

TEST_F(PhyOnBoard, NegotiatesForItsTime)
{
    AddPhy(kDefaultHal, "", "", "60000");
    EXPECT_EQ(Run("client init up:0:1 link:0 wait:0:60000 link:0"), "link 0 0 0\nlink 1 4 1\n");
}

TEST_F(PhyOnBoard, DisablesAndEnables)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1\nclient admin:0:0 link:0\ncontrol reg phy0 0\n"
                  "client admin:0:1 link:0"),
              "link 0 0 0\n0x00 0x1800\nlink 1 4 1\n");
}

TEST_F(PhyOnBoard, KeepsItsConfigurationInResetButNotByDefault)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1 speed:0:1:1 link:0\n"
                  "client down:0 link:0\n"
                  "client up:0:0 link:0\n"
                  "client down:0 up:0:1 link:0"),
              "link 1 2 1\nlink 0 0 0\nlink 1 2 1\nlink 1 4 1\n");
}

TEST_F(PhyOnBoard, SumsCountersOverProcesses)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1 counters:0\n"
                  "control counter phy0:0 idle_errors 200; client poll:0\n"
                  "control counter phy0:0 idle_errors 100; client counters:0\n"
                  "client clear:0; client counters:0"),
              "counters 15: 0 0 0 0 eee 0x0\ncounters 15: 300 0 0 0 eee 0x0\n"
              "counters 15: 0 0 0 0 eee 0x0\n");
}

TEST_F(PhyOnBoard, CountsALinkThatDroppedAndCameBackOverProcesses)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1 link:0\n"
                  "control link phy0 down; control link phy0 up\n"
                  "client link:0 drops:0"),
              "link 1 4 1\nlink 1 4 1\ndrops 1\n");
}

TEST_F(PhyOnBoard, TellsTheMacWhatChanged)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(
        Run("told() { control journal --kind gmac | "
            "sed 's/.*interface=\\(nsgmii.\\) .*speed=\\(.\\) duplex=\\(.\\) .*/\\1 \\2 \\3/'; }\n"
            "client init up:0:1 poll:0 poll:0\n"
            "control link phy0 up --speed 100 --half; client poll:0; client poll:0\n"
            "told"),
        "nsgmii1 4 1\nnsgmii1 3 0\n");
}

TEST_F(PhyOnBoard, SwitchesEee)
{
    for (const char* more : {"", "clause45 = false"}) {
        board_.erase(board_.find('\n') + 1);
        AddPhy(kDefaultHal, more);
        EXPECT_EQ(Run("client init up:0:1 eee:0:1 counters:0\nclient eee:0:0 counters:0"),
                  "counters 15: 0 0 0 0 eee 0xf\ncounters 15: 0 0 0 0 eee 0x0\n");
    }
}

TEST_F(PhyOnBoard, RefusesEeeOfAPhyWithoutIt)
{
    AddPhy(kDefaultHal, "eee = false");
    EXPECT_EQ(Run("client init up:0:1 eee:0:1"), "eee:0:1 failed\n");
}

TEST_F(PhyOnBoard, ReadsAndWritesChipRegisters)
{
    AddPhy(kDefaultHal, "clause45 = false");
    EXPECT_EQ(Run("client init up:0:1 read:0:3 write:0:0x4007003c:6 read:0:0x4007003c"),
              "register 0x8023\nregister 0x6\n");
}

TEST_F(PhyOnBoard, DrivesTwoPhysByTwoLibraries)
{
    AddPhy(kDefaultHal, "", Modes("'1000full'"));
    AddPhy(kGeneralHal, "clause45 = false", Modes("'10full'"));
    EXPECT_EQ(Run("client init up:0:1 up:1:1\n"
                  "control counter phy0:0 idle_errors 5\n"
                  "client link:0 link:1 counters:0 counters:1"),
              "link 1 4 1\nlink 1 2 1\ncounters 15: 5 0 0 0 eee 0x0\n"
              "counters 15: 0 0 0 0 eee 0x0\n");
}

TEST_F(PhyOnBoard, GivesUpOnAnAddressWithNobody)
{
    AddPhy(kDefaultHal);
    board_.replace(board_.find("ieee8023"), 8, "none");
    EXPECT_EQ(Run("client init up:0:1 link:0 poll:0 caps:0"),
              "up:0:1 failed\nlink 0 0 0\nlink:0 failed\npoll:0 failed\ncaps 0x0\ncaps:0 failed\n");
}

TEST_F(PhyOnBoard, SurvivesABusThatFails)
{
    AddPhy(kDefaultHal);
    EXPECT_EQ(Run("client init up:0:1\n"
                  "control fault mdio-error; client link:0\n"
                  "control fault clear; client link:0"),
              "link 0 0 0\nlink:0 failed\nlink 1 4 1\n");
}

}  // namespace

// Hosts and their cables: what they see of each other, and what can be watched on the way.
#include "tests/virtual_board/cables/traffic.h"

#include <unistd.h>

using namespace traffic;

TEST_F(Traffic, AHostWithoutAnAddressOfIpv6DoesNotSpeakUnasked)
{
    EXPECT_EQ(Run("orblinkctl port 0:1 counters | grep -c ' [1-9]' || true\n"
                  "on e ip -6 address show lan5 | grep -c 2001:db8::5\n"),
              "0\n1\n");
}

TEST_F(Traffic, InterfacesGoWithTheBoard)
{
    Run("ip link | grep -c lan1 >$S/outside || true; on a ip link | grep -c lan1 >$S/inside\n");
    EXPECT_EQ(Json("outside"), 0);
    EXPECT_EQ(Json("inside"), 1);
    EXPECT_NE(std::system("ip link show lan1 >/dev/null 2>&1"), 0);
}

TEST_F(Traffic, AHostSeesTheStateOfItsCable)
{
    EXPECT_EQ(Run("on a ls /sys/class/net; on a cat /sys/class/net/lan1/carrier\n"
                  "on a cat /sys/class/net/lan1/speed\n"
                  "orblink-vboard control link sw0:1 down; on a cat /sys/class/net/lan1/carrier\n"
                  "orblink-vboard control link sw0:1 up --speed 100 --half\n"
                  "on a cat /sys/class/net/lan1/carrier /sys/class/net/lan1/speed "
                  "/sys/class/net/lan1/duplex\n"
                  "ctl port 0:1 disable; on a cat /sys/class/net/lan1/carrier\n"),
              "lan1\nlo\n1\n1000\n0\n1\n100\nhalf\n0\n");
}

TEST_F(Traffic, AHostMayRenameItsInterface)
{
    EXPECT_EQ(Run("on b ip link set lan2 down; on b ip link set lan2 name eth9\n"
                  "on b ip link set eth9 up; reach b 10.0.0.1; reach a 10.0.0.2\n"),
              "yes\nyes\n");
}

TEST_F(Traffic, ADeletedInterfaceKeepsNobodyBusy)
{
    EXPECT_EQ(Run("pid=${ORBLINK_VBOARD%/*}; pid=${pid##*.}\n"
                  "spent() { awk '{ print $14 + $15 }' /proc/$pid/stat; }\n"
                  "on d ip link del lan4; before=$(spent); sleep 20; after=$(spent)\n"
                  "test $((after - before)) -lt 5 && echo idle; reach a 10.0.0.2\n"
                  "orblinkctl port 0:4 link | grep -c yes || true\n"),
              "idle\nyes\n0\n");
}

TEST_F(Traffic, SendersDoNotKeepControlWaiting)
{
    Run("for i in 1 2 3 4; do\n"
        "    host=$(echo $i | tr 1234 abcd)\n"
        "    on $host mausezahn lan$i -q -c 0 -p 60 -a 02:00:00:00:01:0$i -b ff:ff:ff:ff:ff:ff "
        ">/dev/null 2>&1 & pids=\"$pids $!\"\n"
        "done\n"
        "sleep 10; date +%s%N >$S/before\n"
        "for i in 1 2 3 4 5 6 7 8 9 10; do orblink-vboard control battery $i; done\n"
        "date +%s%N >$S/after; kill $pids\n");
    const int64_t before = Json("before");
    const int64_t after = Json("after");
    EXPECT_LT(after - before, 4'000'000'000);
}

TEST_F(Traffic, ABadCableIsSeenInTheCountersAndByThePing)
{
    // The delay is each way, on the board's time, which runs twenty times as fast. The host may
    // still be repeating the question for an address that the lost ping has left: such frames count
    // as spoilt ones, too.
    EXPECT_EQ(Run("cable() { orblink-vboard control wire sw0:1 \"$@\"; }\n"
                  "cable --loss 100%; reach a 10.0.0.2\n"
                  "cable --fcs-errors 100%; send a ffffffffffff02000000000188b500 5\n"
                  "orblink-vboard control state sw0 | grep -o 'etherStatsCRCAlignErrors=[0-9]*' |\n"
                  "    awk -F = '{ print ($2 >= 5 && $2 <= 9 ? \"counted\" : $2) }'\n"
                  "cable --delay 2s; on a ping -c 1 -W 5 10.0.0.2 |\n"
                  "    awk -F 'time=' '/time=/ { print ($2 + 0 >= 200 ? \"late\" : \"early\") }'\n"
                  "cable; reach a 10.0.0.2\n"),
              "no\ncounted\nlate\nyes\n");
}

TEST_F(Traffic, WhatACableDoesIsShownInTheWordsThatSetIt)
{
    EXPECT_EQ(Run("shown() { orblink-vboard control hosts | grep -o 'port=sw0:1 .*'; }\n"
                  "cable() { orblink-vboard control wire sw0:1 \"$@\"; shown; }\n"
                  "shown; cable --loss 0.5% --delay 10ms; cable --fcs-errors 100% --jitter 2.25ms\n"
                  "cable --duplicate 12%; cable\n"),
              "port=sw0:1 address=10.0.0.1/24 wire=good\n"
              "port=sw0:1 address=10.0.0.1/24 wire=--loss 0.5% --delay 10ms\n"
              "port=sw0:1 address=10.0.0.1/24 wire=--fcs-errors 100% --jitter 2.25ms\n"
              "port=sw0:1 address=10.0.0.1/24 wire=--duplicate 12%\n"
              "port=sw0:1 address=10.0.0.1/24 wire=good\n");
}

TEST_F(Traffic, ACaptureShowsWhatPassesAndWhatDoesNot)
{
    EXPECT_EQ(Run("orblink-vboard control capture sw0:1 -w $S/port.pcapng --count 4 & pid=$!\n"
                  "until test -s $S/port.pcapng; do sleep 0.05; done\n"
                  "send a ffffffffffff02000000000188b501\n"
                  "send a ffffffffffff01000000000188b502\n"
                  "send b 02000000000102000000000288b503\n"
                  "send a 0180c200000102000000000188b504; wait $pid\n"
                  "tcpdump -r $S/port.pcapng -e -n 2>/dev/null | grep -c 0x88b5\n"
                  "grep -a -o 'VLAN [0-9]*[a-zA-Z0-9, :]*' $S/port.pcapng\n"),
              "4\nVLAN 1\nVLAN 1, dropped: comes from a group\nVLAN 1, queue 1, from port 2\n"
              "VLAN 1, dropped: a PAUSE frame\n");
}

TEST_F(Traffic, ACaptureOpensInTshark)
{
    if (std::system("command -v tshark >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "tshark is not installed";
    EXPECT_EQ(
        Run("orblink-vboard control capture sw0:1 -w $S/port.pcapng --count 3 & pid=$!\n"
            "until test -s $S/port.pcapng; do sleep 0.05; done\n"
            "send a ffffffffffff0200000000018100000588b501\n"
            "send a ffffffffffff0200000000018100600188b501\n"
            "send b 02000000000102000000000288b503; wait $pid\n"
            "tshark -r $S/port.pcapng -T fields -E separator=/s -e frame.interface_name -e "
            "frame.packet_flags_direction -e eth.src -e vlan.id -e frame.comment 2>$S/tshark\n"),
        "sw0:1 0x00000001 02:00:00:00:00:01 5 VLAN 5, dropped: the port is not in its VLAN\n"
        "sw0:1 0x00000001 02:00:00:00:00:01 1 VLAN 1\n"
        "sw0:1 0x00000002 02:00:00:00:00:02  VLAN 1, queue 1, from port 2\n");
}

TEST_F(Traffic, ATraceSaysWhereAFrameGoes)
{
    EXPECT_EQ(
        Run("ctl port 0:3 vlan 100\n"
            "orblink-vboard control trace --from sw0:1 ff:ff:ff:ff:ff:ff:02:00:00:00:00:01:88:b5 "
            ">$S/trace\n"
            "grep -c 'not on port 3: not in its VLAN (PORT_VID 0x1303)' $S/trace\n"
            "grep -c 'goes out on port 2, untagged (PORT_TAG 0x1205)' $S/trace\n"
            "orblink-vboard control trace --from sw0:1 12 2>&1 | head -1\n"),
        "1\n1\nframe: '12' is no frame: expected at least 14 octets in hexadecimal\n");
}

TEST_F(Traffic, AnLldpDaemonOnTheCpuPortFindsItsNeighbour)
{
    if (geteuid() != 0 || std::system("command -v lldpd >/dev/null 2>&1") != 0)
        GTEST_SKIP() << "lldpd is not installed, or nobody may start it who is not root";
    // Its socket is made by a user of its own.
    EXPECT_EQ(Run("chmod 755 $S\n"
                  "lldp() {\n"
                  "    on $1 sh -c \"mkdir -p /run/lldpd; mount -t tmpfs none /run/lldpd\n"
                  "        exec lldpd -d -I $(interface_of $1) -S neighbour-$1 -u $S/$1.lldp\" "
                  ">$S/lldpd.$1 2>&1\n"
                  "}\n"
                  "shows() {\n"
                  "    for i in $(seq 40); do\n"
                  "        lldpcli -u $S/soc.lldp show $1 2>&1 | grep -q $2 && return\n"
                  "        sleep 0.2\n"
                  "    done\n"
                  "    cat $S/lldpd.*\n"
                  "}\n"
                  "lldp soc & shows interfaces soc0; lldp a & shows neighbors neighbour-a\n"
                  "lldpcli -u $S/soc.lldp show neighbors | grep -o 'neighbour-[a-z]*'\n"),
              "neighbour-a\n");
}

TEST_F(Traffic, AHostThatIsNotThereIsNamed)
{
    EXPECT_EQ(Run("on nobody true 2>&1 || echo $?; orblink-vboard control hosts | grep -c lan\n"),
              "orblink-vboard: no host 'nobody' on this board, which has soc, a, b, c, d, e, "
              "sw0p6, sw0p7\n3\n5\n");
}

TEST_F(Traffic, WithoutInterfacesHostsAreRefused)
{
    const std::string bin = std::string(std::getenv("ORBLINK_BUILD")) + "/bin/orblink-vboard";
    const std::string line = bin + " run --board " ORBLINK_LAN "/lan.toml --ports none -- " + bin +
                             " exec a -- true 2>" + Path("err");
    EXPECT_EQ(WEXITSTATUS(std::system(line.c_str())), 5);
}

#!/usr/bin/env python3
"""The virtual switch beside a bridge of Linux between veth interfaces, in one run.

Between two hosts of each: TCP in Gb/s (iperf3), frames of 64 octets per second (trafgen, counted
where they arrive), round trips each after a rest of 5 ms and one right after the other (ping), and
the processor time of the board process. A bridge of Linux answers within the sender's own system call
and wakes nobody; a frame through the board wakes the board and then the host that waits, for which
--low-latency keeps processors awake while frames pass the board, and only then. Both are
measured in turn, several times; the best of each counts, and the rest says how busy the machine is.
"""
import argparse
import json
import os
import re
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ADDRESSES = {"a": "10.0.0.1", "b": "10.0.0.2"}
MACS = {"a": "02:00:00:00:00:01", "b": "02:00:00:00:00:02"}
# The ports' speed does not count at this scale: 1000 Mb/s of the board's are 100 Gb/s.
TIME_SCALE = "0.01"
TARGETS = {"TCP": 0.7, "64-octet frames": 0.6, "round trip": 2.0}
UNITS = {"TCP": "Gb/s", "64-octet frames": "/s", "round trip": "us", "without rests": "us"}
TIMES = ("round trip", "without rests")


def run(words, **options):
    return subprocess.run(words, check=True, text=True, capture_output=True, **options).stdout


class Board:
    """The hosts a and b of the board file that the tests of the cables use."""

    name = "virtual switch"
    interfaces = {"a": "lan1", "b": "lan2"}

    def __init__(self, build, directory, options):
        self.program = os.path.join(build, "bin", "orblink-vboard")
        self.socket = os.path.join(directory, "board.sock")
        board = os.path.join(HERE, "..", "tests", "virtual_board", "cables", "lan.toml")
        path = os.path.join(build, "bin") + ":" + os.environ["PATH"]
        script = "orblinkctl init && orblinkctl up 0 --defaults && orblinkctl aging 0 5 && " \
                 "until orblinkctl port 0:2 link | grep -q yes; do sleep 0.01; done; " \
                 "echo ready; read end"
        self.process = subprocess.Popen(
            [self.program, "run", "--board", board, "--socket", self.socket, "--time-scale",
             TIME_SCALE, *options, "--", "sh", "-c", script],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
            env={**os.environ, "PATH": path})
        for line in self.process.stdout:
            if line.strip() == "ready":
                return
        raise RuntimeError("the board does not come up")

    def on(self, host):
        return [self.program, "exec", "--socket", self.socket, host, "--"]

    def close(self):
        self.process.communicate("\n", timeout=30)

    def seconds(self):
        with open(f"/proc/{self.process.pid}/stat", encoding="ascii") as stat:
            fields = stat.read().rsplit(")", 1)[1].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Bridge:
    """Two namespaces whose veth interfaces end in a bridge in a third."""

    name = "bridge of Linux"
    interfaces = {"a": "lan1", "b": "lan2"}

    def __init__(self):
        self.prefix = f"bench{os.getpid()}"
        try:
            self.build()
        except subprocess.CalledProcessError:
            self.close()
            raise

    def build(self):
        for each in ("br", "a", "b"):
            run(["ip", "netns", "add", self.prefix + each])
        inside = ["ip", "-n", self.prefix + "br"]
        run(inside + ["link", "add", "br0", "type", "bridge", "mcast_snooping", "0"])
        for host, address in ADDRESSES.items():
            link = self.interfaces[host]
            run(inside + ["link", "add", "name", host, "type", "veth", "peer", "name", link,
                          "netns", self.prefix + host])
            run(inside + ["link", "set", "dev", host, "master", "br0", "up"])
            there = ["ip", "-n", self.prefix + host]
            run(there + ["link", "set", link, "address", MACS[host], "up"])
            run(there + ["link", "set", "lo", "up"])
            run(there + ["address", "add", address + "/24", "dev", link])
        run(inside + ["link", "set", "br0", "up"])

    def on(self, host):
        return ["ip", "netns", "exec", self.prefix + host]

    def close(self):
        for each in ("br", "a", "b"):
            subprocess.run(["ip", "netns", "del", self.prefix + each], check=False)

    @staticmethod
    def seconds():
        return 0.0


def tcp(side, seconds):
    """Gigabits per second from a to b."""
    server = subprocess.Popen(side.on("b") + ["iperf3", "-s", "-1"], stdout=subprocess.DEVNULL)
    try:
        while ":5201" not in run(side.on("b") + ["ss", "-ltn"]):
            time.sleep(0.05)
        result = json.loads(run(side.on("a") + ["iperf3", "-c", ADDRESSES["b"], "-t", str(seconds),
                                                "--json"]))
    finally:
        server.wait(timeout=30)
    return result["end"]["sum_received"]["bits_per_second"] / 1e9


def received(side):
    path = "/proc/net/dev"
    for line in run(side.on("b") + ["cat", path]).splitlines():
        name, _, counts = line.partition(":")
        if name.strip() == side.interfaces["b"]:
            return int(counts.split()[1])
    raise RuntimeError("no such interface at b")


def frames(side, seconds, directory):
    """Frames of 64 octets per second that arrive at b."""
    octets = [int(octet, 16) for host in "ba" for octet in MACS[host].split(":")]
    octets += [0x88, 0xB5] + [0] * 46
    config = os.path.join(directory, "frame.trafgen")
    with open(config, "w", encoding="ascii") as file:
        file.write("{" + ", ".join(map(str, octets)) + "}\n")
    ping(side, 2, "-i0.01")  # both are known
    before = received(side)
    start = time.monotonic()
    subprocess.run(side.on("a") + ["timeout", "-s", "INT", str(seconds), "trafgen", "-o",
                                   side.interfaces["a"], "-i", config, "-P", "1", "-q"],
                   check=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    span = time.monotonic() - start
    return (received(side) - before) / span


def ping(side, count, pace):
    """Microseconds there and back, the median."""
    output = run(side.on("a") + ["ping", "-c", str(count), pace, ADDRESSES["b"]])
    times = sorted(float(each) for each in re.findall(r"time=([\d.]+)", output))
    return 1000 * times[len(times) // 2]


def measure(side, seconds, directory):
    start = side.seconds()
    found = {"TCP": tcp(side, seconds)}
    found["processor"] = (side.seconds() - start) / seconds
    found["64-octet frames"] = frames(side, seconds, directory)
    found["round trip"] = ping(side, 200, "-i0.005")
    found["without rests"] = ping(side, 2000, "-A")
    return found


def best_of(rounds, side, name):
    """The best of the rounds; the rest says how busy the machine is."""
    return (min if name in TIMES else max)(found[side][name] for found in rounds)


def write(rounds, path):
    """What report.py reads: the best of each."""
    with open(path, "w", encoding="utf-8") as out:
        json.dump({name: {side: best_of(rounds, side, name) for side in (Board.name, Bridge.name)}
                   for name in TARGETS}, out)


def report(rounds):
    board, bridge = (
        {name: [found[side][name] for found in rounds] for name in rounds[0][side]}
        for side in (Board.name, Bridge.name))
    print(f"{'':18}{Board.name:>16}{Bridge.name:>18}{'ratio':>8}  target")
    missed = False
    for name, unit in UNITS.items():
        mine, theirs = (best_of(rounds, side, name) for side in (Board.name, Bridge.name))
        ratio = mine / theirs
        bound = ""
        if name in TARGETS:
            met = ratio <= TARGETS[name] if name in TIMES else ratio >= TARGETS[name]
            missed = missed or not met
            bound = f"{'<=' if name in TIMES else '>='} {TARGETS[name]} {'met' if met else 'missed'}"
        print(f"{name + ', ' + unit:22}{mine:12.1f}{theirs:18.1f}{ratio:8.2f}  {bound}")
        print("    each round      " + "  ".join(
            f"{m:.1f}/{t:.1f}" for m, t in zip(board[name], bridge[name])))
    print(f"processor time of the board process for TCP: {max(board['processor']):.2f} of a core")
    return 1 if missed else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", default=os.path.join(HERE, "..", "build", "release"))
    parser.add_argument("--seconds", type=int, default=3, help="of each measurement")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--low-latency", action="store_true", help="as the board's option")
    parser.add_argument("--json", help="file for the figures")
    given = parser.parse_args()
    with tempfile.TemporaryDirectory() as directory:
        sides = []
        try:
            options = ["--low-latency"] if given.low_latency else []
            sides.append(Board(os.path.abspath(given.build), directory, options))
            sides.append(Bridge())
            rounds = [{side.name: measure(side, given.seconds, directory) for side in sides}
                      for _ in range(given.rounds)]
        finally:
            for side in sides:
                side.close()
    if given.json:
        write(rounds, given.json)
    return report(rounds)


if __name__ == "__main__":
    sys.exit(main())

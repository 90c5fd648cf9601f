#!/usr/bin/env python3
"""soak_on_board.py BUILD SECONDS PROCESSES [--kills]

On a virtual board, processes of BUILD and of BUILD-i386 beside it, where there is one, write a
setting each, again and again; with --kills one of them is killed every tenth of a second, and its
successor goes on. Counts what is there before and after, asks whether chips and records agree in
the end, and prints the worst wait as a line of a table."""

import argparse
import os
import random
import signal
import struct
import subprocess
import sys
import tempfile
import time

FIELDS = 15  # of board_worker.c
FIRST_PHY_FIELD = 13
STATE = struct.Struct("10I")
SKIPPED = 77  # the machine was too busy for a single kill
HOLDER_LIVES = 5  # exit code of orblinkctl recover
OUTSIDE = "ORBLINK_SOAK_OUTSIDE"
GROWTH = 1024  # kB, of a worker's whole life: the library has no heap


def ctl(*words):
    return subprocess.run(["orblinkctl", *words], capture_output=True, text=True)


def ipc_namespace():
    return os.readlink("/proc/self/ns/ipc")


def done(*words):
    result = ctl(*words)
    if result.returncode != 0:
        sys.exit(f"orblinkctl {' '.join(words)}: {result.stdout}{result.stderr}")
    return result


def shared_objects():
    """Semaphore sets and files that this board has, where it has the machine's names to itself."""
    if ipc_namespace() == os.environ[OUTSIDE]:
        return None
    with open("/proc/sysvipc/sem", encoding="ascii") as sets:
        return len(sets.readlines()) - 1, sorted(os.listdir("/dev/shm") + os.listdir("/var/tmp"))


class Crowd:
    def __init__(self, arguments, folder):
        self.arguments, self.folder = arguments, folder
        self.end = time.monotonic() + arguments.seconds
        self.started = self.killed = self.freed = 0
        self.complaints = []
        self.alive = {}

    def start(self, field):
        rest = max(1, int(self.end - time.monotonic()))
        program = self.arguments.worker[self.started % len(self.arguments.worker)]
        self.started += 1
        self.alive[field] = subprocess.Popen(
            [program, str(field), str(rest), os.path.join(self.folder, str(field))])

    def kill_one(self):
        field = random.choice(list(self.alive))
        if self.state(field)[0] < 4:
            return  # killing those that are being started would prove little
        self.alive[field].send_signal(signal.SIGKILL)
        self.alive.pop(field).wait()
        self.killed += 1
        if field >= FIRST_PHY_FIELD:  # the kernel frees the other family's lock
            self.free_phy_lock()
        self.start(field)

    def free_phy_lock(self):
        answer = ctl("recover", "--phy", "--apply")
        if answer.returncode not in (0, HOLDER_LIVES):
            self.complaints.append(answer.stdout + answer.stderr)
        self.freed += "the lock is free, every setting is kept" in answer.stdout

    def state(self, field):
        path = os.path.join(self.folder, str(field))
        if not os.path.exists(path) or os.path.getsize(path) < STATE.size:
            return (0,) * 10
        with open(path, "rb") as file:
            return STATE.unpack(file.read(STATE.size))

    def run(self):
        for field in range(FIELDS)[-self.arguments.processes:]:
            self.start(field)
        while self.arguments.kills and time.monotonic() < self.end - 1:
            time.sleep(0.1)
            self.kill_one()
        for field, worker in self.alive.items():
            try:
                if worker.wait(self.arguments.seconds + 60) != 0:
                    self.complaints.append(f"worker of field {field}: exit {worker.returncode}")
            except subprocess.TimeoutExpired:
                worker.kill()
                self.complaints.append(f"worker of field {field} hangs")
        for field in self.alive:
            self.judge(field)

    def judge(self, field):
        calls, failures, strays, _, *before_after, _, _ = self.state(field)
        if failures or strays or not calls:
            self.complaints.append(f"field {field}: {calls} calls, {failures} failed, "
                                   f"{strays} times not what was written")
        if before_after[0] and before_after[0] != before_after[1]:
            self.complaints.append(f"field {field}: {before_after[:2]} descriptors")
        if before_after[2] and before_after[3] > before_after[2] + GROWTH:
            self.complaints.append(f"field {field}: {before_after[2:]} kB")


def enter_board(build):
    source = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..")
    os.environ[OUTSIDE] = ipc_namespace()
    os.environ["PATH"] = os.path.join(build, "bin") + ":" + os.environ["PATH"]
    os.execvp("orblink-vboard", [
        "orblink-vboard", "run", "--time-scale", "0.001", "--board",
        os.path.join(source, "virtual_board", "boards", "phy.toml"), "--",
        sys.executable, *sys.argv])


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build", type=os.path.abspath)
    parser.add_argument("seconds", type=int)
    parser.add_argument("processes", type=int)
    parser.add_argument("--kills", action="store_true")
    arguments = parser.parse_args()
    if OUTSIDE not in os.environ:
        enter_board(arguments.build)
    builds = (arguments.build, arguments.build + "-i386")
    workers = [build + "/tests/board_worker" for build in builds]
    arguments.worker = [worker for worker in workers if os.path.exists(worker)]
    for words in (("init",), ("up", "0", "--defaults"), ("phy", "0", "up"), ("phy", "1", "up")):
        done(*words)
    before = shared_objects()
    with tempfile.TemporaryDirectory() as folder:
        crowd = Crowd(arguments, folder)
        crowd.run()
        states = [crowd.state(field) for field in crowd.alive]
    if shared_objects() != before:
        crowd.complaints.append(f"before: {before}, after: {shared_objects()}")
    if arguments.kills:  # the record may say what the chip has not been told
        done("down", "0")
        done("up", "0")
    verified = ctl("config", "verify")
    if verified.returncode != 0:
        crowd.complaints.append(verified.stdout + verified.stderr)
    print(f"| soak on the virtual board | {len(states)} processes, {len(arguments.worker)} ABI, "
          f"{arguments.seconds} s: {sum(state[0] for state in states)} calls, "
          f"{crowd.killed} kills, {crowd.freed} PHY locks freed, "
          f"worst call {max(state[3] for state in states) / 1000:.1f} ms |")
    for complaint in crowd.complaints:
        print(complaint, file=sys.stderr)
    if crowd.complaints:
        return 1
    return SKIPPED if arguments.kills and not crowd.killed else 0


sys.exit(main())

#!/usr/bin/env python3
"""commands_test.py SOURCE_DIR BUILD_DIR

Every command that README and the guides show is run: on a virtual board what the programs do. For the
longer ones (builds, test runs, measurements) this holds that what they name is there, and which file runs
them. The blocks of docs/tour.md and docs/virtual-board.md have tests of their own, and those of
docs/installing.md are run in a fresh Debian."""

import json
import re
import subprocess
import sys
import tempfile
import tomllib
from pathlib import Path

root, build = Path(sys.argv[1]).resolve(), Path(sys.argv[2]).resolve()
GUIDES = ["README.md", "CONTRIBUTING.md", "SECURITY.md", "bench/README.md",
          *sorted(str(path.relative_to(root)) for path in (root / "docs").glob("*.md"))]
ELSEWHERE = ("docs/tour.md", "docs/virtual-board.md", "docs/installing.md",
             "docs/linux-switch.md")
PROGRAMS = ("orblinkctl", "orblink-vboard", "orblink-web", "orblink-hal-check")
# Where words without the program in front of them are what one types behind it.
OF_ORBLINKCTL = ("docs/orblinkctl.md", "docs/configuration.md", "docs/tour.md")
STARTUP = "tests/tools/orblinkctl/config/startup_test.cpp"
# What is too long for this test or changes the machine, and the file that runs it. Measurements, which
# take an idle machine, are run by nobody.
RUN_BY = {"./demo.sh": "tests/packaging/clean_clone.sh",
          "./test.sh": ".ci/run",
          "bench/": None,
          "bindings/python/examples/plot_port_counters.py": "tests/bindings/python/board_test.sh",
          "cmake --build --preset release --target": None,
          "cmake --install": "tests/packaging/by_hand.sh",
          "cmake --preset": "scripts/build.sh",
          "ctest": "test.sh",
          "doxygen": "tests/docs/reference_test.sh",
          "gcc -shared": "tests/packaging/in_fresh_debian.sh",
          "orblinkctl config apply --startup": STARTUP,
          "orblinkctl config diff --startup": STARTUP,
          "orblinkctl config save --startup": STARTUP,
          "packaging/abi/check.sh": "tests/packaging/abi_guard.sh",
          "scripts/analyse.sh": "test.sh",
          "scripts/build.sh": "test.sh",
          "scripts/check-commits.sh": "scripts/check-form.sh",
          "tests/hals/linux_switch/hal_check.sh": "tests/hals/linux_switch/CMakeLists.txt",
          "tests/packaging/boot.sh": "tests/packaging/run.sh",
          "tests/packaging/old_debian.sh": "tests/packaging/run.sh",
          "tests/robustness/fuzz.sh": "test.sh",
          "tests/robustness/run.sh": "test.sh",
          "tests/robustness/soak_on_board.py": "tests/robustness/run.sh",
          "tests/vm/boot.sh": "tests/vm/run.sh",
          "tests/vm/run.sh": "test.sh",
          "tools/demo_linux_switch.sh": "demo.sh"}
# Words in capitals, for the board of this test.
MEANT = {"PORT": "0:1", "SWITCH": "0", "N": "0", "PHY": "0", "ADDRESS": "00:00:5e:00:53:01",
         "VLAN": "1", "REGISTERS": "0x2", "FILE": "out.file", "SECONDS": "1", "WORDS": "port",
         "COMMAND": "true", "WORD": "port", "MODE": "link", "LIBRARY": "./liborblink_mychip.so"}
# What is in FILE, if it is no configuration.
HOLDS = {"orblinkctl batch": "port 0:1 link", "orblinkctl mdio decode": "0x0000: 0x1140"}
# What does not end with 0 there, and with what; the rest of the reason is in the command.
ENDS_WITH = {"orblinkctl init": 4,  # it was before
              "orblinkctl config confirm": 3,  # nothing waits
              "orblinkctl config rollback": 3,
              "orblinkctl explain 0:1 0:2": 1}  # a port without a cable
# Until they are told to end.
ENDLESS = re.compile(r"^orblinkctl (log follow|monitor|top|watch)|orblink-web")
# On no board but that of their own.
HAS_A_BOARD = re.compile("orblink-vboard run|orblink-hal-check")
# What takes the files that guides show.
EXAMPLES = {"docs/configuration.md": "orblinkctl config apply {} --dry-run",
            "docs/orblinkctl.md": "orblinkctl --names {} port lan1"}
complaints, board_lines, files, looked_at = [], [], {}, 0


def blocks_and_spans(guide):
    text = (root / guide).read_text(encoding="utf-8")
    blocks = [(language, body) for language, body in
              re.findall(r"^```(\w*)\n(.*?)^```$", text, re.M | re.S)]
    text = re.sub(r"^```.*?^```$", "", text, flags=re.M | re.S)
    blocks += [("", re.sub(r"^    ", "", body, flags=re.M)) for body in
               re.findall(r"(?:^\n)((?:^    \S.*\n(?:^    .*\n)*))", text, re.M)]
    spans = [" ".join(span.split()) for span in re.findall(r"`([^`]+)`", text)]
    return blocks, spans


def filled(command):
    """Placeholders are words of the board, optional words are given."""
    command = re.sub(r"\[([^]|]*)\]|\.\.\.", r"\1", command).replace("PORT PORT", "0:1 0:2")
    command = re.sub(r"^(orblinkctl reg SWITCH) PORT", r"\1 1", command)
    command = re.sub(r"\b[A-Z]+\b", lambda word: MEANT.get(word[0], word[0]), command)
    if command == "orblinkctl log follow":
        command += " log"  # whatever this machine's system log is
    if "orblink-web" in command and "--listen" not in command:
        command += " --listen 127.0.0.1:0" if "'" not in command else ""
    return command.replace("127.0.0.1:8080", "127.0.0.1:0")


def on_board(guide, command):
    board_lines.append((guide, filled(command)))


def runner(command):
    """The entry of RUN_BY."""
    return max((key for key in RUN_BY if command.startswith(key)), key=len, default=None)


def looked(guide, command):
    """Whether somebody runs it: this test, or a file that has it."""
    global looked_at
    looked_at += 1
    plain = re.sub(r"^([A-Z_]+=\S+ )*(build/release/bin/)?", "", command)
    key = runner(plain)
    if key is not None:
        names_things(guide, plain)
        by = RUN_BY[key]
        if by and key.split("/")[-1] not in (root / by).read_text(encoding="utf-8"):
            complaints.append(f"{guide}: {by} does not run '{command}'")
    elif plain.split(" ")[0] in PROGRAMS:
        on_board(guide, plain)
    elif plain.startswith("man "):
        page = plain.split(" ")[1]
        if not list(root.glob(f"tools/**/{page}.1")) + list(build.glob(f"docs/man/man*/{page}.*")):
            complaints.append(f"{guide}: no page {page}")
    elif plain.startswith("scripts/house.sh"):
        subprocess.run([root / "scripts/house.sh"], check=True, stdout=subprocess.DEVNULL)
    else:
        looked_at -= 1
        return False
    return True


def names_things(guide, command):
    """Paths, presets, targets, tests and options that a longer command names."""
    for path in re.findall(r"(?:^|\s|&& )\.?/?((?:tests|scripts|bench|packaging|tools|bindings)/[\w/.*-]+|(?:demo|test)\.sh)", command):
        if not list(root.glob(path.rstrip("/"))):
            complaints.append(f"{guide}: {path} is not there")
        elif (root / path).is_file():
            script = (root / path).read_text(encoding="utf-8")
            for option in re.findall(r"(--[\w-]+)", command.split(path, 1)[1].split("&&")[0]):
                if option not in script:
                    complaints.append(f"{guide}: {path} has no option {option}")
    for preset in re.findall(r"--preset ([a-z][\w-]*)", command):
        if preset not in presets:
            complaints.append(f"{guide}: no preset {preset}")
    for target in re.findall(r"--target (\w+)", command):
        if not re.search(rf"(add_executable|add_custom_target|orblink_bench\w*)\({target}\b", cmake):
            complaints.append(f"{guide}: no target {target}")
    for tests in re.findall(r"ctest .*-R '?([\w|]+)", command):
        for name in set(tests.split("|")) - {"NAME"}:
            if not is_test(name):
                complaints.append(f"{guide}: no test is called {name}")


def is_test(name):
    """ctest keeps records where it looks, which not every user may do in the build."""
    with tempfile.TemporaryDirectory() as own:
        Path(own, "CTestTestfile.cmake").write_text(f'subdirs("{build}")\n', encoding="utf-8")
        listed = subprocess.run(["ctest", "--test-dir", own, "-N", "-R", name],
                                capture_output=True, text=True, check=False).stdout
    return re.search(r"Total Tests: [1-9]", listed) is not None


with open(root / "CMakePresets.json", encoding="utf-8") as file:
    presets = {preset["name"] for preset in json.load(file)["configurePresets"]}
cmake = "".join(path.read_text(encoding="utf-8") for path in root.rglob("CMakeLists.txt")
                if "build" not in path.relative_to(root).parts)
help_text = subprocess.run([build / "bin/orblinkctl", "help"], capture_output=True, text=True,
                           check=True).stdout
words = set(re.findall(r"^  ([a-z][\w-]*)", help_text, re.M))

for guide in GUIDES:
    blocks, spans = blocks_and_spans(guide)
    for language, body in blocks:
        if language == "toml" and guide in EXAMPLES:
            looked_at += 1
            name = f"example{len(files)}.toml"
            files[name] = body
            on_board(guide, EXAMPLES[guide].format(name))
        if guide in ELSEWHERE or language in ("toml", "c", "cpp", "python", "text"):
            continue
        for command in re.sub(r"\\\n\s*", "", body).splitlines():
            command = re.sub(r"\s+#.*", "", command)
            # README's picture has a test of its own.
            if not re.match("[┌│└]|PATH=", command) and not looked(guide, command):
                complaints.append(f"{guide}: nobody runs '{command}'")
    for span in spans:
        # Hosts behind ports take interfaces; those commands have tests of their own.
        if " " not in span or guide in ELSEWHERE and " exec " in span:
            continue
        if guide in OF_ORBLINKCTL and span.split(" ")[0] in words:
            span = "orblinkctl " + span
        if not looked(guide, span) and re.match(r"(\./|[a-z_]+/)[\w/.-]+(?<=[.](?:sh|py)) ", span):
            complaints.append(f"{guide}: nobody runs '{span}'")

with open(root / "docs/messages.toml", "rb") as file:
    for rows in tomllib.load(file).values():
        for word, option in re.findall(r"orblinkctl (\w[\w-]*)(?: [A-Z]+)?(?: \w+)?( --[\w-]+)?",
                                       " ".join(row["do"] for row in rows)):
            looked_at += 1
            said = subprocess.run([build / "bin/orblinkctl", "help", word], capture_output=True,
                                  text=True, check=False)
            if said.returncode != 0 or option.strip() not in said.stdout:
                complaints.append(f"docs/messages.toml: no orblinkctl {word}{option}")

empty = root / "virtual_board/boards/no_devices.toml"
if subprocess.run([build / "bin/orblink-vboard", "run", "--board", empty, "--", "true"],
                  check=False).returncode != 0:
    sys.exit(77)  # a machine that lends out no boards

with tempfile.TemporaryDirectory() as place:
    for name, body in files.items():
        (Path(place) / name).write_text(body, encoding="utf-8")
    (Path(place) / "liborblink_mychip.so").symlink_to(build / "templates/template_switch_hal.so")
    (Path(place) / "myboard.toml").symlink_to(root / "virtual_board/boards/one_switch.toml")
    script = f"PATH={build}/bin:$PATH\ncd {place}\n"
    script += "orblinkctl -q init >log 2>&1 && orblinkctl -q up 0 >>log 2>&1 || exit 1\n"
    script += "orblinkctl -q phy 0 up >>log 2>&1; orblinkctl -q phy 1 up >>log 2>&1\n"
    script += "orblinkctl config save saved >>log 2>&1\n"
    for place_of_line, (guide, command) in enumerate(board_lines):
        if HAS_A_BOARD.search(command):
            continue
        limit = "timeout --preserve-status 0.5" if ENDLESS.search(command) else "timeout 20"
        # What the one before has put into reset or written.
        script += "orblinkctl -q up 0 >>log 2>&1; cp saved out.file\n"
        script += "orblinkctl -q config apply saved >>log 2>&1\n"
        script += "orblink-vboard control learn sw0:1 00:00:5e:00:53:01 1 >>log\n"
        for start, line in HOLDS.items():
            if command.startswith(start):
                script += f"echo '{line}' >out.file\n"
        script += (f"{limit} sh -c '{command.replace(chr(39), chr(39) + chr(92) + chr(39) * 2)}'"
                   f" >{place_of_line}.said 2>&1 </dev/null; echo $? >{place_of_line}.code\n")
    board = [build / "bin/orblink-vboard", "run", "--time-scale", "0.001", "--board"]
    subprocess.run([*board, root / "virtual_board/boards/phy.toml", "--", "sh", "-c", script],
                   check=True, stderr=subprocess.DEVNULL)
    for number, (guide, command) in enumerate(board_lines):
        if HAS_A_BOARD.search(command):
            limited = re.sub(r"\borblink-web\b", "timeout --preserve-status 1 orblink-web "
                             "--listen 127.0.0.1:0", command)
            limited = limited.replace("run --board", "run --time-scale 0.001 --board")
            done = subprocess.run(["sh", "-c", f"PATH={build}/bin:$PATH; {limited}"],
                                  cwd=root if "orblink-vboard" in command else place,
                                  capture_output=True, text=True, check=False)
            code, said = done.returncode, done.stdout + done.stderr
        else:
            code = int((Path(place) / f"{number}.code").read_text())
            said = (Path(place) / f"{number}.said").read_text()
        wanted = (0, 143) if ENDLESS.search(command) else (ENDS_WITH.get(command, 0),)
        if code not in wanted:
            complaints.append(f"{guide}: '{command}' ended with {code}: {said}")

if looked_at < 150:
    complaints.append(f"only {looked_at} commands found")
print("\n".join(complaints) or f"{looked_at} commands")
sys.exit(1 if complaints else 0)

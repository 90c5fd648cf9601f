#!/usr/bin/env python3
"""report.py DIRECTORY

Medians and ratios of what run.sh has measured: a table, bench/results.json and bench/chart.svg.
"""
import glob
import json
import math
import os
import re
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
# What, against what, and the ratio that it is to keep: at most, or, for a floor, at least.
ROWS = [(name, "bare-semop-pair", "<=", limit) for name, limit in (
    ("query", 1.05), ("setter-refused", None), ("setter-to-empty-slot", 1.07), ("port-link", 1.07),
    ("phy-link", 1.07), ("setter-already-set", None))]
# What a line adds to the call that logs it, in calls that log none.
LINES = {"line-daemon-reads": "notice-daemon-reads", "line-daemon-silent": "notice-daemon-silent",
         "line-without-daemon": "setter-already-set"}
ROWS += [(line, "query", "<=", 3.0) for line in LINES]
ROWS += [("query", peer, None, None)
         for peer in ("robust-mutex", "ethtool-ioctl", "ethtool-netlink", "rtnetlink-link")]
ROWS += [("fdb-dump-256", "mac-table-256", ">=", 20.0), ("first-call", "first-call-bare", "<=", 1.15),
         ("reset-and-bring-up", "one-millisecond", "<=", 1.0)]
ROWS += [(f"bare-semop-pair-by-processes/{n}", f"query-by-processes/{n}", ">=", 0.97 if n > 1 else None)
         for n in (1, 2, 4, 8, 16, 32, 64)]
ROWS += [(f"orblinkctl-{command}", peer, None, None) for command, peer in (
    ("version", "spawn-true"), ("port", "ip-link"), ("mac", "bridge-fdb"), ("port", "ethtool"),
    ("batch-300", "ethtool"))]
# The virtual switch's figures are not times.
SWITCH = {"TCP": (">=", 0.7), "64-octet frames": (">=", 0.6), "round trip": ("<=", 2.0)}


def medians(files):
    """Nanoseconds by name."""
    units = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    found = {"one-millisecond": 1e6}
    for name in files:
        for run in json.load(open(name, encoding="utf-8"))["benchmarks"]:
            if run.get("aggregate_name") == "median" and not run.get("error_occurred"):
                plain = re.sub(r"/(iterations:\d+|manual_time)", "", run["run_name"])
                # Other programs' share of the processor is left out where one process is measured.
                time = "real_time" if "manual_time" in run["run_name"] else "cpu_time"
                found[plain] = run[time] * units[run["time_unit"]]
    for line, call in LINES.items():
        if call in found and "query" in found:
            found[line] = found[call] - found["query"]
    return found


def row_of(what, against, bound, limit, values):
    ratio = values[0] / values[1]
    kept = limit is None or (ratio <= limit if bound == "<=" else ratio >= limit)
    return {"what": what, "against": against, "ratio": round(ratio, 3), "bound": bound,
            "limit": limit, "kept": kept, "values": [round(value, 1) for value in values]}


def ratios(times, switch):
    for what, against, bound, limit in ROWS:
        if what in times and against in times:
            yield row_of(what, against, bound, limit, (times[what], times[against]))
        else:
            yield {"what": what, "against": against, "left_out": True}
    for name, (bound, limit) in SWITCH.items():
        what, against = f"virtual switch, {name}", "bridge of Linux"
        if name in switch:
            yield row_of(what, against, bound, limit, tuple(switch[name].values()))
        else:
            yield {"what": what, "against": against, "left_out": True}


def chart(rows):
    """Bars on a logarithmic scale; the line is 1."""
    bars = []
    scale = 90
    for i, row in enumerate(rows):
        y = 20 + 20 * i
        end = 560 + scale * math.log10(row["ratio"])
        colour = "#2a7" if row["kept"] else "#c33"
        bars.append(f'<text x="380" y="{y + 11}" text-anchor="end">{row["what"]} / '
                    f'{row["against"]}</text><rect x="{min(560, end):.1f}" y="{y}" height="14" '
                    f'width="{max(abs(end - 560), 1):.1f}" fill="{colour}"/>'
                    f'<text x="{max(560, end) + 5:.1f}" y="{y + 11}">{row["ratio"]:.3f}</text>')
    height = 30 + 20 * len(bars)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="880" height="{height}" '
            f'font-family="sans-serif" font-size="11"><line x1="560" x2="560" y1="10" '
            f'y2="{height - 10}" stroke="#888"/>{"".join(bars)}</svg>\n')


def main():
    directory = sys.argv[1]
    switch = {}
    files = glob.glob(os.path.join(directory, "*.json"))
    path = os.path.join(directory, "switch.json")
    if path in files:
        files.remove(path)
        switch = json.load(open(path, encoding="utf-8"))
    times = medians(files)
    rows = list(ratios(times, switch))
    print(f'{"what":32} {"against":32} {"":>10} {"":>10} {"ratio":>7}  bound   (times in ns)')
    for row in rows:
        if "left_out" in row:
            print(f'{row["what"]:32} {row["against"]:32} left out')
            continue
        bound = f'{row["bound"]} {row["limit"]}' if row["limit"] else ""
        print(f'{row["what"]:32} {row["against"]:32} {row["values"][0]:10.5g} '
              f'{row["values"][1]:10.5g} {row["ratio"]:7.3f}  {bound}'
              f'{"" if row["kept"] else "  <-- not kept"}')
    with open(os.path.join(HERE, "results.json"), "w", encoding="utf-8") as out:
        json.dump({"medians_ns": times, "rows": rows}, out, indent=1, sort_keys=True)
    with open(os.path.join(HERE, "chart.svg"), "w", encoding="utf-8") as out:
        out.write(chart([row for row in rows if "ratio" in row]))


main()

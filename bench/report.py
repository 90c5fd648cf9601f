#!/usr/bin/env python3
"""report.py RESULT...

Medians and ratios of what run.sh has measured: a table, bench/results.json and bench/chart.svg.
"""
import json
import os
import sys

HERE = os.path.dirname(os.path.abspath(__file__))
# What, against what, and the ratio that it is to keep: at most, or, for a floor, at least.
ROWS = [(name, "bare-semop-pair", "<=", limit) for name, limit in (
    ("query", 1.05), ("setter-to-empty-slot", 1.07), ("port-link", 1.07), ("phy-link", 1.07),
    ("setter-already-set", 3.0), ("setter-refused", 3.0))]
ROWS += [("query", peer, None, None)
         for peer in ("robust-mutex", "ethtool-ioctl", "ethtool-netlink", "rtnetlink-link")]
ROWS += [("fdb-dump-256", "mac-table-256", ">=", 20.0), ("first-call", "first-call-bare", "<=", 1.15)]
ROWS += [("spawn-orblinkctl-version", peer, None, None)
         for peer in ("spawn-true", "spawn-ip-link", "spawn-bridge-fdb")]
ROWS += [(f"bare-semop-pair-by-processes/{n}", f"query-by-processes/{n}", ">=", 0.97 if n > 1 else None)
         for n in (1, 2, 4, 8, 16, 32, 64)]


def medians(files):
    """Nanoseconds by name."""
    units = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}
    found = {}
    for name in files:
        for run in json.load(open(name, encoding="utf-8"))["benchmarks"]:
            if run.get("aggregate_name") == "median" and not run.get("error_occurred"):
                plain = run["run_name"].replace("/iterations:50", "").replace("/iterations:1", "")
                plain = plain.replace("/manual_time", "")
                # Other programs' share of the processor is left out where one process is measured.
                time = "real_time" if "manual_time" in run["run_name"] else "cpu_time"
                found[plain] = run[time] * units[run["time_unit"]]
    return found


def ratios(times):
    for what, against, bound, limit in ROWS:
        if what not in times or against not in times:
            yield {"what": what, "against": against, "left_out": True}
            continue
        ratio = times[what] / times[against]
        kept = limit is None or (ratio <= limit if bound == "<=" else ratio >= limit)
        yield {"what": what, "against": against, "ratio": round(ratio, 3), "bound": bound,
               "limit": limit, "kept": kept, "what_ns": round(times[what], 1),
               "against_ns": round(times[against], 1)}


def chart(rows):
    """Bars on a logarithmic scale; the line is 1."""
    from math import log10
    bars = []
    scale = 90
    for i, row in enumerate(rows):
        y = 20 + 20 * i
        end = 460 + scale * log10(row["ratio"])
        colour = "#2a7" if row["kept"] else "#c33"
        bars.append(f'<text x="350" y="{y + 11}" text-anchor="end">{row["what"]} / '
                    f'{row["against"]}</text><rect x="{min(460, end):.1f}" y="{y}" height="14" '
                    f'width="{max(abs(end - 460), 1):.1f}" fill="{colour}"/>'
                    f'<text x="{max(460, end) + 5:.1f}" y="{y + 11}">{row["ratio"]:.3f}</text>')
    height = 30 + 20 * len(bars)
    return (f'<svg xmlns="http://www.w3.org/2000/svg" width="760" height="{height}" '
            f'font-family="sans-serif" font-size="11"><line x1="460" x2="460" y1="10" '
            f'y2="{height - 10}" stroke="#888"/>{"".join(bars)}</svg>\n')


def main():
    times = medians(sys.argv[1:])
    rows = list(ratios(times))
    print(f'{"what":32} {"against":32} {"ns":>10} {"ns":>10} {"ratio":>7}  bound')
    for row in rows:
        if "left_out" in row:
            print(f'{row["what"]:32} {row["against"]:32} left out')
            continue
        bound = f'{row["bound"]} {row["limit"]}' if row["limit"] else ""
        print(f'{row["what"]:32} {row["against"]:32} {row["what_ns"]:10.0f} '
              f'{row["against_ns"]:10.0f} {row["ratio"]:7.3f}  {bound}'
              f'{"" if row["kept"] else "  <-- not kept"}')
    with open(os.path.join(HERE, "results.json"), "w", encoding="utf-8") as out:
        json.dump({"medians_ns": times, "rows": rows}, out, indent=1, sort_keys=True)
    with open(os.path.join(HERE, "chart.svg"), "w", encoding="utf-8") as out:
        out.write(chart([row for row in rows if "ratio" in row]))


main()

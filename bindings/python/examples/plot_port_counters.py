#!/usr/bin/env python3
"""Plots how fast a counter of a switch's ports grows.

    plot_port_counters.py [--switch 0] [--counter aFramesReceivedOK] [--interval 1] [--samples 60]
                          [--png FILE]

With --png the plot is written as a picture, which takes matplotlib; otherwise it is drawn as text, one
line for each port."""

import argparse
import importlib.util
import sys
import time

import orblink
from orblink.layouts import VswitchPortCounters

BARS = " ▁▂▃▄▅▆▇█"


def options() -> argparse.Namespace:
    parser = argparse.ArgumentParser(description="Plots how fast a counter of a switch's ports grows.")
    parser.add_argument("--switch", type=int, default=0)
    parser.add_argument("--counter", default="aFramesReceivedOK",
                        choices=[name for name, _ in VswitchPortCounters._fields_],
                        metavar="COUNTER")
    parser.add_argument("--interval", type=float, default=1.0, help="seconds between two samples")
    parser.add_argument("--samples", type=int, default=60)
    parser.add_argument("--png", metavar="FILE")
    return parser.parse_args()


def rates(ports: list[orblink.Port], counter: str, interval: float,
          samples: int) -> dict[int, list[float]]:
    """Of each port: growth a second between two samples."""
    def read() -> list[int]:
        return [getattr(port.counters(VswitchPortCounters), counter) for port in ports]

    found: dict[int, list[float]] = {port.index: [] for port in ports}
    before, then = read(), time.monotonic()
    for _ in range(samples):
        time.sleep(interval)
        now_read, now = read(), time.monotonic()
        for port, old, new in zip(ports, before, now_read):
            found[port.index].append((new - old) / (now - then))
        before, then = now_read, now
    return found


def draw_text(found: dict[int, list[float]], counter: str) -> None:
    most = max((value for values in found.values() for value in values), default=0.0)
    print(f"{counter} a second, at most {most:.1f}")
    for port, values in found.items():
        bars = "".join(BARS[round(value / most * (len(BARS) - 1))] if most > 0 else " "
                       for value in values)
        print(f"port {port} |{bars}| {values[-1]:.1f}")


def draw_picture(found: dict[int, list[float]], counter: str, interval: float, file: str) -> None:
    import matplotlib
    matplotlib.use("Agg")
    from matplotlib import pyplot
    figure, axes = pyplot.subplots()
    for port, values in found.items():
        axes.plot([interval * (place + 1) for place in range(len(values))], values,
                  label=f"port {port}")
    axes.set_xlabel("seconds")
    axes.set_ylabel(f"{counter} a second")
    axes.legend()
    figure.savefig(file)


def main() -> int:
    wanted = options()
    if wanted.png and importlib.util.find_spec("matplotlib") is None:
        print("--png takes matplotlib, which is not installed", file=sys.stderr)
        return 1
    try:
        found = rates(orblink.Switch(wanted.switch).ports(), wanted.counter, wanted.interval,
                      wanted.samples)
    except orblink.Error as error:
        print(f"switch {wanted.switch}: {error}", file=sys.stderr)
        return 1
    if wanted.png:
        draw_picture(found, wanted.counter, wanted.interval, wanted.png)
    else:
        draw_text(found, wanted.counter)
    return 0


if __name__ == "__main__":
    sys.exit(main())

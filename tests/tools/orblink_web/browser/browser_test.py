#!/usr/bin/python3
"""browser_test.py BUILD_DIR [--seconds N] [--screenshots DIR], see run.sh."""

import argparse
import contextlib
import os
import re
import shutil
import socket
import subprocess
import sys
import tempfile
import threading
import time
import urllib.request

from devtools import Browser

SOURCE = os.path.realpath(os.path.join(os.path.dirname(__file__), "../../../.."))
BOARD = os.path.join(SOURCE, "virtual_board/boards/phy.toml")
CLIENTS = 50
LABEL = "<img src=x onerror=document.title=1>"

failures = 0


def check(condition, what):
    global failures
    if not condition:
        failures += 1
    print(("ok      " if condition else "FAILED  ") + what, flush=True)


def figure(name, value):
    print(f"| {name} | {value} |", flush=True)


class WebOnBoard:
    """A virtual board with orblink-web on it."""

    def __init__(self, build, stack):
        self.bin = os.path.join(build, "bin")
        self.library = os.path.join(build, "lib/liborblink.so.0")
        directory = tempfile.mkdtemp(prefix="orblink-web-browser-board.")
        stack.callback(shutil.rmtree, directory, ignore_errors=True)
        self.socket = os.path.join(directory, "board.sock")
        names = os.path.join(directory, "names.toml")
        with open(names, "w", encoding="utf-8") as file:
            file.write(f"[port]\nlan1 = \"0:1\"\n'{LABEL}' = \"0:2\"\n")
        self.start(stack, self.program("orblink-vboard"), "serve", "--board", BOARD,
                   "--time-scale", "0.02", "--socket", self.socket)
        while not os.path.exists(self.socket):
            time.sleep(0.05)
        self.run("orblinkctl init && orblinkctl up 0 && orblinkctl aging 0 4800s && orblinkctl phy 0 up && orblinkctl phy 1 up")
        web = self.start(stack, self.program("orblink-vboard"), "attach", "--socket", self.socket,
                         "--", self.program("orblink-web"), "--listen", "127.0.0.1:0",
                         "--names", names)
        self.url = re.search(r"http://\S+/", web.stdout.readline()).group(0)
        self.port = int(self.url.split(":")[2].strip("/"))

    def program(self, name):
        return os.path.join(self.bin, name)

    def start(self, stack, *words):
        process = subprocess.Popen(words, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                                   stderr=subprocess.DEVNULL, text=True)
        stack.callback(self.stop, process)
        return process

    @staticmethod
    def stop(process):
        process.terminate()
        process.wait(10)
        process.stdout.close()

    def run(self, line, **options):
        return subprocess.run(
            [self.program("orblink-vboard"), "attach", "--socket", self.socket, "--",
             "sh", "-c", f"PATH={self.bin}:$PATH; {line}"],
            check=True, capture_output=True, text=True, **options).stdout

    def control(self, *words):
        subprocess.run([self.program("orblink-vboard"), "control", "--socket", self.socket, *words],
                       check=True, stdout=subprocess.DEVNULL)

    def metric(self, name):
        with urllib.request.urlopen(self.url + "metrics", timeout=10) as answer:
            return int(re.search(rf"^{name} (\d+)$", answer.read().decode(), re.M).group(1))


def look_at_page(board, page):
    page.looks(1280, 900, False)
    page.open(board.url)
    check(page.wait_for("document.querySelector('.state.good') !== null") is not None,
          "the page says that it is live")
    check(page.wait_for("document.querySelectorAll('#ports tbody tr').length === 8") is not None,
          "every port has a row")
    check(page.wait_for("document.querySelectorAll('#drawing [data-port]').length === 8")
          is not None, "every port is drawn")
    check(page.wait_for("document.querySelector('#registers .field.set') !== null") is not None,
          "PHY registers are decoded")
    check(page.evaluate("document.body.textContent").count(LABEL) > 0 and
          page.evaluate("document.images.length") == 0 and
          page.evaluate("document.title") == "OrbLink", "a label is text and never markup")


def look_at_links(board, page):
    row = ("Array.from(document.querySelectorAll('#ports tbody tr'))"
           ".find((row) => row.cells[0].textContent === '0:1').cells[2].textContent")
    page.wait_for(row + " === 'up'")
    worst = 0
    for state in ["down", "up"] * 3:
        begin = time.monotonic()
        board.control("link", "sw0:1", state)
        if page.wait_for(f"{row} === '{state}'", 10) is None:
            worst = float("inf")
            break
        worst = max(worst, time.monotonic() - begin)
    figure("a port goes down or up until the page shows it, worst of 6", f"{1000 * worst:.0f} ms")
    check(worst <= 1.0, "the page shows a link's change within a second")
    check(page.wait_for("document.querySelector('#changes').textContent"
                        ".includes('port 0:1 lan1: link down')") is not None,
          "the change is noted")


def look_at_search(board, page):
    for i in range(1, 6):
        board.control("learn", "sw0:1", f"02:00:00:00:00:0{i}")
    rows = "document.querySelectorAll('#mac tbody tr').length"
    check(page.wait_for(rows + " === 5") is not None, "learnt addresses appear")
    page.evaluate("(() => { const box = document.getElementById('mac-search'); box.value = '0:03';"
                  "box.dispatchEvent(new Event('input')); })()")
    check(page.wait_for(rows + " === 1") is not None, "the search leaves what it finds")
    time.sleep(4)
    check(page.evaluate(rows) == 1, "the next reading of the table leaves the search alone")


def look_at_widths(board, page, screenshots):
    for width, height, dark in ((1280, 900, False), (1280, 900, True), (390, 844, False),
                                (390, 844, True), (320, 568, False)):
        page.looks(width, height, dark)
        page.open(board.url)
        page.wait_for("document.querySelectorAll('#ports tbody tr').length === 8")
        check(page.evaluate("document.documentElement.scrollWidth") <= width,
              f"nothing sticks out at {width} pixels, {'dark' if dark else 'light'}")
        check(page.evaluate(CONTRAST) >= 4.5, "every text has a contrast of 4.5 or more")
        if screenshots:
            page.screenshot(os.path.join(screenshots,
                                         f"{width}-{'dark' if dark else 'light'}.png"))


# The least contrast of a text of the page with what is behind it, as WCAG computes it.
CONTRAST = r"""(() => {
    const channels = (text) => text.match(/[\d.]+/g).map(Number);
    const light = (rgb) => rgb.slice(0, 3).map((c) => c / 255)
        .map((c) => c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4)
        .reduce((sum, c, i) => sum + c * [0.2126, 0.7152, 0.0722][i], 0);
    const behind = (element) => {
        for (; element; element = element.parentElement) {
            const rgb = channels(getComputedStyle(element).backgroundColor);
            if (rgb.length === 3 || rgb[3] === 1) return rgb;
        }
        return [255, 255, 255];
    };
    let least = 21;
    for (const element of document.querySelectorAll('body *')) {
        if (element.closest('svg, noscript, [hidden]') ||
            !Array.from(element.childNodes).some((n) => n.nodeType === 3 && n.data.trim()))
            continue;
        const two = [light(channels(getComputedStyle(element).color)), light(behind(element))];
        least = Math.min(least, (Math.max(...two) + 0.05) / (Math.min(...two) + 0.05));
    }
    return least;
})()"""


def look_without_script(board, page):
    page.script_off()
    page.call("Page.navigate", url=board.url + "?mac=0:02")
    time.sleep(1)
    document = page.call("DOM.getDocument")["root"]["nodeId"]
    html = page.call("DOM.getOuterHTML", nodeId=document)["outerHTML"]
    check(html.count("<th scope=\"row\">0:") == 8 and "02:00:00:00:00:02" in html and
          "02:00:00:00:00:03" not in html, "tables and search work without JavaScript")


def follow(port, seconds, counts, index):
    """One client of the events: reads what it is sent."""
    end = time.monotonic() + seconds
    with socket.create_connection(("127.0.0.1", port), timeout=10) as client:
        client.sendall(b"GET /events HTTP/1.1\r\nHost: localhost\r\n\r\n")
        client.settimeout(5)
        while time.monotonic() < end:
            data = client.recv(65536)
            if not data:
                break
            counts[index] += data.count(b"event: ")


def lock_waits(board, seconds):
    line = f"{sys.executable} {os.path.dirname(os.path.realpath(__file__))}/lock_waits.py " \
           f"{board.library} {seconds}"
    calls, worst, median = board.run(line, timeout=seconds + 60).split()
    return int(calls), float(worst), float(median)


def crowd(board, seconds):
    alone = 10
    before = board.metric("orblink_web_readings_total")
    calls, worst, median = lock_waits(board, alone)
    rate = (board.metric("orblink_web_readings_total") - before) / alone
    figure(f"call beside orblink-web with one client: {calls} calls, worst, median",
           f"{worst:.1f} ms, {median:.2f} ms")
    counts = [0] * CLIENTS
    threads = [threading.Thread(target=follow, args=(board.port, seconds, counts, i))
               for i in range(CLIENTS)]
    before = board.metric("orblink_web_readings_total")
    for thread in threads:
        thread.start()
    calls, worst, median = lock_waits(board, seconds - 5)
    clients = board.metric("orblink_web_event_clients")
    crowded = (board.metric("orblink_web_readings_total") - before) / (seconds - 5)
    for thread in threads:
        thread.join()
    figure(f"call beside {CLIENTS} clients for {seconds} s: {calls} calls, worst, median",
           f"{worst:.1f} ms, {median:.2f} ms")
    figure("readings of the board in a second with one client, with all",
           f"{rate:.1f}, {crowded:.1f}")
    figure("events that each client was sent, least and most", f"{min(counts)}, {max(counts)}")
    check(clients >= CLIENTS, "all clients are followed to the end")
    check(min(counts) >= seconds / 2, "every client was kept up to date")
    check(crowded <= 1.5 * rate + 5, "more clients make no more readings")
    check(worst <= 1000, "no call beside waited for more than a second")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--seconds", type=int, default=60)
    parser.add_argument("--screenshots")
    options = parser.parse_args()
    with contextlib.ExitStack() as stack:
        board = WebOnBoard(os.path.realpath(options.build), stack)
        page = stack.enter_context(Browser()).page()
        look_at_page(board, page)
        look_at_links(board, page)
        look_at_search(board, page)
        look_at_widths(board, page, options.screenshots)
        crowd(board, max(10, options.seconds))
        check(page.complaints == [], f"nothing in the console: {page.complaints}")
        foreign = [url for url in page.requested if not url.startswith(board.url)]
        check(foreign == [], f"nothing from elsewhere: {foreign}")
        look_without_script(board, page)
    return 1 if failures else 0


sys.exit(main())

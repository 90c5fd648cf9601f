"""Drives a headless Chromium by its DevTools protocol."""

import base64
import json
import re
import shutil
import subprocess
import tempfile
import time
import urllib.request

import websocket


class Browser:
    """A Chromium with a profile of its own; it goes with the context."""

    def __enter__(self):
        self.profile = tempfile.mkdtemp(prefix="orblink-web-browser.")
        self.process = subprocess.Popen(
            ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
             "--no-first-run", "--disable-background-networking", "--remote-debugging-port=0",
             "--remote-allow-origins=*", f"--user-data-dir={self.profile}", "about:blank"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        for line in self.process.stderr:
            match = re.search(r"DevTools listening on ws://([^/]+)/", line)
            if match:
                self.address = match.group(1)
                return self
        raise RuntimeError("Chromium did not start")

    def __exit__(self, *_):
        self.process.terminate()
        try:
            self.process.wait(10)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.process.stderr.close()
        shutil.rmtree(self.profile, ignore_errors=True)

    def page(self):
        with urllib.request.urlopen(f"http://{self.address}/json/list", timeout=10) as answer:
            targets = json.load(answer)
        return Page(next(one for one in targets if one["type"] == "page")["webSocketDebuggerUrl"])


class Page:
    def __init__(self, url):
        self.socket = websocket.create_connection(url, timeout=20)
        self.number = 0
        # What the console was told as a warning or an error, exceptions, requests that failed.
        self.complaints = []
        # Where resources came from.
        self.requested = []
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def call(self, method, **parameters):
        self.number += 1
        self.socket.send(json.dumps({"id": self.number, "method": method, "params": parameters}))
        while True:
            message = json.loads(self.socket.recv())
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            self.note(message)

    def note(self, message):
        method, parameters = message.get("method"), message.get("params", {})
        if method == "Runtime.exceptionThrown":
            self.complaints.append(str(parameters["exceptionDetails"]))
        elif method == "Runtime.consoleAPICalled" and parameters["type"] in ("error", "warning"):
            self.complaints.append(str(parameters["args"]))
        elif method == "Log.entryAdded" and parameters["entry"]["level"] in ("error", "warning"):
            self.complaints.append(str(parameters["entry"]))
        elif method == "Network.requestWillBeSent":
            self.requested.append(parameters["request"]["url"])

    def evaluate(self, expression):
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True,
                           returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(str(result["exceptionDetails"]))
        return result["result"].get("value")

    def open(self, url):
        self.call("Page.navigate", url=url)
        self.wait_for("document.readyState === 'complete'")

    def wait_for(self, expression, seconds=20):
        """Seconds until the expression is true; nothing when it does not come true."""
        begin = time.monotonic()
        while time.monotonic() - begin < seconds:
            if self.evaluate(expression):
                return time.monotonic() - begin
            time.sleep(0.02)
        return None

    def looks(self, width, height, dark):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def script_off(self):
        self.call("Emulation.setScriptExecutionDisabled", value=True)

    def screenshot(self, path):
        data = self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"]
        with open(path, "wb") as file:
            file.write(base64.b64decode(data))

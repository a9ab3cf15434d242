"""A headless Chromium, driven over its DevTools protocol through two pipes: no port, no driver."""

import base64
import json
import os
import select
import subprocess
import tempfile
import time

# Without these, Chromium wants a display, a sandbox of the kernel's, or the network.
FLAGS = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-extensions",
         "--font-render-hinting=none", "--remote-debugging-pipe", "--hide-scrollbars"]


class Browser:
    """One page of a browser; a context manager. `messages` are what the page said on its console,
    errors of scripts and of loading, and dialogs that it opened."""

    def __init__(self, program):
        to_child, self.to_browser = os.pipe()
        self.from_browser, from_child = os.pipe()
        self.folder = tempfile.TemporaryDirectory()

        def use_pipes():
            high = [os.dup(to_child), os.dup(from_child)]  # before 3 and 4 are taken
            os.dup2(high[0], 3)
            os.dup2(high[1], 4)

        self.process = subprocess.Popen(
            [program, *FLAGS, f"--user-data-dir={self.folder.name}"], preexec_fn=use_pipes,
            close_fds=False, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_child)
        os.close(from_child)
        self.number, self.rest, self.events, self.messages = 0, b"", [], []
        self.session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait(timeout=30)
        self.folder.cleanup()

    def _receive(self, deadline):
        while b"\0" not in self.rest:
            if not select.select([self.from_browser], [], [], max(0, deadline - time.time()))[0]:
                raise TimeoutError("the browser does not answer")
            block = os.read(self.from_browser, 1 << 20)
            if not block:
                raise EOFError("the browser ended")
            self.rest += block
        line, self.rest = self.rest.split(b"\0", 1)
        return json.loads(line)

    def _note(self, message):
        method, data = message.get("method", ""), message.get("params", {})
        self.events.append(method)
        if method == "Runtime.consoleAPICalled":
            self.messages.append("console: " + json.dumps(data["args"])[:300])
        elif method == "Runtime.exceptionThrown":
            self.messages.append("exception: " + data["exceptionDetails"]["text"])
        elif method == "Log.entryAdded":
            self.messages.append("log: " + data["entry"]["text"])
        elif method == "Page.javascriptDialogOpening":
            self.messages.append("dialog: " + data["message"])

    def call(self, method, **parameters):
        """The result of a command of the protocol."""
        self.number += 1
        request = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            request["sessionId"] = self.session
        os.write(self.to_browser, json.dumps(request).encode() + b"\0")
        deadline = time.time() + 60
        while True:
            message = self._receive(deadline)
            if message.get("id") == self.number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']['message']}")
                return message["result"]
            self._note(message)

    def open(self, path, width, height, dark):
        """Shows a file in a window of that size."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call("Emulation.setEmulatedMedia", features=[
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])
        self.events.clear()
        self.call("Page.navigate", url="file://" + os.path.abspath(path))
        deadline = time.time() + 60
        while "Page.loadEventFired" not in self.events:
            self._note(self._receive(deadline))

    def evaluate(self, expression):
        """The value of an expression of JavaScript in the page."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"]["description"])
        return result["result"].get("value")

    def screenshot(self, tallest):
        """All of the page or drawing, down to so many pixels, as PNG."""
        size = self.call("Page.getLayoutMetrics")
        width = size["cssLayoutViewport"]["clientWidth"]
        height = min(size["cssContentSize"]["height"], tallest)
        clip = {"x": 0, "y": 0, "width": width, "height": height, "scale": 1}
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=True, clip=clip)
        return base64.b64decode(shot["data"])

"""A headless Chromium, driven over the WebDriver protocol with nothing but Python's own library."""
import json
import re
import subprocess
import tempfile
import urllib.error
import urllib.request

CHROMIUM_OPTIONS = [
    "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
    "--disable-background-networking", "--disable-component-update", "--disable-sync", "--window-size=1400,900"]

# The code points that WebDriver has for keys without a character.
KEYS = {"Enter": "\ue007", "Escape": "\ue00c", "End": "\ue010", "Home": "\ue011", "ArrowLeft": "\ue012",
        "ArrowUp": "\ue013", "ArrowRight": "\ue014", "ArrowDown": "\ue015"}


class Browser:
    """One browser with an empty profile, from start to stop."""

    def __init__(self):
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self._driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        self._address = f"http://127.0.0.1:{self._port()}"
        options = {"args": CHROMIUM_OPTIONS + [f"--user-data-dir={self._profile.name}"]}
        capabilities = {"alwaysMatch": {"goog:chromeOptions": options, "goog:loggingPrefs": {"browser": "ALL"}}}
        self._session = "/session/" + self._post("/session", {"capabilities": capabilities})["sessionId"]

    def _port(self):
        for line in self._driver.stdout:
            if found := re.search(r"started successfully on port (\d+)", line):
                return found[1]
        raise RuntimeError("chromedriver did not start")

    def stop(self):
        self._send("DELETE", self._session)
        self._driver.terminate()
        self._driver.wait()
        self._driver.stdout.close()
        self._profile.cleanup()

    def open(self, path):
        self._command("/url", {"url": f"file://{path}"})

    def run(self, script, *arguments):
        """What the JavaScript function body `script` returns."""
        return self._command("/execute/sync", {"script": script, "args": arguments})

    def press(self, *keys):
        """Presses keys, one after the other, where the focus is."""
        actions = []
        for key in keys:
            actions += [{"type": kind, "value": KEYS.get(key, key)} for kind in ("keyDown", "keyUp")]
        self._command("/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def click(self, selector):
        found = self._command("/element", {"using": "css selector", "value": selector})
        self._command(f"/element/{list(found.values())[0]}/click", {})

    def clipboard(self):
        self._command("/permissions", {"descriptor": {"name": "clipboard-read"}, "state": "granted"})
        return self._command("/execute/async", {
            "script": "navigator.clipboard.readText().then(arguments[0], arguments[0])", "args": []})

    def prefer_colours(self, scheme):
        features = [{"name": "prefers-color-scheme", "value": scheme}]
        self._command("/goog/cdp/execute", {"cmd": "Emulation.setEmulatedMedia", "params": {"features": features}})

    def screenshot(self):
        """The page as a PNG in base64."""
        return self._send("GET", self._session + "/screenshot")

    def complaints(self):
        """What the browser's console has been told since the last call."""
        return [entry["message"] for entry in self._command("/se/log", {"type": "browser"})]

    def _command(self, path, body):
        return self._post(self._session + path, body)

    def _post(self, path, body):
        return self._send("POST", path, json.dumps(body).encode())

    def _send(self, method, path, body=None):
        request = urllib.request.Request(self._address + path, body, {"Content-Type": "application/json"}, method=method)
        try:
            with urllib.request.urlopen(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as problem:
            raise RuntimeError(json.load(problem)["value"]["message"]) from problem

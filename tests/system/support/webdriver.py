"""A browser, driven as a person would: by addresses, clicks and typing."""
import base64
import json
import re
import urllib.error
import urllib.request

from .browsers import CHROMIUM
from .programs import Process, scratch
from .waiting import until

_ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


class Browser:
    """Without a window unless one is asked for. `hosts` are addresses that it takes for names, which may hold a "*"; whatever
    certificate they show is good. `arguments` are more of the browser's own."""

    def __init__(self, headless=True, hosts=None, arguments=()):
        self.driver = Process(["chromedriver", "--port=0"])
        started = r"started successfully on port (\d+)"
        until(lambda: re.search(started, self.driver.output), lambda: f"the driver listens\n{self.driver.output}")
        self.base = f"http://127.0.0.1:{re.search(started, self.driver.output)[1]}"
        arguments = ["--window-size=1100,900", *CHROMIUM, f"--user-data-dir={scratch('driven')}", *arguments]
        if headless:
            arguments.append("--headless=new")
        if hosts:
            rules = ", ".join(f"MAP {name} {address}" for name, address in hosts.items())
            arguments += [f"--host-resolver-rules={rules}", "--ignore-certificate-errors"]
        answer = self._call("POST", "/session", {"capabilities": {"alwaysMatch": {"goog:chromeOptions": {"args": arguments}}}})
        self.base += f"/session/{answer['sessionId']}"
        self.debugger = answer["capabilities"]["goog:chromeOptions"]["debuggerAddress"]

    def _call(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def go(self, url):
        self._call("POST", "/url", {"url": url})

    def error_of(self, url):
        """What the browser says of an address that does not load."""
        try:
            self.go(url)
        except urllib.error.HTTPError as error:
            return json.load(error)["value"]["message"]
        raise AssertionError(f"{url} loads")

    def opener(self):
        """A command that opens the address after it in a new tab."""
        return f"curl --silent --request PUT http://{self.debugger}/json/new?"

    def addresses(self):
        """What its tabs show."""
        targets = self._call("POST", "/goog/cdp/execute", {"cmd": "Target.getTargets", "params": {}})["targetInfos"]
        return [target["url"] for target in targets if target["type"] == "page"]

    @property
    def url(self):
        return self._call("GET", "/url")

    def _find(self, how, what):
        return self._call("POST", "/element", {"using": how, "value": what})[_ELEMENT]

    def click(self, link=None, css=None):
        element = self._find("link text", link) if link else self._find("css selector", css)
        self._call("POST", f"/element/{element}/click", {})

    def follow(self, link=None, css=None):
        """Clicks what leads to another page and waits for that page. The driver alone does not always: a form's page is asked
        for only after the click has been answered."""
        self.evaluate("document.documentElement.left = true")
        self.click(link, css)

        def arrived():
            try:
                return self.evaluate("!document.documentElement.left && document.readyState === 'complete'")
            except urllib.error.HTTPError:
                return False  # asked between two documents

        until(arrived, "another page is there")

    def type(self, css, text):
        self._call("POST", f"/element/{self._find('css selector', css)}/value", {"text": text})

    def evaluate(self, expression):
        """The driver runs it from outside; the page's own policy allows no script."""
        return self._call("POST", "/execute/sync", {"script": f"return {expression};", "args": []})

    def texts(self, css):
        return self.evaluate(f"Array.from(document.querySelectorAll({json.dumps(css)}), e => e.innerText)")

    def attributes(self, css, name):
        return self.evaluate(f"Array.from(document.querySelectorAll({json.dumps(css)}), e => e.getAttribute({json.dumps(name)}))")

    def colours(self, scheme):
        """Has the page shown as to a person who prefers "dark" or "light"."""
        self._call("POST", "/goog/cdp/execute", {
            "cmd": "Emulation.setEmulatedMedia", "params": {"features": [{"name": "prefers-color-scheme", "value": scheme}]}})

    def accessible_tree(self):
        """(role, name) of everything that a screen reader finds."""
        nodes = self._call("POST", "/goog/cdp/execute", {"cmd": "Accessibility.getFullAXTree", "params": {}})["nodes"]
        return [(node.get("role", {}).get("value"), node.get("name", {}).get("value")) for node in nodes if not node.get("ignored")]

    def picture(self):
        """A PNG of the whole page."""
        answer = self._call("POST", "/goog/cdp/execute", {"cmd": "Page.captureScreenshot", "params": {"captureBeyondViewport": True}})
        return base64.b64decode(answer["data"])

    def stop(self):
        try:
            self._call("DELETE", "")
        finally:
            self.driver.stop()

"""The page in Firefox, which is asked over WebDriver BiDi: Debian has no geckodriver."""

import json
import pathlib
import re
import socket
import subprocess
import time

from wsproto import ConnectionType, WSConnection
from wsproto.events import AcceptConnection, Request, TextMessage

from access import RULES
from telephones import LIMIT, PageTest

# No request leaves the machine: all other hosts are behind a proxy that does not exist.
PREFERENCES = {"network.proxy.type": 1, "network.proxy.http": "127.0.0.1", "network.proxy.http_port": 9,
               "network.proxy.ssl": "127.0.0.1", "network.proxy.ssl_port": 9,
               "network.proxy.no_proxies_on": "127.0.0.1", "browser.shell.checkDefaultBrowser": False}


class Browser:
    def __init__(self, profile):
        profile.mkdir()
        lines = [f"user_pref({json.dumps(name)}, {json.dumps(value)});\n" for name, value in PREFERENCES.items()]
        (profile / "user.js").write_text("".join(lines))
        with open(profile / "log", "w", encoding="utf-8") as log:
            self.process = subprocess.Popen(
                ["/usr/bin/firefox-esr", "--headless", "--no-remote", "--remote-debugging-port=0", "--profile", profile],
                stdout=log, stderr=log, env={"HOME": str(profile), "PATH": "/usr/bin:/bin"})
        port = self.port(profile / "log")
        self.socket = socket.create_connection(("127.0.0.1", int(port)), LIMIT)
        self.wire = WSConnection(ConnectionType.CLIENT)
        self.socket.sendall(self.wire.send(Request(host=f"127.0.0.1:{port}", target="/session")))
        assert isinstance(next(self.events()), AcceptConnection)
        self.count = 0
        self.ask("session.new", capabilities={})
        self.context = self.ask("browsingContext.getTree")["contexts"][0]["context"]

    def port(self, log):
        deadline = time.monotonic() + LIMIT
        while not (found := re.search(r"listening on ws://127.0.0.1:(\d+)", log.read_text())):
            assert time.monotonic() < deadline and self.process.poll() is None, log.read_text()
            time.sleep(0.05)
        return found[1]

    def events(self):
        while True:
            yield from self.wire.events()
            self.wire.receive_data(self.socket.recv(1 << 16))

    def ask(self, method, **parameters):
        self.count += 1
        request = json.dumps({"id": self.count, "method": method, "params": parameters})
        self.socket.sendall(self.wire.send(TextMessage(data=request)))
        text = ""
        for event in self.events():
            text += event.data if isinstance(event, TextMessage) else ""
            if not getattr(event, "message_finished", False):
                continue
            answer, text = json.loads(text), ""
            if answer.get("id") == self.count:
                assert answer["type"] == "success", answer
                return answer["result"]

    def open(self, address):
        self.ask("browsingContext.navigate", context=self.context, url=address, wait="complete")

    def run(self, body):
        """What the JavaScript returns."""
        answer = self.ask("script.evaluate", expression=f"JSON.stringify((() => {{ {body} }})() ?? null)",
                          target={"context": self.context}, awaitPromise=True)
        assert answer["type"] == "success", answer
        return json.loads(answer["result"]["value"])

    def wait_for(self, body):
        deadline = time.monotonic() + LIMIT
        while not self.run(body):
            assert time.monotonic() < deadline, body

    def end(self):
        self.process.terminate()
        self.process.wait(LIMIT)
        self.socket.close()


class Firefox(PageTest):
    def setUp(self):
        super().setUp()
        self.browser = Browser(pathlib.Path(self.page.folder.name, "firefox"))
        self.addCleanup(self.browser.end)
        self.browser.open(self.page.address)
        self.browser.wait_for("return document.querySelector('article.telephone') !== null")

    def test_the_page_works_and_keeps_the_rules(self):
        self.browser.run("[...document.querySelectorAll('button')].find((each) => each.textContent === '+1 h').click()")
        self.browser.wait_for("return document.querySelector('.passing output').textContent === 'done'")
        self.browser.wait_for("return document.querySelector('[data-test=local]').textContent === '2026-03-08 08:59:50'")
        self.assertTrue(self.browser.run("return document.querySelectorAll('.plot canvas').length >= 1"))
        self.assertEqual(self.browser.run(RULES), {})

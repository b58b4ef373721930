"""Hosts, a panel and a browser for the tests of the page."""

import json
import os
import pathlib
import re
import socket
import subprocess
import tempfile
import time
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chromium.remote_connection import ChromiumRemoteConnection
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.remote.file_detector import UselessFileDetector
from selenium.webdriver.support.ui import Select, WebDriverWait

NEW_YORK = ("--at", "2026-03-08T06:59:50Z", "--speed", "0", "--variant", "3")
LIMIT = 30  # seconds for anything that a page should show
# Without these, Chromium looks for updates and other hosts.
QUIET = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-background-networking",
         "--disable-component-update", "--disable-sync", "--lang=en-US", "--no-first-run", "--disable-quic"]


def free_port():
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
        probe.bind(("127.0.0.1", 0))
        return str(probe.getsockname()[1])


class Driver:
    """ChromeDriver, asked by its address: a bare machine does not know the name localhost."""

    def __init__(self):
        self.process = subprocess.Popen(["/usr/bin/chromedriver", "--port=0"],
                                        stdout=subprocess.PIPE, text=True)
        lines = iter(self.process.stdout.readline, "")
        started = next(line for line in lines if "started successfully on port" in line)
        port = re.search(r"on port (\d+)", started)[1]
        self.connection = ChromiumRemoteConnection(f"http://127.0.0.1:{port}", "goog", "chrome")

    def end(self):
        self.process.terminate()
        self.process.wait(LIMIT)
        self.process.stdout.close()


class Host:
    """A host with a telephone of its own."""

    def __init__(self, programs, folder, name, time_server, *options):
        self.programs = programs
        self.time_server = time_server
        self.socket = str(pathlib.Path(folder, f"{name}.sock"))
        self.command = [programs / "clockhost", "--state", str(pathlib.Path(folder, name)),
                        "--socket", self.socket, *options]
        self.start()

    def start(self):
        environment = {**os.environ, "NTPCLIENT_PORT": self.time_server, "NTPCLIENT_RETRY_MS": "100"}
        self.process = subprocess.Popen(self.command, stderr=subprocess.DEVNULL, env=environment)
        deadline = time.monotonic() + LIMIT
        while self.ctl("status", check=False).returncode != 0:
            assert time.monotonic() < deadline and self.process.poll() is None

    def ctl(self, *words, check=True):
        return subprocess.run([self.programs / "clockctl", "--socket", self.socket, *words],
                              check=check, capture_output=True, text=True, timeout=LIMIT)

    def end(self):
        self.process.terminate()
        self.process.wait(LIMIT)


class Setup:
    """Hosts with a panel, and a browser that has opened its address."""

    def __init__(self, programs, *hosts, size=(1280, 1000)):
        self.folder = tempfile.TemporaryDirectory()
        time_server = free_port()
        self.hosts = [Host(programs, self.folder.name, f"telephone{number}", time_server, *options)
                      for number, options in enumerate(hosts)]
        self.command_line = [programs / "clockpanel", "--socket", *(host.socket for host in self.hosts),
                             "--time-server", time_server]
        self.start_panel()
        self.driver = Driver()
        self.browser = self.new_browser(size)
        self.browser.get(self.address)
        self.wait_for(lambda: len(self.all("article.telephone")) == len(hosts))

    def start_panel(self):
        self.panel = subprocess.Popen(self.command_line, stdout=subprocess.PIPE, text=True)
        self.address = self.panel.stdout.readline().strip()

    def end_panel(self):
        self.panel.terminate()
        assert self.panel.wait(LIMIT) == 0
        self.panel.stdout.close()

    def new_browser(self, size):
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        profile = os.path.join(self.folder.name, "profile")
        downloads = {"download.default_directory": self.folder.name}
        options.add_experimental_option("prefs", downloads)
        for argument in (*QUIET, f"--user-data-dir={profile}", f"--window-size={size[0]},{size[1]}"):
            options.add_argument(argument)
        return webdriver.Remote(self.driver.connection, options=options,
                                file_detector=UselessFileDetector())  # files stay where they are

    def command(self, name, **parameters):
        """A command of the DevTools protocol."""
        return self.browser.execute("executeCdpCommand", {"cmd": name, "params": parameters})["value"]

    def screen(self, width, height, theme="light"):
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=height,
                     deviceScaleFactor=1, mobile=width < 600)
        self.command("Emulation.setEmulatedMedia",
                     features=[{"name": "prefers-color-scheme", "value": theme}])

    def end(self):
        self.browser.quit()
        self.driver.end()
        self.end_panel()
        for host in self.hosts:
            host.end()
        self.folder.cleanup()

    def wait_for(self, condition, what="the page", limit=LIMIT):
        return WebDriverWait(self.browser, limit, poll_frequency=0.05).until(
            lambda _: condition(), f"{what} did not come")

    def all(self, css):
        return self.browser.find_elements(By.CSS_SELECTOR, css)

    def one(self, css):
        return self.browser.find_element(By.CSS_SELECTOR, css)

    def text(self, css):
        # A view may replace an element while it is read.
        return self.browser.execute_script(
            "return document.querySelector(arguments[0])?.textContent ?? ''", css)

    def texts(self, css):
        return self.browser.execute_script(
            "return [...document.querySelectorAll(arguments[0])].map(({ textContent }) => textContent)", css)

    def wait_text(self, css, text):
        self.wait_for(lambda: text in self.text(css), f'"{text}" in {css}')

    def press(self, text):
        buttons = self.browser.find_elements(By.XPATH, f'//button[contains(., "{text}")]')
        assert buttons, f"no button {text}"
        self.click(buttons[0])

    def press_exactly(self, text):
        self.click(self.browser.find_element(By.XPATH, f'//button[normalize-space(.)="{text}"]'))

    def click(self, button):
        """Waits for the answer, as two requests may overtake each other."""
        button.click()
        self.wait_for(lambda: self.browser.execute_script(
            "return [...document.querySelectorAll('output')].every(({ textContent }) => textContent !== '...')"),
            f"an answer to {button}")

    def set_key(self, key, value):
        """Fills a field of the settings and sends it; returns the answer."""
        field = self.one(f"#key-{key}")
        if field.tag_name == "select":
            Select(field).select_by_value(value)
        elif field.tag_name == "div":  # of zones
            field.find_element(By.CSS_SELECTOR, f"input[value='{value}']").click()
        else:
            field.send_keys(Keys.CONTROL, "a")
            field.send_keys(value or Keys.DELETE)
        form = f"form:has(#key-{key})"
        self.one(f"{form} button").click()
        self.wait_for(lambda: self.text(f"{form} output") not in ("", "..."), f"an answer about {key}")
        return self.text(f"{form} output")


class PageTest(unittest.TestCase):
    """A test with a page, whose telephones begin at the time of their options."""

    programs = pathlib.Path()
    hosts = [NEW_YORK]

    @classmethod
    def setUpClass(cls):
        cls.page = Setup(cls.programs, *cls.hosts)

    @classmethod
    def tearDownClass(cls):
        cls.page.end()

    def setUp(self):
        for number, (host, options) in enumerate(zip(self.page.hosts, self.hosts)):
            if "--at" in options:
                host.ctl("clock", "pause")
                host.ctl("clock", "jump", options[options.index("--at") + 1])
                local = json.loads(host.ctl("--json", "status").stdout)["shown"]["local"]
                self.page.wait_for(lambda: self.page.texts("[data-test=local]")[number:number + 1] ==
                                   [local[:19].replace("T", " ")], "the time at which the telephone begins")

    def set_new_york(self):
        for key, value in (("sntp-tz-offset", "-5"), ("daylight-save-zone-id", "12"),
                           ("auto-daylight-save", "true"), ("daylight-save", "true")):
            self.assertIn(f'done, it is now "{value}', self.page.set_key(key, value))

"""What a panel does at its limits, at its end, and where it listens: limits.py CLOCKPANEL CLOCKHOST"""

import http.client
import json
import os
import pathlib
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest

from panels import LIMIT, Panel


class Limits(unittest.TestCase):
    programs = []

    def setUp(self):
        self.folder = tempfile.TemporaryDirectory()
        self.addCleanup(self.folder.cleanup)

    def place(self, name):
        return os.path.join(self.folder.name, name)

    def start(self, *options):
        panel = Panel(self.programs[0], *options)
        self.addCleanup(panel.end)
        return panel

    def test_a_thousand_connections_above_the_limit_are_closed_in_order(self):
        panel = self.start("--socket", self.place("no.sock"))
        held = [panel.connect() for _ in range(256)]
        for _ in range(1000):
            with panel.connect() as refused:
                self.assertEqual(refused.recv(1), b"")
        held.pop().close()
        # The panel sees the end of a connection when it gets to it.
        for _ in range(1000):
            try:
                self.assertEqual(panel.ask("GET", "/").status, 200)
                break
            except (ConnectionError, http.client.HTTPException):
                continue
        else:
            self.fail("no place became free")
        for connection in held:
            connection.close()

    def start_host(self, speed):
        self.host = subprocess.Popen([self.programs[1], "--state", self.place("state"), "--socket", self.place("host.sock"),
                                      "--speed", speed], stderr=subprocess.DEVNULL)
        self.addCleanup(self.host.wait, LIMIT)
        self.addCleanup(self.host.terminate)
        return self.place("host.sock")

    def wait_for(self, panel, text):
        deadline = time.monotonic() + LIMIT
        while not re.search(text, states := panel.states()):
            self.assertLess(time.monotonic(), deadline, text)
        return states

    def test_a_page_whose_start_is_long_gets_all_of_it(self):
        panel = self.start("--socket", *[self.start_host("0")] * 5)
        self.wait_for(panel, b'"attached":true')
        for number in range(251):
            body = json.dumps({"telephone": 0, "words": ["set", "ntp-secret", f"{number} " + "x" * 3900]})
            self.assertEqual(panel.ask("POST", "/request", body).status, 200)
        # The security log gives 250 records at a time.
        self.assertGreater(len(self.wait_for(panel, rb'"security":.*ntp-secret\(250 ')), 1.5 * 2**20)

    def test_the_end_waits_neither_for_a_scenario_nor_for_a_host(self):
        panel = Panel(self.programs[0], "--socket", self.start_host("0"))
        self.wait_for(panel, b'"attached":true')
        self.host.send_signal(signal.SIGSTOP)
        self.addCleanup(self.host.send_signal, signal.SIGCONT)
        with panel.begin("/replay", {"scenario": "clock advance 4000d\n" * 100}) as replay, \
                panel.begin("/request", {"telephone": 0, "words": ["clock", "advance", "1h"]}) as move:
            panel.states()  # the requests are taken
            begin = time.monotonic()
            self.assertEqual(panel.end(), 0)
            self.assertLess(time.monotonic() - begin, LIMIT / 2)
            self.assertEqual((replay.recv(1), move.recv(1)), (b"", b""))

    def test_the_end_does_not_wait_for_recordings_that_begin(self):
        panel = Panel(self.programs[0], "--socket", self.start_host("0"))
        self.wait_for(panel, b'"attached":true')
        self.host.send_signal(signal.SIGSTOP)
        self.addCleanup(self.host.send_signal, signal.SIGCONT)
        # One after the other, each would wait 5 s for the host.
        begun = [panel.begin("/record", {"telephone": 0, "on": True}) for _ in range(4)]
        panel.states()  # the requests are taken
        begin = time.monotonic()
        self.assertEqual(panel.end(), 0)
        self.assertLess(time.monotonic() - begin, LIMIT / 4)
        for connection in begun:
            self.assertEqual(connection.recv(1), b"")
            connection.close()

    def follow(self, path, panel):
        page = socket.socket(socket.AF_UNIX)
        page.settimeout(LIMIT)
        page.connect(path)
        page.sendall(f"GET /feed HTTP/1.1\r\nHost: localhost\r\nCookie: clockpanel-={panel.token}\r\n\r\n".encode())
        return page

    def test_a_page_that_does_not_read_is_dropped(self):
        call, listen = self.start_host("max"), self.place("panel.sock")
        panel = self.start("--socket", call, "--listen", listen)
        with self.follow(listen, panel) as slow:
            sent = 0  # to pages that read; a busy machine may make them slow as well
            while sent < 8 << 20:
                with self.follow(listen, panel) as page:
                    while sent < 8 << 20 and (some := page.recv(1 << 16)):
                        sent += len(some)
            got = 0
            while some := slow.recv(1 << 16):
                got += len(some)
                self.assertLess(got, 4 << 20)  # more than is kept for it


class Listening(unittest.TestCase):
    programs = []

    def refusal(self, *options):
        done = subprocess.run([self.programs[0], *options], capture_output=True, text=True,
                              timeout=LIMIT, check=False)
        self.assertEqual(done.stdout, "")
        self.assertEqual(done.stderr.count("\n"), 1)
        return done.returncode, done.stderr.strip()

    def test_only_loopback_addresses_are_listened_at(self):
        for place in ("0.0.0.0:0", "192.0.2.1:80", "[::]:0", "example.org:80"):
            self.assertEqual(self.refusal("--listen", place),
                             (1, f'clockpanel: cannot listen at "{place}": not a loopback address; '
                              "other machines could reach it; use 127.0.0.1:PORT, [::1]:PORT or a "
                              "path with a slash"))
        for place in ("", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:70000"):
            status, line = self.refusal("--listen", place)
            self.assertEqual(status, 1)
            self.assertIn("no port", line)

    def test_a_unix_socket_is_for_its_owner_and_removed_at_the_end(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "panel.sock")
            panel = Panel(self.programs[0], "--listen", str(path))
            self.assertEqual(path.stat().st_mode & 0o777, 0o600)
            self.assertEqual(self.refusal("--listen", str(path))[0], 1)
            self.assertEqual(panel.end(), 0)
            self.assertFalse(path.exists())


if __name__ == "__main__":
    Limits.programs = Listening.programs = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])

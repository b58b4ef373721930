"""Requests to a panel, also hostile ones: requests.py CLOCKPANEL CLOCKHOST"""

import http.client
import json
import os
import pathlib
import re
import socket
import subprocess
import sys
import tempfile
import unittest

LIMIT = 60  # seconds


class Panel:
    """A panel without a host, and its address."""

    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, *options], stdout=subprocess.PIPE, text=True)
        address = self.process.stdout.readline().strip()
        self.place, _, self.token = address.removeprefix("http://").partition("/?token=")
        self.cookie = f"clockpanel-{self.place.rpartition(':')[2]}={self.token}"

    def end(self):
        self.process.terminate()
        self.process.stdout.close()
        return self.process.wait(LIMIT)

    def ask(self, method, target, body=None, **headers):
        connection = http.client.HTTPConnection(self.place, timeout=LIMIT)
        sent = {"Cookie": self.cookie, "Origin": f"http://{self.place}"}
        sent.update({name.capitalize(): value for name, value in headers.items()})
        connection.request(method, target, body, {k: v for k, v in sent.items() if v is not None})
        response = connection.getresponse()
        response.text = response.read().decode()
        connection.close()
        return response

    def connect(self):
        host, _, port = self.place.rpartition(":")
        return socket.create_connection((host, int(port)), timeout=LIMIT)

    def send(self, data):
        """The status line of the answer to these bytes, empty for none."""
        with self.connect() as connection:
            connection.sendall(data)
            connection.shutdown(socket.SHUT_WR)
            return connection.makefile("rb").readline().decode().strip()


class Requests(unittest.TestCase):
    programs = []

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        missing = os.path.join(cls.folder.name, "no.sock")
        cls.panel = Panel(cls.programs[0], "--socket", missing)

    @classmethod
    def tearDownClass(cls):
        assert cls.panel.end() == 0
        cls.folder.cleanup()

    def status(self, *arguments, **headers):
        return self.panel.ask(*arguments, **headers).status

    def test_the_address_gives_a_cookie_and_leads_to_the_page(self):
        answer = self.panel.ask("GET", f"/?token={self.panel.token}", cookie=None, origin=None)
        self.assertEqual((answer.status, answer.headers["Location"]), (303, "/"))
        self.assertEqual(answer.headers["Set-Cookie"],
                         f"{self.panel.cookie}; Path=/; HttpOnly; SameSite=Strict")

    def test_the_page_and_its_files_are_served(self):
        page = self.panel.ask("GET", "/", origin=None)
        self.assertIn("<title>Telephone clock</title>", page.text)
        self.assertEqual(self.panel.ask("GET", "/main.mjs").headers["Content-Type"],
                         "text/javascript; charset=utf-8")

    def test_every_answer_forbids_foreign_scripts(self):
        for target in ("/", "/nothing", "/?token=wrong"):
            headers = self.panel.ask("GET", target).headers
            self.assertIn("default-src 'none'; script-src 'self'",
                          headers["Content-Security-Policy"])
            self.assertEqual(headers["X-Content-Type-Options"], "nosniff")

    def test_without_the_token_nothing_is_served(self):
        for target in ("/", "/main.mjs", "/feed", "/?token=", "/?token=0"):
            self.assertEqual(self.status("GET", target, cookie=None), 403, target)
        self.assertEqual(self.status("POST", "/request", "{}", cookie="clockpanel=0"), 403)

    def test_a_foreign_host_or_origin_is_refused(self):
        self.assertEqual(self.status("GET", "/", host="example.org"), 421)
        self.assertEqual(self.status("GET", "/feed", origin="http://example.org"), 403)
        self.assertEqual(self.status("POST", "/request", "{}", origin="null"), 403)
        self.assertEqual(self.status("POST", "/request", "{}", origin=None), 403)

    def test_no_file_of_the_machine_is_served(self):
        for target in ("/etc/passwd", "/../etc/passwd", "/%2e%2e/etc/passwd", "//etc/passwd",
                       "/main.mjs/../../etc/passwd", "/main.mjs%00", "/panel.css?x", "/a" * 1000):
            self.assertEqual(self.status("GET", target), 404, target)

    def test_other_methods_are_refused(self):
        for method in ("PUT", "DELETE", "OPTIONS", "PATCH"):
            self.assertEqual(self.status(method, "/"), 405, method)
        self.assertEqual(self.status("POST", "/"), 404)

    def test_a_body_that_is_not_what_the_service_takes_is_refused(self):
        for target in ("/request", "/record", "/replay", "/time-server"):
            for body in ("", "x", "[]", "null", "{}", '{"telephone":', "[" * 10000,
                         '{"telephone":"0","words":0,"on":1,"scenario":2,"error":"","silent":0}'):
                answer = self.panel.ask("POST", target, body)
                refused = answer.status == 400 or not json.loads(answer.text)["ok"]
                self.assertTrue(refused, (target, body, answer.text))

    def test_a_body_of_many_members_is_not_compared_member_by_member(self):
        body = json.dumps({str(number): 1 for number in range(60000)})
        self.assertIn("more than 64 members", self.panel.ask("POST", "/request", body).text)

    def test_a_scenario_does_not_include_files(self):
        for line in ('include /etc/passwd', '"include" /etc/passwd', ' in"clude" /etc/passwd',
                     '\ufeffinclude /etc/passwd', 'set time-format 1\n\tinclude /etc/passwd'):
            answer = self.panel.ask("POST", "/replay", json.dumps({"scenario": line})).text
            self.assertIn("cannot include files", answer, line)

    def test_a_telephone_that_does_not_exist_is_named(self):
        for number in (1, -1, 2**40):
            body = json.dumps({"telephone": number, "words": ["status"]})
            answer = json.loads(self.panel.ask("POST", "/request", body).text)
            self.assertEqual(answer, {"ok": False, "error": "no such telephone"})

    def test_only_verbs_that_end_are_carried_out(self):
        for words in (["watch"], ["monitor"], ["record", "x"], ["log", "--follow"],
                      ["status", "--watch"], [], ["nothing"]):
            body = json.dumps({"telephone": 0, "words": words})
            self.assertFalse(json.loads(self.panel.ask("POST", "/request", body).text)["ok"], words)

    def test_a_body_of_more_than_a_megabyte_is_refused_unread(self):
        head = (f"POST /replay HTTP/1.1\r\nHost: {self.panel.place}\r\n"
                f"Origin: http://{self.panel.place}\r\nCookie: {self.panel.cookie}\r\n")
        big = f"{head}Content-Length: 1048577\r\n\r\n".encode()
        self.assertEqual(self.panel.send(big), "HTTP/1.1 413 Payload Too Large")
        chunk = b"100000\r\n" + b"x" * 0x100000 + b"\r\n"
        with self.panel.connect() as connection:
            connection.sendall(f"{head}Transfer-Encoding: chunked\r\n\r\n".encode())
            try:
                connection.sendall(chunk + b"1\r\nx\r\n0\r\n\r\n")
            except ConnectionError:
                pass  # closed before everything was sent

    def test_bytes_that_are_not_http_are_refused(self):
        self.assertEqual(self.panel.send(b"\x16\x03\x01\x02\x00\r\n\r\n"), "HTTP/1.1 400 Bad Request")
        self.assertEqual(self.panel.send(b"GET / HTTP/1.1\r\nA: " + b"a" * 9000 + b"\r\n\r\n"),
                         "HTTP/1.1 431 Request Header Fields Too Large")
        self.assertEqual(self.panel.send(b""), "")

    def test_a_page_that_ends_is_no_harm(self):
        with self.panel.connect() as page:
            page.sendall(f"GET /feed HTTP/1.1\r\nHost: {self.panel.place}\r\n"
                         f"Cookie: {self.panel.cookie}\r\n\r\n".encode())
            stream = page.makefile("rb")
            self.assertEqual(stream.readline(), b"HTTP/1.1 200 OK\r\n")
            lines = iter(stream.readline, b"")
            self.assertTrue(any(b'"attached":false' in line for line in lines))
        self.assertEqual(self.status("GET", "/"), 200)


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

    def follow(self, path, panel):
        page = socket.socket(socket.AF_UNIX)
        page.settimeout(LIMIT)
        page.connect(path)
        page.sendall(f"GET /feed HTTP/1.1\r\nHost: localhost\r\nCookie: clockpanel-={panel.token}\r\n\r\n".encode())
        return page

    def test_a_page_that_does_not_read_is_dropped(self):
        call, listen = self.place("host.sock"), self.place("panel.sock")
        host = subprocess.Popen([self.programs[1], "--state", self.place("state"), "--socket", call, "--speed", "max"],
                                stderr=subprocess.DEVNULL)
        self.addCleanup(host.wait, LIMIT)
        self.addCleanup(host.terminate)
        panel = self.start("--socket", call, "--listen", listen)
        with self.follow(listen, panel) as slow, self.follow(listen, panel) as other:
            for page, most in ((other, 8 << 20), (slow, 4 << 20)):
                got = 0
                while got < most and (some := page.recv(1 << 16)):
                    got += len(some)
                # The other page is ahead by more than is kept for the slow one, whose rest ends.
                self.assertEqual(got >= most, page is other)


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
                              "file's path"))
        for place in ("", "127.0.0.1", "127.0.0.1:", "127.0.0.1:x", "127.0.0.1:70000"):
            status, line = self.refusal("--listen", place)
            self.assertEqual(status, 1)
            self.assertIn("no port", line)

    def test_a_unix_socket_is_for_its_owner_and_removed_at_the_end(self):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "panel.sock")
            panel = Panel(self.programs[0], "--listen", str(path))
            self.assertEqual(path.stat().st_mode & 0o777, 0o700)
            self.assertEqual(self.refusal("--listen", str(path))[0], 1)
            self.assertEqual(panel.end(), 0)
            self.assertFalse(path.exists())


class Zones(unittest.TestCase):
    def test_the_page_has_the_rules_of_the_plug_in(self):
        tree = pathlib.Path(__file__).parent.parent.parent
        page = (tree / "panel/page/zones.mjs").read_text().partition("RULES = [")[2].partition("];")[0]
        rows = (tree / "src/DSTZoneRules.cpp").read_text().partition("DSTRulesData{{")[2].partition("}};")[0]
        self.assertEqual(re.findall(r'"(|M[^"]*)"', page),
                         re.findall(r'\d, +"(|M[^"]*)"\}', rows.replace("\n", " ")))


if __name__ == "__main__":
    Requests.programs = Limits.programs = Listening.programs = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])

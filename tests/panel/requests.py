"""Requests to a panel, also hostile ones: requests.py CLOCKPANEL CLOCKHOST"""

import json
import os
import pathlib
import re
import socket
import sys
import tempfile
import unittest

from panels import Panel


class Requests(unittest.TestCase):
    programs = []

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        missing = os.path.join(cls.folder.name, "no.sock")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as probe:
            probe.bind(("127.0.0.1", 0))
            port = str(probe.getsockname()[1])
        cls.panel = Panel(cls.programs[0], "--socket", missing, "--time-server", port)

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
        head = f"Host: {self.panel.place}\r\nCookie: {self.panel.cookie}\r\n"
        for request in (f"GET / HTTP/1.1\r\n{head}", f"GET /nothing HTTP/1.1\r\n{head}", "GET / HTTP/1.1\r\n",
                        f"GET /feed HTTP/1.1\r\n{head}", "x\r\n", "GET / HTTP/1.1\r\nA: " + "a" * 9000):
            with self.panel.connect() as connection:
                connection.sendall(f"{request}\r\n".encode())
                lines = iter(connection.makefile("rb").readline, b"\r\n")
                headers = dict(line.decode().strip().split(": ", 1) for line in list(lines)[1:])
            self.assertIn("default-src 'none'; script-src 'self'", headers["Content-Security-Policy"], request)
            self.assertEqual(headers["X-Content-Type-Options"], "nosniff")
            self.assertEqual(headers["Cross-Origin-Resource-Policy"], "same-origin")

    def test_an_answer_to_head_ends_the_connection(self):
        with self.panel.connect() as connection:
            connection.sendall(f"HEAD / HTTP/1.1\r\nHost: {self.panel.place}\r\nCookie: {self.panel.cookie}\r\n"
                               f"Origin: http://{self.panel.place}\r\n\r\n".encode() * 2)
            self.assertEqual(connection.makefile("rb").read().count(b"HTTP/1.1"), 1)

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

    def test_numbers_are_integers(self):
        for number in (1e300, 2**63, 2**64 - 1, 0.5, -0.0, True, "0", None):
            for target, body in (("/request", {"telephone": number, "words": ["status"]}),
                                 ("/time-server", {"silent": True, "error": number})):
                answer = json.loads(self.panel.ask("POST", target, json.dumps(body)).text)
                self.assertIn("is not an integer", answer["error"])
        self.assertIn(b'"timeServer":{"silent":false,"error":0}', self.panel.states())

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
            connection.sendall(f"{head}Transfer-Encoding: chunked\r\n\r\n".encode() + chunk * 16 + b"0\r\n\r\n")
            self.assertEqual(connection.makefile("rb").readline(), b"HTTP/1.1 413 Payload Too Large\r\n")

    def test_a_client_that_sends_all_of_a_refused_body_gets_the_answer(self):
        answer = self.panel.ask("POST", "/replay", "x" * (16 << 20))
        self.assertEqual(answer.status, 413)
        self.assertIn("at most 1 MiB", answer.text)
        self.assertEqual(self.status("POST", "/replay", "x" * (1 << 20), cookie=None), 403)

    def test_bytes_that_are_not_http_are_refused(self):
        self.assertEqual(self.panel.send(b"\x16\x03\x01\x02\x00\r\n\r\n"), "HTTP/1.1 400 Bad Request")
        self.assertEqual(self.panel.send(b"GET / HTTP/1.1\r\nA: " + b"a" * 9000 + b"\r\n\r\n"),
                         "HTTP/1.1 431 Request Header Fields Too Large")
        self.assertEqual(self.panel.send(b""), "")

    def test_a_page_that_ends_is_no_harm(self):
        for _ in range(300):  # more than may be open at a time
            self.assertIn(b'"attached":false', self.panel.states())
        self.assertEqual(self.status("GET", "/"), 200)


class Zones(unittest.TestCase):
    def test_the_page_has_the_rules_of_the_plug_in(self):
        tree = pathlib.Path(__file__).parent.parent.parent
        page = (tree / "panel/page/zones.mjs").read_text().partition("RULES = [")[2].partition("];")[0]
        rows = (tree / "src/DSTZoneRules.cpp").read_text().partition("DSTRulesData{{")[2].partition("}};")[0]
        self.assertEqual(re.findall(r'"(|M[^"]*)"', page),
                         re.findall(r'\d, +"(|M[^"]*)"\}', rows.replace("\n", " ")))


if __name__ == "__main__":
    Requests.programs = sys.argv[1:3]
    unittest.main(argv=sys.argv[:1])

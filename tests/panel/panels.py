"""A panel for tests of its answers."""

import gzip
import http.client
import json
import socket
import subprocess

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
        body = response.read()
        response.text = (gzip.decompress(body) if response.headers["Content-Encoding"] == "gzip" else body).decode()
        connection.close()
        return response

    def connect(self):
        host, _, port = self.place.rpartition(":")
        return socket.create_connection((host, int(port)), timeout=LIMIT)

    def states(self):
        """What a page is told at its start, up to the last of the states."""
        with self.connect() as page:
            page.sendall(f"GET /feed HTTP/1.1\r\nHost: {self.place}\r\nCookie: {self.cookie}\r\n\r\n".encode())
            got = []
            for line in page.makefile("rb"):
                got.append(line)
                if b'{"timeServer":' in line:
                    return b"".join(got)
        raise AssertionError(f"the panel dropped the page after {sum(map(len, got))} bytes")

    def begin(self, target, asked):
        """A connection with a request whose answer was not read."""
        body = json.dumps(asked)
        connection = self.connect()
        connection.sendall(f"POST {target} HTTP/1.1\r\nHost: {self.place}\r\nOrigin: http://{self.place}\r\n"
                           f"Cookie: {self.cookie}\r\nContent-Length: {len(body)}\r\n\r\n{body}".encode())
        return connection

    def send(self, data):
        """The status line of the answer to these bytes, empty for none."""
        with self.connect() as connection:
            connection.sendall(data)
            connection.shutdown(socket.SHUT_WR)
            return connection.makefile("rb").readline().decode().strip()

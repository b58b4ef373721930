"""Runs a document's commands as a reader would, and compares what they print: readme.py DOCUMENT [WORD...]

WORD...: the command before each, such as chroot.

A comment before a fenced block says what to do with it:
  <!-- run -->   ```console: each "$ COMMAND" must print the lines below it; "..." is any lines.
                 ```sh: the block must succeed as a whole.
  <!-- fails --> as ```console, but each command must fail.
  <!-- file NAME -->  the block is a file, which must not exist; it is deleted at the end.
  <!-- host -->  each line is a command that runs during the later blocks; at the end Ctrl-C must stop it
                 with status 0. "host: COMMAND" is one that the document only assumes.
"""

import contextlib
import os
import pathlib
import re
import signal
import subprocess
import sys
import tempfile
import time

BLOCK = re.compile(r"^<!-- (run|host|fails|file [\w.]+) -->\n+```(\w*)\n(.*?)^```$|^<!-- host: ([^\n]+) -->$", re.MULTILINE | re.DOTALL)
COMMAND_LIMIT = 900  # seconds: the first one builds
START_LIMIT = 900
END_LIMIT = 5
PREFIX = []


class Mismatch(Exception):
    pass


def run(command):
    """The command's exit status, and its output and errors. What it leaves in the background is ended."""
    with tempfile.TemporaryFile("w+") as printed:
        process = subprocess.Popen([*PREFIX, "bash", "-euo", "pipefail", "-c", command], start_new_session=True,
                                   stdin=subprocess.DEVNULL, stdout=printed, stderr=subprocess.STDOUT)
        try:
            status = process.wait(COMMAND_LIMIT)
        finally:
            with contextlib.suppress(ProcessLookupError):
                os.killpg(process.pid, signal.SIGTERM)
        printed.seek(0)
        return status, printed.read()


def pattern_of(expected):
    rows = [r"(?:.*\n)*?" if row == "..." else re.escape(row.rstrip()) + r" *\n" for row in expected]
    return re.compile("".join(rows))


def run_transcript(text, fails=False):
    for part in re.split(r"^\$ ", text, flags=re.MULTILINE)[1:]:
        command, *expected = part.splitlines()
        print(f"readme: $ {command}", flush=True)
        status, printed = run(command)
        if (status != 0) != fails or not pattern_of(expected).fullmatch(printed):
            wanted = "\n".join(expected)
            raise Mismatch(f"{command}\n--- the document says\n{wanted}\n"
                           f"--- it prints, with exit status {status}\n{printed}")


def run_script(text):
    print(f"readme: {text.strip()}", flush=True)
    status, printed = run(text)
    if status != 0:
        raise Mismatch(f"{text}\n--- exit status {status}, and it prints\n{printed}")


class Host:
    """The host that runs during the other commands, until the end of the document."""

    def __init__(self, command):
        print(f"readme: {command.strip()} &", flush=True)
        socket = re.search(r"--socket \S+", command)
        self.ctl = ("./dev ctl " if command.startswith("./dev") else "clockctl ") + (socket[0] if socket else "")
        self.process = subprocess.Popen([*PREFIX, "bash", "-c", f"exec {command}"],
                                        stdin=subprocess.DEVNULL, start_new_session=True)
        self.wait_for_answer()

    def wait_for_answer(self):
        limit = time.monotonic() + START_LIMIT
        while run(f"{self.ctl} status")[0] != 0:
            if self.process.poll() is not None or time.monotonic() > limit:
                raise Mismatch("the host does not start")
            time.sleep(0.2)

    def end(self):
        if self.process.poll() is None:
            os.killpg(self.process.pid, signal.SIGINT)  # as a terminal does
        try:
            return self.process.wait(END_LIMIT)
        except subprocess.TimeoutExpired:
            os.killpg(self.process.pid, signal.SIGKILL)
            raise Mismatch(f"the host did not end within {END_LIMIT} s of ctrl-C") from None


def run_blocks(blocks):
    hosts, files = [], []
    try:
        for kind, language, text, assumed in blocks:
            if kind == "host" or assumed:
                hosts += [Host(line) for line in (assumed or text).splitlines()]
            elif kind.startswith("file "):
                files.append(pathlib.Path(kind.split()[1]))
                with files[-1].open("x") as file:
                    file.write(text)
            elif language == "console":
                run_transcript(text, kind == "fails")
            else:
                run_script(text)
    finally:
        statuses = [host.end() for host in hosts]
        for file in files:
            file.unlink()
    if any(statuses):
        raise Mismatch(f"the host ended with status {statuses}")


def main(document, *prefix):
    PREFIX.extend(prefix)
    blocks = BLOCK.findall(pathlib.Path(document).read_text())
    if not blocks:
        print(f"{document}: no block is marked to be run")
        return 1
    try:
        run_blocks(blocks)
    except Mismatch as mismatch:
        print(f"{document}: {mismatch}")
        return 1
    print(f"{document}: {len(blocks)} blocks do what they say")
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))

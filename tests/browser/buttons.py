"""Every button of the page, and what the telephone then does."""

import datetime
import json
import pathlib
import socket

from selenium.webdriver.common.keys import Keys

from telephones import LIMIT, NEW_YORK, PageTest


class Pressed(PageTest):
    """Tests that ask the host what a button did."""

    hosts = []

    def status(self, number=0):
        return json.loads(self.page.hosts[number].ctl("--json", "status").stdout)

    def utc(self, number=0):
        return self.status(number)["shown"]["utc"]

    def wait_utc(self, utc, number=0):
        self.page.wait_for(lambda: self.utc(number) == utc, utc)


class TimeButtons(Pressed):
    hosts = [NEW_YORK]

    def test_speeds(self):
        for name, speed in (("1x", 1), ("3600x", 3600), ("max", None), ("60x", 60), ("pause", 0)):
            self.page.press(name)
            self.page.wait_for(lambda speed=speed: self.status()["clock"]["speed"] == speed, name)
            self.page.wait_text(".passing [aria-pressed=true]", name)

    def test_steps(self):
        self.page.press("+1 day")
        self.wait_utc("2026-03-09T06:59:50Z")
        first = min(timer["time"] for timer in self.status()["timers"])
        self.page.press("next timer")
        self.wait_utc(first)

    def test_what_comes_counts_down(self):
        self.page.wait_for(lambda: self.seconds_left().get("midnight") == 16 * 3600 + 10, "16 hours")
        self.page.press("+1 min")
        self.page.wait_for(lambda: self.seconds_left().get("midnight") == 16 * 3600 - 50, "a minute less")

    def seconds_left(self):
        """Until what comes within a day, by its name."""
        rows = self.page.browser.execute_script("""
          const rows = [...document.querySelectorAll(".coming tbody tr")];
          return rows.map(({ cells }) => [cells[0].textContent, cells[2].textContent]);""")
        parts = {name: [int(part) for part in left.split(":")] for name, left in rows if " d " not in left}
        return {name: 3600 * hours + 60 * minutes + seconds for name, (hours, minutes, seconds) in parts.items()}

    def test_landmarks(self):
        for name, utc in (("next hour", "2026-03-08T07:59:50Z"), ("midnight", "2026-03-08T22:59:50Z"),
                          ("daylight saving", "2026-11-01T00:59:50Z"), ("leap day", "2028-02-28T23:59:50Z"),
                          ("2038", "2038-01-19T03:13:57Z")):
            self.page.hosts[0].ctl("clock", "advance", "20s")
            self.page.press(name)
            self.wait_utc(utc)

    def test_days_are_chosen_first_and_pass_when_the_button_is_pressed(self):
        days = self.page.one("input[type=range]")
        days.send_keys(Keys.HOME, *[Keys.ARROW_RIGHT] * 3)
        self.page.wait_for(lambda: days.get_attribute("aria-valuetext") == "4 days, to 2026-03-12")
        self.assertEqual(self.utc(), "2026-03-08T06:59:50Z")
        self.page.press("Let 4 days pass, to 2026-03-12")
        self.wait_utc("2026-03-12T06:59:50Z")

    def test_a_jump_back_says_so(self):
        for text, button, utc in (("2030-01-02T03:04:05", "Jump", "2030-01-02T03:04:05Z"),
                                  ("2020-01-02T03:04:05", "Jump back", "2020-01-02T03:04:05Z")):
            self.page.browser.execute_script("""
              const field = document.querySelector("input[type=datetime-local]");
              field.value = arguments[0];
              field.dispatchEvent(new Event("input", { bubbles: true }));""", text)
            self.page.wait_for(lambda button=button: self.page.text(".jump button") == button, button)
            self.page.one(".jump button").click()
            self.wait_utc(utc)


class WorldButtons(Pressed):
    hosts = [NEW_YORK]

    def test_each_is_told_to_the_telephone(self):
        for name, request in (("in", "jack 5 1"), ("out", "jack 5 0"), ("DHCP on", "dhcp true"),
                              ("DHCP off", "dhcp false"), ("mobility data", "mobility 1")):
            self.page.one("h1").click()
            self.page.press_exactly(name)
            self.page.wait_for(lambda: self.page.text(".world > output") == "done", name)
            records = json.loads(self.page.hosts[0].ctl("--json", "security-log").stdout)
            self.assertIn(f"Inject {request}", json.dumps(records), name)


class TimeServerButtons(Pressed):
    hosts = [()]

    def error(self):
        """Seconds by which the telephone's time is ahead."""
        shown = datetime.datetime.fromisoformat(self.utc().replace("Z", "+00:00"))
        return (shown - datetime.datetime.now(datetime.timezone.utc)).total_seconds()

    def restart_client(self):
        self.page.press("network down")
        self.page.wait_text(".icons", "network down")
        self.page.press("network up")
        self.page.wait_text(".icons", "network up")

    def test_it_is_wrong_right_and_silent(self):
        self.page.press("wrong by")
        self.page.press("use the panel's server")
        self.restart_client()
        self.page.wait_text(".icons", "time server")
        self.page.wait_for(lambda: 3000 < self.error() < 4200, "an hour ahead")
        self.page.wait_text(".world dl", "ntpclient -s")
        self.page.press_exactly("right")
        self.restart_client()
        self.page.wait_for(lambda: abs(self.error()) < 600, "the right time")
        self.assertTrue(self.answers())
        self.page.press_exactly("silent")
        self.page.wait_for(lambda: self.page.all(".world [aria-pressed=true]")[-1].text == "silent")
        self.assertFalse(self.answers(0.2))

    def answers(self, seconds=LIMIT):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.settimeout(seconds)
            client.sendto(b"\x23" + bytes(47), ("127.0.0.1", int(self.page.command_line[-1])))
            try:
                return len(client.recv(1024)) == 48
            except TimeoutError:
                return False


class ScenarioButtons(Pressed):
    hosts = [NEW_YORK]

    def test_a_recording_has_what_was_done_and_is_downloaded(self):
        self.page.command("Browser.setDownloadBehavior", behavior="allow", downloadPath=self.page.folder.name)
        self.page.press("Record")
        self.page.wait_text(".record", "Stop recording")
        minute = self.page.text(".time")
        self.page.press("60x")
        self.page.wait_for(lambda: self.page.text(".time") != minute, "the next minute")
        self.page.press("pause")
        self.page.press("Stop recording")
        self.page.wait_text(".scenarios output", "recorded")
        self.page.press("Download")
        file = pathlib.Path(self.page.folder.name, "telephone.scenario")
        self.page.wait_for(file.exists, "the file")
        self.assertIn("Recorded by", file.read_text())
        self.assertNotIn("call ", file.read_text())

    def drop(self, text):
        self.page.browser.execute_script("""
          const dataTransfer = new DataTransfer();
          dataTransfer.items.add(new File([arguments[0]], "dropped.scenario"));
          document.querySelector(".drop").dispatchEvent(
            new DragEvent("drop", { dataTransfer, bubbles: true, cancelable: true }));""", text)

    def test_a_scenario_that_is_dropped_runs(self):
        self.drop("variant 3\nclock advance 1s\n")
        self.page.wait_for(lambda: len(self.page.all(".lines .passed")) == 2, "two green lines")

    def test_a_scenario_that_is_too_long_is_refused_in_a_line(self):
        most = (1 << 20) - len('{"scenario":"#"}')
        for size, answer in ((most, "passed, all 1 lines"), (most + 1, "a body of at most 1 MiB"),
                             (1, "passed, all 1 lines"), (2 * most, "a body of at most 1 MiB")):
            self.drop("#" + "é" * (size // 2) + "." * (size % 2))
            self.page.wait_text(".drop + output", answer)


class JournalButtons(Pressed):
    hosts = [NEW_YORK]

    def kinds(self):
        return set(self.page.texts(".list .kind"))

    def test_a_telephone_that_comes_later_has_its_past_in_order(self):
        host = self.page.hosts[0]
        host.ctl("set", "time-format", "0")
        host.ctl("clock", "advance", "2d")
        host.ctl("set", "time-format", "1")
        host.end()
        self.page.end_panel()
        self.page.start_panel()
        self.page.browser.get(self.page.address)
        self.page.wait_text(".missing", "is not there")
        host.start()
        self.page.wait_for(lambda: {"history", "security"} <= {kind for kind, _ in self.entries()}, "its past")
        times = [time for _, time in self.entries()]
        self.assertEqual(times, sorted(times))

    def entries(self):
        return self.page.browser.execute_async_script("""
          import("/feed.mjs").then(({ phones }) => arguments[0](phones[0].entries.map(({ kind, time }) => [kind, time])));""")

    def test_each_kind_is_shown_alone_and_the_newest_is_first(self):
        self.page.hosts[0].ctl("clock", "advance", "2h")
        self.page.set_key("time-format", "0")
        self.page.wait_for(lambda: "time-format" in self.page.text(".list li"), "the newest row")
        boxes = self.page.all(".filters input[type=checkbox]")
        for box in boxes:
            if box.is_selected():
                box.click()
        for box, kind in zip(boxes, ("event", "log", "detail", "history", "security")):
            box.click()
            self.page.wait_for(lambda kind=kind: self.kinds() == {kind}, kind)
            box.click()


class BothTelephones(Pressed):
    hosts = [NEW_YORK, NEW_YORK]

    def test_the_second_is_moved_alone(self):
        self.page.press("telephone 2")
        self.page.press("+1 h")
        self.wait_utc("2026-03-08T07:59:50Z", 1)
        self.assertEqual(self.utc(0), "2026-03-08T06:59:50Z")

    def test_a_set_at_all_is_at_each_and_refusals_are_named(self):
        self.page.press("all")
        self.assertIn('it is now "1" at telephone 1', self.page.set_key("date-format", "1"))
        for host in self.page.hosts:
            self.assertEqual(host.ctl("get", "date-format").stdout.strip(), "1")
        self.assertRegex(self.page.set_key("sntp-tz-offset", ""), "telephone 1: .*; telephone 2: ")

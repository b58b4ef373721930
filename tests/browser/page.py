"""Tests of the panel's page in a browser: page.py PROGRAMS [--update] [--soak SECONDS] [unittest ARGUMENTS]"""

import argparse
import pathlib
import re
import sys
import tempfile
import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from access import Accessible
from buttons import BothTelephones, JournalButtons, ScenarioButtons, TimeButtons, TimeServerButtons, WorldButtons
from firefox import Firefox
from load import Load
from pictures import Pictures
from telephones import NEW_YORK, PageTest

MOST_COMPRESSED = 150000  # bytes of the whole page, as they are sent
# The browser is busy: its first frame comes when the panel has told everything.
LATE_FRAME = """{
  const { requestAnimationFrame, setTimeout, EventSource } = window;
  const waiting = [];
  const drawFirst = (time) => {
    Object.assign(window, { requestAnimationFrame, setTimeout });
    for (const draw of waiting) draw(time);
  };
  window.requestAnimationFrame = (draw) => waiting.push(draw);
  window.setTimeout = () => 0;
  window.EventSource = class extends EventSource {
    set onmessage(take) {
      super.onmessage = (event) => {
        take(event);
        if (JSON.parse(event.data).live) requestAnimationFrame(drawFirst);
      };
    }
  };
}"""


class OneTelephone(PageTest):
    def test_new_york_loses_an_hour(self):
        self.set_new_york()
        self.page.press("+1 min")
        self.page.wait_text(".time", "03:00")
        self.page.wait_text(".telephone", "daylight saving")
        self.page.wait_text("[data-test=local]", "2026-03-08 03:00:50")

    def test_the_change_that_happened_stays_enlarged_until_another_is_chosen(self):
        self.set_new_york()
        self.page.press("+1 min")
        self.page.wait_text(".time", "03:00")
        self.page.wait_for(lambda: self.changes() == ["2026-03-08", "2026-11-01"], "both changes")
        self.page.wait_text("[data-test=change]", "2026-03-08 02:00 to 03:00 is missing: 01:59:59 is followed by 03:00:00")
        self.page.press("2026-11-01")
        self.page.wait_text("[data-test=change]", "2026-11-01 01:00 to 02:00 comes twice")
        self.page.press("daylight saving")
        self.page.press("+1 min")
        self.page.wait_text(".time", "01:00")
        self.page.wait_for(lambda: self.changes() == ["2026-11-01", "2027-03-14"], "the next")
        self.page.wait_text("[data-test=change]", "2026-11-01 01:00 to 02:00 comes twice")
        self.page.set_key("daylight-save", "false")
        self.page.press("+1 min")
        self.page.wait_text(".year", "No change of the local offset in a year")

    def changes(self):
        return [text.strip() for text in self.page.texts(".year .buttons button")]

    def test_each_source_of_the_time_has_an_icon(self):
        words = [["clock", "jump", "2026-03-08T08:00:00Z"],
                 ["call", "setTime", "setTimeHours=1", "setTimeMinutes=2", "setTimeSeconds=3"]]
        icons = set()
        for source, asked in zip(("clock jump", "by hand"), words):
            self.page.hosts[0].ctl(*asked)
            self.page.wait_text(".icons", source)
            icons.add(self.page.one(".icons path").get_attribute("d"))
        self.page.hosts[0].end()
        self.page.wait_text(".missing", "is not there")
        self.page.hosts[0].start()
        self.page.wait_text(".icons", "saved time")
        icons.add(self.page.one(".icons path").get_attribute("d"))
        self.assertEqual(len(icons), 3)

    def test_a_zone_shows_its_rule_and_its_next_change(self):
        self.set_new_york()
        chosen = "#key-daylight-save-zone-id label:has(:checked)"
        self.page.wait_text(chosen, "second Sunday in March 02:00 to first Sunday in November 02:00")
        for landmark, coming in (("2026-03-08T06:59:50Z", "2026-03-08"), ("2026-03-08T07:00:00Z", "2026-11-01"),
                                 ("2026-11-01T05:59:59Z", "2026-11-01"), ("2026-11-01T06:00:00Z", "2027-03-14")):
            self.page.hosts[0].ctl("clock", "jump", landmark)
            self.page.wait_text(chosen, f"next {coming} 02:00")

    def test_offsets_are_hours_and_formats_have_examples(self):
        self.page.press("Defaults of variants 0")
        self.page.wait_text(".date", "08.03.26")
        self.assertIn('it is now "12.75"', self.page.set_key("sntp-tz-offset", "12.75"))
        self.page.wait_text("form:has(#key-sntp-tz-offset) small", "(UTC+12:45)")
        self.page.press("+1 min")
        self.page.wait_text(".exact", "UTC+12:45")
        self.page.set_key("sntp-tz-offset", "0")
        self.page.wait_for(lambda: self.page.texts("#key-date-format option") ==
                           ["0: 08.03.26", "1: 26-03-08", "2: 03/08/26", "another value"], "examples")

    def test_the_example_of_a_time_is_what_the_telephone_shows(self):
        self.page.set_key("sntp-tz-offset", "0")
        self.page.set_key("time-format", "1")
        self.page.press("+1 min")
        for time, shown in (("00:05", "00:05am"), ("12:05", "12:05pm"), ("13:05", "01:05pm")):
            self.page.hosts[0].ctl("clock", "jump", f"2026-01-15T{time}:00Z")
            self.page.wait_text(".time", shown)
            self.page.wait_for(lambda shown=shown: self.page.texts("#key-time-format option")[1] == f"1: {shown}", shown)

    def test_any_value_can_be_tried(self):
        self.page.all("#key-daylight-save-zone-index option")[-1].click()
        self.page.wait_for(lambda: self.page.one("#key-daylight-save-zone-index").tag_name == "input")
        self.assertIn("it takes 0-14", self.page.set_key("daylight-save-zone-index", "15"))

    def test_the_defaults_of_a_variant(self):
        self.page.set_key("date-format", "1")
        self.page.press("Reset the formats")
        self.page.wait_text(".date", "03/08/26")
        self.page.press("Defaults of variants 0")
        self.page.wait_text(".date", "08.03.26")
        self.page.press("Defaults of variants 2")
        self.page.wait_text(".date", "03/08/26")

    def test_a_plot_tells_instant_and_local_time(self):
        self.set_new_york()
        self.page.hosts[0].ctl("clock", "jump", "2026-06-01T00:00:00Z")
        self.page.press("+1 min")
        self.page.wait_text(".exact", "UTC-04:00")
        self.page.wait_text("[data-test=change]", "2026-11-01 01:00 to 02:00 comes twice: "
                            "01:59:59 is followed by 01:00:00")
        plot = self.page.all(".plot")[1]
        ActionChains(self.page.browser).move_to_element(plot.find_element("css selector", ".u-over")).perform()
        self.page.wait_for(lambda: plot.get_attribute("aria-valuetext") ==
                           "2026-11-01T06:00:00Z is 2026-11-01 01:00:00 UTC-05:00; the change", "the middle")
        plot.send_keys(*[Keys.ARROW_RIGHT] * 20)
        self.page.wait_for(lambda: re.fullmatch(r"2026-11-01T06:1.*UTC-05:00", plot.get_attribute("aria-valuetext")),
                           "a later minute")

    def test_a_refused_value_is_answered_beside_its_field(self):
        answer = self.page.set_key("sntp-tz-offset", "")
        self.assertIn("it takes a decimal number", answer)
        self.assertTrue(self.page.all("form:has(#key-sntp-tz-offset) output.refused"))

    def test_what_came_is_searched_and_filtered(self):
        self.page.hosts[0].ctl("clock", "advance", "3h")
        search = self.page.one(".journal input[type=search]")
        search.send_keys("timeChangeEvent hours=3")
        self.page.wait_text(".journal .list", "timeChangeEventHours=3")
        search.send_keys(" nothing-like-this")
        self.page.wait_for(lambda: self.page.text("[data-test=rows]") == "0 entries")
        search.send_keys(Keys.CONTROL, "a")
        search.send_keys(Keys.DELETE)

    def test_the_world_is_changed(self):
        self.page.press("network up")
        self.page.wait_text(".icons", "network up")
        self.page.press("network down")
        self.page.wait_text(".icons", "network down")

    def test_a_scenario_shows_the_line_that_fails(self):
        with tempfile.NamedTemporaryFile("w", suffix=".scenario") as file:
            file.write("variant 3\nexpect call getTime getTimeStringReturn=never\nclock advance 1s\n")
            file.flush()
            self.page.one(".drop input").send_keys(file.name)
            self.page.wait_text(".lines .failed", "expect call getTime")
        self.assertEqual(len(self.page.all(".lines .passed")), 1)
        self.page.wait_text(".scenarios pre", "scenario:2: expected a reply")

    def test_keys_alone_are_enough(self):
        self.page.browser.execute_script("document.activeElement.blur()")
        body = self.page.one("body")
        for _ in range(200):
            body.send_keys(Keys.TAB)
            if self.page.browser.switch_to.active_element.text == "60x":
                break
        self.assertEqual(self.page.browser.switch_to.active_element.text, "60x")
        self.page.browser.switch_to.active_element.send_keys(Keys.ENTER)
        self.page.wait_for(lambda: self.page.browser.switch_to.active_element.get_attribute(
            "aria-pressed") == "true", "speed 60")
        self.page.press("pause")

    def test_a_narrow_screen_shows_everything(self):
        self.page.command("Emulation.setDeviceMetricsOverride", width=360, height=740,
                          deviceScaleFactor=1, mobile=True)
        wide = self.page.browser.execute_script("return document.documentElement.scrollWidth")
        self.page.command("Emulation.clearDeviceMetricsOverride")
        self.assertLessEqual(wide, 360)

    def test_what_came_before_the_first_frame_is_shown(self):
        self.page.wait_text(".why", "Last changed 2026-03-08T06:59:50Z")  # a paused telephone tells no more
        script = self.page.command("Page.addScriptToEvaluateOnNewDocument", source=LATE_FRAME)
        self.addCleanup(self.page.command, "Page.removeScriptToEvaluateOnNewDocument", **script)
        self.page.browser.refresh()
        self.page.wait_for(lambda: self.page.all("article.telephone"), "the telephone")

    def test_a_host_that_goes_away_is_found_again(self):
        self.page.hosts[0].end()
        self.page.wait_text(".missing", "is not there")
        self.page.hosts[0].start()
        self.page.wait_for(lambda: not self.page.all(".missing"))


class Recordings(PageTest):
    def test_a_recording_runs_again(self):
        self.page.hosts[0].ctl("clock", "advance", "1s")
        self.page.press("Record")
        self.page.wait_text(".record", "Stop recording")
        self.page.set_key("time-format", "0")
        self.page.press("+1 h")
        self.page.wait_text(".passing output", "done")
        self.page.press("Stop recording")
        self.page.wait_for(lambda: "Run it again" in self.page.text(".scenarios"))
        self.page.press("Run it again")
        self.page.wait_for(lambda: re.search("passed, all|failed in", self.page.text(".scenarios")), "an end")
        self.assertEqual(self.page.text(".scenarios pre"), "", self.page.text(".lines"))
        self.page.wait_for(lambda: self.page.all(".lines .passed:last-child"), "a green last line")


class NewTelephone(PageTest):
    hosts = [()]

    def test_the_documented_way_to_lose_an_hour(self):
        self.page.press("Defaults of variants 2")
        self.page.wait_text("[data-test=change]", "comes twice")
        self.page.set_key("sntp-tz-offset", "-5")
        self.page.wait_text(".exact", "UTC-04:00")
        self.page.press("pause")  # or the ten seconds would be real ones
        self.page.wait_text(".passing [aria-pressed=true]", "pause")
        self.page.press("2017-03-12")
        self.page.wait_text("[data-test=change]", "2017-03-12 02:00 to 03:00 is missing: 01:59:59 is followed by 03:00:00")
        self.page.press("Let pass up to 10 s before")
        self.page.wait_text("[data-test=local]", "2017-03-12 01:59:5")
        self.page.press("+1 min")
        self.page.wait_text(".time", "03:00")


class TwoTelephones(PageTest):
    hosts = [("--speed", "0"), ("--speed", "0", "--variant", "3")]

    def test_both_are_moved_together(self):
        self.page.press("all")
        self.page.press("+1 h")
        self.page.wait_for(lambda: self.page.texts(".time") == ["01:00", "02:00am"], "the next hour at both")


class Size(PageTest):
    def test_the_page_is_small(self):
        sizes = self.page.browser.execute_script("""
          const kinds = ["navigation", "resource"].flatMap((kind) => performance.getEntriesByType(kind));
          return kinds.map(({ encodedBodySize }) => encodedBodySize);""")
        self.assertGreater(len(sizes), 15)
        self.assertLess(sum(sizes), MOST_COMPRESSED)


def read_options(words):
    parser = argparse.ArgumentParser(prog="page.py")
    parser.add_argument("programs", type=pathlib.Path)
    parser.add_argument("--update", action="store_true", help="take the pictures of the states anew")
    parser.add_argument("--soak", type=float, default=20, help="seconds at full speed")
    return parser.parse_known_args(words)


if __name__ == "__main__":
    OPTIONS, TESTS = read_options(sys.argv[1:])
    PageTest.programs = OPTIONS.programs.resolve()
    Pictures.update = OPTIONS.update
    Load.seconds = OPTIONS.soak
    unittest.main(argv=[sys.argv[0], *TESTS])

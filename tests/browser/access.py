"""Rules for people who use a keyboard, a screen reader or strong contrast (WCAG 2.2)."""

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.keys import Keys

from telephones import NEW_YORK, PageTest

# Each rule returns what breaks it.
RULES = """
  const all = (css) => [...document.querySelectorAll(css)];
  const shown = (node) => node.checkVisibility({ visibilityProperty: true });
  const name = (node) => `${node.tagName.toLowerCase()}.${node.className} "${(node.textContent ?? "").trim().slice(0, 30)}"`;
  const byId = (ids) => (ids ?? "").split(" ").filter(Boolean).map((id) => document.getElementById(id));
  const labelOf = (node) => node.getAttribute("aria-label") ||
    byId(node.getAttribute("aria-labelledby")).map((label) => label?.textContent ?? "").join(" ") ||
    [...(node.labels ?? [])].map((label) => label.textContent).join(" ") ||
    (/^(BUTTON|A|SUMMARY)$/.test(node.tagName) ? node.textContent : "");
  const CONTROLS = "button, input, select, textarea, a[href], summary, [role=slider], [role=radiogroup]";
  const ROLES = ["alert", "group", "img", "radiogroup", "region", "slider", "status", "timer"];

  const canvas = new OffscreenCanvas(1, 1).getContext("2d", { willReadFrequently: true });
  function rgba(colour) {
    canvas.clearRect(0, 0, 1, 1);
    canvas.fillStyle = colour;
    canvas.fillRect(0, 0, 1, 1);
    const [red, green, blue, alpha] = canvas.getImageData(0, 0, 1, 1).data;
    return [red, green, blue, alpha / 255];
  }
  const over = (front, back) => front.slice(0, 3).map((part, i) => part * front[3] + back[i] * (1 - front[3]));
  function background(node) {
    if (!node) return [255, 255, 255];
    const own = rgba(getComputedStyle(node).backgroundColor);
    return own[3] === 1 ? own.slice(0, 3) : over(own, background(node.parentElement));
  }
  const luminance = (colour) => colour.map((part) => part / 255)
    .map((part) => part <= 0.04045 ? part / 12.92 : ((part + 0.055) / 1.055) ** 2.4)
    .reduce((sum, part, i) => sum + part * [0.2126, 0.7152, 0.0722][i], 0);
  function contrast(node) {
    const back = background(node);
    const [light, dark] = [luminance(over(rgba(getComputedStyle(node).color), back)), luminance(back)].sort((a, b) => b - a);
    return (light + 0.05) / (dark + 0.05);
  }
  function isLarge(node) {
    const { fontSize, fontWeight } = getComputedStyle(node);
    return parseFloat(fontSize) >= (Number(fontWeight) >= 700 ? 18.66 : 24);
  }
  const hasText = (node) => node.matches("input, select") ||
    [...node.childNodes].some((child) => child.nodeType === Node.TEXT_NODE && child.data.trim());

  const rules = {
    "the page has a language and a title": () =>
      document.documentElement.lang && document.title ? [] : ["html"],
    "identifiers are unique": () => all("[id]").filter((node) => all(`[id="${node.id}"]`).length > 1),
    "references have targets": () => all("[aria-labelledby], [for]").filter((node) =>
      byId(node.getAttribute("aria-labelledby") ?? node.getAttribute("for")).includes(null)),
    "labels are of controls": () => all("label[for]").filter((node) => !node.control),
    "controls, groups, regions and lists of state have names": () =>
      all(`${CONTROLS}, [role=group], [role=region], [role=img], section, article`)
        .filter((node) => shown(node) && !labelOf(node).trim()),
    "names of controls are told apart": () => {
      const labels = all("main button, main select, main input:not([type=radio])").filter(shown)
        .map((node) => `${node.closest("[role=group], section")?.ariaLabel} ${node.type} ${labelOf(node).trim()}`);
      return labels.filter((label, i) => labels.indexOf(label) !== i);
    },
    "roles and states exist": () => [
      ...all("[role]").filter((node) => !ROLES.includes(node.getAttribute("role"))),
      ...all("[aria-pressed]").filter((node) => !/^(true|false)$/.test(node.getAttribute("aria-pressed"))),
      ...all("[role=slider]").filter((node) => !(node.ariaValueNow >= 0 && node.ariaValueNow <= 100 && node.ariaValueText)),
    ],
    "headings are in order": () => {
      const levels = all("h1, h2, h3, h4, h5, h6").map((node) => Number(node.tagName[1]));
      const skips = levels.filter((level, i) => level > (levels[i - 1] ?? 0) + 1);
      return levels.filter((level) => level === 1).length === 1 ? skips : ["one h1", ...skips];
    },
    "everything is in a landmark": () => [
      ...(all("main").length === 1 && all("header").length === 1 ? [] : ["one header and one main"]),
      ...[...document.body.children].filter((node) => !/^(HEADER|MAIN)$/.test(node.tagName)),
    ],
    "texts have contrast": () => all("body *").filter((node) =>
      hasText(node) && !node.closest("svg, :disabled") && shown(node) && contrast(node) < (isLarge(node) ? 3 : 4.5))
      .map((node) => `${name(node)} ${contrast(node).toFixed(2)}`),
    "pictures are named or hidden": () => all("svg, canvas, img").filter((node) =>
      node.ariaHidden !== "true" && !node.closest("[aria-label], [aria-hidden=true]")),
    "answers are spoken": () => all("output").filter((node) => node.ariaLive !== "polite"),
    "what scrolls has the keyboard": () => all("body *").filter((node) => {
      const { overflowY } = getComputedStyle(node);
      return /auto|scroll/.test(overflowY) && node.scrollHeight > node.clientHeight + 1 && shown(node) &&
        node.tabIndex < 0 && !node.querySelector("input, button, a[href], [tabindex]");
    }),
    "the order of the page is the order of the keyboard": () => all("[tabindex]").filter((node) => node.tabIndex > 0),
    "targets are large enough": () => all("button, select, summary, input:not([type=radio], [type=checkbox], [type=range])")
      .filter((node) => shown(node) && Math.min(node.offsetWidth, node.offsetHeight) < 24),
  };
  const broken = {};
  for (const [rule, check] of Object.entries(rules)) {
    const found = check().map((each) => (each instanceof Node ? name(each) : String(each)));
    if (found.length > 0) broken[rule] = found.slice(0, 5);
  }
  return broken;
"""

FOCUS = """
  const node = document.activeElement;
  if (node === document.body) return null;
  const { outlineStyle, outlineWidth } = getComputedStyle(node);
  const controls = [...document.querySelectorAll("button, input, select, summary, [tabindex]")];
  return { place: controls.indexOf(node), name: `${node.tagName} ${node.id} ${node.textContent.trim().slice(0, 30)}`,
    outline: [outlineStyle, outlineWidth],
    seen: outlineStyle !== "none" && parseFloat(outlineWidth) >= 2, type: node.type };
"""


class Accessible(PageTest):
    hosts = [NEW_YORK, ("--speed", "0")]

    def tearDown(self):
        self.page.command("Emulation.clearDeviceMetricsOverride")

    def check(self, state):
        for theme in ("light", "dark"):
            for width in (1280, 360):
                self.page.screen(width, 900, theme)
                self.assertEqual(self.page.browser.execute_script(RULES), {}, (state, theme, width))

    def test_all_states_keep_the_rules(self):
        self.page.one("details summary").click()
        self.check("the page")
        self.set_new_york()
        self.page.press("+1 min")
        self.page.set_key("sntp-tz-offset", "")
        self.check("a change, and a refusal")
        self.page.press("Record")
        self.page.wait_text(".record", "Stop recording")
        self.page.press("Stop recording")
        self.page.wait_for(lambda: "Run it again" in self.page.text(".scenarios"))
        self.page.press("Run it again")
        self.page.wait_for(lambda: self.page.all(".lines .passed:last-child"), "a green last line")
        self.check("a scenario")
        self.page.hosts[1].end()
        self.page.wait_text(".missing", "is not there")
        self.check("a telephone is missing")
        self.page.hosts[1].start()

    def test_the_keyboard_reaches_all_controls_in_order_and_one_sees_where_it_is(self):
        self.page.browser.refresh()  # Tab begins at the top
        self.page.wait_for(lambda: len(self.page.all("article.telephone")) == 2)
        places = []
        for _ in range(300):
            ActionChains(self.page.browser).send_keys(Keys.TAB).perform()
            focus = self.page.browser.execute_script(FOCUS)
            if focus is None or focus["place"] in places[:-1] and focus["place"] != places[-1]:
                break
            self.assertTrue(focus["seen"], focus)
            places.append(focus["place"])
            last = focus["name"]
        self.assertEqual(places, sorted(places))
        count = self.page.browser.execute_script(
            "return document.querySelectorAll('button:enabled, input:not([type=radio]), select, summary').length")
        self.assertGreaterEqual(len(set(places)), count, f"after {places[-1]}, {last}")

    def test_a_loss_of_the_panel_is_spoken(self):
        self.page.end_panel()
        self.page.wait_text("[role=alert]", "The panel is gone")
        self.page.start_panel()
        self.page.browser.get(self.page.address)
        self.page.wait_for(lambda: len(self.page.all("article.telephone")) == 2)

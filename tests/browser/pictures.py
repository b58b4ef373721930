"""Pictures of the page's main states, compared with those in pictures/."""

import base64
import pathlib
import tempfile

from telephones import NEW_YORK, PageTest

FOLDER = pathlib.Path(__file__).parent / "pictures"
README = pathlib.Path(__file__).parent.parent.parent / "docs" / "pictures"
SCALE = 0.4  # of the references
MOST_BYTES = 100000  # of a picture
# Two machines draw the same letters with other edges, so the means of squares of 8 pixels are compared.
MOST_IN_A_SQUARE = 18  # of 255; other hinting of the letters makes 10
MANY_IN_A_SQUARE = 12
MOST_SQUARES = 0.01  # with more than that

COMPARE = """
  const [one, other, many, done] = arguments;
  const SIDE = 8;
  async function squares(png) {
    const bytes = Uint8Array.from(atob(png), (each) => each.charCodeAt(0));
    const image = await createImageBitmap(new Blob([bytes]));
    const context = new OffscreenCanvas(image.width, image.height).getContext("2d");
    context.drawImage(image, 0, 0);
    const { width, height, data } = context.getImageData(0, 0, image.width, image.height);
    const across = Math.ceil(width / SIDE);
    const sums = new Array(3 * across * Math.ceil(height / SIDE)).fill(0);
    for (let i = 0; i < width * height; ++i) {
      const at = Math.floor(Math.floor(i / width) / SIDE) * across + Math.floor((i % width) / SIDE);
      for (let part = 0; part < 3; ++part) sums[3 * at + part] += data[4 * i + part] / SIDE / SIDE;
    }
    return { size: `${width} x ${height}`, across, sums };
  }
  Promise.all([squares(one), squares(other)]).then(([a, b]) => {
    const far = a.sums.map((sum, index) => Math.abs(sum - (b.sums[index] ?? 0)));
    const worst = Math.max(...far);
    const index = far.indexOf(worst);
    done({ sizes: [a.size, b.size], worst, share: far.filter((each) => each > many).length / far.length,
      place: [Math.floor(index / 3) % a.across * SIDE, Math.floor(index / 3 / a.across) * SIDE] });
  });
"""
STYLE = """
  const sheet = new CSSStyleSheet();
  sheet.replaceSync(arguments[0]);
  document.adoptedStyleSheets = [sheet];
"""
FONT = '* { font-family: "DejaVu Sans" !important; caret-color: transparent !important; }'  # of Debian
# Nothing that moves or differs from run to run.
STEADY = FONT + ".why { height: 4.2em; overflow: hidden; } input[type=file], dd, .why { visibility: hidden; }"


class Pictures(PageTest):
    hosts = [NEW_YORK, ("--at", "2026-03-08T06:59:50Z", "--speed", "0")]
    update = False

    def setUp(self):
        super().setUp()
        self.page.browser.refresh()  # without the answers of other tests
        self.page.wait_for(lambda: len(self.page.all("article.telephone")) == 2)
        self.page.browser.execute_script(STYLE, STEADY)
        self.page.press("telephone 1")
        search = self.page.one(".journal input[type=search]")
        search.clear()
        search.send_keys("Event ")  # other lines name processes

    def tearDown(self):
        self.page.command("Emulation.clearDeviceMetricsOverride")

    def capture(self, width, height, theme="light", scale=1.0, of="body", **options):
        self.page.screen(width, height, theme)
        self.page.browser.execute_script("scrollTo(0, 0); document.activeElement.blur()")
        # Two frames, so that what depends on the size is drawn.
        self.page.browser.execute_async_script(
            "requestAnimationFrame(() => requestAnimationFrame(() => requestAnimationFrame(arguments[0])))")
        place = self.page.one(of).location
        clip = {**place, "width": width - place["x"], "height": height, "scale": scale}
        return self.page.command("Page.captureScreenshot", clip=clip, captureBeyondViewport=True,
                                 **options)["data"]

    def check(self, path, *size, **options):
        picture = self.capture(*size, **options)
        if self.update:
            path.write_bytes(base64.b64decode(picture))
        self.assertLess(path.stat().st_size, MOST_BYTES)
        found = self.page.browser.execute_async_script(
            COMPARE, picture, base64.b64encode(path.read_bytes()).decode(), MANY_IN_A_SQUARE)
        if found["worst"] > MOST_IN_A_SQUARE or found["share"] > MOST_SQUARES or len(set(found["sizes"])) > 1:
            seen = pathlib.Path(tempfile.gettempdir(), f"clockpanel-{path.name}")
            seen.write_bytes(base64.b64decode(picture))
            self.fail(f"{seen} differs from {path}: {found}; if that is right, ./dev browser --update Pictures")

    def check_state(self, name, *size, **options):
        self.check(FOLDER / f"{name}.png", *size, scale=SCALE, **options)

    def lose_an_hour(self):
        self.set_new_york()
        self.page.hosts[0].ctl("clock", "jump", "2026-03-08T06:59:50Z")
        self.page.press("+1 min")
        self.page.wait_text(".time", "03:00")
        self.page.wait_text(".passing output", "done")

    def test_an_hour_that_is_lost(self):
        self.lose_an_hour()
        self.check_state("light", 1280, 900)
        self.check_state("dark", 1280, 900, theme="dark")
        self.check_state("narrow", 360, 2000)

    def test_a_refused_value(self):
        self.page.set_key("sntp-tz-offset", "")
        self.check_state("refused", 1280, 900, of=".settings")

    def test_the_pictures_of_the_readme(self):
        for host in self.page.hosts:
            host.end()
            host.start()  # its time is the saved one, which no process set
        self.page.wait_for(lambda: self.page.text(".telephones").count(": saved time") == 2, "the saved times")
        self.set_new_york()
        self.page.press("+1 min")
        self.page.wait_text(".time", "03:00")
        self.page.wait_text(".passing output", "done")
        self.page.browser.execute_script(STYLE, FONT)
        for name, theme in (("panel", "light"), ("panel-dark", "dark")):
            self.check(README / f"{name}.webp", 1280, 1240, theme=theme, format="webp", quality=70)

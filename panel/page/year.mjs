// The local offset over a year, and the hours around a change.
import { html, useEffect, useMemo, useRef, useState } from "./preact.mjs";
import uPlot from "./uplot.mjs";
import { Answer, Buttons, Section, useRequest } from "./parts.mjs";
import { whatOf } from "./coming.mjs";
import { DAY, HOUR, MINUTE, instant, localText, offsetText, shownNow, utcText } from "./time.mjs";
import { lastChange } from "./zones.mjs";

const HEIGHT = 200, BAND = 8, MARK = 3, NEAR = 4, STEP = 2; // pixels
const MOST_NEAR = 3; // marks in a text
const PAST = 30 * DAY; // shown before now
const YEAR = 366 * DAY; // shown after it
const EVE = 10; // seconds before a change
const AROUND = 90 * MINUTE; // shown before and after a change

const DARK = matchMedia("(prefers-color-scheme: dark)");
const colour = (name) => getComputedStyle(document.body).getPropertyValue(name).trim();

// Draws a line at each instant, and a band for what comes each hour.
function drawMarks({ ctx, bbox, valToPos }, marks, hours) {
  const place = (seconds) => Math.round(valToPos(seconds, "x", true));
  const right = bbox.left + bbox.width;
  if (hours) {
    const from = Math.max(bbox.left, place(hours));
    ctx.fillStyle = colour("--band");
    ctx.fillRect(from, bbox.top + bbox.height - BAND, right - from, BAND);
  }
  for (const { seconds, name } of marks) {
    const x = place(seconds);
    if (x < bbox.left || x > right) continue;
    ctx.fillStyle = colour(name);
    ctx.fillRect(x - 1, bbox.top, MARK, bbox.height);
  }
}

// describe(seconds, marks): the text for an instant that the pointer, or the arrow keys, are at.
function Plot({ label, hint, data, options, marks, hours, describe }) {
  const place = useRef(null);
  const plot = useRef(null);
  const latest = useRef(null);
  latest.current = { marks, hours, describe };
  const [at, setAt] = useState({ left: 0, width: 1, text: "" });
  useEffect(() => {
    const size = () => ({ width: Math.max(280, place.current.clientWidth), height: HEIGHT });
    const moved = (self) => {
      if (self.cursor.left < 0) return;
      const near = latest.current.marks().filter(({ seconds }) =>
        Math.abs(self.valToPos(seconds, "x") - self.cursor.left) < NEAR).slice(-MOST_NEAR);
      const seconds = near[0]?.seconds ?? Math.round(self.posToVal(self.cursor.left, "x"));
      setAt({ left: self.cursor.left, width: self.over.clientWidth,
        text: [latest.current.describe(seconds), ...near.map(({ text }) => text)].join("; ") });
    };
    const draw = (self) => drawMarks(self, latest.current.marks(), latest.current.hours?.());
    plot.current = new uPlot({ ...size(), ...options, tzDate, legend: { show: false },
      cursor: { y: false, drag: { x: false }, points: { show: false } },
      hooks: { draw: [draw], setCursor: [moved] } }, data, place.current);
    const resize = new ResizeObserver(() => plot.current.setSize(size()));
    resize.observe(place.current);
    const redraw = () => plot.current.redraw();
    DARK.addEventListener("change", redraw);
    return () => {
      DARK.removeEventListener("change", redraw);
      resize.disconnect();
      plot.current.destroy();
    };
  }, [options]);
  useEffect(() => plot.current?.setData(data), [data]);
  const step = (event) => {
    const width = plot.current.over.clientWidth;
    const by = { ArrowLeft: -STEP, ArrowRight: STEP, PageDown: -width / 10, PageUp: width / 10, Home: -width, End: width }[event.key];
    if (!by) return;
    event.preventDefault();
    plot.current.setCursor({ left: Math.min(width, Math.max(0, at.left + by)), top: 0 });
  };
  return html`<div class="plot" role="slider" tabindex="0" aria-label=${label} aria-valuemin="0" aria-valuemax="100"
      aria-valuenow=${Math.round(100 * at.left / at.width)} aria-valuetext=${at.text || "arrow keys move through it"} onKeyDown=${step}
      ref=${place}></div>
    <p class="tip">${at.text || `${hint} Point at the plot, or use the arrow keys in it.`}</p>`;
}

// UTC on the axis of time, whatever the browser's zone.
const tzDate = (seconds) => uPlot.tzDate(new Date(seconds * 1000), "Etc/UTC");

// What is known of the past is when something changed, but not the offset.
function instantText(seconds, offsets) {
  const row = offsets.findLast((each) => each.seconds <= seconds);
  return utcText(seconds) + (row ? ` is ${localText(seconds, row.offset)} ${offsetText(row.offset)}` : "");
}

function optionsOf(timeText, valueText, line) {
  const stroke = () => colour("--text");
  const grid = { stroke: () => colour("--line"), width: 1 };
  const axis = (text) => ({ stroke, grid, values: (_, values) => values.map(text) });
  return {
    axes: [{ ...axis(timeText), space: 80 }, { ...axis(valueText), size: 90 }],
    series: [{}, { stroke: () => colour("--accent"), width: 3, points: { show: false }, ...line }],
  };
}

const yearOptions = () => optionsOf((seconds) => utcText(seconds).slice(0, 10), (hours) => offsetText(hours * HOUR),
  { paths: uPlot.paths.stepped({ align: 1 }) });

const nowMark = (phone) => ({ seconds: shownNow(phone), name: "--warn", text: "now" });

// What happened, now, and what will happen; full hours are in the band.
const yearMarks = (phone) => [
  ...(phone.history?.changes ?? []).map(({ time, what, cause }) =>
    ({ seconds: instant(time), name: "--soft", text: `${what}: ${cause}` })),
  ...phone.upcoming.upcoming.filter(({ kind }) => kind !== "hour").map((row) =>
    ({ seconds: instant(row.time), name: "--band", text: `${row.kind}: ${whatOf(row)}` })),
  nowMark(phone),
];

function yearData(offsets) {
  const [{ seconds }] = offsets;
  const rows = [{ seconds: seconds - PAST, offset: null }, ...offsets,
    { seconds: seconds + YEAR, offset: offsets[offsets.length - 1].offset }];
  return [rows.map((row) => row.seconds), rows.map(({ offset }) => (offset === null ? null : offset / HOUR))];
}

// Local time of day against UTC: a change is a gap or a fold.
function changeData({ seconds, before, after }) {
  const times = [];
  const hours = []; // since the midnight before the first
  const first = seconds - AROUND + before;
  const midnight = first - first % DAY;
  for (let at = seconds - AROUND; at <= seconds + AROUND; at += MINUTE) {
    const offset = at < seconds ? before : after;
    times.push(at);
    hours.push((at + offset - midnight) / HOUR);
    if (at === seconds - MINUTE) {
      times.push(seconds - 1);
      hours.push(null);
    }
  }
  return [times, hours];
}

const changeOptions = () => optionsOf((seconds) => utcText(seconds).slice(11, 16),
  (hours) => localText(Math.round(hours * HOUR), 0).slice(11, 16), { spanGaps: false });

// The change that happened last, for as long as the year's plot shows it, and those to come.
function changesOf(offsets, tz) {
  const [now] = offsets;
  const last = lastChange(tz, now.seconds);
  const coming = offsets.slice(1).map((row, index) =>
    ({ seconds: row.seconds, before: offsets[index].offset, after: row.offset }));
  return last?.after === now.offset && now.seconds - last.seconds < PAST ? [last, ...coming] : coming;
}

function changeText({ seconds, before, after }) {
  const what = after > before ? "is missing" : "comes twice";
  const from = localText(seconds, Math.min(before, after)).slice(0, 16);
  const to = localText(seconds, Math.max(before, after)).slice(11, 16);
  const [last, next] = [localText(seconds - 1, before), localText(seconds, after)].map((text) => text.slice(11));
  return `${from} to ${to} ${what}: ${last} is followed by ${next}`;
}

export function Year({ phone }) {
  const { offsets } = phone.upcoming;
  const [chosen, choose] = useState(null); // seconds; null: the first change
  const [send, answer] = useRequest([phone]);
  // The first row is now, in each message another.
  const { tz } = phone.status.zone;
  const key = JSON.stringify([tz, offsets[0].offset, offsets.slice(1)]);
  const day = Math.floor(offsets[0].seconds / DAY);
  const changes = useMemo(() => changesOf(offsets, tz), [key, day]);
  const options = useMemo(() => [yearOptions(), changeOptions()], [phone.number]);
  const data = useMemo(() => yearData(offsets), [key, day]);
  const change = changes.find(({ seconds }) => seconds === chosen) ?? changes[0];
  const near = useMemo(() => change && changeData(change), [key, change]);
  return html`<${Section} title="The year ahead" name="year">
    <${Plot} label="Local offset over the year" hint="Red is now; the band stands for the full hours to come."
      data=${data} options=${options[0]} describe=${(seconds) => instantText(seconds, offsets)}
      marks=${() => yearMarks(phone)} hours=${() => offsets[0].seconds} />
    ${change ? html`
      <${Buttons} label="Changes of the offset" rows=${changes.map(({ seconds }) => [seconds, utcText(seconds).slice(0, 10)])}
        pressed=${change.seconds} act=${choose} />
      <p data-test="change">${changeText(change)}</p>
      <button type="button" disabled=${change.seconds - EVE <= shownNow(phone)} onClick=${() =>
        send("clock", "advance", `${Math.floor(change.seconds - EVE - shownNow(phone))}s`)}>Let pass up to ${EVE} s before</button>
      <${Answer} answer=${answer} />
      <${Plot} label="Local time around the change" hint="Local time against UTC. Red is now." data=${near} options=${options[1]}
        describe=${(seconds) => instantText(seconds, [{ seconds: 0, offset: change.before }, { seconds: change.seconds, offset: change.after }])}
        marks=${() => [{ seconds: change.seconds, name: "--soft", text: "the change" }, nowMark(phone)]} />`
    : html`<p>No change of the local offset in a year. For one, choose a zone in the settings, and switch
        ${" "}<em>daylight-save</em> and <em>auto-daylight-save</em> on.</p>`}
  <//>`;
}

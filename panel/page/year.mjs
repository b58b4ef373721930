// The local offset over a year, and the hours around a change.
import { html, useEffect, useMemo, useRef, useState } from "./preact.mjs";
import uPlot from "./uplot.mjs";
import { Section } from "./parts.mjs";
import { DAY, HOUR, MINUTE, localText, offsetText, shownNow, utcText } from "./time.mjs";

const HEIGHT = 200; // pixels
const AROUND = 90 * MINUTE; // shown before and after a change

const colour = (name) => getComputedStyle(document.body).getPropertyValue(name).trim();

// A line at each instant: [seconds, colour].
function markers(marks) {
  return {
    hooks: {
      draw: (plot) => {
        const { ctx, bbox } = plot;
        for (const [seconds, stroke] of marks()) {
          const x = Math.round(plot.valToPos(seconds, "x", true));
          if (x < bbox.left || x > bbox.left + bbox.width) continue;
          ctx.strokeStyle = stroke;
          ctx.beginPath();
          ctx.moveTo(x, bbox.top);
          ctx.lineTo(x, bbox.top + bbox.height);
          ctx.stroke();
        }
      },
    },
  };
}

function Plot({ label, data, options }) {
  const place = useRef(null);
  const plot = useRef(null);
  useEffect(() => {
    const width = () => Math.max(280, place.current.clientWidth);
    plot.current = new uPlot({ width: width(), height: HEIGHT, ...options }, data, place.current);
    const resize = new ResizeObserver(() =>
      plot.current.setSize({ width: width(), height: HEIGHT }));
    resize.observe(place.current);
    return () => {
      resize.disconnect();
      plot.current.destroy();
    };
  }, [options]);
  useEffect(() => plot.current?.setData(data), [data]);
  return html`<div class="plot" role="img" aria-label=${label} ref=${place}></div>`;
}

function axes(valueText) {
  const stroke = colour("--text");
  const grid = { stroke: colour("--line"), width: 1 };
  return [{ stroke, grid }, { stroke, grid, size: 90, values: (_, values) => values.map(valueText) }];
}

// UTC on the axis of time, whatever the browser's zone.
const tzDate = (seconds) => uPlot.tzDate(new Date(seconds * 1000), "Etc/UTC");

function yearOptions(phone) {
  const stepped = uPlot.paths.stepped({ align: 1 });
  const tip = (_, seconds, __, index) => (index === null ? "" : utcText(seconds));
  return {
    tzDate,
    axes: axes((value) => offsetText(value * HOUR)),
    series: [
      { label: "UTC", value: tip },
      { label: "offset", paths: stepped, stroke: colour("--accent"), width: 2,
        value: (_, value) => (value === null ? "" : offsetText(value * HOUR)) },
    ],
    plugins: [markers(() => [
      [shownNow(phone), colour("--warn")],
      ...(phone.history?.changes ?? []).map((change) => [Date.parse(change.time) / 1000, colour("--line")]),
      ...phone.upcoming.upcoming.filter((row) => row.kind !== "hour")
        .map((row) => [Date.parse(row.time) / 1000, colour("--soft")]),
    ])],
  };
}

function yearData(offsets) {
  const end = offsets[0].seconds + 365 * DAY;
  const last = offsets[offsets.length - 1];
  const rows = [...offsets, { seconds: end, offset: last.offset }];
  return [rows.map((row) => row.seconds), rows.map((row) => row.offset / HOUR)];
}

// Local time of day against UTC: a change is a gap or a fold.
function changeData({ seconds, before, after }) {
  const times = [];
  const hours = [];
  for (let at = seconds - AROUND; at <= seconds + AROUND; at += MINUTE) {
    const offset = at < seconds ? before : after;
    times.push(at);
    hours.push(((at + offset) % DAY) / HOUR);
    if (at === seconds - MINUTE) {
      times.push(seconds - 1);
      hours.push(null);
    }
  }
  return [times, hours];
}

function changeOptions({ seconds }) {
  const text = (hours) => localText(Math.round(hours * HOUR), 0).slice(11, 16);
  return {
    tzDate,
    axes: axes(text),
    series: [
      { label: "UTC", value: (_, at) => (at === null ? "" : utcText(at)) },
      { label: "local", stroke: colour("--accent"), width: 3, spanGaps: false,
        value: (_, hours) => (hours === null ? "" : text(hours)) },
    ],
    plugins: [markers(() => [[seconds, colour("--warn")]])],
  };
}

function changesOf(offsets) {
  return offsets.slice(1).map((row, index) => ({
    seconds: row.seconds, before: offsets[index].offset, after: row.offset,
  }));
}

function changeText({ seconds, before, after }) {
  const what = after > before ? "missing" : "twice";
  const from = localText(seconds, Math.min(before, after)).slice(0, 16);
  const to = localText(seconds, Math.max(before, after)).slice(11, 16);
  return `${from} to ${to} ${after > before ? "is" : "comes"} ${what}`;
}

export function Year({ phone }) {
  const { offsets } = phone.upcoming;
  const [chosen, choose] = useState(0);
  // The first row is now, in each message another.
  const key = JSON.stringify(offsets.slice(1));
  const changes = useMemo(() => changesOf(offsets), [key]);
  const year = useMemo(() => yearOptions(phone), [phone.number]);
  const data = useMemo(() => yearData(offsets), [key, Math.floor(offsets[0].seconds / DAY)]);
  const change = changes[Math.min(chosen, changes.length - 1)];
  const near = useMemo(() => change && [changeData(change), changeOptions(change)], [key, change]);
  return html`<${Section} title="The year ahead" name="year">
    <${Plot} label="Local offset over the year" data=${data} options=${year} />
    ${change ? html`
      <div class="buttons" role="group" aria-label="Changes of the offset">
        ${changes.map((row, number) => html`<button type="button"
          aria-pressed=${String(row === change)} onClick=${() => choose(number)}>
          ${utcText(row.seconds).slice(0, 10)}</button>`)}
      </div>
      <p data-test="change">${changeText(change)}</p>
      <${Plot} label="Local time around the change" data=${near[0]} options=${near[1]} />`
    : html`<p>No change of the local offset in a year.</p>`}
  <//>`;
}

// What came: events, log, history and security records in one list, of which only the visible rows
// are drawn.
import { html, useEffect, useLayoutEffect, useMemo, useReducer, useRef, useState } from "./preact.mjs";
import { Section } from "./parts.mjs";

const ROW = 24; // pixels, as in panel.css
const VISIBLE = 14; // rows
const KINDS = ["event", "log", "detail", "history", "security"]; // detail: log lines below notes
const AT_ONCE = 20000; // entries
const SPEAK = 5000; // milliseconds

const matches = (row, kinds, patterns) => kinds.has(row.kind) &&
  patterns.every((pattern) => pattern.test(row.text) || pattern.test(row.time) || pattern.test(row.kind));

// The rows of the entries that match, oldest first. Each is looked at once, and not too many in one frame.
function useMatching(entries, dropped, kinds, patterns) {
  const kept = useRef({});
  const [, draw] = useReducer((count) => count + 1, 0);
  if ([entries, dropped, kinds, patterns].some((each, index) => each !== kept.current.of?.[index])) {
    kept.current = { of: [entries, dropped, kinds, patterns], rows: [], next: 0 };
  }
  const { rows, next } = kept.current;
  const end = Math.min(entries.length, next + AT_ONCE);
  for (let i = next; i < end; ++i) if (matches(entries[i], kinds, patterns)) rows.push(entries[i]);
  kept.current.next = end;
  useEffect(() => {
    if (end < entries.length) requestAnimationFrame(draw);
  });
  return rows;
}

function List({ rows, count }) {
  const [top, setTop] = useState(0); // pixels
  const list = useRef(null);
  const before = useRef(count);
  useLayoutEffect(() => { // what one reads stays where it is
    if (top > 0) list.current.scrollTop += Math.max(0, count - before.current) * ROW; // reading it costs a layout
    before.current = count;
  }, [count]);
  const first = Math.max(0, Math.min(Math.floor(top / ROW), count - VISIBLE));
  const shown = [];
  for (let i = first; i < Math.min(first + VISIBLE + 1, count); ++i) {
    const row = rows[count - 1 - i]; // newest first
    shown.push(html`<li key=${count - i} style=${{ top: `${i * ROW}px` }}
      aria-setsize=${count} aria-posinset=${i + 1}>
      <span class="kind ${row.kind}">${row.kind}</span> <time>${row.time}</time> ${row.text}</li>`);
  }
  return html`<div class="list" tabindex="0" role="region" aria-label="Entries" ref=${list}
      onScroll=${(event) => setTop(event.currentTarget.scrollTop)}>
    <ul style=${{ height: `${count * ROW}px` }}>${shown}</ul>
  </div>`;
}

// Tells a screen reader the latest event, and not too often.
function Spoken({ phone }) {
  const [said, say] = useState("");
  useEffect(() => {
    const timer = setInterval(() => say(phone.latest?.text ?? ""), SPEAK);
    return () => clearInterval(timer);
  }, [phone]);
  return html`<p class="spoken" role="status">${said}</p>`;
}

export function Journal({ phone }) {
  const [kinds, setKinds] = useState(new Set(KINDS.filter((kind) => kind !== "detail")));
  const [words, setWords] = useState("");
  const patterns = useMemo(() => words.split(/\s+/).filter(Boolean)
    .map((word) => new RegExp(word.replace(/[^\w\s]/g, "\\$&"), "i")), [words]);
  const rows = useMatching(phone.entries, phone.dropped, kinds, patterns);
  const toggle = (kind) => setKinds(new Set(KINDS.filter((each) => kinds.has(each) !== (each === kind))));
  return html`<${Section} title="What came" name="journal">
    <div class="filters">
      <label>Search <input type="search" value=${words}
        onInput=${(event) => setWords(event.target.value)} /></label>
      ${KINDS.map((kind) => html`<label><input type="checkbox" checked=${kinds.has(kind)}
        onChange=${() => toggle(kind)} /> ${kind}</label>`)}
      <span data-test="rows">${rows.length} entries</span>
    </div>
    <${List} key=${[words, ...kinds]} rows=${rows} count=${rows.length} />
    <${Spoken} phone=${phone} />
  <//>`;
}

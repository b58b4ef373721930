// What came: events, log, history and security records in one list, of which only the visible rows
// are drawn.
import { html, useMemo, useState } from "./preact.mjs";
import { Section } from "./parts.mjs";

const ROW = 24; // pixels, as in panel.css
const VISIBLE = 14; // rows
const KINDS = ["event", "log", "history", "security"];
const LEVELS = ["fatal", "critical", "error", "warning", "note", "info", "trace"];

const parametersText = (parameters) =>
  Object.entries(parameters).map(([name, value]) => `${name}=${value}`).join(" ");

function entryRow(entry) {
  if (entry.line) {
    const { time, level, component, text } = entry.line;
    return { kind: "log", time, text: `${LEVELS[level] ?? level} ${component}: ${text}` };
  }
  return { kind: "event", time: entry.utc ?? "", text: `${entry.event} ${parametersText(entry.parameters)}` };
}

const historyRow = ({ time, what, from, to, cause, who }) =>
  ({ kind: "history", time, text: `${what}: ${from} -> ${to} (${cause}; ${who})` });

const securityRow = ({ time, text, subject, origin }) =>
  ({ kind: "security", time, text: `${text} ${subject ?? ""} ${origin ?? ""}` });

// Rows are made once: an entry keeps its own.
function rowOf(entry) {
  entry.row ??= entryRow(entry);
  return entry.row;
}

function rowsOf(phone, kinds, words) {
  const rows = [
    ...(kinds.has("security") ? phone.security.records.map(securityRow) : []),
    ...(kinds.has("history") ? phone.history.changes.map(historyRow) : []),
  ];
  for (const entry of phone.entries) {
    const row = rowOf(entry);
    if (kinds.has(row.kind)) rows.push(row);
  }
  const wanted = words.toLowerCase().split(/\s+/).filter(Boolean);
  if (wanted.length === 0) return rows;
  return rows.filter((row) => {
    const text = `${row.kind} ${row.time} ${row.text}`.toLowerCase();
    return wanted.every((word) => text.includes(word));
  });
}

function List({ rows }) {
  const [top, setTop] = useState(0); // pixels
  const first = Math.max(0, Math.min(Math.floor(top / ROW), rows.length - VISIBLE));
  const shown = [];
  for (let i = first; i < Math.min(first + VISIBLE + 1, rows.length); ++i) {
    const row = rows[rows.length - 1 - i]; // newest first
    shown.push(html`<li key=${rows.length - i} style=${{ top: `${i * ROW}px` }}
      aria-setsize=${rows.length} aria-posinset=${i + 1}>
      <span class="kind ${row.kind}">${row.kind}</span> <time>${row.time}</time> ${row.text}</li>`);
  }
  return html`<div class="list" tabindex="0" role="region" aria-label="Entries"
      onScroll=${(event) => setTop(event.currentTarget.scrollTop)}>
    <ul style=${{ height: `${rows.length * ROW}px` }}>${shown}</ul>
  </div>`;
}

export function Journal({ phone }) {
  const [kinds, setKinds] = useState(new Set(KINDS));
  const [words, setWords] = useState("");
  const rows = useMemo(() => rowsOf(phone, kinds, words), [
    phone.entries.length, phone.dropped, phone.history, phone.security, kinds, words, phone.number,
  ]);
  const toggle = (kind) => {
    const next = new Set(kinds);
    if (!next.delete(kind)) next.add(kind);
    setKinds(next);
  };
  return html`<${Section} title="What came" name="journal">
    <div class="filters">
      <label>Search <input type="search" value=${words}
        onInput=${(event) => setWords(event.target.value)} /></label>
      ${KINDS.map((kind) => html`<label><input type="checkbox" checked=${kinds.has(kind)}
        onChange=${() => toggle(kind)} /> ${kind}</label>`)}
      <span data-test="rows">${rows.length} entries</span>
    </div>
    <${List} rows=${rows} />
  <//>`;
}

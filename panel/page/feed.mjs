// What the panel tells this page: one record for each telephone, kept up to date.

const MOST_ENTRIES = 100000; // of the journal, in each telephone
const LEVELS = ["fatal", "critical", "error", "warning", "note", "info", "trace"];
const NOTE = 4;

export const phones = [];
export let catalogue = { keys: [] };
export let timeServer = null; // null: the panel has none

// No entries yet; change and record are the newest that were taken.
const empty = () => ({ entries: [], dropped: 0, change: undefined, record: 0, begun: false });

const listeners = new Set();
let live = false; // the start, which is older, has come
let waiting = false;

// Calls `changed` after messages have come, at most once for each frame that is drawn.
export function subscribe(changed) {
  listeners.add(changed);
  return () => listeners.delete(changed);
}

function announce() {
  if (waiting) return;
  waiting = true;
  requestAnimationFrame(() => {
    waiting = false;
    for (const changed of listeners) changed();
  });
}

function phoneOf(number) {
  while (phones.length <= number) phones.push({ number: phones.length, attached: null, ...empty() });
  return phones[number];
}

const parametersText = (parameters) =>
  Object.entries(parameters).map(([name, value]) => `${name}=${value}`).join(" ");

function entryRow({ line, utc, event, parameters }) {
  if (!line) return { kind: "event", time: utc ?? "", text: `${event} ${parametersText(parameters)}` };
  const { time, level, component, text } = line;
  return { kind: level > NOTE ? "detail" : "log", time, text: `${LEVELS[level] ?? level} ${component}: ${text}` };
}

const historyRow = ({ time, what, from, to, cause, who }) =>
  ({ kind: "history", time, text: `${what}: ${from} -> ${to} (${cause}; ${who})` });

const securityRow = ({ time, text, subject, origin }) =>
  ({ kind: "security", time, text: `${text} ${subject ?? ""} ${origin ?? ""}` });

// The changes and records that were not taken yet: the panel tells the newest ones each time.
function newRows(phone) {
  const { history: { changes } = { changes: [] }, security: { records } = { records: [] } } = phone;
  const texts = changes.map((row) => JSON.stringify(row));
  const newest = records.at(-1)?.number ?? 0;
  const taken = newest < phone.record ? 0 : phone.record; // a new host begins with 1
  const rows = [...changes.slice(texts.lastIndexOf(phone.change) + 1).map(historyRow),
    ...records.filter(({ number }) => number > taken).map(securityRow)];
  Object.assign(phone, { change: texts.at(-1), record: newest });
  return rows;
}

const byTime = (one, other) => (one.time < other.time ? -1 : Number(one.time > other.time));

function addEntry(phone, row) {
  phone.entries.push(row);
  if (row.kind === "event") phone.latest = row;
  if (phone.entries.length > MOST_ENTRIES) {
    phone.entries.splice(0, MOST_ENTRIES / 10);
    phone.dropped += MOST_ENTRIES / 10;
  }
}

function take(message) {
  if (message.catalogue) ({ catalogue } = message);
  else if ("timeServer" in message) ({ timeServer } = message);
  else if (message.live) begin();
  else takeFrom(phoneOf(message.telephone), message);
}

function begin() {
  live = true;
  phones.forEach(addRows);
}

// What a telephone has at first is older than what came.
function addRows(phone) {
  const { begun } = phone;
  phone.begun = Boolean(phone.history && phone.security);
  const rows = newRows(phone);
  if (!begun) phone.entries = [...rows, ...phone.entries].sort(byTime);
  else rows.forEach((row) => addEntry(phone, row));
}

function takeFrom(phone, message) {
  if (message.entries) return message.entries.forEach((entry) => addEntry(phone, entryRow(entry)));
  if (message.status) message.status.received = performance.now();
  Object.assign(phone, message);
  if (live && (message.history || message.security)) addRows(phone);
}

// The browser reconnects by itself; the panel then begins again with the present state.
export function follow() {
  const source = new EventSource("/feed");
  source.onopen = () => {
    live = false;
    for (const phone of phones) Object.assign(phone, empty());
    connected(true);
  };
  source.onmessage = (event) => {
    take(JSON.parse(event.data));
    announce();
  };
  source.onerror = () => connected(false);
}

export let panelIsThere = true;

function connected(yes) {
  panelIsThere = yes;
  announce();
}

// Asks the panel. Throws an Error whose message is the refusal.
export async function post(target, asked) {
  const response = await fetch(target, { method: "POST", body: JSON.stringify(asked) });
  if (!response.ok) throw new Error((await response.text()).trim());
  const answer = await response.json();
  if (!answer.ok) throw new Error(answer.error);
  return answer;
}

// Carries out a verb of clockctl at the telephone, as an array of words.
export const ask = (phone, words) => post("/request", { telephone: phone.number, words });

// The same at all of them: the first one's answer, or which ones refused and why.
export async function askAll(asked, words) {
  const outcomes = await Promise.allSettled(asked.map((phone) => ask(phone, words)));
  const refused = outcomes.flatMap(({ reason }, row) => !reason ? [] :
    [asked.length > 1 ? `telephone ${asked[row].number + 1}: ${reason.message}` : reason.message]);
  if (refused.length > 0) throw new Error(refused.join("; "));
  return outcomes[0].value;
}

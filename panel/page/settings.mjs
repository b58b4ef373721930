// The sixteen keys as a form.
import { html, useEffect, useRef, useState } from "./preact.mjs";
import { ask, askAll, catalogue } from "./feed.mjs";
import { Answer, Section, useAction } from "./parts.mjs";
import { MINUTE, localText, offsetText, shownNow, utcText } from "./time.mjs";
import { dateText, nextChange, offsetOf, offsetValue, ruleText, timeText } from "./zones.mjs";

const OFFSET = "sntp-tz-offset", ZONE = "daylight-save-zone-id";
const GROUPS = [
  ["Zone and daylight saving", /daylight|tz-offset/], ["Formats", /format/], ["Time server", /sntp-addr|ntp-secret/],
  ["Time", /./],
];
const DEFAULTS = [["2, 3 and 4", "2", "1", "12", "true"], ["0, 1, 5 and up", "0", "0", "0", "false"]];
const defaultsOf = ([, date, time, zone, saving]) => ({ "date-format": date, "time-format": time, [OFFSET]: "0",
  "daylight-save-zone-id": zone, "daylight-save": saving, "auto-daylight-save": saving,
  "daylight-save-minutes": "60", "time-source": "0" });

const storedOf = (phone, key) => phone.keys.keys.find((row) => row.key === key)?.value ?? "";

const localOf = (phone) => localText(shownNow(phone), phone.status.zone.offset);

// The keys that are the time pass with it; all others change only by a set.
function presentOf(phone, key) {
  if (key === "time") return utcText(shownNow(phone)).replace("Z", "+00:00");
  if (key === "simple-time") return localOf(phone).slice(11, 16);
  if (key === "simple-date") return dateText(Number(storedOf(phone, "date-format")), localOf(phone), 4);
  if (key === "daylight-save-zone-list") return `${zonesOf(phone).length} zones, as at daylight-save-zone-id`;
  return storedOf(phone, key);
}

// "Not Set", "Brazil", ... in the order of their numbers.
const zonesOf = (phone) => storedOf(phone, "daylight-save-zone-list").split(";").filter(Boolean);

// The value in "clockctl set KEY VALUE".
const valueIn = (example) => example.split(" ").slice(3).join(" ");

// [value, text] of what one may choose; undefined: any text.
function choicesOf(phone, { key, values }) {
  const local = localOf(phone);
  if (values === "true or false") return [["true", "true"], ["false", "false"]];
  if (key === "date-format") return [0, 1, 2].map((format) => [String(format), `${format}: ${dateText(format, local)}`]);
  if (key === "time-format") return [0, 1].map((format) => [String(format), `${format}: ${timeText(format, local)}`]);
  if (key === "daylight-save-zone-index") return zonesOf(phone).map((zone, row) => [String(row), `${row}: ${zone}`]);
  return undefined;
}

// Each zone with its rule and its next change.
function Zones({ phone, id, value, setValue }) {
  const offset = offsetOf(storedOf(phone, OFFSET));
  const shift = Number(storedOf(phone, "daylight-save-minutes")) * MINUTE;
  const now = shownNow(phone);
  const list = useRef(null);
  useEffect(() => {
    const chosen = list.current.querySelector(":checked");
    if (chosen) list.current.scrollTop = chosen.parentNode.offsetTop;
  }, [value]);
  return html`<div class="zones scroll" role="radiogroup" id=${id} aria-labelledby="${id}-name" ref=${list}>
    ${zonesOf(phone).map((zone, number) => html`<label>
      <input type="radio" name=${id} value=${number} checked=${String(number) === value}
        onChange=${() => setValue(String(number))} />
      <span>${zone} <small>${[ruleText(number), nextChange(number, now, offset, shift)].filter(Boolean).join("; next ")}</small></span>
    </label>`)}
  </div>`;
}

function Input({ phone, row, id, value, setValue }) {
  const choices = choicesOf(phone, row);
  const [free, setFree] = useState(false);
  const change = (event) => setValue(event.target.value);
  const choose = (event) => event.target.value === "other" ? setFree(true) : change(event);
  if (row.key === ZONE) return html`<${Zones} ...${{ phone, id, value, setValue }} />`;
  if (choices && !free) {
    const known = choices.some(([each]) => each === value) ? choices : [[value, value], ...choices];
    return html`<select id=${id} onChange=${choose}>
      ${[...known, ["other", "another value"]].map(([each, text]) =>
        html`<option value=${each} selected=${each === value}>${text}</option>`)}
    </select>`;
  }
  return html`<input id=${id} value=${value} placeholder=${valueIn(row.example)} autocomplete="off"
    spellcheck=${false} onInput=${change} />`;
}

function Setting({ phones, row }) {
  const [phone] = phones;
  const [typed, setTyped] = useState(null); // null: as the telephone has it
  const [run, answer] = useAction();
  const id = `key-${row.key}`;
  const value = typed ?? presentOf(phone, row.key);
  const set = (event) => {
    event.preventDefault();
    run(async () => {
      const sent = row.key === OFFSET ? offsetValue(value) : value;
      await askAll(phones, ["set", row.key, sent]);
      setTyped(null);
      const kept = await ask(phone, ["get", row.key]);
      const where = phones.length > 1 ? ` at telephone ${phone.number + 1}` : "";
      return { note: `done, it is now "${kept.value}"${where}; ${row.effect}` };
    });
  };
  if (!row.settable) return html`<div class="setting"><span>${row.key}</span> <span class="value">${value}</span></div>`;
  const seconds = row.key === OFFSET ? offsetOf(value) : NaN;
  return html`<form class="setting" onSubmit=${set}>
    <label class="name" id="${id}-name" for=${row.key === ZONE ? undefined : id}>${row.key}</label>
    <${Input} ...${{ phone, row, id, value, setValue: setTyped }} />
    <button disabled=${answer?.busy} aria-label="Set ${row.key}">Set</button>
    <small>${row.meaning}${Number.isFinite(seconds) && ` (${offsetText(seconds)})`}: ${row.values}</small>
    <${Answer} answer=${answer} />
  </form>`;
}

export function Settings({ phones }) {
  const [run, answer] = useAction();
  const groupOf = ({ key }) => GROUPS.find(([, pattern]) => pattern.test(key));
  const setAll = (values) => async () => {
    for (const [key, value] of Object.entries(values)) await askAll(phones, ["set", key, value]);
  };
  return html`<${Section} title="Settings" name="settings">
    ${GROUPS.map((group) => html`<h3>${group[0]}</h3>
      ${catalogue.keys.filter((row) => groupOf(row) === group)
        .map((row) => html`<${Setting} key=${row.key} phones=${phones} row=${row} />`)}`)}
    <h3>Defaults</h3>
    <div class="buttons">
      <button type="button" onClick=${() => run(() => askAll(phones, ["reset"]))}>Reset the formats</button>
      ${DEFAULTS.map((row) => html`<button type="button" onClick=${() => run(setAll(defaultsOf(row)))}>
        Defaults of variants ${row[0]}</button>`)}
    </div>
    <${Answer} answer=${answer} />
  <//>`;
}

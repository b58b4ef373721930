// The sixteen keys as a form.
import { html, useState } from "./preact.mjs";
import { catalogue } from "./feed.mjs";
import { Answer, Section, useRequest } from "./parts.mjs";

const ZONE_KEYS = ["daylight-save-zone-id", "daylight-save-zone-index"];

const presentOf = (phone, key) => phone.keys.keys.find((row) => row.key === key)?.value ?? "";

// "Not Set", "Brazil", ... in the order of their numbers.
const zonesOf = (phone) =>
  presentOf(phone, "daylight-save-zone-list").split(";").filter(Boolean);

// The value in "clockctl set KEY VALUE".
const valueIn = (example) => example.split(" ").slice(3).join(" ");

function Choice({ id, chosen, change, rows }) {
  return html`<select id=${id} onChange=${change}>
    ${rows.map(([value, text]) => html`<option value=${value} selected=${value === chosen}>${text}</option>`)}
  </select>`;
}

function Input({ phone, row, id, value, setValue }) {
  const present = presentOf(phone, row.key);
  const change = (event) => setValue(event.target.value);
  if (ZONE_KEYS.includes(row.key)) {
    return html`<${Choice} id=${id} chosen=${value ?? present} change=${change}
      rows=${zonesOf(phone).map((zone, number) => [String(number), zone])} />`;
  }
  if (row.values === "true or false") {
    return html`<${Choice} id=${id} chosen=${value ?? present} change=${change}
      rows=${[["true", "true"], ["false", "false"]]} />`;
  }
  return html`<input id=${id} value=${value ?? present} placeholder=${valueIn(row.example)}
    autocomplete="off" spellcheck=${false} onInput=${change} />`;
}

function Setting({ phones, row }) {
  const [phone] = phones;
  const [value, setValue] = useState(null); // null: as the telephone has it
  const [send, answer] = useRequest(phones);
  const id = `key-${row.key}`;
  const set = async (event) => {
    event.preventDefault();
    if (await send("set", row.key, value ?? presentOf(phone, row.key))) setValue(null);
  };
  if (!row.settable) {
    return html`<div class="setting"><span class="name">${row.key}</span>
      <span class="value">${presentOf(phone, row.key)}</span></div>`;
  }
  return html`<form class="setting" onSubmit=${set}>
    <label class="name" for=${id} title=${row.meaning}>${row.key}</label>
    <${Input} phone=${phone} row=${row} id=${id} value=${value} setValue=${setValue} />
    <button disabled=${answer?.busy}>Set</button>
    <small>${row.meaning}: ${row.values}</small>
    <${Answer} answer=${answer} />
  </form>`;
}

export function Settings({ phones }) {
  const [send, answer] = useRequest(phones);
  return html`<${Section} title="Settings" name="settings">
    ${catalogue.keys.map((row) => html`<${Setting} key=${row.key} phones=${phones} row=${row} />`)}
    <button type="button" onClick=${() => send("reset")}>Reset the formats</button>
    <${Answer} answer=${answer} />
  <//>`;
}

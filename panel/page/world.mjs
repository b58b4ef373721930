// The world around the telephone.
import { html, useState } from "./preact.mjs";
import { post, timeServer } from "./feed.mjs";
import { Answer, Buttons, Facts, Section, useAction, useRequest } from "./parts.mjs";
import { HOUR } from "./time.mjs";

const NETWORK_PLUG = "5";
const NETWORK = [["up", "network up"], ["down", "network down"]];
const DHCP = [["dhcp true", "DHCP on"], ["dhcp false", "DHCP off"], ["mobility 1", "mobility data"]];

// The time server of the panel: right, wrong or silent.
function TimeServer({ send }) {
  const [run, answer] = useAction();
  const [hours, setHours] = useState("1");
  if (!timeServer) return null;
  const be = (silent, error) => () => run(() => post("/time-server", { silent, error }));
  const { silent, error } = timeServer;
  return html`<div class="buttons" role="group" aria-label="Time server">
    <button type="button" onClick=${() => send("set", "sntp-addr", "127.0.0.1")}>use the panel's server</button>
    <button type="button" aria-pressed=${String(!silent && error === 0)} onClick=${be(false, 0)}>right</button>
    <button type="button" aria-pressed=${String(!silent && error !== 0)}
      onClick=${be(false, Math.round(Number(hours) * HOUR))}>wrong by</button>
    <label><input type="number" step="any" value=${hours} aria-label="Hours of error"
      onInput=${(event) => setHours(event.target.value)} /> h</label>
    <button type="button" aria-pressed=${String(silent)} onClick=${be(true, error)}>silent</button>
    <${Answer} answer=${answer} />
  </div>`;
}

export function World({ phones }) {
  const [send, answer] = useRequest(phones);
  const [plug, setPlug] = useState(NETWORK_PLUG);
  const [{ status }] = phones;
  const plugged = (word) => () => send("inject", "jack", plug, word);
  return html`<${Section} title="World around it" name="world">
    <${Buttons} label="Network" rows=${NETWORK} pressed=${status.network === "up" ? "up" : "down"}
      act=${(word) => send("inject", "network", word)} />
    <div class="buttons" role="group" aria-label="Jack">
      <label>plug <input type="number" min="0" max="99" value=${plug}
        onInput=${(event) => setPlug(event.target.value)} /></label>
      <button type="button" onClick=${plugged("1")}>in</button>
      <button type="button" onClick=${plugged("0")}>out</button>
    </div>
    <${Buttons} label="DHCP" rows=${DHCP} act=${(words) => send("inject", ...words.split(" "))} />
    <${TimeServer} send=${send} />
    <${Facts} rows=${{ "time server": status.ntp.server || "none",
      "NTP client": status.ntp.process ? `process ${status.ntp.process}: ${status.ntp.command}` : "not running",
      "it said": status.ntp.said ?? "nothing yet" }} />
    <${Answer} answer=${answer} />
  <//>`;
}

// The world around the telephone.
import { html, useState } from "./preact.mjs";
import { post, timeServer } from "./feed.mjs";
import { Answer, Section, useAction, useRequest } from "./parts.mjs";
import { HOUR } from "./time.mjs";

const NETWORK_PLUG = "5";

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
  const up = status.network === "up";
  const inject = (...words) => () => send("inject", ...words);
  return html`<${Section} title="World around it" name="world">
    <div class="buttons" role="group" aria-label="Network">
      <button type="button" aria-pressed=${String(up)} onClick=${inject("network", "up")}>network up</button>
      <button type="button" aria-pressed=${String(!up)} onClick=${inject("network", "down")}>network down</button>
    </div>
    <div class="buttons" role="group" aria-label="Jack">
      <label>plug <input type="number" min="0" max="99" value=${plug}
        onInput=${(event) => setPlug(event.target.value)} /></label>
      <button type="button" onClick=${inject("jack", plug, "1")}>in</button>
      <button type="button" onClick=${inject("jack", plug, "0")}>out</button>
    </div>
    <div class="buttons" role="group" aria-label="DHCP">
      <button type="button" onClick=${inject("dhcp", "true")}>DHCP on</button>
      <button type="button" onClick=${inject("dhcp", "false")}>DHCP off</button>
      <button type="button" onClick=${inject("mobility", "1")}>mobility data</button>
    </div>
    <${TimeServer} send=${send} />
    <dl>
      <dt>time server</dt><dd>${status.ntp.server || "none"}</dd>
      <dt>NTP client</dt><dd>${status.ntp.process ? `process ${status.ntp.process}: ${status.ntp.command}` : "not running"}</dd>
      <dt>it said</dt><dd>${status.ntp.said ?? "nothing yet"}</dd>
    </dl>
    <${Answer} answer=${answer} />
  <//>`;
}

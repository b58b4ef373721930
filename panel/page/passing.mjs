// Lets time pass, and moves the clock.
import { html, useState } from "./preact.mjs";
import { Answer, Buttons, Section, useRequest } from "./parts.mjs";
import { DAY, instant, localText, shownNow, utcText } from "./time.mjs";

const SPEEDS = [["0", "pause"], ["1", "1x"], ["60", "60x"], ["3600", "3600x"], ["max", "max"]];
const STEPS = [["1m", "+1 min"], ["1h", "+1 h"], ["1d", "+1 day"], ["next", "next timer"]];
const LANDMARKS = [["hour", "next hour"], ["midnight", "midnight"], ["dst", "daylight saving"],
  ["leap-day", "leap day"], ["2038", "2038"]];
const YEAR = 365; // days of the scrubber

const speedName = ({ clock }) => (clock.speed === null ? "max" : String(clock.speed));

// Moves on through the year. It lets time pass, so nothing is skipped.
function Scrubber({ phone, send, busy }) {
  const [days, setDays] = useState(1);
  const day = localText(shownNow(phone) + days * DAY, phone.status.zone.offset).slice(0, 10);
  return html`<div class="buttons" role="group" aria-label="Through the year">
    <input type="range" min="1" max=${YEAR} value=${days} aria-label="Days to let pass" aria-valuetext="${days} days, to ${day}"
      onInput=${(event) => setDays(Number(event.target.value))} />
    <button type="button" disabled=${busy} onClick=${() => send("clock", "advance", `${days}d`)}>
      Let ${days} ${days === 1 ? "day" : "days"} pass, to ${day}</button>
  </div>`;
}

function Jump({ phone, send }) {
  const [text, setText] = useState("");
  const target = text ? instant(`${text}Z`) : NaN;
  const back = Number.isFinite(target) && target < shownNow(phone);
  const jump = (event) => {
    event.preventDefault();
    if (Number.isFinite(target)) send("clock", "jump", utcText(target));
  };
  return html`<form class="jump" onSubmit=${jump}>
    <label>UTC <input type="datetime-local" step="1" min="1970-01-01T00:00" max="2199-12-31T23:59"
      value=${text} onInput=${(event) => setText(event.target.value)} required /></label>
    <button>${back ? "Jump back" : "Jump"}</button>
    <small>${back ? "Back in time: a jump, as if another program had set the clock." :
      "A jump sets the clock; timers and uptime do not follow."}</small>
  </form>`;
}

export function Passing({ phones }) {
  const [send, answer] = useRequest(phones);
  const [phone] = phones;
  return html`<${Section} title="Time" name="passing">
    <${Buttons} label="Speed" rows=${SPEEDS} pressed=${speedName(phone.status)}
      act=${(word) => send("clock", "speed", word)} />
    <${Buttons} label="Let pass" rows=${STEPS} act=${(word) => word === "next" ? send("clock", "next") : send("clock", "advance", word)} />
    <${Buttons} label="Go to ten seconds before" rows=${LANDMARKS}
      act=${(word) => send("clock", "to", word)} />
    <${Scrubber} ...${{ phone, send, busy: answer?.busy }} />
    <${Jump} phone=${phone} send=${send} />
    <${Answer} answer=${answer} />
  <//>`;
}

// The telephone as its user sees it.
import { html, useEffect, useState } from "./preact.mjs";
import { ask } from "./feed.mjs";
import { useTick } from "./parts.mjs";
import { MINUTE, localText, offsetText, shownNow } from "./time.mjs";

const SPEED_WITH_MINUTES = 60; // up to this speed, each new minute is asked for

// Asks for the telephone's own text when its minute ends, and for its other texts when one changes.
function useTexts(phone) {
  const [short, setShort] = useState("");
  const { status } = phone;
  const minute = Math.floor(shownNow(phone) / MINUTE);
  const ticks = status.clock.speed > 0 && status.clock.speed <= SPEED_WITH_MINUTES;
  useEffect(() => {
    if (ticks) ask(phone, ["call", "getTime"]).catch(() => {});
  }, [minute, ticks]);
  useEffect(() => {
    ask(phone, ["call", "getDateShort"])
      .then((answer) => setShort(Object.values(answer.reply)[0]))
      .catch(() => {});
  }, [status.shown.time, status.shown.date]);
  return short;
}

function Icon({ on, symbol, label }) {
  return html`<li class=${on ? "on" : "off"}><span aria-hidden="true">${symbol}</span> ${label}</li>`;
}

function Icons({ status }) {
  const saving = status.zone.daylight;
  return html`<ul class="icons" aria-label="State">
    <${Icon} on=${true} symbol=${status.byHand ? "✋" : status.source === "time server" ? "📡" : "💾"}
      label=${status.source || "no source"} />
    <${Icon} on=${status.network === "up"} symbol="🖧" label="network ${status.network}" />
    <${Icon} on=${saving} symbol=${saving ? "☀" : "❄"}
      label=${saving ? "daylight saving" : "standard time"} />
  </ul>`;
}

function Why({ status }) {
  const { changed } = status;
  if (!changed) return null;
  return html`<p class="why">Last changed ${changed.time}: ${changed.cause}
    ${" "}(${changed.who}), from ${changed.from}.</p>`;
}

export function Telephone({ phone }) {
  useTick(4);
  const short = useTexts(phone);
  const { status } = phone;
  const now = shownNow(phone);
  const { offset } = status.zone;
  return html`<article class="telephone" aria-label="Telephone ${phone.number + 1}">
    <div class="display" role="timer" aria-label="Display">
      <div class="time" data-test="time">${status.shown.time}</div>
      <div class="date" data-test="date">${status.shown.date}</div>
      <div class="short">${short}</div>
    </div>
    <p class="exact"><span data-test="local">${localText(now, offset)}</span> ${offsetText(offset)}</p>
    <${Icons} status=${status} />
    <${Why} status=${status} />
    <details>
      <summary>Device</summary>
      <dl>
        <dt>variant</dt><dd>${status.variant}</dd>
        <dt>TZ</dt><dd>${status.zone.tz}</dd>
        <dt>software</dt><dd>${status.softwareType || "none"}</dd>
        <dt>MAC</dt><dd>${status.mac || "none"}</dd>
        <dt>socket</dt><dd>${status.socket}</dd>
        <dt>version</dt><dd>${status.version}</dd>
      </dl>
    </details>
  </article>`;
}

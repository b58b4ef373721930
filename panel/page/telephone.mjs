// The telephone as its user sees it.
import { html, useEffect } from "./preact.mjs";
import { ask } from "./feed.mjs";
import { Facts, useTick } from "./parts.mjs";
import { MINUTE, localText, offsetText, shownNow } from "./time.mjs";

const SPEED_WITH_MINUTES = 60; // up to this speed, each new minute is asked for

const ICONS = { // lines in a square of 24
  saved: "M4 3h13l3 3v15H4zM8 3v6h8V3M8 21v-7h8v7",
  hand: "M8 13V5a1.5 1.5 0 0 1 3 0v6V3.5a1.5 1.5 0 0 1 3 0V11V5a1.5 1.5 0 0 1 3 0v10a6 6 0 0 1-11 3l-3-5 2-1z",
  server: "M12 13v8M8 21h8M12 13a2 2 0 1 0 0-4 2 2 0 0 0 0 4M7 16a7 7 0 0 1 0-10M17 6a7 7 0 0 1 0 10",
  program: "M3 4h18v16H3zM6 9l4 3-4 3M12 16h5",
  jump: "M4 6l8 6-8 6zM13 6l8 6-8 6z",
  network: "M9 3h6v5H9zM3 16h6v5H3zM15 16h6v5h-6zM12 8v4M6 16v-4h12v4",
  sun: "M12 8a4 4 0 1 0 0 8 4 4 0 0 0 0-8M12 2v3M12 19v3M2 12h3M19 12h3M5 5l2 2M17 17l2 2M5 19l2-2M17 7l2-2",
  snow: "M12 2v20M3.3 7l17.4 10M3.3 17L20.7 7",
};

const OF_SOURCE = { "time server": "server", "another program": "program", "call setTimeInt": "program", "clock jump": "jump" };

function Icon({ name, label, off }) {
  return html`<li class=${off && "off"}>
    <svg viewBox="0 0 24 24" aria-hidden="true"><path d=${ICONS[name]} /></svg> ${label}</li>`;
}

function Icons({ status: { byHand, source, network, zone } }) {
  return html`<ul class="icons" aria-label="State">
    <${Icon} name=${byHand ? "hand" : OF_SOURCE[source] ?? "saved"} label=${source || "no source"} />
    <${Icon} name="network" label="network ${network}" off=${network !== "up"} />
    <${Icon} name=${zone.daylight ? "sun" : "snow"} label=${zone.daylight ? "daylight saving" : "standard time"} />
  </ul>`;
}

const Why = ({ status: { changed } }) => changed && html`<p class="why">Last changed ${changed.time}: ${changed.cause}
  ${" "}(${changed.who}), from ${changed.from}.</p>`;

export function Telephone({ phone }) {
  useTick(4);
  const { status } = phone;
  const now = shownNow(phone);
  const minute = Math.floor(now / MINUTE);
  useEffect(() => {
    if (status.clock.speed > 0 && status.clock.speed <= SPEED_WITH_MINUTES) ask(phone, ["status"]).catch(() => {});
  }, [minute]);
  const { offset } = status.zone;
  return html`<article class="telephone" aria-label="Telephone ${phone.number + 1}">
    <div class="display" role="timer" aria-label="Display">
      <div class="time" data-test="time">${status.shown.time}</div>
      <div class="date" data-test="date">${status.shown.date}</div>
      <div class="short">${status.shown.dateShort}</div>
    </div>
    <div class="about">
    <p class="exact"><span data-test="local">${localText(now, offset)}</span> <span class="number">${offsetText(offset)}</span></p>
    <${Icons} status=${status} />
    <${Why} status=${status} />
    <details>
      <summary>Device</summary>
      <${Facts} rows=${{ variant: status.variant, TZ: status.zone.tz, software: status.softwareType || "none",
        MAC: status.mac || "none", socket: status.socket, version: status.version }} />
    </details>
    </div>
  </article>`;
}

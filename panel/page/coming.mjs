// What comes next: the armed timers, and what the telephone will do.
import { html } from "./preact.mjs";
import { Section, useTick } from "./parts.mjs";
import { durationText, instant, localText, shownNow } from "./time.mjs";

// What a row of `upcoming` says: a change of the zone has offsets in place of a text.
export const whatOf = (row) => row.what ?? `offset ${row.before / 3600} h to ${row.after / 3600} h`;

function Row({ name, at, now, offset, what }) {
  return html`<tr>
    <th scope="row">${name}</th>
    <td>${localText(at, offset)}</td>
    <td class="number">${durationText(at - now)}</td>
    <td>${what}</td>
  </tr>`;
}

export function Coming({ phone }) {
  useTick(1);
  const now = shownNow(phone);
  const { offset } = phone.status.zone;
  const { timers } = phone.status;
  const hour = phone.upcoming.upcoming.find((row) => row.kind === "hour"); // stands for all of them
  const upcoming = phone.upcoming.upcoming.filter((row) => row.kind !== "hour" || row === hour);
  return html`<${Section} title="What comes next" name="coming">
    <div class="scroll" tabindex="0" role="region" aria-label="Timers and events">
    <table>
      <thead><tr><th>what</th><th>local time</th><th>in</th><th>why</th></tr></thead>
      <tbody>
        ${timers.map((timer) => html`<${Row} key=${timer.name} name=${timer.name}
          at=${instant(timer.time)} now=${now} offset=${offset} what="armed timer" />`)}
        ${upcoming.map((row) => html`<${Row} key=${row.kind + row.time} name=${row === hour ? "each hour" : row.kind}
          at=${instant(row.time)} now=${now} offset=${offset} what=${whatOf(row)} />`)}
      </tbody>
    </table>
    </div>
  <//>`;
}

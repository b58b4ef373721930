// What comes next: the armed timers, and what the telephone will do.
import { html } from "./preact.mjs";
import { Section, useTick } from "./parts.mjs";
import { durationText, instant, localText, shownNow } from "./time.mjs";

// What a row of `upcoming` says: a change of the zone has offsets in place of a text.
export const whatOf = (row) => row.what ?? `offset ${row.before / 3600} h to ${row.after / 3600} h`;

export function Coming({ phone }) {
  useTick(1);
  const now = shownNow(phone);
  const { offset } = phone.status.zone;
  const hour = phone.upcoming.upcoming.find((row) => row.kind === "hour"); // stands for all of them
  const rows = [
    ...phone.status.timers.map(({ name, time }) => ({ name, time, what: "armed timer" })),
    ...phone.upcoming.upcoming.filter((row) => row.kind !== "hour" || row === hour).map((row) =>
      ({ name: row === hour ? "each hour" : row.kind, time: row.time, what: whatOf(row) })),
  ];
  return html`<${Section} title="What comes next" name="coming">
    <div class="scroll" tabindex="0" role="region" aria-label="Timers and events">
    <table>
      <thead><tr><th>what</th><th>local time</th><th>in</th><th>why</th></tr></thead>
      <tbody>${rows.map(({ name, time, what }) => html`<tr key=${what + name + time}>
        <th scope="row">${name}</th><td>${localText(instant(time), offset)}</td>
        <td class="number">${durationText(instant(time) - now)}</td><td>${what}</td>
      </tr>`)}</tbody>
    </table>
    </div>
  <//>`;
}

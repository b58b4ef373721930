// What the settings of the zone mean. The telephone does not tell the rules of the zones that are not
// set; a test compares these with the plug-in's.
import { DAY, HOUR, MINUTE, localText } from "./time.mjs";

const RULES = [ // by identifier: begin and end of daylight saving, as month.week.weekday/local time
  "", "M10.5.0/02:00,M4.1.0/03:00", "M10.5.0/02:00,M3.5.0/03:00", "M10.5.0/02:00,M3.5.0/03:00",
  "M10.1.0/02:00,M4.1.0/03:00", "M10.3.0/00:00,M2.3.0/00:00", "M3.2.0/02:00,M11.1.0/02:00",
  "M3.2.0/00:00,M11.1.0/00:00", "M3.5.0/01:00,M10.5.0/02:00", "M3.5.0/02:00,M10.5.0/03:00",
  "M3.5.0/03:00,M10.5.0/04:00", "M4.1.0/02:00,M10.5.0/02:00", "M3.2.0/02:00,M11.1.0/02:00",
  "M9.5.0/02:00,M4.1.0/03:00", "M9.5.0/02:45,M4.1.0/03:45",
];
const WEEKS = ["", "first", "second", "third", "fourth", "last"];
const MONTHS = ["", "January", "February", "March", "April", "May", "June", "July", "August", "September",
  "October", "November", "December"];
const MOST_HOURS = 12.5; // beyond it, the telephone takes a value as seconds, but gives it as hours
const FARTHEST = 14; // hours, of a place on earth

const datesIn = (rule = "") => [...rule.matchAll(/M(\d+)\.(\d)\.0\/(\d+):(\d+)/g)]
  .map((match) => match.slice(1).map(Number));

const hourText = (hour, minute) => [hour, minute].map((part) => String(part).padStart(2, "0")).join(":");

// "second Sunday in March 02:00 to first Sunday in November 02:00"
export const ruleText = (id) => datesIn(RULES[id]).map(([month, week, hour, minute]) =>
  `${WEEKS[week]} Sunday in ${MONTHS[month]} ${hourText(hour, minute)}`).join(" to ") || "no changes";

// The local day, in seconds, of a Sunday in a month.
function dayOf(year, month, week) {
  const first = Date.UTC(year, month - 1, 1) / 1000;
  const sunday = first + ((10 - first / DAY % 7) % 7 + 7 * (week - 1)) * DAY; // 1970-01-04 was one
  return sunday < Date.UTC(year, month, 1) / 1000 ? sunday : sunday - 7 * DAY;
}

// The changes in the years around now. offsets: of standard time and of daylight saving.
function changesAround(rule, now, offsets) {
  const year = new Date(now * 1000).getUTCFullYear();
  return [year - 1, year, year + 1].flatMap((each) => datesIn(rule).map(([month, week, hour, minute], end) => ({
    seconds: dayOf(each, month, week) + hour * HOUR + minute * MINUTE - offsets[end],
    before: offsets[end], after: offsets[1 - end],
  }))).sort((one, other) => one.seconds - other.seconds);
}

// "2026-03-08 02:00", empty without changes. offset: of standard time, shift: of daylight saving.
export function nextChange(id, now, offset, shift) {
  const next = changesAround(RULES[id], now, [offset, offset + shift]).find(({ seconds }) => seconds > now);
  return next ? localText(next.seconds, next.before).slice(0, 16) : "";
}

// The change that a TZ as "LOC05:00DST04:00,M3.2.0/02:00,M11.1.0/02:00" had last, if any.
export function lastChange(tz, now) {
  const offsets = [...tz.matchAll(/(?:LOC|DST)(-?)(\d+):(\d+)/g)].map(([, sign, hours, minutes]) =>
    (sign ? 1 : -1) * (hours * HOUR + minutes * MINUTE));
  return changesAround(tz, now, offsets).findLast(({ seconds }) => seconds <= now);
}

// Seconds east of UTC, for hours, or for a number of seconds.
export const offsetOf = (value) => Number(value) * (Math.abs(Number(value)) > FARTHEST ? 1 : HOUR);

// The value that the telephone takes for them.
export const offsetValue = (value) =>
  Math.abs(Number(value)) > MOST_HOURS ? String(offsetOf(value)) : value;

// The formats 0, 1 and 2 of a local date "2026-03-08", with a year of two or four digits.
export function dateText(format, local, digits = 2) {
  const [year, month, day] = local.slice(0, 10).split("-");
  const short = year.slice(-digits);
  return [`${day}.${month}.${short}`, `${short}-${month}-${day}`, `${month}/${day}/${short}`][format] ?? "";
}

export function timeText(format, local) {
  const hour = Number(local.slice(11, 13));
  if (format === 0) return local.slice(11, 16);
  return `${hourText(hour > 12 ? hour - 12 : hour, local.slice(14, 16))}${hour < 12 ? "am" : "pm"}`; // midnight is 00
}

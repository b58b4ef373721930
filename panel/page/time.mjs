// Instants and durations. All instants are seconds since 1970-01-01 UTC.

export const MINUTE = 60;
export const HOUR = 3600;
export const DAY = 86400;
const MOST_DELAY = 0.5; // seconds

export const instant = (text) => Date.parse(text) / 1000;

// "2026-03-08T06:59:50Z"
export const utcText = (seconds) => new Date(seconds * 1000).toISOString().replace(/\.\d+Z$/, "Z");

// "2026-03-08 01:59:50", for an offset in seconds east of UTC
export const localText = (seconds, offset) =>
  utcText(seconds + offset).replace("T", " ").replace("Z", "");

// "UTC-04:00"
export const offsetText = (offset) => `UTC${offset < 0 ? "-" : "+"}${durationText(Math.abs(offset)).slice(0, 5)}`;

// "3 d 04:05:06", "04:05:06"
export function durationText(seconds) {
  const rest = Math.max(0, Math.floor(seconds));
  const part = (value) => String(Math.floor(value)).padStart(2, "0");
  const time = [rest / HOUR % 24, rest / MINUTE % 60, rest % 60].map(part).join(":");
  return rest < DAY ? time : `${Math.floor(rest / DAY)} d ${time}`;
}

// What the telephone's clock shows by now. A sample is cut to a second, and takes a moment to come,
// so an estimate a little ahead of it stays as it is: the display does not step back.
export function shownNow(phone) {
  const { status } = phone;
  const speed = (phone.attached?.attached && status.clock.speed) || 0; // "as fast as it goes": only what was received
  const since = (performance.now() - status.received) / 1000;
  const sample = instant(status.shown.utc) + since * speed;
  const estimate = phone.estimate ? phone.estimate(performance.now()) : sample;
  const ahead = estimate - sample;
  if (speed === 0 || ahead < 0 || ahead > 1 + speed * MOST_DELAY || phone.estimatedSpeed !== speed) {
    const start = performance.now();
    phone.estimate = (now) => sample + ((now - start) / 1000) * speed;
    phone.estimatedSpeed = speed;
    return sample;
  }
  return estimate;
}

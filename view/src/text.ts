import type { TimeScale } from "./data/format";
import type { Measure } from "./data/measures";

const WHOLE = new Intl.NumberFormat("en-US");

/** A whole number with commas between thousands. */
export function wholeNumber(value: number): string {
  return WHOLE.format(value);
}

/** A number with `digits` significant digits; very large and small ones with a power of ten. */
export function significant(value: number, digits = 3): string {
  if (Number.isNaN(value)) return "–";
  if (!Number.isFinite(value)) return value > 0 ? "∞" : "−∞";
  if (value === 0) return "0";
  const size = Math.abs(value);
  const text =
    size >= 1e6 || size < 1e-4
      ? value.toExponential(digits - 1).replace(/e\+?/, "e")
      : Number.isInteger(value)
        ? WHOLE.format(value)
        : value.toPrecision(digits);
  return withoutExponent(text).replace("-", "−");
}

/** Removes the exponent that `toPrecision` writes for larger numbers, such as 1.23e+4. */
function withoutExponent(text: string): string {
  return text.includes("e+") ? WHOLE.format(Math.round(Number(text))) : text;
}

/** A value of a measure as a short text. */
export function valueText(measure: Measure, value: number, time: TimeScale): string {
  if (measure.kind === "length") return lengthText(value, time);
  return measure.kind === "count" ? wholeNumber(value) : significant(value);
}

/** "1 customer", "5 customers". */
export function counted(count: number, one: string, several: string): string {
  return `${wholeNumber(count)} ${count === 1 ? one : several}`;
}

const UNITS: [seconds: number, one: string, several: string][] = [
  [86400, "day", "days"],
  [3600, "hour", "hours"],
  [60, "minute", "minutes"],
  [1, "second", "seconds"],
  [1e-3, "millisecond", "milliseconds"],
  [1e-6, "microsecond", "microseconds"],
  [1e-9, "nanosecond", "nanoseconds"],
];

/** A length of time in the greatest unit of time that is not longer than it. */
export function lengthText(length: number, time: TimeScale): string {
  if (time.seconds === null) return `${wholeNumber(length)} ${time.unit}`;
  const seconds = length * time.seconds;
  const found = UNITS.find(([size]) => seconds >= size * (1 - 1e-9));
  if (!found) return "0";
  const [size, one, several] = found;
  const value = Math.round((seconds / size) * 10) / 10;
  return value === 1 ? `1 ${one}` : `${WHOLE.format(value)} ${several}`;
}

/** A point in time as a date, with hour and minute if times are finer than days. */
export function timeText(value: number, time: TimeScale): string {
  if (time.origin === null || time.seconds === null)
    return `time ${wholeNumber(time.first + value)}`;
  const date = new Date((time.origin + value * time.seconds) * 1000);
  if (Number.isNaN(date.getTime())) return `time ${wholeNumber(value)}`;
  const text = date.toISOString();
  return time.seconds >= 86400 ? text.slice(0, 10) : `${text.slice(0, 10)} ${text.slice(11, 16)}`;
}

/** The name, cut to at most `most` characters. */
export function shortened(text: string, most: number): string {
  const characters = Array.from(text.slice(0, most * 4));
  return characters.length > most ? `${characters.slice(0, most - 1).join("")}…` : text;
}

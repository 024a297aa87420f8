import { scaleLinear, scaleLog } from "d3-scale";
import type { TimeScale } from "../data/format";
import type { Measure } from "../data/measures";
import { lengthText, significant } from "../text";

/** The places of infinite values, and of values that have no logarithm. */
const ABOVE = 1.07;
const BELOW = -0.07;
const EDGE = 0.045;

export interface Tick {
  place: number;
  label: string;
}

/**
 * An axis of a scatter plot. It maps the finite values of a measure to places from 0 to 1, by a
 * linear or a logarithmic scale. Infinite values have their own place above 1. Values below the
 * range of the scale have their own place below 0. NaN has no place.
 */
export class Axis {
  /** The ends of a view that shows everything. */
  readonly begin: number;
  readonly end: number;

  private readonly hasAbove: boolean;
  private readonly hasBelow: boolean;
  private readonly least: number;
  private readonly greatest: number;

  constructor(
    readonly measure: Measure,
    readonly log: boolean,
    private readonly time: TimeScale,
  ) {
    let least = Infinity;
    let greatest = -Infinity;
    let hasAbove = false;
    let hasBelow = false;
    for (const value of measure.values) {
      if (value === Infinity) hasAbove = true;
      else if (log ? value <= 0 : value === -Infinity) hasBelow = true;
      else {
        if (value < least) least = value;
        if (value > greatest) greatest = value;
      }
    }
    if (least > greatest) [least, greatest] = log ? [1, 10] : [0, 1];
    if (least === greatest) {
      if (log) [least, greatest] = [least / 2, greatest * 2];
      else
        [least, greatest] = [
          least - (Math.abs(least) || 1) / 2,
          greatest + (Math.abs(greatest) || 1) / 2,
        ];
    }
    this.least = least;
    this.greatest = greatest;
    this.hasAbove = hasAbove;
    this.hasBelow = hasBelow;
    this.begin = hasBelow ? BELOW - EDGE : -EDGE;
    this.end = hasAbove ? ABOVE + EDGE : 1 + EDGE;
  }

  place(value: number): number {
    if (value === Infinity) return ABOVE;
    if (this.log)
      return value > 0
        ? Math.log(value / this.least) / Math.log(this.greatest / this.least)
        : Number.isNaN(value)
          ? NaN
          : BELOW;
    if (value === -Infinity) return BELOW;
    return (value - this.least) / (this.greatest - this.least);
  }

  /** The value at a place. Beyond the middle between 1 and the place of infinity it is infinite. */
  value(place: number): number {
    if (this.hasAbove && place > (1 + ABOVE) / 2) return Infinity;
    if (this.hasBelow && place < BELOW / 2) return -Infinity;
    return this.log
      ? this.least * Math.pow(this.greatest / this.least, place)
      : this.least + place * (this.greatest - this.least);
  }

  /** About `count` ticks between two places, with their labels. */
  ticks(from: number, to: number, count: number): Tick[] {
    const first = this.value(Math.max(from, this.hasBelow ? BELOW / 2 : from));
    const last = this.value(Math.min(to, this.hasAbove ? (1 + ABOVE) / 2 : to));
    const ticks: Tick[] = [];
    if (this.hasBelow && from <= BELOW)
      ticks.push({ place: BELOW, label: this.log ? "≤ 0" : "−∞" });
    if (last > first)
      for (const value of this.values(first, last, count)) {
        const place = this.place(value);
        if (place >= from && place <= to && value <= this.greatest * 1.5 + 1)
          ticks.push({ place, label: this.label(value) });
      }
    if (this.hasAbove && to >= ABOVE) ticks.push({ place: ABOVE, label: "∞" });
    return ticks;
  }

  private values(first: number, last: number, count: number): number[] {
    const isWhole = this.measure.kind !== "ratio";
    const linear = (): number[] =>
      scaleLinear()
        .domain([first, last])
        .ticks(count)
        .filter((value) => !isWhole || Number.isInteger(value));
    if (!this.log || last < 10 * first) return linear();
    const all = scaleLog().domain([first, last]).ticks(count);
    if (all.length < 3) return linear();
    if (all.length <= count) return all;
    for (const digits of [[1, 2, 5], [1, 3], [1]]) {
      const some = all.filter((value) => digits.includes(leadingDigit(value)));
      if (some.length <= count && some.length >= 2) return some;
    }
    return all.filter((_, place) => place % Math.ceil(all.length / count) === 0);
  }

  private label(value: number): string {
    if (this.measure.kind === "length") return lengthText(value, this.time);
    const rounded = Number(value.toPrecision(12));
    return Number.isInteger(rounded) || Math.abs(rounded) < 1e-3
      ? significant(rounded, 2)
      : String(Number(rounded.toPrecision(4))).replace("-", "−");
  }
}

function leadingDigit(value: number): number {
  return Math.round(value / Math.pow(10, Math.floor(Math.log10(value) + 1e-9)));
}

import { rgb } from "d3-color";
import type { TimeScale } from "../data/format";
import type { Measure } from "../data/measures";
import { theme } from "../theme";
import { Axis } from "./axis";

const COLOURS = 32;
const RADII = 8;

/** The appearance of the dots of a scatter plot: a class of colour and one of size per rule. */
export class Looks {
  readonly colour: Uint8Array;
  readonly radius: Uint8Array;
  /** The radius of each class, in pixels of the page. */
  readonly radii: readonly number[];
  /** The axis that maps values to colours by places from 0 to 1. */
  readonly axis: Axis;

  constructor(measure: Measure, counts: Float64Array, time: TimeScale) {
    this.axis = new Axis(measure, isSkewed(measure.values), time);
    this.colour = new Uint8Array(counts.length);
    measure.values.forEach((value, rule) => {
      const place = this.axis.place(value);
      this.colour[rule] = Number.isNaN(place) ? 0 : clamp(place * (COLOURS - 1), COLOURS - 1);
    });
    const [least, greatest] = radiusRange(counts.length);
    this.radii = Array.from(
      { length: RADII },
      (_, step) => least + ((greatest - least) * step) / (RADII - 1),
    );
    const most = counts.reduce((one, other) => Math.max(one, other), 1);
    this.radius = Uint8Array.from(counts, (count) =>
      clamp(Math.sqrt(count / most) * (RADII - 1), RADII - 1),
    );
  }

  /** The colour of each class in the current theme. */
  colours(): string[] {
    return Array.from({ length: COLOURS }, (_, step) => theme().scale(step / (COLOURS - 1)));
  }
}

/** The channels of a colour, from 0 to 255. */
export function channels(colour: string): readonly [number, number, number] {
  const { r, g, b } = rgb(colour);
  return [r, g, b];
}

function clamp(value: number, most: number): number {
  return Math.min(most, Math.max(0, Math.round(value)));
}

/** Whether a linear scale would crowd most values at its beginning. */
function isSkewed(values: Float64Array): boolean {
  let least = Infinity;
  let greatest = 0;
  for (const value of values) {
    if (value <= 0) return false;
    if (value < least) least = value;
    if (value > greatest && value < Infinity) greatest = value;
  }
  return greatest > 30 * least;
}

/** The range of radii: the more dots, the smaller. */
function radiusRange(rules: number): [least: number, greatest: number] {
  if (rules <= 300) return [4, 11];
  if (rules <= 3_000) return [3, 8];
  if (rules <= 30_000) return [2, 6];
  return [1.4, 4.5];
}

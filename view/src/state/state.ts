import type { Filters } from "../data/filter";
import type { ItemId, RuleId } from "../data/rules";

/** A rectangle in values of the two measures on the axes; bounds may be infinite. */
export interface Rectangle {
  x: [least: number, greatest: number];
  y: [least: number, greatest: number];
}

/** An axis of the scatter. */
export interface AxisChoice {
  measure: string;
  log: boolean;
}

/** The choices of the reader. The address of the page holds all of them. */
export interface State extends Filters {
  x: AxisChoice;
  y: AxisChoice;
  colour: string;
  /** The visible part of the scatter plot; null means all. */
  zoom: Rectangle | null;
  /** The table shows the rules whose values are inside; null means all. */
  brush: Rectangle | null;
  /** The measure that rules are sorted by, or "rule" for the names. */
  sort: string;
  isDescending: boolean;
  /** The rule shown in the panel, or null. */
  chosen: RuleId | null;
  /** The rules that were ticked, ascending. */
  ticked: readonly RuleId[];
  /** The items whose rules are in the graph. */
  graph: readonly ItemId[];
}

type Listener = (state: Readonly<State>, changed: ReadonlySet<keyof State>) => void;

/** Holds the state and notifies listeners of changes, in the order in which they were added. */
export class Store {
  private current: State;
  private readonly listeners: Listener[] = [];

  constructor(begin: State) {
    this.current = begin;
  }

  get state(): Readonly<State> {
    return this.current;
  }

  /** Sets the values that differ. If none does, listeners are not notified. */
  update(change: Partial<State>): void {
    const changed = new Set<keyof State>();
    for (const key of Object.keys(change) as (keyof State)[])
      if (!isSame(this.current[key], change[key])) changed.add(key);
    if (changed.size === 0) return;
    this.current = { ...this.current, ...change };
    for (const listener of this.listeners) listener(this.current, changed);
  }

  listen(listener: Listener): void {
    this.listeners.push(listener);
  }
}

function isSame(one: unknown, other: unknown): boolean {
  return one === other || text(one) === text(other);
}

/** Serializes a value. Keeps infinite numbers distinct from null, which JSON would make of them. */
function text(value: unknown): string {
  return JSON.stringify(value, (_, part: unknown) =>
    typeof part === "number" && !Number.isFinite(part) ? String(part) : part,
  );
}

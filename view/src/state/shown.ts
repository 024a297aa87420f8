import { keepRange, marked, passing } from "../data/filter";
import type { Measures } from "../data/measures";
import { descending, orderByName, orderByValue } from "../data/order";
import type { Rules } from "../data/rules";
import type { State } from "./state";

/** The rules that the state shows, and their order. Computes only what has changed. */
export class Shown {
  /** For each rule, 1 if it passes the filters, regardless of the brush. */
  passing: Uint8Array;
  /** For each rule, 1 if it passes the filters and is in the brush. */
  visible: Uint8Array;
  /** The visible rules in the order of the table. */
  order: Uint32Array;

  private readonly sorted = new Map<string, Uint32Array>();

  constructor(
    private readonly rules: Rules,
    private readonly measures: Measures,
    state: Readonly<State>,
  ) {
    this.passing = passing(rules, measures, state);
    this.visible = this.inBrush(state);
    this.order = marked(this.ordered(state), this.visible);
  }

  /** Follows a change. Returns whether the rules shown, or their order, have changed. */
  follow(state: Readonly<State>, changed: ReadonlySet<keyof State>): boolean {
    const isFiltered = changed.has("search") || changed.has("items") || changed.has("ranges");
    const isBrushed =
      changed.has("brush") || (state.brush !== null && (changed.has("x") || changed.has("y")));
    const isSorted = changed.has("sort") || changed.has("isDescending");
    if (!isFiltered && !isBrushed && !isSorted) return false;
    if (isFiltered) this.passing = passing(this.rules, this.measures, state);
    if (isFiltered || isBrushed) this.visible = this.inBrush(state);
    this.order = marked(this.ordered(state), this.visible);
    return true;
  }

  /** Computes the order by names in advance, since it takes the longest. */
  prepare(): void {
    this.ordered({ sort: "rule", isDescending: false });
  }

  private inBrush(state: Readonly<State>): Uint8Array {
    if (!state.brush) return this.passing;
    const marks = this.passing.slice();
    const axes = [
      [state.x.measure, state.brush.x],
      [state.y.measure, state.brush.y],
    ] as const;
    for (const [measure, [least, greatest]] of axes)
      keepRange(marks, this.measures.get(measure).values, least, greatest);
    return marks;
  }

  private ordered({ sort, isDescending }: Pick<State, "sort" | "isDescending">): Uint32Array {
    const key = `${isDescending ? "-" : ""}${sort}`;
    const found = this.sorted.get(key) ?? this.sort(sort, isDescending);
    this.sorted.set(key, found);
    return found;
  }

  private sort(sort: string, isDescending: boolean): Uint32Array {
    const values = sort === "rule" ? null : this.measures.get(sort).values;
    const ascending = values ? orderByValue(values) : orderByName(this.rules);
    return isDescending ? descending(ascending, values) : ascending;
  }
}

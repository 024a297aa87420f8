import type { Measures } from "./measures";
import type { ItemId, RuleId, Rules, Side } from "./rules";

/** An item that a rule must have on a given side. */
export interface ItemFilter {
  item: ItemId;
  side: Side;
}

/** The range of values that a measure may have; both bounds are inclusive. */
export interface Range {
  measure: string;
  least: number;
  greatest: number;
}

/** The conditions that a rule must meet. */
export interface Filters {
  /** Words, each of which must occur in the name of an item of the rule; case is ignored. */
  search: string;
  items: readonly ItemFilter[];
  ranges: readonly Range[];
}

/** For each rule, 1 if it passes all filters, otherwise 0. */
export function passing(rules: Rules, measures: Measures, filters: Filters): Uint8Array {
  const marks = new Uint8Array(rules.size).fill(1);
  for (const word of wordsOf(filters.search))
    keepSides(rules, marks, setsNamed(rules, word), "any");
  for (const { item, side } of filters.items)
    keepSides(
      rules,
      marks,
      rules.setsWith((other) => other === item),
      side,
    );
  for (const range of filters.ranges) {
    const measure = measures.find(range.measure);
    if (measure) keepRange(marks, measure.values, range.least, range.greatest);
  }
  return marks;
}

/** Clears the marks of rules whose value is outside the range; NaN is outside every range. */
export function keepRange(
  marks: Uint8Array,
  values: Float64Array,
  least: number,
  greatest: number,
): void {
  for (let rule = 0; rule < marks.length; ++rule) {
    const value = values[rule]!;
    if (!(value >= least && value <= greatest)) marks[rule] = 0;
  }
}

/** The marked rules, in the given order. */
export function marked(order: Uint32Array, marks: Uint8Array): Uint32Array {
  const found = new Uint32Array(order.length);
  let count = 0;
  for (const rule of order) if (marks[rule]) found[count++] = rule;
  return found.subarray(0, count);
}

function wordsOf(search: string): string[] {
  return search
    .toLowerCase()
    .split(/\s+/)
    .filter((word) => word !== "");
}

function setsNamed(rules: Rules, word: string): Uint8Array {
  return rules.setsWith((item) => rules.name(item).toLowerCase().includes(word));
}

function keepSides(rules: Rules, marks: Uint8Array, sets: Uint8Array, side: Side): void {
  const antecedent = side !== "consequent";
  const consequent = side !== "antecedent";
  for (let rule: RuleId = 0; rule < marks.length; ++rule)
    if (
      !(antecedent && sets[rules.antecedent[rule]!]) &&
      !(consequent && sets[rules.consequent[rule]!])
    )
      marks[rule] = 0;
}

import type { Column, PageData } from "./format";

/** The place of a rule in the page. */
export type RuleId = number;
/** The place of an item in the string table. */
export type ItemId = number;
/** The place of a side, that is, an item set that is an antecedent or a consequent. */
export type SetId = number;

/** The side of a rule that an item may be on. */
export type Side = "any" | "antecedent" | "consequent";

/**
 * The rules of a page. A side is stored once, even if several rules share it, together with n(X),
 * the number of histories that hold all items of the set X.
 */
export class Rules {
  readonly size: number;
  /** N, the number of all histories. */
  readonly total: number;
  readonly items: readonly string[];
  readonly setCount: number;

  /** For each rule: its sides, n(A u S), and the number of histories that it counts in. */
  readonly antecedent: Column;
  readonly consequent: Column;
  readonly unionCount: Column;
  readonly count: Column;

  /** The further columns of the page by rule, such as lags. */
  readonly extra: ReadonlyMap<string, Column>;

  /** By side, and the end of the last: the first of its places in `members`, which has items. */
  readonly begin: Column;
  readonly members: Column;

  private readonly sideCount: Column;
  private readonly counts: Column | undefined;

  constructor(page: PageData) {
    const column = (name: string): Column => {
      const found = page.columns.get(name);
      if (!found) throw new Error(`The data lack the column ${name}.`);
      return found;
    };
    this.total = page.total;
    this.items = page.items;
    this.antecedent = column("antecedent");
    this.consequent = column("consequent");
    this.unionCount = column("unionCount");
    this.count = page.ordered ? column("count") : this.unionCount;
    this.size = this.antecedent.length;
    this.begin = column("setBegin");
    this.members = column("setItems");
    this.sideCount = column("setCount");
    this.setCount = this.sideCount.length;
    this.counts = page.columns.get("itemCount");
    this.extra = new Map(
      ["reverseCount", "lagLeast", "lagMedian", "lag90", "lagGreatest"].flatMap((name) => {
        const found = page.columns.get(name);
        return found ? [[name, found] as const] : [];
      }),
    );
  }

  /** The items of a side, in the order of their names. */
  itemsOf(set: SetId): Column {
    return this.members.subarray(this.begin[set], this.begin[set + 1]) as Column;
  }

  antecedentItems(rule: RuleId): Column {
    return this.itemsOf(this.antecedent[rule]!);
  }

  consequentItems(rule: RuleId): Column {
    return this.itemsOf(this.consequent[rule]!);
  }

  /** n(X) of a side. */
  countOf(set: SetId): number {
    return this.sideCount[set]!;
  }

  /** n(A). */
  antecedentCount(rule: RuleId): number {
    return this.sideCount[this.antecedent[rule]!]!;
  }

  /** n(S). */
  consequentCount(rule: RuleId): number {
    return this.sideCount[this.consequent[rule]!]!;
  }

  /** The number of histories that hold an item; 0 if unknown. */
  itemCount(item: ItemId): number {
    return this.counts?.[item] ?? 0;
  }

  name(item: ItemId): string {
    return this.items[item]!;
  }

  /** The rule with these two sides, or -1. Searches all rules. */
  find(antecedent: SetId, consequent: SetId): RuleId {
    for (let rule = 0; rule < this.size; ++rule)
      if (this.antecedent[rule] === antecedent && this.consequent[rule] === consequent) return rule;
    return -1;
  }

  /** For each side, 1 if it has an item for which `test` holds, otherwise 0. */
  setsWith(test: (item: ItemId) => boolean): Uint8Array {
    const isMember = new Uint8Array(this.items.length);
    for (let item = 0; item < isMember.length; ++item) isMember[item] = test(item) ? 1 : 0;
    const marks = new Uint8Array(this.setCount);
    for (let set = 0; set < marks.length; ++set)
      for (let place = this.begin[set]!; place < this.begin[set + 1]!; ++place)
        if (isMember[this.members[place]!]) {
          marks[set] = 1;
          break;
        }
    return marks;
  }
}

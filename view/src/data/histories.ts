import type { Column, PageData } from "./format";
import type { ItemId } from "./rules";

/** The place of a history in the page. */
export type HistoryId = number;

/**
 * The reasons why a history with all items of a rule "A => S" does not count: the first test that
 * fails, at the transaction that passes the most tests. The tests are made in this order.
 */
export const MISSES = [
  "apart", // no transaction has all of S
  "otherOrder", // when all of S occurs, some of A has not occurred yet
  "sameTime", // all of A has occurred, but some of it only at the time of S
  "tooLate", // all of A occurred before, but not all of it within the window
  "notNew", // some of S also occurred within the window
  "antecedentPresent", // the transaction also has all of A
] as const;
export type Miss = (typeof MISSES)[number];

/** A history that holds all items of a rule. */
export interface Occurrence {
  history: HistoryId;
  /** Why the rule does not count; null if it counts. */
  miss: Miss | null;
  /** If the rule counts: the time at which the last item of A had occurred. */
  complete: number;
  /** If the rule counts: the time of the first transaction that counts. */
  time: number;
}

/** The evaluation of a rule in the histories. */
export interface Occurrences {
  /** The histories with all items, in the order of the page. */
  all: Occurrence[];
  count: number;
  /** The number of histories in which the reverse rule, "S => A", counts. */
  reverseCount: number;
  /** `time` minus `complete` of each history that counts, ascending. */
  lags: number[];
}

/** A transaction of a history, with only the items that occur in rules. */
export interface Transaction {
  time: number;
  items: Column;
}

const PASSED = MISSES.length;

/** The histories of a page, with only the items that occur in rules. */
export class Histories {
  readonly size: number;
  /** The number of histories that these are a sample of; null if they are complete. */
  readonly sampledFrom: number | null;
  private readonly names: readonly string[];
  private readonly firstTransaction: Column;
  private readonly times: Column;
  private readonly firstItem: Column;
  private readonly items: Column;
  private readonly itemCount: number;

  private constructor(page: PageData, begin: Column) {
    const column = (name: string): Column => {
      const found = page.columns.get(name);
      if (!found) throw new Error(`The data lack the column ${name}.`);
      return found;
    };
    this.firstTransaction = begin;
    this.size = begin.length - 1;
    this.times = column("transactionTime");
    this.firstItem = column("transactionBegin");
    this.items = column("transactionItems");
    this.names = page.entities;
    this.itemCount = page.items.length;
    this.sampledFrom = page.sampledFrom;
  }

  /** The histories of the page, or null if it has none. */
  static of(page: PageData): Histories | null {
    const begin = page.columns.get("historyBegin");
    return begin ? new Histories(page, begin) : null;
  }

  /** The name of the entity; if names were left out, its number from 1. */
  name(history: HistoryId): string {
    return this.names[history] ?? String(history + 1);
  }

  transactions(history: HistoryId): Transaction[] {
    const found: Transaction[] = [];
    const end = this.firstTransaction[history + 1]!;
    for (let place = this.firstTransaction[history]!; place < end; ++place)
      found.push({
        time: this.times[place]!,
        items: this.items.subarray(this.firstItem[place], this.firstItem[place + 1]) as Column,
      });
    return found;
  }

  /**
   * Evaluates a rule in all histories, in one pass. A window of 0 means the whole past.
   *
   * The lag is the time from the last item of A to S. Each item of A is taken at its last time
   * before S.
   */
  find(antecedent: Iterable<ItemId>, consequent: Iterable<ItemId>, window: number): Occurrences {
    return new Search(this.itemCount, [...antecedent], [...consequent], window).run(
      this.firstTransaction,
      this.times,
      this.firstItem,
      this.items,
    );
  }
}

/** Evaluates a rule whose items are numbered, those of the antecedent first. */
class Search {
  private readonly numberOf: Int16Array;
  private readonly count: number;
  private readonly split: number;
  private readonly last: Float64Array;
  private readonly isThere: Uint8Array;

  constructor(
    items: number,
    antecedent: ItemId[],
    consequent: ItemId[],
    private readonly window: number,
  ) {
    this.numberOf = new Int16Array(items).fill(-1);
    const all = [...antecedent, ...consequent];
    all.forEach((item, number) => (this.numberOf[item] = number));
    this.count = all.length;
    this.split = antecedent.length;
    this.last = new Float64Array(this.count);
    this.isThere = new Uint8Array(this.count);
  }

  run(firstTransaction: Column, times: Column, firstItem: Column, items: Column): Occurrences {
    const found: Occurrences = { all: [], count: 0, reverseCount: 0, lags: [] };
    for (let history = 0; history + 1 < firstTransaction.length; ++history) {
      this.last.fill(-1);
      let occurrence: Occurrence | null = null;
      let furthest = 0;
      let reverse = false;
      const end = firstTransaction[history + 1]!;
      for (let place = firstTransaction[history]!; place < end; ++place) {
        if (!this.enter(items, firstItem[place]!, firstItem[place + 1]!)) continue;
        const time = times[place]!;
        const reached = this.test(0, this.split, this.split, this.count, time);
        furthest = Math.max(furthest, reached);
        if (reached === PASSED && !occurrence) {
          const complete = Math.max(...this.last.subarray(0, this.split));
          occurrence = { history, miss: null, complete, time };
        }
        reverse ||= this.test(this.split, this.count, 0, this.split, time) === PASSED;
        this.leave(time);
      }
      if (this.last.some((time) => time < 0)) continue;
      if (occurrence) {
        ++found.count;
        found.lags.push(occurrence.time - occurrence.complete);
      }
      if (reverse) ++found.reverseCount;
      found.all.push(occurrence ?? { history, miss: MISSES[furthest]!, complete: 0, time: 0 });
    }
    found.lags.sort((one, other) => one - other);
    return found;
  }

  /** Marks the items of the rule in a transaction. Returns whether there are any. */
  private enter(items: Column, begin: number, end: number): boolean {
    let any = false;
    for (let place = begin; place < end; ++place) {
      const number = this.numberOf[items[place]!]!;
      if (number >= 0) {
        this.isThere[number] = 1;
        any = true;
      }
    }
    return any;
  }

  private leave(time: number): void {
    for (let number = 0; number < this.count; ++number)
      if (this.isThere[number]) {
        this.last[number] = time;
        this.isThere[number] = 0;
      }
  }

  /** The number of the first test that fails, or PASSED. A is [a, aEnd), S is [s, sEnd). */
  private test(a: number, aEnd: number, s: number, sEnd: number, time: number): number {
    for (let i = s; i < sEnd; ++i) if (!this.isThere[i]) return 0;
    for (let i = a; i < aEnd; ++i) if (this.last[i]! < 0 && !this.isThere[i]) return 1;
    for (let i = a; i < aEnd; ++i) if (this.last[i]! < 0) return 2;
    for (let i = a; i < aEnd; ++i) if (!this.isRecent(i, time)) return 3;
    for (let i = s; i < sEnd; ++i) if (this.isRecent(i, time)) return 4;
    for (let i = a; i < aEnd; ++i) if (!this.isThere[i]) return PASSED;
    return 5;
  }

  private isRecent(number: number, time: number): boolean {
    const last = this.last[number]!;
    return last >= 0 && (this.window === 0 || time - last <= this.window);
  }
}

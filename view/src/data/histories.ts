import type { Column, PageData } from "./format";
import type { ItemId } from "./rules";

/** The place of a history in the page. */
export type HistoryId = number;

/**
 * Why a history that holds all items of a rule "A => S" does not count for it: the first test that
 * fails at the transaction that gets furthest. The order is that of the tests.
 */
export const MISSES = [
  "apart", // no transaction has all of S
  "otherOrder", // where all of S is, not all of A had occurred by then
  "sameTime", // all of A had, but some of it only then
  "tooLate", // all of A had before, but not all of it within the window
  "notNew", // all of A had within the window, but so had some of S
  "antecedentPresent", // all is well, but the transaction has all of A too
] as const;
export type Miss = (typeof MISSES)[number];

/** A history that holds all items of a rule. */
export interface Occurrence {
  history: HistoryId;
  /** Why it does not count; null when it does. */
  miss: Miss | null;
  /** Of one that counts: when the last item of A had occurred, */
  complete: number;
  /** and when S came, at the first transaction that the rule counts in. */
  time: number;
}

/** What the histories say of a rule. */
export interface Occurrences {
  /** In the order of the page. */
  all: Occurrence[];
  count: number;
  /** The histories that the reverse rule, "S => A", counts in. */
  reverseCount: number;
  /** Of the histories that count, ascending: `time` less `complete`. */
  lags: number[];
}

/** A transaction of a history, of which only the items that occur in rules are known. */
export interface Transaction {
  time: number;
  items: Column;
}

const PASSED = MISSES.length;

/** The histories of a page, of which only the items that occur in rules are there. */
export class Histories {
  readonly size: number;
  /** Of how many histories these were drawn, or null when none that matters is missing. */
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

  /** The histories of the page, or null when it has none. */
  static of(page: PageData): Histories | null {
    const begin = page.columns.get("historyBegin");
    return begin ? new Histories(page, begin) : null;
  }

  /** The name of the entity; a number, counted from 1, when names were left out. */
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
   * Looks for a rule in all histories, in one walk. A window of 0 is the whole past.
   *
   * The lag is the time from when the last item of A had occurred, each item at its last time
   * before, to S.
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

/** Goes through the histories with the items of a rule numbered: those of the antecedent first. */
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

  /** Marks what of the rule is in a transaction; whether there is anything. */
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

  /** The place of the first test that fails, or PASSED. A is [a, aEnd), S is [s, sEnd). */
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

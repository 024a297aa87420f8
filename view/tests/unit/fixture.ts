import type { Column, PageData } from "../../src/data/format";

/** The shop of examples/shop.tsv: eight histories, whose entities are the names. */
export const SHOP: [string, number, string[]][] = [
  ["ann", 1, ["bread"]],
  ["ann", 3, ["butter"]],
  ["bob", 2, ["bread"]],
  ["bob", 4, ["butter", "jam"]],
  ["cid", 1, ["butter"]],
  ["cid", 2, ["bread"]],
  ["dee", 5, ["bread", "butter"]],
  ["eve", 1, ["bread"]],
  ["eve", 9, ["butter"]],
  ["fay", 4, ["butter", "jam"]],
  ["gus", 2, ["bread"]],
];

interface PlainRule {
  a: number[];
  s: number[];
  /** n(A), n(S), n(A u S) and the count. */
  n: [a: number, s: number, union: number, count: number];
}

/** A page with rules, whose items are given by their places. */
export function pageOf(items: string[], rules: PlainRule[], total = 8): PageData {
  const sides = new Map<string, number>();
  const members: number[][] = [];
  const counts: number[] = [];
  const side = (of: number[], count: number): number => {
    const key = of.join();
    const found = sides.get(key);
    if (found !== undefined) return found;
    sides.set(key, members.length);
    members.push(of);
    counts.push(count);
    return members.length - 1;
  };
  const begin = (): number[] => members.reduce((all, of) => [...all, all.at(-1)! + of.length], [0]);
  const antecedent = rules.map(({ a, n }) => side(a, n[0]));
  const consequent = rules.map(({ s, n }) => side(s, n[1]));
  const columns: Record<string, number[]> = {
    setBegin: begin(),
    setItems: members.flat(),
    setCount: counts,
    antecedent,
    consequent,
    unionCount: rules.map(({ n }) => n[2]),
    count: rules.map(({ n }) => n[3]),
  };
  return page(items, total, columns);
}

/** A page with the histories of the shop but without rules. */
export function shopPage(items: string[]): PageData {
  const begin = [0];
  const times: number[] = [];
  const itemBegin = [0];
  const all: number[] = [];
  const names: string[] = [];
  for (const [who, time, what] of SHOP) {
    if (names.at(-1) !== who) {
      if (names.length > 0) begin.push(times.length);
      names.push(who);
    }
    times.push(time);
    all.push(...what.map((item) => items.indexOf(item)).filter((item) => item >= 0));
    itemBegin.push(all.length);
  }
  begin.push(times.length);
  const made = page(items, 8, {
    historyBegin: begin,
    transactionTime: times,
    transactionBegin: itemBegin,
    transactionItems: all,
  });
  return { ...made, entities: names };
}

function page(items: string[], total: number, columns: Record<string, number[]>): PageData {
  return {
    format: 1,
    title: "",
    words: { entity: "customer", entities: "customers", verb: "had" },
    total,
    approximate: false,
    ordered: true,
    notes: [],
    minCount: null,
    itemSets: null,
    window: 2,
    time: { seconds: null, origin: null, first: 0, unit: "days" },
    sampledFrom: null,
    items,
    entities: [],
    columns: new Map<string, Column>(
      Object.entries(columns).map(([name, values]) => [name, Uint32Array.from(values)]),
    ),
  };
}

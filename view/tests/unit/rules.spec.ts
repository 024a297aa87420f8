import { expect, test } from "@playwright/test";
import { passing } from "../../src/data/filter";
import { linksOf } from "../../src/data/links";
import { countsOf, Measures } from "../../src/data/measures";
import { descending, orderByName, orderByValue } from "../../src/data/order";
import { Rules } from "../../src/data/rules";
import { pageOf } from "./fixture";

const ITEMS = ["butter", "bread", "jam"];

// Of eight histories six have bread, six have butter, five have both, and two have jam.
function shop(): { rules: Rules; measures: Measures } {
  const rules = new Rules(
    pageOf(ITEMS, [
      { a: [1], s: [0], n: [6, 6, 5, 2] },
      { a: [2], s: [0], n: [2, 6, 2, 0] },
      { a: [0], s: [1], n: [6, 6, 5, 1] },
      { a: [1], s: [0, 2], n: [6, 2, 1, 1] },
    ]),
  );
  return { rules, measures: new Measures(rules, true) };
}

test.describe("measures", () => {
  const expected: [string, number][] = [
    ["count", 2],
    ["unionCount", 5],
    ["orderedConfidence", 2 / 6],
    ["confidence", 5 / 6],
    ["lift", (8 * 5) / (6 * 6)],
    ["orderedLift", (8 * 2) / (6 * 6)],
    ["orderedSupport", 2 / 8],
    ["support", 5 / 8],
    ["conviction", (1 - 6 / 8) / (1 - 5 / 6)],
    ["reverseConfidence", 5 / 6],
    ["certaintyOdds", 5],
    ["leverage", 5 / 8 - 36 / 64],
    ["items", 2],
  ];
  for (const [key, value] of expected)
    test(key, () => {
      expect(shop().measures.get(key).values[0]).toBeCloseTo(value, 12);
    });

  test("a consequent that always comes has infinite conviction", () => {
    expect(shop().measures.get("conviction").values[1]).toBe(Infinity);
  });

  test("formulas show the numbers of the rule", () => {
    const { rules, measures } = shop();
    expect(measures.get("lift").worked(countsOf(rules, 0))).toBe("8 · 5 / (6 · 6)");
  });

  test("rules without order have no counts in order", () => {
    const { rules } = shop();
    expect(new Measures(rules, false).find("orderedLift")).toBeUndefined();
  });
});

test.describe("order", () => {
  test("ascending values, ties in the order of the page, NaN last", () => {
    const values = Float64Array.of(3, NaN, 1, Infinity, 1, -Infinity);
    expect([...orderByValue(values)]).toEqual([5, 2, 4, 0, 3, 1]);
  });

  test("descending keeps the order of ties", () => {
    const values = Float64Array.of(1, 2, 1, 2);
    expect([...descending(orderByValue(values), values)]).toEqual([1, 3, 0, 2]);
  });

  test("names are compared item by item", () => {
    // bread => butter, bread => {butter,jam}, butter => bread, jam => butter
    expect([...orderByName(shop().rules)]).toEqual([0, 3, 2, 1]);
  });
});

test.describe("filters", () => {
  const none = { search: "", items: [], ranges: [] };
  const rows: [string, Partial<typeof none & object>, number[]][] = [
    ["nothing", {}, [1, 1, 1, 1]],
    ["a word in any item", { search: "JAM" }, [0, 1, 0, 1]],
    ["two words", { search: " jam  read" }, [0, 0, 0, 1]],
    ["a word that no item has", { search: "tea" }, [0, 0, 0, 0]],
    ["an antecedent", { items: [{ item: 1, side: "antecedent" }] as never }, [1, 0, 0, 1]],
    ["a consequent", { items: [{ item: 1, side: "consequent" }] as never }, [0, 0, 1, 0]],
    [
      "a range with both bounds",
      { ranges: [{ measure: "count", least: 1, greatest: 1 }] as never },
      [0, 0, 1, 1],
    ],
    [
      "infinite values in a range without end",
      { ranges: [{ measure: "conviction", least: 5, greatest: Infinity }] as never },
      [0, 1, 0, 0],
    ],
  ];
  for (const [name, filters, marks] of rows)
    test(name, () => {
      const { rules, measures } = shop();
      expect([...passing(rules, measures, { ...none, ...filters })]).toEqual(marks);
    });
});

test.describe("links", () => {
  test("the strongest rule stands for an item that leads to another one", () => {
    const { rules, measures } = shop();
    const all = new Uint8Array(4).fill(1);
    const links = linksOf(rules, [1], measures.get("lift").values, all, 5);
    // bread => butter has lift 40/36, bread => {butter,jam} 8/12.
    expect(links).toEqual([
      { from: 1, to: 0, rule: 0, strength: 40 / 36, rules: 2 },
      { from: 0, to: 1, rule: 2, strength: 40 / 36, rules: 1 },
      { from: 1, to: 2, rule: 3, strength: 8 / 12, rules: 1 },
    ]);
  });

  test("an item shows its strongest links, those among the items always", () => {
    const { rules, measures } = shop();
    const all = new Uint8Array(4).fill(1);
    const lift = measures.get("lift").values;
    expect(linksOf(rules, [1], lift, all, 1).map(({ rule }) => rule)).toEqual([0]);
    expect(linksOf(rules, [0, 1], lift, all, 0).map(({ rule }) => rule)).toEqual([0, 2]);
  });
});

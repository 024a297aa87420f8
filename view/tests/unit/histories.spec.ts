import { expect, test } from "@playwright/test";
import { Histories, type Occurrences } from "../../src/data/histories";
import { shopPage } from "./fixture";

const ITEMS = ["bread", "butter", "jam"];
const [BREAD, BUTTER, JAM] = [0, 1, 2];

function find(a: number[], s: number[], window: number): Occurrences & { said: string[] } {
  const histories = Histories.of(shopPage(ITEMS))!;
  const found = histories.find(a, s, window);
  const said = found.all.map(
    ({ history, miss }) => `${histories.name(history)} ${miss ?? "counts"}`,
  );
  return { ...found, said };
}

test("a history counts when the consequent newly follows within the window", () => {
  const found = find([BREAD], [BUTTER], 2);
  expect(found.said).toEqual([
    "ann counts",
    "bob counts",
    "cid otherOrder",
    "dee sameTime",
    "eve tooLate",
  ]);
  expect(found.count).toBe(2);
  expect(found.lags).toEqual([2, 2]);
});

test("the reverse rule is counted in the same walk", () => {
  expect(find([BREAD], [BUTTER], 2).reverseCount).toBe(1); // Cid
});

test("without a window the whole past counts", () => {
  const found = find([BREAD], [BUTTER], 0);
  expect(found.count).toBe(3);
  expect(found.lags).toEqual([2, 2, 8]);
});

test("a side of two items must come at one time", () => {
  expect(find([BREAD], [BUTTER, JAM], 2).said).toEqual(["bob counts"]);
  expect(find([BUTTER], [JAM], 2).said).toEqual(["bob sameTime", "fay sameTime"]);
});

test("the antecedent is complete at the last of the last times of its items", () => {
  const [bob] = find([BREAD], [JAM], 2).all;
  expect(bob).toEqual({ history: 1, miss: null, complete: 2, time: 4 });
});

test("transactions come back as they were packed", () => {
  const histories = Histories.of(shopPage(ITEMS))!;
  const [first, second] = histories.transactions(1);
  expect([first!.time, [...first!.items]]).toEqual([2, [BREAD]]);
  expect([second!.time, [...second!.items]]).toEqual([4, [BUTTER, JAM]]);
});

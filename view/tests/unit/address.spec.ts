import { expect, test } from "@playwright/test";
import { Measures } from "../../src/data/measures";
import { Rules } from "../../src/data/rules";
import { fromFragment, toFragment } from "../../src/state/address";
import type { State } from "../../src/state/state";
import { pageOf } from "./fixture";

const BEGIN: State = {
  x: { measure: "confidence", log: false },
  y: { measure: "lift", log: true },
  colour: "support",
  zoom: null,
  brush: null,
  search: "",
  items: [],
  ranges: [],
  sort: "lift",
  isDescending: true,
  chosen: null,
  ticked: [],
  graph: [],
};

const rule = { a: [0], s: [1], n: [3, 3, 2, 2] as [number, number, number, number] };
const rules = new Rules(
  pageOf(
    ["a", "b", "c"],
    Array.from({ length: 12 }, () => rule),
  ),
);
const measures = new Measures(rules, true);
const read = (text: string): State => fromFragment(text, BEGIN, rules, measures);

test("the state of the beginning has no fragment", () => {
  expect(toFragment(BEGIN, BEGIN)).toBe("");
  expect(read("")).toEqual(BEGIN);
});

test("a state comes back from its fragment", () => {
  const state: State = {
    x: { measure: "conviction", log: true },
    y: { measure: "count", log: false },
    colour: "leverage",
    zoom: { x: [0.5, Infinity], y: [-Infinity, 3] },
    brush: { x: [1, 2], y: [0.25, 1e-7] as never },
    search: "a & b = #100 %, «ü» 😀",
    items: [{ item: 2, side: "consequent" }],
    ranges: [{ measure: "count", least: -Infinity, greatest: 4 }],
    sort: "rule",
    isDescending: true,
    chosen: 0,
    ticked: [1, 2, 3, 7, 9, 10],
    graph: [1, 2],
  };
  state.brush = { x: [1, 2], y: [1e-7, 0.25] };
  const text = toFragment(state, BEGIN);
  expect(text).toContain("ticked=1-3,7,9-10");
  expect(read(`#${text}`)).toEqual(state);
});

test("what is not possible in this page is left out", () => {
  const fragments = [
    "rule=12",
    "rule=-1",
    "rule=x",
    "x=nothing",
    "sort=-nothing",
    "item=3,any",
    "item=",
    "range=lift,3,2",
    "range=lift,x,2",
    "range=nothing,1,2",
    "brush=2,1,0,1",
    "zoom=1,2,3",
    "ticked=4-99,x,-3",
    "graph=9",
    "%",
  ];
  for (const text of fragments) expect(read(text), text).toEqual(BEGIN);
});

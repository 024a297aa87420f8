import type { ItemFilter, Range } from "../data/filter";
import type { Measures } from "../data/measures";
import type { Rules, Side } from "../data/rules";
import type { AxisChoice, Rectangle, State } from "./state";

/**
 * The state as the fragment of an address, such as "x=lift,log&y=confidence&rule=17". Values that
 * equal those of `begin` are left out. Rules and items are given by their places in the page.
 */
export function toFragment(state: Readonly<State>, begin: Readonly<State>): string {
  const parts: [string, string][] = [];
  const put = (key: string, value: string, plain: string): void => {
    if (value !== plain) parts.push([key, value]);
  };
  put("x", axisText(state.x), axisText(begin.x));
  put("y", axisText(state.y), axisText(begin.y));
  put("colour", state.colour, begin.colour);
  put("zoom", rectangleText(state.zoom), "");
  put("brush", rectangleText(state.brush), "");
  put("find", state.search, "");
  for (const { item, side } of state.items) parts.push(["item", `${item},${side}`]);
  for (const { measure, least, greatest } of state.ranges)
    parts.push(["range", `${measure},${least},${greatest}`]);
  put("sort", sortText(state), sortText(begin));
  put("rule", state.chosen === null ? "" : String(state.chosen), "");
  put("ticked", runsText(state.ticked), "");
  put("graph", state.graph.join(","), "");
  return parts.map(([key, value]) => `${key}=${encode(value)}`).join("&");
}

/** Reads the output of `toFragment`. Values that are missing or impossible come from `begin`. */
export function fromFragment(
  fragment: string,
  begin: Readonly<State>,
  rules: Rules,
  measures: Measures,
): State {
  const parts = new URLSearchParams(fragment.replace(/^#/, ""));
  const get = (key: string): string => parts.get(key) ?? "";
  const isMeasure = (key: string): boolean => measures.find(key) !== undefined;
  const isRule = (rule: number): boolean => isPlace(rule, rules.size);
  const isItem = (item: number): boolean => isPlace(item, rules.items.length);
  const sort = get("sort").replace(/^-/, "");
  const chosen = get("rule") === "" ? NaN : Number(get("rule"));
  return {
    x: readAxis(get("x"), begin.x, isMeasure),
    y: readAxis(get("y"), begin.y, isMeasure),
    colour: isMeasure(get("colour")) ? get("colour") : begin.colour,
    zoom: readRectangle(get("zoom")),
    brush: readRectangle(get("brush")),
    search: get("find"),
    items: parts
      .getAll("item")
      .map(readItem)
      .filter(({ item }) => isItem(item)),
    ranges: parts
      .getAll("range")
      .map(readRange)
      .filter(({ measure, least, greatest }) => isMeasure(measure) && least <= greatest),
    sort: sort === "rule" || isMeasure(sort) ? sort : begin.sort,
    isDescending:
      sort === "rule" || isMeasure(sort) ? get("sort").startsWith("-") : begin.isDescending,
    chosen: isRule(chosen) ? chosen : null,
    ticked: readRuns(get("ticked"), rules.size),
    graph: readNumbers(get("graph")).filter(isItem),
  };
}

const SIDES: readonly string[] = ["any", "antecedent", "consequent"] satisfies Side[];

function encode(value: string): string {
  return encodeURIComponent(value).replaceAll("%2C", ",").replaceAll("%20", "+");
}

function isPlace(value: number, end: number): boolean {
  return Number.isInteger(value) && value >= 0 && value < end;
}

function axisText({ measure, log }: AxisChoice): string {
  return log ? `${measure},log` : measure;
}

function readAxis(
  text: string,
  begin: AxisChoice,
  isMeasure: (key: string) => boolean,
): AxisChoice {
  const [measure = "", scale] = text.split(",");
  return isMeasure(measure) ? { measure, log: scale === "log" } : begin;
}

function sortText({ sort, isDescending }: Readonly<State>): string {
  return (isDescending ? "-" : "") + sort;
}

function rectangleText(rectangle: Rectangle | null): string {
  return rectangle ? [...rectangle.x, ...rectangle.y].join(",") : "";
}

function readRectangle(text: string): Rectangle | null {
  const [left, right, bottom, top] = readNumbers(text);
  if (left === undefined || right === undefined || bottom === undefined || top === undefined)
    return null;
  return left <= right && bottom <= top ? { x: [left, right], y: [bottom, top] } : null;
}

function readNumbers(text: string): number[] {
  return text === ""
    ? []
    : text
        .split(",")
        .map(Number)
        .filter((value) => !Number.isNaN(value));
}

function readItem(text: string): ItemFilter {
  const [item = "", side = ""] = text.split(",");
  return {
    item: item === "" ? NaN : Number(item),
    side: SIDES.includes(side) ? (side as Side) : "any",
  };
}

function readRange(text: string): Range {
  const [measure = "", least, greatest] = text.split(",");
  return { measure, least: Number(least ?? NaN), greatest: Number(greatest ?? NaN) };
}

/** Ascending numbers as ranges, "3-5,9", since many successive rules may be ticked. */
function runsText(numbers: readonly number[]): string {
  const runs: string[] = [];
  for (let i = 0; i < numbers.length;) {
    let end = i;
    while (numbers[end + 1] === numbers[end]! + 1) ++end;
    runs.push(end === i ? String(numbers[i]) : `${numbers[i]}-${numbers[end]}`);
    i = end + 1;
  }
  return runs.join(",");
}

function readRuns(text: string, end: number): number[] {
  const found = new Set<number>();
  for (const run of text === "" ? [] : text.split(",")) {
    const parts = /^(\d+)(?:-(\d+))?$/.exec(run);
    const first = Number(parts?.[1] ?? NaN);
    const last = Number(parts?.[2] ?? first);
    if (!isPlace(first, end) || !isPlace(last, end)) continue;
    for (let number = first; number <= last; ++number) found.add(number);
  }
  return [...found].sort((one, other) => one - other);
}

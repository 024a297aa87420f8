import type { App } from "../app";
import type { Occurrence, Occurrences } from "../data/histories";
import type { RuleId } from "../data/rules";
import { element, nameOf, svg } from "../dom";
import { lengthText, shortened, timeText } from "../text";
import { theme } from "../theme";

const WIDTH = 420;
const HEIGHT = 46;
const SIDE = 10;
const LINE = 24;

/** At most `most` histories that count, with lags spread from the least to the greatest. */
export function examplesOf(found: Occurrences, most: number): Occurrence[] {
  const counting = found.all.filter(({ miss }) => miss === null);
  counting.sort((one, other) => one.time - one.complete - (other.time - other.complete));
  return spread(counting, most);
}

/** At most `most` histories that hold all items but do not count, with all reasons if possible. */
export function othersOf(found: Occurrences, most: number): Occurrence[] {
  const others = found.all.filter(({ miss }) => miss !== null);
  const firsts = others.filter(
    (one, place) => others.findIndex(({ miss }) => miss === one.miss) === place,
  );
  return [...firsts, ...others.filter((one) => !firsts.includes(one))].slice(0, most);
}

function spread<Value>(values: readonly Value[], most: number): Value[] {
  if (values.length <= most) return [...values];
  return Array.from(
    { length: most },
    (_, place) => values[Math.round((place * (values.length - 1)) / (most - 1))]!,
  );
}

/** A history as a timeline with the items of a rule, and the same in words. */
export function timeline(app: App, rule: RuleId, occurrence: Occurrence): HTMLElement {
  const { rules, histories, page } = app;
  if (!histories) throw new Error("The page has no histories.");
  const sides = [
    new Set<number>(rules.antecedentItems(rule)),
    new Set<number>(rules.consequentItems(rule)),
  ] as const;
  const transactions = histories.transactions(occurrence.history);
  const first = transactions[0]!.time;
  const last = transactions[transactions.length - 1]!.time;
  const x = (time: number): number =>
    last === first ? WIDTH / 2 : SIDE + ((time - first) / (last - first)) * (WIDTH - 2 * SIDE);
  const colours = theme();
  const picture = svg("svg", {
    viewBox: `0 0 ${WIDTH} ${HEIGHT}`,
    class: "timeline",
    "aria-hidden": "true",
  });
  picture.append(
    svg("line", { x1: SIDE, x2: WIDTH - SIDE, y1: LINE, y2: LINE, stroke: colours.line }),
  );
  if (occurrence.miss === null) {
    const from = x(occurrence.complete);
    const to = x(occurrence.time);
    picture.append(
      svg("path", {
        d: `M${from} ${LINE - 5}Q${(from + to) / 2} ${LINE - 26} ${to} ${LINE - 5}`,
        fill: "none",
        stroke: colours.text,
        "stroke-width": 1.5,
      }),
    );
  }
  for (const { time, items } of transactions) {
    const here = [...items];
    const mine = sides.map((side) => here.filter((item) => side.has(item)));
    const title = svg("title", {}, `${timeText(time, page.time)}: ${names(app, here)}`);
    const mark = svg("g", {}, title);
    if (mine[0]!.length === 0 && mine[1]!.length === 0)
      mark.append(
        svg("line", {
          x1: x(time),
          x2: x(time),
          y1: LINE - 4,
          y2: LINE + 4,
          stroke: colours.muted,
        }),
      );
    // Antecedents are squares and consequents circles, so that they differ not only in colour.
    if (mine[0]!.length > 0)
      mark.append(
        svg("rect", {
          x: x(time) - 5,
          y: LINE - 5 + (mine[1]!.length > 0 ? 6 : 0),
          width: 10,
          height: 10,
          fill: colours.antecedent,
        }),
      );
    if (mine[1]!.length > 0)
      mark.append(
        svg("circle", {
          cx: x(time),
          cy: LINE - (mine[0]!.length > 0 ? 6 : 0),
          r: 5.5,
          fill: colours.consequent,
        }),
      );
    picture.append(mark);
  }
  for (const [time, anchor] of [
    [first, "start"],
    [last, "end"],
  ] as const)
    if (time === first || last !== first)
      picture.append(
        svg(
          "text",
          {
            x: anchor === "start" ? SIDE - 4 : WIDTH - SIDE + 4,
            y: HEIGHT - 1,
            "text-anchor": anchor,
            "font-size": 10.5,
            fill: colours.muted,
          },
          timeText(time, page.time),
        ),
      );
  return element(
    "li",
    { class: "history" },
    element(
      "div",
      { class: "who" },
      nameOf(shortened(histories.name(occurrence.history), 40), { class: "entity" }),
      element("span", { class: "muted" }, ` ${inWords(app, occurrence)}`),
    ),
    picture,
  );
}

const REASONS: Record<NonNullable<Occurrence["miss"]>, string> = {
  apart: "never all of the consequent at one time",
  otherOrder: "the consequent came before the antecedent",
  sameTime: "both came at the same time",
  tooLate: "the consequent came after the window",
  notNew: "the consequent was not new",
  antecedentPresent: "all of the antecedent came again with the consequent",
};

/** The reason why a history does not count, in words. */
export function reasonText(miss: NonNullable<Occurrence["miss"]>): string {
  return REASONS[miss];
}

function inWords(app: App, { miss, complete, time }: Occurrence): string {
  if (miss !== null) return REASONS[miss];
  const scale = app.page.time;
  const lag = lengthText(time - complete, scale);
  return `${timeText(complete, scale)} → ${timeText(time, scale)}, ${lag} later`;
}

const MOST_NAMES = 12;

function names(app: App, items: number[]): string {
  const some = items.slice(0, MOST_NAMES).map((item) => shortened(app.rules.name(item), 60));
  const others = items.length - some.length;
  return some.join(", ") + (others > 0 ? ` and ${others} more` : "");
}

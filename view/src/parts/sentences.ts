import type { App } from "../app";
import type { Occurrences } from "../data/histories";
import { type Counts, countsOf } from "../data/measures";
import type { RuleId } from "../data/rules";
import { type Child, element } from "../dom";
import { counted, lengthText, significant, wholeNumber } from "../text";
import { sideElements } from "./rule_text";
import { reasonText } from "./timelines";

const LONGEST = 120; // the most characters of a name that is repeated

/** Explains a rule in sentences. Each sentence is a list of texts and names. */
export function sentencesOf(app: App, rule: RuleId, found: Occurrences | null): Child[][] {
  const counts = countsOf(app.rules, rule);
  const sentences: Child[][] = [];
  if (app.page.ordered) sentences.push(countSentence(app, rule, counts));
  sentences.push(...togetherSentences(app, rule, counts));
  if (app.page.ordered) {
    if (found && app.histories?.sampledFrom === null) sentences.push(...missSentences(app, found));
    sentences.push(...lagSentences(app, rule));
  }
  return sentences;
}

/** "20 of 137 customers took S within 90 days after A, and not in the 90 days before." */
function countSentence(app: App, rule: RuleId, { count, n }: Counts): Child[] {
  const { page } = app;
  const [a, s] = sides(app, rule);
  return [
    strong(`${wholeNumber(count)} of ${entities(app, n)}`),
    ` ${page.words.verb} `,
    ...s(),
    ...afterwards(page.window, lengthOf(app), a()),
  ];
}

function afterwards(window: number | null, length: string, a: Child[]): Child[] {
  if (window === null) return [" newly after ", ...a, ", within the window of the run."];
  if (window === 0) return [" after ", ...a, ", and never before."];
  return [` within ${length} after `, ...a, `, and not in the ${length} before that.`];
}

function togetherSentences(app: App, rule: RuleId, { union, a, s, n }: Counts): Child[][] {
  const { words } = app.page;
  const [antecedent, consequent] = sides(app, rule);
  const lift = significant((union * n) / (a * s));
  const sentences: Child[][] = [
    [
      `${entities(app, a)} ever ${words.verb} `,
      ...antecedent(),
      "; ",
      strong(wholeNumber(union)),
      ` of them, ${percent(union, a)}, ${words.verb} `,
      ...consequent(),
      " too, at whatever time.",
    ],
    [
      `Of all ${words.entities} ${percent(s, n)} ${words.verb} `,
      ...consequent(),
      `: with `,
      ...antecedent(),
      " it is ",
      strong(`${lift} times`),
      " as frequent.",
    ],
  ];
  return sentences;
}

/** Explains why histories with all items do not count. */
function missSentences(app: App, found: Occurrences): Child[][] {
  const others = found.all.length - found.count;
  if (others === 0) return [];
  const reasons = new Map<string, number>();
  for (const { miss } of found.all)
    if (miss !== null) reasons.set(miss, (reasons.get(miss) ?? 0) + 1);
  const parts = [...reasons]
    .sort((one, other) => other[1] - one[1])
    .map(([miss, count]) => `for ${wholeNumber(count)} ${reasonText(miss as never)}`);
  return [
    [
      `The other ${entities(app, others)} with all items ${others === 1 ? "does" : "do"} not count: `,
      `${parts.join("; ")}.`,
    ],
  ];
}

function lagSentences(app: App, rule: RuleId): Child[][] {
  const median = app.rules.extra.get("lagMedian");
  const most = app.rules.extra.get("lag90");
  if (!median || !most) return [];
  const text = (lag: number): string => lengthText(lag, app.page.time);
  return [
    [
      "For half of them it came within ",
      strong(text(median[rule]!)),
      ` and for nine in ten within ${text(most[rule]!)}.`,
    ],
  ];
}

/** States the count of the reverse rule in a sentence. */
export function reverseSentence(app: App, rule: RuleId, reverse: number): Child[] {
  const [a, s] = sides(app, rule);
  const { words, window } = app.page;
  return [
    "The other way round: ",
    strong(entities(app, reverse)),
    ` ${words.verb} `,
    ...a(),
    ...afterwards(window, lengthOf(app), s()),
  ];
}

/** "7 customers"; marks numbers that were recovered from rounded measures. */
function entities(app: App, count: number): string {
  const { words, approximate } = app.page;
  const isAll = count === app.rules.total;
  return (approximate && isAll ? "about " : "") + counted(count, words.entity, words.entities);
}

/** Two functions that make new elements of the sides, since an element can only have one parent. */
function sides(app: App, rule: RuleId): [a: () => Child[], s: () => Child[]] {
  const { rules } = app;
  return [
    () => sideElements(app, rules.antecedentItems(rule), "antecedent", LONGEST),
    () => sideElements(app, rules.consequentItems(rule), "consequent", LONGEST),
  ];
}

function lengthOf(app: App): string {
  return lengthText(app.page.window ?? 0, app.page.time);
}

function percent(part: number, whole: number): string {
  return `${significant((100 * part) / whole, part === whole ? 3 : 2)} %`;
}

function strong(text: string): HTMLElement {
  return element("strong", {}, text);
}

import type { App } from "../app";
import type { Occurrences } from "../data/histories";
import { countsOf } from "../data/measures";
import type { RuleId } from "../data/rules";
import { button, type Child, element } from "../dom";
import { significant, valueText, wholeNumber } from "../text";
import { onThemeChange } from "../theme";
import { drawLags } from "./bars";
import { type Picture, saveButtons } from "./picture";
import { ruleElements } from "./rule_text";
import { reverseSentence, sentencesOf } from "./sentences";
import { examplesOf, othersOf, timeline } from "./timelines";

const EXAMPLES = 5;
const DIGITS = 6; // as in the files of the tool

/** The panel with all details of the chosen rule. */
export class Panel {
  private readonly body = element("div", { class: "panel-body" });

  constructor(
    private readonly app: App,
    host: HTMLElement,
  ) {
    host.append(this.body);
    app.store.listen((state, changed) => {
      if (changed.has("chosen")) this.show(state.chosen);
    });
    onThemeChange(() => this.show(app.store.state.chosen));
    this.show(app.store.state.chosen);
  }

  private show(rule: RuleId | null): void {
    if (rule === null) {
      this.body.replaceChildren(
        element("h2", { id: "rule-title", tabindex: -1 }, "Rule"),
        element(
          "p",
          { class: "muted" },
          "Choose a rule in the overview or in the table, and this panel tells what it says.",
        ),
      );
      return;
    }
    const { rules, histories, page } = this.app;
    const found =
      histories && page.ordered
        ? histories.find(rules.antecedentItems(rule), rules.consequentItems(rule), page.window ?? 0)
        : null;
    this.body.replaceChildren(
      this.head(),
      element("p", { class: "rule big" }, ...ruleElements(this.app, rule, 12_000)),
      element(
        "div",
        { class: "words" },
        ...sentencesOf(this.app, rule, found).map((sentence) => element("p", {}, ...sentence)),
      ),
      ...this.reverse(rule, found),
      ...(found ? this.histogram(found) : []),
      ...(found ? this.examples(rule, found) : []),
      this.numbers(rule),
    );
    this.body.parentElement!.scrollTop = 0;
  }

  private head(): HTMLElement {
    const step = (by: 1 | -1): void => {
      const { order } = this.app.shown;
      const { chosen } = this.app.store.state;
      const next = order[(chosen === null ? -1 : order.indexOf(chosen)) + by];
      if (next !== undefined) this.app.choose(next);
      document.getElementById(by > 0 ? "next-rule" : "last-rule")?.focus();
    };
    return element(
      "div",
      { class: "card-head" },
      element("h2", { id: "rule-title", tabindex: -1 }, "Rule"),
      element(
        "div",
        { class: "tools" },
        button("‹", { id: "last-rule", class: "small", "aria-label": "Rule before" }, () =>
          step(-1),
        ),
        button("›", { id: "next-rule", class: "small", "aria-label": "Next rule" }, () => step(1)),
        button("×", { class: "small", "aria-label": "Choose no rule" }, () =>
          this.app.choose(null),
        ),
      ),
    );
  }

  private reverse(rule: RuleId, found: Occurrences | null): HTMLElement[] {
    const { rules, histories } = this.app;
    const isWhole = histories?.sampledFrom === null;
    const known =
      rules.extra.get("reverseCount")?.[rule] ?? (isWhole ? found?.reverseCount : undefined);
    const other = rules.find(rules.consequent[rule]!, rules.antecedent[rule]!);
    const count = known ?? (other >= 0 && this.app.page.ordered ? rules.count[other] : undefined);
    const parts: Child[] = [];
    if (count !== undefined)
      parts.push(element("span", {}, ...reverseSentence(this.app, rule, count)));
    if (other >= 0)
      parts.push(
        " ",
        button("Show the reverse rule", { class: "link" }, () => this.app.choose(other)),
      );
    return parts.length > 0 ? [element("p", { class: "reverse" }, ...parts)] : [];
  }

  private histogram(found: Occurrences): HTMLElement[] {
    if (found.lags.length === 0) return [];
    const { page } = this.app;
    const make = (): SVGSVGElement =>
      drawLags(found.lags, page.window ?? 0, page.time, page.words.entities);
    return [this.titled("Time from antecedent to consequent", { name: "lags", make }), make()].map(
      (part) => (part instanceof HTMLElement ? part : element("div", {}, part)),
    );
  }

  private titled(title: string, picture: Picture): HTMLElement {
    return element(
      "div",
      { class: "card-head sub" },
      element("h3", {}, title),
      saveButtons(picture),
    );
  }

  private examples(rule: RuleId, found: Occurrences): HTMLElement[] {
    const { histories, page } = this.app;
    const some = examplesOf(found, EXAMPLES);
    const others = othersOf(found, EXAMPLES);
    const list = (occurrences: typeof some): HTMLElement =>
      element(
        "ul",
        { class: "histories" },
        ...occurrences.map((one) => timeline(this.app, rule, one)),
      );
    const parts: HTMLElement[] = [];
    const { sampledFrom } = histories!;
    if (sampledFrom !== null)
      parts.push(
        element(
          "p",
          { class: "muted" },
          `The page has ${wholeNumber(histories!.size)} of ${wholeNumber(sampledFrom)} ` +
            `${page.words.entities}, drawn at random; lags and examples are theirs.`,
        ),
      );
    if (some.length > 0)
      parts.push(
        element("h3", {}, "Examples"),
        element(
          "p",
          { class: "key", "aria-hidden": "true" },
          element("span", { class: "key-antecedent" }),
          "antecedent ",
          element("span", { class: "key-consequent" }),
          "consequent",
        ),
        list(some),
      );
    if (others.length > 0)
      parts.push(
        element(
          "details",
          {},
          element(
            "summary",
            {},
            `With all items, but not counted (${found.all.length - found.count})`,
          ),
          list(others),
        ),
      );
    return parts;
  }

  private numbers(rule: RuleId): HTMLElement {
    const counts = countsOf(this.app.rules, rule);
    const { measures, page } = this.app;
    const rows = measures.all.map((measure) => {
      const value = measure.values[rule]!;
      const text =
        measure.kind === "ratio"
          ? significant(value, DIGITS)
          : valueText(measure, value, page.time);
      const worked = measure.worked(counts);
      return element(
        "tr",
        {},
        element("th", { scope: "row" }, measure.label),
        element("td", { class: "number" }, text),
        element(
          "td",
          { class: "formula" },
          measure.formula,
          ...(worked === "" ? [] : [element("span", { class: "worked" }, ` = ${worked}`)]),
        ),
      );
    });
    return element(
      "div",
      {},
      element("h3", {}, "Numbers"),
      element(
        "table",
        { class: "numbers" },
        element(
          "thead",
          { class: "unseen" },
          element(
            "tr",
            {},
            ...["Measure", "Value", "Formula"].map((text) => element("th", { scope: "col" }, text)),
          ),
        ),
        element("tbody", {}, ...rows),
      ),
      element(
        "p",
        { class: "muted" },
        `A is the antecedent, S the consequent, n(X) the number of ${page.words.entities} with all ` +
          `items of X, N = ${wholeNumber(counts.n)} the number of all ${page.words.entities}` +
          (page.ordered
            ? ", and Count the number of those in which the rule holds in order and within the window."
            : "."),
      ),
    );
  }
}

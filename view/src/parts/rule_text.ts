import type { App } from "../app";
import type { ItemId, RuleId } from "../data/rules";
import { type Child, element, nameOf } from "../dom";
import { shortened } from "../text";

/** The names of a side for screen readers and titles: "A and B". */
export function sideText(app: App, items: Iterable<ItemId>, most = 80): string {
  return [...items].map((item) => shortened(app.rules.name(item), most)).join(" and ");
}

/** A rule as a line of plain text. */
export function ruleText(app: App, rule: RuleId, most = 80): string {
  const { rules } = app;
  const antecedent = sideText(app, rules.antecedentItems(rule), most);
  return `${antecedent} → ${sideText(app, rules.consequentItems(rule), most)}`;
}

/** The names of a side as elements, with "+" between. */
export function sideElements(
  app: App,
  items: Iterable<ItemId>,
  side: "antecedent" | "consequent",
  most = 300,
): Child[] {
  const parts: Child[] = [];
  for (const item of items) {
    if (parts.length > 0) parts.push(element("span", { class: "plus" }, " + "));
    parts.push(nameOf(shortened(app.rules.name(item), most), { class: side }));
  }
  return parts;
}

/** A rule as elements: both sides in their colours, with an arrow between. */
export function ruleElements(app: App, rule: RuleId, most = 300): Child[] {
  const { rules } = app;
  return [
    ...sideElements(app, rules.antecedentItems(rule), "antecedent", most),
    element("span", { class: "arrow" }, " → "),
    ...sideElements(app, rules.consequentItems(rule), "consequent", most),
  ];
}

/** A rule in two lines: the antecedent, and below it an arrow and the consequent. */
export function ruleLines(app: App, rule: RuleId, most = 120): Child[] {
  const { rules } = app;
  return [
    element("div", {}, ...sideElements(app, rules.antecedentItems(rule), "antecedent", most)),
    element(
      "div",
      {},
      element("span", { class: "arrow" }, "→ "),
      ...sideElements(app, rules.consequentItems(rule), "consequent", most),
    ),
  ];
}

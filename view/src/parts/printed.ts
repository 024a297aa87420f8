import type { App } from "../app";
import { element } from "../dom";
import { valueText, wholeNumber } from "../text";
import { ruleElements } from "./rule_text";

const MOST = 100;
const COLUMNS = ["count", "unionCount", "orderedConfidence", "confidence", "lift"];

/** Adds a table with the first visible rules for printing, since paper cannot be scrolled. */
export function printTable(app: App, host: HTMLElement): void {
  const table = element("table", { class: "printed" });
  host.append(table);
  window.addEventListener("beforeprint", () => table.replaceChildren(...content(app)));
  window.addEventListener("afterprint", () => table.replaceChildren());
}

function content(app: App): HTMLElement[] {
  const measures = COLUMNS.flatMap((key) => app.measures.find(key) ?? []);
  const { order } = app.shown;
  const rows = [...order.subarray(0, MOST)].map((rule) =>
    element(
      "tr",
      {},
      element("td", {}, ...ruleElements(app, rule, 120)),
      ...measures.map((measure) =>
        element("td", {}, valueText(measure, measure.values[rule]!, app.page.time)),
      ),
    ),
  );
  const heads = ["Rule", ...measures.map(({ short }) => short)];
  const caption =
    order.length > MOST
      ? [element("caption", {}, `The first ${MOST} of ${wholeNumber(order.length)} rules`)]
      : [];
  return [
    ...caption,
    element("thead", {}, element("tr", {}, ...heads.map((text) => element("th", {}, text)))),
    element("tbody", {}, ...rows),
  ];
}

import type { App } from "../app";
import type { RuleId } from "../data/rules";
import { button, element } from "../dom";
import { counted } from "../text";
import { saveFile } from "./picture";

/** Buttons that save the ticked rules or, if none is ticked, all that are shown. */
export function exportButtons(app: App): HTMLElement {
  const what = element("span", { class: "muted" });
  const follow = (): void => {
    const { ticked } = app.store.state;
    const rules = counted(ticked.length || app.shown.order.length, "rule", "rules");
    what.textContent = `Save ${rules} ${ticked.length > 0 ? "ticked" : "shown"}:`;
  };
  app.store.listen(follow);
  follow();
  return element(
    "span",
    { class: "save", role: "group", "aria-label": "Save rules" },
    what,
    button("CSV", { class: "small" }, () => saveFile("rules.csv", "text/csv", toCsv(app))),
    button("JSON", { class: "small" }, () =>
      saveFile("rules.json", "application/json", toJson(app)),
    ),
  );
}

/** The rules to save, in the order of the table; ticked rules that are filtered out come last. */
export function selection(app: App): RuleId[] {
  const { ticked } = app.store.state;
  if (ticked.length === 0) return [...app.shown.order];
  const wanted = new Set(ticked);
  const shown = [...app.shown.order].filter((rule) => wanted.delete(rule));
  return [...shown, ...wanted];
}

/**
 * The rules as comma-separated values (RFC 4180). Sides are JSON lists, so that any name can be
 * read back and no cell looks like a spreadsheet formula.
 */
function toCsv(app: App): string {
  const { rules, measures } = app;
  const names = (items: Iterable<number>): string =>
    JSON.stringify([...items].map((item) => rules.name(item)));
  const lines = [["antecedents", "consequents", ...measures.all.map(({ key }) => snake(key))]];
  for (const rule of selection(app))
    lines.push([
      names(rules.antecedentItems(rule)),
      names(rules.consequentItems(rule)),
      ...measures.all.map(({ values }) => String(plain(values[rule]!))),
    ]);
  return lines.map((cells) => `${cells.map(cell).join(",")}\r\n`).join("");
}

function toJson(app: App): string {
  const { rules, measures } = app;
  const names = (items: Iterable<number>): string[] => [...items].map((item) => rules.name(item));
  const objects = selection(app).map((rule) => ({
    antecedents: names(rules.antecedentItems(rule)),
    consequents: names(rules.consequentItems(rule)),
    ...Object.fromEntries(
      measures.all.map(({ key, values }) => [snake(key), plain(values[rule]!)]),
    ),
  }));
  return `${JSON.stringify(objects, null, 1)}\n`;
}

/** Infinite values as text, as in the tool's files, since JSON has none. */
function plain(value: number): number | string {
  return Number.isNaN(value) ? "nan" : Number.isFinite(value) ? value : value > 0 ? "inf" : "-inf";
}

function cell(text: string): string {
  return /[",\r\n]/.test(text) ? `"${text.replaceAll('"', '""')}"` : text;
}

function snake(key: string): string {
  return key.replace(/[A-Z]|(?<=[a-z])\d+/g, (part) => `_${part.toLowerCase()}`);
}

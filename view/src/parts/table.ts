import {
  elementScroll,
  observeElementOffset,
  observeElementRect,
  Virtualizer,
} from "@tanstack/virtual-core";
import type { App } from "../app";
import type { Measure } from "../data/measures";
import type { RuleId } from "../data/rules";
import { button, element } from "../dom";
import type { State } from "../state/state";
import { valueText } from "../text";
import { ruleLines, ruleText } from "./rule_text";

const COLUMNS = [
  "count",
  "unionCount",
  "orderedConfidence",
  "confidence",
  "lift",
  "lagMedian",
  "reverseCount",
  "orderedSupport",
  "support",
  "conviction",
  "reverseConfidence",
  "certaintyOdds",
];

const OVERSCAN = 8; // the number of rows kept before and after the visible ones
const HEAD = 36; // the height in pixels of the head, which stays above the rows

/**
 * The table of the rules that are shown. Only the visible rows, and a few around them, are
 * elements. The grid has the focus, and its current row is the chosen rule.
 */
export class Table {
  private readonly grid: HTMLElement;
  private readonly body = element("div", { class: "rows", role: "rowgroup" });
  private readonly heads = new Map<string, HTMLElement>();
  private readonly rows = new Map<number, HTMLElement>();
  private readonly columns: Measure[];
  private readonly virtualizer: Virtualizer<HTMLElement, HTMLElement>;
  private lastTicked: number | null = null;

  constructor(
    private readonly app: App,
    host: HTMLElement,
  ) {
    this.columns = COLUMNS.flatMap((key) => app.measures.find(key) ?? []);
    this.grid = element(
      "div",
      {
        class: "grid",
        role: "grid",
        tabindex: 0,
        "aria-label": "Rules",
        "aria-multiselectable": "true",
        "aria-colcount": this.columns.length + 2,
        "aria-describedby": "table-help",
      },
      this.head(),
      this.body,
    );
    this.grid.style.setProperty("--columns", String(this.columns.length));
    host.append(
      this.grid,
      element(
        "p",
        { id: "table-help", class: "help" },
        "Arrow keys choose a rule, Space ticks it, Enter goes to what it says.",
      ),
    );
    this.virtualizer = new Virtualizer<HTMLElement, HTMLElement>(this.options());
    this.virtualizer._didMount();
    this.virtualizer._willUpdate();
    this.grid.addEventListener("keydown", (event) => this.key(event));
    this.body.addEventListener("click", (event) => this.click(event));
    app.store.listen((state, changed) => this.follow(state, changed));
    this.markSort(app.store.state);
    this.update();
    if (app.store.state.chosen !== null) this.scrollTo(app.store.state.chosen);
  }

  focus(): void {
    this.grid.focus();
  }

  private options(): ConstructorParameters<typeof Virtualizer<HTMLElement, HTMLElement>>[0] {
    const height = this.rowHeight();
    return {
      count: this.app.shown.order.length,
      getScrollElement: () => this.grid,
      estimateSize: () => height,
      overscan: OVERSCAN,
      scrollMargin: HEAD,
      scrollPaddingStart: HEAD,
      scrollToFn: elementScroll,
      observeElementRect,
      observeElementOffset,
      onChange: () => this.draw(),
    };
  }

  private rowHeight(): number {
    return parseFloat(getComputedStyle(this.grid).getPropertyValue("--row-height")) || 50;
  }

  private head(): HTMLElement {
    const row = element("div", { class: "row head", role: "row", "aria-rowindex": 1 });
    const all = element("input", { type: "checkbox", "aria-label": "Tick all rules shown" });
    all.addEventListener("change", () => this.tickAll(all.checked));
    row.append(element("div", { role: "columnheader", class: "tick" }, all));
    const column = (key: string, label: string, title: string): void => {
      const cell = element(
        "div",
        { role: "columnheader", class: key === "rule" ? "name" : "number" },
        button(label, { title: `Sort by ${title}` }, () => this.sortBy(key)),
      );
      this.heads.set(key, cell);
      row.append(cell);
    };
    column("rule", "Rule", "name");
    for (const measure of this.columns) {
      const formula = measure.formula === "" ? "" : `: ${measure.formula}`;
      column(measure.key, measure.short, measure.label + formula);
    }
    return element("div", { role: "rowgroup", class: "heads" }, row);
  }

  private sortBy(key: string): void {
    const { sort, isDescending } = this.app.store.state;
    this.app.store.update(
      sort === key ? { isDescending: !isDescending } : { sort: key, isDescending: key !== "rule" },
    );
  }

  private markSort({ sort, isDescending }: Readonly<State>): void {
    for (const [key, cell] of this.heads) {
      const direction = isDescending ? "descending" : "ascending";
      cell.setAttribute("aria-sort", key === sort ? direction : "none");
    }
  }

  private follow(state: Readonly<State>, changed: ReadonlySet<keyof State>): void {
    if (changed.has("sort") || changed.has("isDescending")) this.markSort(state);
    const affects: (keyof State)[] = [
      "search",
      "items",
      "ranges",
      "brush",
      "sort",
      "isDescending",
      "x",
      "y",
    ];
    if (affects.some((key) => changed.has(key))) this.update();
    else if (changed.has("chosen") || changed.has("ticked")) this.draw();
    if (changed.has("chosen") && state.chosen !== null) this.scrollTo(state.chosen);
  }

  /** Redraws the rules, starting from the first one. */
  private update(): void {
    for (const row of this.rows.values()) row.remove();
    this.rows.clear();
    this.lastTicked = null;
    const rules = this.app.shown.order.length;
    this.grid.setAttribute("aria-rowcount", String(rules + 1));
    this.virtualizer.setOptions(this.options());
    this.virtualizer._willUpdate();
    this.grid.scrollTop = 0;
    this.body.style.height = `${this.virtualizer.getTotalSize()}px`;
    this.draw();
  }

  private draw(): void {
    const wanted = new Set<number>();
    for (const { index, start } of this.virtualizer.getVirtualItems()) {
      const rule = this.app.shown.order[index];
      if (rule === undefined) continue;
      wanted.add(index);
      let row = this.rows.get(index);
      if (!row) {
        row = this.makeRow(index, rule);
        row.style.transform = `translateY(${start - HEAD}px)`;
        this.rows.set(index, row);
        this.body.append(row);
      }
      this.mark(row, rule);
    }
    for (const [index, row] of this.rows)
      if (!wanted.has(index)) {
        row.remove();
        this.rows.delete(index);
      }
    const { chosen } = this.app.store.state;
    const current = chosen === null ? -1 : this.app.shown.order.indexOf(chosen);
    if (this.rows.has(current)) this.grid.setAttribute("aria-activedescendant", `row-${current}`);
    else this.grid.removeAttribute("aria-activedescendant");
  }

  private makeRow(index: number, rule: RuleId): HTMLElement {
    const row = element("div", {
      class: "row",
      role: "row",
      id: `row-${index}`,
      "aria-rowindex": index + 2,
      "data-place": index,
    });
    row.append(
      element("div", { role: "gridcell", class: "tick" }, element("span", { class: "box" })),
      element(
        "div",
        { role: "gridcell", class: "name", title: ruleText(this.app, rule, 200) },
        ...ruleLines(this.app, rule),
      ),
      ...this.columns.map((measure) =>
        element(
          "div",
          { role: "gridcell", class: "number" },
          valueText(measure, measure.values[rule]!, this.app.page.time),
        ),
      ),
    );
    return row;
  }

  private mark(row: HTMLElement, rule: RuleId): void {
    const { chosen, ticked } = this.app.store.state;
    row.classList.toggle("chosen", rule === chosen);
    row.setAttribute("aria-selected", String(ticked.includes(rule)));
  }

  private scrollTo(rule: RuleId): void {
    const place = this.app.shown.order.indexOf(rule);
    if (place >= 0) this.virtualizer.scrollToIndex(place, { align: "auto" });
  }

  private click(event: MouseEvent): void {
    const target = event.target as Element;
    const row = target.closest<HTMLElement>(".row");
    if (!row) return;
    const place = Number(row.dataset["place"]);
    const rule = this.app.shown.order[place];
    if (rule === undefined) return;
    if (target.closest(".tick")) this.tick(place, event.shiftKey);
    else this.app.choose(rule);
  }

  private key(event: KeyboardEvent): void {
    if (event.target !== this.grid) return;
    const { order } = this.app.shown;
    const { chosen } = this.app.store.state;
    const current = chosen === null ? -1 : order.indexOf(chosen);
    const page = Math.max(1, Math.floor((this.grid.clientHeight - HEAD) / this.rowHeight()) - 1);
    const steps: Record<string, number> = {
      ArrowDown: current + 1,
      ArrowUp: current - 1,
      PageDown: current + page,
      PageUp: current - page,
      Home: 0,
      End: order.length - 1,
    };
    const next = steps[event.key];
    if (next !== undefined) {
      const rule = order[Math.max(0, Math.min(order.length - 1, next))];
      if (rule !== undefined) this.app.choose(rule);
    } else if (event.key === " " && current >= 0) this.tick(current, event.shiftKey);
    else if (event.key === "Enter") document.getElementById("rule-title")?.focus();
    else return;
    event.preventDefault();
  }

  /** Toggles the tick of a rule, or ticks all rules from the last ticked one to this one. */
  private tick(place: number, isRange: boolean): void {
    const { order } = this.app.shown;
    const ticked = new Set(this.app.store.state.ticked);
    const isOn = !ticked.has(order[place]!);
    const from = isRange && this.lastTicked !== null ? this.lastTicked : place;
    for (let at = Math.min(from, place); at <= Math.max(from, place); ++at)
      if (isOn) ticked.add(order[at]!);
      else ticked.delete(order[at]!);
    this.lastTicked = place;
    this.setTicked(ticked);
  }

  private tickAll(isOn: boolean): void {
    const ticked = new Set(this.app.store.state.ticked);
    for (const rule of this.app.shown.order)
      if (isOn) ticked.add(rule);
      else ticked.delete(rule);
    this.setTicked(ticked);
  }

  private setTicked(ticked: Set<RuleId>): void {
    this.app.store.update({ ticked: [...ticked].sort((one, other) => one - other) });
  }
}

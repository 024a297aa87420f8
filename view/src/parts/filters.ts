import type { App } from "../app";
import type { Side } from "../data/rules";
import { button, choice, element, nameOf } from "../dom";
import type { State } from "../state/state";
import { counted, shortened, significant, wholeNumber } from "../text";

const DELAY = 120; // milliseconds from the last key to the search
const SUGGESTIONS = 50;

const SIDE_WORDS: Record<Side, string> = {
  any: "on either side",
  antecedent: "as antecedent",
  consequent: "as consequent",
};

/** The controls that filter rules: words, items on a side, ranges of measures, and the brush. */
export class FilterBar {
  private readonly search = element("input", {
    type: "search",
    id: "search",
    placeholder: "Words in names of items",
    autocomplete: "off",
  });
  private typing: ReturnType<typeof setTimeout> | undefined;
  private readonly chips = element("ul", { class: "chips", "aria-label": "Filters in use" });
  private readonly none = element(
    "p",
    { class: "none", hidden: true },
    "No rule passes the filters. Drop one of them above, or make a range wider.",
  );
  private readonly count = element("p", { class: "count", role: "status" });

  constructor(
    private readonly app: App,
    host: HTMLElement,
  ) {
    host.append(
      element(
        "div",
        { class: "filters" },
        element("label", { class: "choice grow" }, element("span", {}, "Search"), this.search),
        this.itemForm(),
        this.rangeForm(),
      ),
      element("div", { class: "in-use" }, this.count, this.chips),
      this.none,
    );
    this.search.addEventListener("input", () => {
      clearTimeout(this.typing);
      this.typing = setTimeout(() => {
        this.typing = undefined;
        app.store.update({ search: this.search.value });
      }, DELAY);
    });
    app.store.listen((state) => this.follow(state));
    this.follow(app.store.state);
  }

  private itemForm(): HTMLElement {
    const { rules, store } = this.app;
    const list = element("datalist", { id: "item-names" });
    const name = element("input", {
      type: "text",
      list: "item-names",
      placeholder: "Name of an item",
      autocomplete: "off",
    });
    const suggest = (): void => {
      const text = name.value.toLowerCase();
      const found = rules.items.filter((item) => item.toLowerCase().includes(text));
      list.replaceChildren(
        ...found
          .slice(0, SUGGESTIONS)
          .map((item) => element("option", { value: shortened(item, 200) })),
      );
    };
    name.addEventListener("input", suggest);
    name.addEventListener("focus", suggest);
    const side = choice(
      "Side",
      (["any", "antecedent", "consequent"] as const).map((value) => ({
        value,
        text: SIDE_WORDS[value],
      })),
      () => undefined,
    );
    const form = element(
      "form",
      { class: "group", "aria-label": "Filter by item" },
      element("label", { class: "choice" }, element("span", {}, "Item"), name),
      side.label,
      element("button", { type: "submit" }, "Add"),
      list,
    );
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      const item = this.findItem(name.value);
      name.setCustomValidity(item < 0 ? "No item in these rules has this name." : "");
      if (!name.reportValidity()) return;
      store.update({ items: [...store.state.items, { item, side: side.select.value as Side }] });
      name.value = "";
    });
    name.addEventListener("input", () => name.setCustomValidity(""));
    return form;
  }

  /** The item with this name, or else the only item whose name contains the text; otherwise -1. */
  private findItem(text: string): number {
    const { items } = this.app.rules;
    const exact = items.findIndex((name) => name === text || shortened(name, 200) === text);
    if (exact >= 0 || text === "") return exact;
    const lower = text.toLowerCase();
    const same = items.findIndex((name) => name.toLowerCase() === lower);
    if (same >= 0) return same;
    const first = items.findIndex((name) => name.toLowerCase().includes(lower));
    const last = items.findLastIndex((name) => name.toLowerCase().includes(lower));
    return first === last ? first : -1;
  }

  private rangeForm(): HTMLElement {
    const { measures, store } = this.app;
    const least = element("input", { type: "number", step: "any", placeholder: "any" });
    const greatest = element("input", { type: "number", step: "any", placeholder: "any" });
    const measure = choice(
      "Measure",
      measures.all.map(({ key, label }) => ({ value: key, text: label })),
      () => undefined,
    );
    measure.select.value = "lift";
    const form = element(
      "form",
      { class: "group", "aria-label": "Filter by measure" },
      measure.label,
      element("label", { class: "choice" }, element("span", {}, "Least"), least),
      element("label", { class: "choice" }, element("span", {}, "Greatest"), greatest),
      element("button", { type: "submit" }, "Add"),
    );
    form.addEventListener("submit", (event) => {
      event.preventDefault();
      const range = {
        measure: measure.select.value,
        least: least.value === "" ? -Infinity : least.valueAsNumber,
        greatest: greatest.value === "" ? Infinity : greatest.valueAsNumber,
      };
      const isRange = range.least <= range.greatest;
      greatest.setCustomValidity(isRange ? "" : "The greatest value is below the least.");
      if (!greatest.reportValidity()) return;
      const others = store.state.ranges.filter((other) => other.measure !== range.measure);
      store.update({ ranges: [...others, range] });
      least.value = greatest.value = "";
    });
    greatest.addEventListener("input", () => greatest.setCustomValidity(""));
    return form;
  }

  private follow(state: Readonly<State>): void {
    const isTyping = this.typing !== undefined; // the state does not have the text yet
    if (!isTyping && this.search.value !== state.search) this.search.value = state.search;
    const { order } = this.app.shown;
    const all = this.app.rules.size;
    const some = order.length === all ? "All" : `${wholeNumber(order.length)} of`;
    const text = `${some} ${counted(all, "rule", "rules")}`;
    if (this.count.textContent !== text) this.count.textContent = text;
    this.chips.replaceChildren(...this.makeChips(state));
    this.none.hidden = order.length > 0;
  }

  private makeChips(state: Readonly<State>): HTMLElement[] {
    const { store, rules, measures } = this.app;
    const chips: HTMLElement[] = [];
    const add = (name: string, text: Node[], change: Partial<State>): void => {
      const drop = button("×", { "aria-label": `Drop the filter ${name}` }, () => {
        store.update(change);
        (this.chips.querySelector("button") ?? this.search).focus();
      });
      chips.push(element("li", { class: "chip" }, ...text, drop));
    };
    const words = (text: string): Text => document.createTextNode(text);
    if (state.search.trim() !== "")
      add("by words", [words("has "), nameOf(shortened(state.search, 40))], { search: "" });
    for (const filter of state.items) {
      const name = shortened(rules.name(filter.item), 40);
      add(name, [nameOf(name), words(` ${SIDE_WORDS[filter.side]}`)], {
        items: state.items.filter((other) => other !== filter),
      });
    }
    for (const range of state.ranges) {
      const { label } = measures.get(range.measure);
      const least = range.least > -Infinity ? `${significant(range.least)} ≤ ` : "";
      const greatest = range.greatest < Infinity ? ` ≤ ${significant(range.greatest)}` : "";
      add(label, [words(least + label + greatest)], {
        ranges: state.ranges.filter((other) => other !== range),
      });
    }
    if (state.brush) add("of the selection", [words("selected in the overview")], { brush: null });
    if (chips.length > 1) {
      const none = { search: "", items: [], ranges: [], brush: null };
      const drop = button("Drop all", { class: "link" }, () => {
        store.update(none);
        this.search.focus();
      });
      chips.push(element("li", {}, drop));
    }
    return chips;
  }
}

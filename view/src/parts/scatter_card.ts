import type { App } from "../app";
import type { Measure } from "../data/measures";
import type { RuleId } from "../data/rules";
import { button, choice, element, svg } from "../dom";
import type { State } from "../state/state";
import { valueText, wholeNumber } from "../text";
import { onThemeChange, theme } from "../theme";
import { saveButtons } from "./picture";
import { Pointing } from "./pointing";
import { ruleElements } from "./rule_text";
import { Scatter } from "./scatter";

const HELP =
  "Drag to select rules; the table shows them. Arrow keys go from rule to rule, with Shift they " +
  "make a selection wider or narrower, Escape drops it. Plus, minus and 0 zoom; so does the wheel " +
  "after a click here.";

/** The scatter plot with its controls: choice of axes, zoom, colour scale, and a hint. */
export class ScatterCard {
  private readonly scatter: Scatter;
  private readonly hint = element("div", { class: "hint", hidden: true });
  private readonly legend = element("div", { class: "legend" });

  constructor(
    private readonly app: App,
    host: HTMLElement,
  ) {
    this.scatter = new Scatter(app);
    const pointing = new Pointing(app, this.scatter, (rules, at) => this.showHint(rules, at));
    const { plot } = this.scatter;
    plot.append(this.hint);
    host.append(
      element("div", { class: "card-head" }, element("h2", {}, "Overview"), this.toolbar(pointing)),
      this.controls(),
      plot,
      this.legend,
      element("p", { id: "scatter-help", class: "help" }, HELP),
    );
    app.store.listen((state, changed) => this.follow(state, changed));
    onThemeChange(() => this.drawLegend());
    this.follow(app.store.state, null);
    this.scatter.draw();
  }

  private toolbar(pointing: Pointing): HTMLElement {
    const mode = button("Move", { class: "small", "aria-pressed": "false" }, () => {
      pointing.isMoving = !pointing.isMoving;
      mode.setAttribute("aria-pressed", String(pointing.isMoving));
      this.scatter.plot.classList.toggle("moving", pointing.isMoving);
    });
    mode.title = "Dragging moves the view instead of selecting";
    return element(
      "div",
      { class: "tools" },
      mode,
      button("+", { class: "small", "aria-label": "Zoom in" }, () => pointing.zoom(1.6)),
      button("−", { class: "small", "aria-label": "Zoom out" }, () => pointing.zoom(1 / 1.6)),
      button("All", { class: "small", "aria-label": "Show all of the overview" }, () =>
        pointing.reset(),
      ),
      saveButtons({ name: "overview", make: () => this.scatter.makePicture() }),
    );
  }

  private controls(): HTMLElement {
    const { store, measures } = this.app;
    const options = measures.all.map(({ key, label }) => ({ value: key, text: label }));
    const axis = (name: "x" | "y", label: string): HTMLElement => {
      const { label: shown, select } = choice(label, options, (measure) =>
        store.update({ [name]: { ...store.state[name], measure }, zoom: null, brush: null }),
      );
      const log = element("input", { type: "checkbox", "aria-label": `log scale for ${label}` });
      log.addEventListener("change", () =>
        store.update({ [name]: { ...store.state[name], log: log.checked }, zoom: null }),
      );
      const follow = (state: Readonly<State>): void => {
        select.value = state[name].measure;
        log.checked = state[name].log;
      };
      store.listen(follow);
      follow(store.state);
      return element(
        "span",
        { class: "pair" },
        shown,
        element("label", { class: "check" }, log, element("span", {}, "log")),
      );
    };
    const colour = choice("Colour", options, (measure) => store.update({ colour: measure }));
    const follow = (state: Readonly<State>): void => {
      colour.select.value = state.colour;
    };
    store.listen(follow);
    follow(store.state);
    return element(
      "div",
      { class: "controls" },
      axis("x", "Across"),
      axis("y", "Up"),
      element("span", { class: "pair" }, colour.label),
    );
  }

  private follow(state: Readonly<State>, changed: ReadonlySet<keyof State> | null): void {
    const across = this.app.measures.get(state.x.measure).label;
    const up = this.app.measures.get(state.y.measure).label;
    const rules = wholeNumber(this.app.shown.order.length);
    this.scatter.plot.setAttribute(
      "aria-label",
      `Scatter of ${rules} rules: ${across} across, ${up} up`,
    );
    if (!changed || changed.has("colour")) this.drawLegend();
  }

  private drawLegend(): void {
    const { looks } = this.scatter;
    const { axis, radii } = looks;
    const { measure } = axis;
    const ends = (place: number): string =>
      valueText(measure, axis.value(place), this.app.page.time);
    const bar = svg("svg", { viewBox: "0 0 32 1", preserveAspectRatio: "none", class: "bar" });
    looks
      .colours()
      .forEach((fill, at) => bar.append(svg("rect", { x: at, width: 1.05, height: 1, fill })));
    bar.setAttribute("aria-hidden", "true");
    const dot = (radius: number): SVGElement =>
      svg(
        "svg",
        { width: 2 * radius + 2, height: 2 * radius + 2, "aria-hidden": "true" },
        svg("circle", { cx: radius + 1, cy: radius + 1, r: radius, fill: theme().muted }),
      );
    this.legend.replaceChildren(
      element("span", {}, measure.label),
      element("span", { class: "number" }, ends(0)),
      bar,
      element("span", { class: "number" }, ends(1)),
      element(
        "span",
        { class: "sizes" },
        "Size: count ",
        dot(radii[1]!),
        dot(radii[4]!),
        dot(radii[7]!),
      ),
    );
  }

  private showHint(rules: RuleId[], at: { x: number; y: number }): void {
    const [rule] = rules;
    this.hint.hidden = rule === undefined;
    if (rule === undefined) return;
    const { store, measures, page } = this.app;
    const { x, y, colour } = store.state;
    const keys = new Set([x.measure, y.measure, colour, page.ordered ? "count" : "unionCount"]);
    const line = (measure: Measure): HTMLElement =>
      element(
        "div",
        {},
        `${measure.label}: `,
        element("b", {}, valueText(measure, measure.values[rule]!, page.time)),
      );
    this.hint.replaceChildren(
      element("div", { class: "rule" }, ...ruleElements(this.app, rule, 60)),
      ...[...keys].map((key) => line(measures.get(key))),
    );
    const others = rules.length - 1;
    if (others > 0)
      this.hint.append(element("div", { class: "muted" }, `and ${wholeNumber(others)} more here`));
    const { clientWidth, clientHeight } = this.scatter.plot;
    const isRight = at.x > clientWidth / 2;
    const isLow = at.y > clientHeight / 2;
    Object.assign(this.hint.style, {
      left: isRight ? "auto" : `${at.x + 14}px`,
      right: isRight ? `${clientWidth - at.x + 14}px` : "auto",
      top: isLow ? "auto" : `${at.y + 14}px`,
      bottom: isLow ? `${clientHeight - at.y + 14}px` : "auto",
    });
  }
}

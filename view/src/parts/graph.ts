import {
  forceCollide,
  forceLink,
  forceManyBody,
  forceSimulation,
  forceX,
  forceY,
  type SimulationLinkDatum,
  type SimulationNodeDatum,
} from "d3-force";
import type { App } from "../app";
import { type Link, linksOf } from "../data/links";
import type { ItemId } from "../data/rules";
import { announce, button, element, nameOf, oncePerFrame, svg } from "../dom";
import { shortened, significant, wholeNumber } from "../text";
import { onThemeChange, theme } from "../theme";
import { saveButtons } from "./picture";
import { ruleText } from "./rule_text";

const WIDTH = 640;
const HEIGHT = 420;
const MARGIN = 36;
const MOST = 7; // the most links shown for each item
const STEPS = 260; // the steps of the simulation

interface Node extends SimulationNodeDatum {
  item: ItemId;
  radius: number;
  isOpen: boolean;
}

/**
 * The graph of the items around the chosen rule, or around items that the reader has expanded. An
 * arrow leads from an item of antecedents to one of consequents. Its width shows the strongest
 * rule.
 */
export class Graph {
  private readonly field = element("div", { class: "graph" });
  private readonly list = element("ul", { class: "links" });
  private readonly title = element("p", { class: "muted" });
  private focusItem: ItemId | null = null;
  // The table and the panel are drawn first, since the layout takes longer.
  private readonly redraw = oncePerFrame(() => setTimeout(() => this.draw(), 0));

  constructor(
    private readonly app: App,
    host: HTMLElement,
  ) {
    host.append(
      element(
        "div",
        { class: "card-head" },
        element("h2", {}, "Items around it"),
        element(
          "div",
          { class: "tools" },
          button("Back to the rule", { class: "small" }, () => app.store.update({ graph: [] })),
          saveButtons({ name: "items", make: () => this.field.querySelector("svg") }),
        ),
      ),
      this.title,
      this.field,
      element("details", {}, element("summary", {}, "The same as a list"), this.list),
    );
    app.store.listen((_, changed) => {
      if (changed.has("chosen") && !changed.has("graph") && app.store.state.graph.length > 0)
        app.store.update({ graph: [] });
      const affects = ["chosen", "graph", "search", "items", "ranges"] as const;
      if (affects.some((key) => changed.has(key))) this.redraw();
    });
    onThemeChange(() => this.draw());
    this.draw();
  }

  /** The items whose links are shown. */
  private open(): ItemId[] {
    const { graph, chosen, items } = this.app.store.state;
    if (graph.length > 0) return [...graph];
    const { rules } = this.app;
    if (chosen !== null)
      return [...rules.antecedentItems(chosen), ...rules.consequentItems(chosen)];
    if (items.length > 0) return items.map(({ item }) => item);
    const best = this.app.shown.order[0];
    return best === undefined
      ? []
      : [...rules.antecedentItems(best), ...rules.consequentItems(best)];
  }

  private draw(): void {
    const { app } = this;
    const open = this.open();
    const measure = app.measures.get("lift");
    const links = linksOf(app.rules, open, measure.values, app.shown.passing, MOST);
    const isEmpty = open.length === 0;
    this.title.textContent = isEmpty
      ? "There is no item to show."
      : `Arrows lead from antecedent to consequent; the wider, the greater the lift. Click an item ` +
        `to open or close it, an arrow to choose its strongest rule.`;
    const nodes = this.layOut(open, links);
    this.field.replaceChildren(...(isEmpty ? [] : [this.picture(nodes, links)]));
    this.list.replaceChildren(...links.map((link) => this.line(link)));
    if (this.focusItem !== null)
      this.field.querySelector<SVGElement>(`[data-item="${this.focusItem}"]`)?.focus();
    this.focusItem = null;
  }

  private layOut(open: readonly ItemId[], links: readonly Link[]): Map<ItemId, Node> {
    const { rules } = this.app;
    const items = new Set([...open, ...links.flatMap(({ from, to }) => [from, to])]);
    const most = [...items].reduce((one, item) => Math.max(one, rules.itemCount(item)), 1);
    const nodes = [...items].map((item): Node => ({
      item,
      isOpen: open.includes(item),
      radius: 6 + 8 * Math.sqrt(rules.itemCount(item) / most),
    }));
    const byItem = new Map(nodes.map((node) => [node.item, node]));
    const springs: SimulationLinkDatum<Node>[] = links.map(({ from, to }) => ({
      source: byItem.get(from)!,
      target: byItem.get(to)!,
    }));
    forceSimulation(nodes)
      .force("links", forceLink(springs).distance(95).strength(0.35))
      .force("charge", forceManyBody().strength(-420))
      .force(
        "apart",
        forceCollide<Node>((node) => node.radius + 16),
      )
      .force("x", forceX(0).strength(0.05))
      .force("y", forceY(0).strength(0.11))
      .stop()
      .tick(STEPS);
    fit(nodes);
    return byItem;
  }

  private picture(nodes: Map<ItemId, Node>, links: readonly Link[]): SVGSVGElement {
    const colours = theme();
    const picture = svg("svg", {
      viewBox: `0 0 ${WIDTH} ${HEIGHT}`,
      width: WIDTH,
      height: HEIGHT,
      role: "group",
      "aria-label": "Graph of items",
    });
    const strengths = links.map(({ strength }) => finite(strength));
    const least = Math.min(...strengths);
    const extent = Math.max(...strengths) - least || 1;
    const chosen = this.app.store.state.chosen;
    for (const link of [...links].reverse()) {
      const width = 1.5 + (5.5 * (finite(link.strength) - least)) / extent;
      const colour = this.has(chosen, link) ? colours.text : colours.muted;
      picture.append(this.arrow(nodes.get(link.from)!, nodes.get(link.to)!, link, width, colour));
    }
    for (const node of nodes.values()) picture.append(this.dot(node));
    return picture;
  }

  private has(rule: number | null, { from, to }: Link): boolean {
    const { rules } = this.app;
    return (
      rule !== null &&
      rules.antecedentItems(rule).includes(from) &&
      rules.consequentItems(rule).includes(to)
    );
  }

  /** An arrow with a curved line, so that the arrows in both directions can be seen. */
  private arrow(from: Node, to: Node, link: Link, width: number, colour: string): SVGElement {
    const [x1, y1, x2, y2] = [from.x!, from.y!, to.x!, to.y!];
    const length = Math.hypot(x2 - x1, y2 - y1) || 1;
    const bend = Math.min(26, length * 0.16);
    const middleX = (x1 + x2) / 2 + ((y2 - y1) / length) * bend;
    const middleY = (y1 + y2) / 2 - ((x2 - x1) / length) * bend;
    const towards = (node: Node, distance: number): [number, number] => {
      const size = Math.hypot(middleX - node.x!, middleY - node.y!) || 1;
      const part = distance / size;
      return [node.x! + (middleX - node.x!) * part, node.y! + (middleY - node.y!) * part];
    };
    const head = 5 + width * 1.6;
    const begin = towards(from, from.radius + 2);
    const tip = towards(to, to.radius + 3);
    const neck = towards(to, to.radius + 3 + head);
    const across = Math.hypot(tip[0] - neck[0], tip[1] - neck[1]) || 1;
    const half = head * 0.55;
    const sideX = ((tip[1] - neck[1]) / across) * half;
    const sideY = (-(tip[0] - neck[0]) / across) * half;
    const d = `M${begin}Q${middleX},${middleY} ${neck}`;
    const text = this.linkText(link);
    const arrow = svg(
      "g",
      { class: "link", stroke: colour, fill: colour },
      svg("title", {}, text),
      svg("path", { d, fill: "none", "stroke-width": width, "stroke-opacity": 0.7 }),
      svg("path", {
        d: `M${tip}L${neck[0] + sideX},${neck[1] + sideY}L${neck[0] - sideX},${neck[1] - sideY}Z`,
        stroke: "none",
      }),
      svg("path", { d, fill: "none", stroke: "transparent", "stroke-width": 14 }),
    );
    arrow.addEventListener("click", () => this.app.choose(link.rule));
    return arrow;
  }

  private dot(node: Node): SVGElement {
    const colours = theme();
    const { rules, page } = this.app;
    const name = rules.name(node.item);
    const held = rules.itemCount(node.item);
    const spoken = held > 0 ? `, ${wholeNumber(held)} ${page.words.entities}` : "";
    const isLeft = node.x! > WIDTH * 0.72;
    const isRight = node.x! < WIDTH * 0.28;
    const anchor = isLeft ? "end" : isRight ? "start" : "middle";
    const label = svg(
      "text",
      {
        x: node.x! + (isLeft ? node.radius : isRight ? -node.radius : 0),
        y: node.y! > HEIGHT / 2 ? node.y! + node.radius + 15 : node.y! - node.radius - 6,
        "text-anchor": anchor,
        "font-size": 12,
        "font-weight": node.isOpen ? 600 : 400,
        fill: colours.text,
        stroke: colours.background,
        "stroke-width": 5,
        "stroke-linejoin": "round",
        "paint-order": "stroke",
      },
      shortened(name, 24),
    );
    const dot = svg(
      "g",
      {
        class: "node",
        role: "button",
        tabindex: 0,
        "aria-label": shortened(name, 80) + spoken,
        "aria-expanded": String(node.isOpen),
        "data-item": node.item,
      },
      svg("title", {}, shortened(name, 300) + spoken),
      svg("circle", {
        cx: node.x!,
        cy: node.y!,
        r: node.radius,
        fill: node.isOpen ? colours.accent : colours.background,
        stroke: colours.accent,
        "stroke-width": 2.5,
      }),
      label,
    );
    dot.addEventListener("click", () => this.toggle(node));
    dot.addEventListener("keydown", (event) => {
      if (event.key !== "Enter" && event.key !== " ") return;
      event.preventDefault();
      this.toggle(node);
    });
    return dot;
  }

  private toggle({ item, isOpen }: Node): void {
    const open = this.open();
    const graph = isOpen ? open.filter((other) => other !== item) : [...open, item];
    this.focusItem = item;
    announce(
      `${shortened(this.app.rules.name(item), 80)} is ${isOpen && graph.length > 0 ? "closed" : "open"}`,
    );
    this.app.store.update({ graph: graph.length > 0 ? graph : [item] });
  }

  private linkText({ from, to, rule, strength, rules }: Link): string {
    const { app } = this;
    const names = [from, to].map((item) => shortened(app.rules.name(item), 60));
    const others = rules > 1 ? `, strongest of ${wholeNumber(rules)} rules: ` : ": ";
    return `${names.join(" → ")}, lift ${significant(strength)}${others}${ruleText(app, rule, 60)}`;
  }

  private line(link: Link): HTMLElement {
    const { rules } = this.app;
    const text = `, lift ${significant(link.strength)}${link.rules > 1 ? `, ${wholeNumber(link.rules)} rules` : ""}`;
    const act = button("", { class: "link" }, () => this.app.choose(link.rule));
    act.append(
      nameOf(shortened(rules.name(link.from), 60), { class: "antecedent" }),
      " → ",
      nameOf(shortened(rules.name(link.to), 60), { class: "consequent" }),
    );
    return element("li", {}, act, text);
  }
}

function finite(value: number): number {
  return Number.isFinite(value) && value > 0 ? value : 0;
}

/** Moves and scales the nodes so that they fill the picture. */
function fit(nodes: readonly Node[]): void {
  const fitAxis = (axis: "x" | "y", size: number): void => {
    const values = nodes.map((node) => node[axis]!);
    const least = Math.min(...values);
    const extent = Math.max(...values) - least;
    const scale = extent > 0 ? Math.min(2, (size - 2 * MARGIN) / extent) : 1;
    for (const node of nodes) node[axis] = size / 2 + (node[axis]! - least - extent / 2) * scale;
  };
  fitAxis("x", WIDTH);
  fitAxis("y", HEIGHT);
}

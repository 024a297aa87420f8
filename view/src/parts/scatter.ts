import KDBush from "kdbush";
import type { App } from "../app";
import { descending, orderByValue } from "../data/order";
import type { RuleId } from "../data/rules";
import type { Rectangle, State } from "../state/state";
import { element, oncePerFrame, svg } from "../dom";
import { onThemeChange, theme } from "../theme";
import { Axis } from "./axis";
import { type Dots, drawDots } from "./dots";
import { drawFrame, fieldSize, type Layout, type Window } from "./frame";
import { channels, Looks } from "./looks";

const HIDDEN = 0.16;
const SEEN = 0.86;
const REACH = 14; // the distance in pixels within which the pointer hits a dot

/**
 * The scatter plot: the axes, the dots on a canvas above them, and the brush and the rings around
 * chosen rules on top. Draws the state; `Pointing` changes the state.
 */
export class Scatter {
  readonly plot: HTMLElement;
  x: Axis;
  y: Axis;
  looks: Looks;

  private readonly frame = svg("svg", { "aria-hidden": "true", class: "overlay" });
  private readonly canvas = element("canvas", { "aria-hidden": "true" });
  private readonly overlay = svg("svg", { "aria-hidden": "true", class: "overlay" });
  /** The place of each rule on the axes. */
  private placeX = new Float32Array(0);
  private placeY = new Float32Array(0);
  private index: KDBush | null = null;
  private readonly drawOrder: Uint32Array;
  private readonly redraw = oncePerFrame(() => this.draw());

  constructor(private readonly app: App) {
    this.plot = element(
      "div",
      {
        class: "plot",
        tabindex: 0,
        role: "application",
        "aria-roledescription": "scatter",
        "aria-describedby": "scatter-help",
      },
      this.frame,
      this.canvas,
      this.overlay,
    );
    const counts = app.measures.get(app.page.ordered ? "count" : "unionCount").values;
    this.drawOrder = descending(orderByValue(counts), counts);
    const state = app.store.state;
    this.x = this.axisOf(state.x);
    this.y = this.axisOf(state.y);
    this.looks = this.looksOf(state);
    this.place();
    app.store.listen((now, changed) => this.follow(now, changed));
    onThemeChange(() => this.draw());
    new ResizeObserver(this.redraw).observe(this.plot);
  }

  /** The visible part. */
  get window(): Window {
    const zoom = this.app.store.state.zoom;
    if (!zoom)
      return { left: this.x.begin, right: this.x.end, bottom: this.y.begin, top: this.y.end };
    return {
      left: this.x.place(zoom.x[0]),
      right: this.x.place(zoom.x[1]),
      bottom: this.y.place(zoom.y[0]),
      top: this.y.place(zoom.y[1]),
    };
  }

  get layout(): Layout {
    const { clientWidth: width, clientHeight: height } = this.plot;
    return { width, height, left: 62, right: 14, top: 10, bottom: 46 };
  }

  /** The place on both axes of a point of the plot, in pixels. */
  placeAt(pixelX: number, pixelY: number): { x: number; y: number } {
    const { left, top } = this.layout;
    const { width, height } = fieldSize(this.layout);
    const view = this.window;
    return {
      x: view.left + ((pixelX - left) / width) * (view.right - view.left),
      y: view.top - ((pixelY - top) / height) * (view.top - view.bottom),
    };
  }

  /** The position of a rule in the plot, in pixels. */
  pointOf(rule: RuleId): { x: number; y: number } {
    return this.pointAt(this.placeX[rule]!, this.placeY[rule]!);
  }

  /** The part between two places, as values. */
  rectangle(one: { x: number; y: number }, other: { x: number; y: number }): Rectangle {
    const ascending = (axis: Axis, a: number, b: number): [number, number] => [
      axis.value(Math.min(a, b)),
      axis.value(Math.max(a, b)),
    ];
    return { x: ascending(this.x, one.x, other.x), y: ascending(this.y, one.y, other.y) };
  }

  /** The visible rules near a point of the plot, the nearest first. */
  near(pixelX: number, pixelY: number): RuleId[] {
    this.index ??= this.makeIndex();
    const from = this.placeAt(pixelX - REACH, pixelY + REACH);
    const to = this.placeAt(pixelX + REACH, pixelY - REACH);
    const distance = (rule: RuleId): number => {
      const { x, y } = this.pointOf(rule);
      return Math.hypot(x - pixelX, y - pixelY);
    };
    return this.index
      .range(from.x, from.y, to.x, to.y)
      .filter((rule) => this.app.shown.visible[rule])
      .map((rule) => ({ rule, distance: distance(rule) }))
      .filter((found) => found.distance <= REACH)
      .sort((one, other) => one.distance - other.distance)
      .map((found) => found.rule);
  }

  /** The visible rule that follows another one on an axis, in the direction of `step`. */
  next(rule: RuleId | null, axis: "x" | "y", step: 1 | -1): RuleId | null {
    const { order } = this.app.shown;
    if (rule === null || !this.app.shown.visible[rule]) return order[0] ?? null;
    const places = axis === "x" ? this.placeX : this.placeY;
    const key = (other: RuleId): number => (places[other]! - places[rule]!) * step;
    let best: RuleId | null = null;
    for (const other of order) {
      const distance = key(other);
      const isBeyond = distance > 0 || (distance === 0 && (other - rule) * step > 0);
      if (!isBeyond) continue;
      if (
        best === null ||
        distance < key(best) ||
        (distance === key(best) && (best - other) * step > 0)
      )
        best = other;
    }
    return best;
  }

  /** Draws the brush while the reader drags it, before it is in the state. */
  drawBrush(rectangle: Rectangle | null): void {
    this.overlay.querySelector(".brush")?.remove();
    if (!rectangle) return;
    const one = this.pointAt(this.x.place(rectangle.x[0]), this.y.place(rectangle.y[1]));
    const other = this.pointAt(this.x.place(rectangle.x[1]), this.y.place(rectangle.y[0]));
    const { accent } = theme();
    this.overlay.append(
      svg("rect", {
        class: "brush",
        x: one.x,
        y: one.y,
        width: Math.max(1, other.x - one.x),
        height: Math.max(1, other.y - one.y),
        fill: accent,
        "fill-opacity": 0.08,
        stroke: accent,
        "stroke-dasharray": "4 3",
      }),
    );
  }

  /** The scatter plot as one picture, with a path for each class of dots. */
  makePicture(): SVGSVGElement {
    const { layout } = this;
    const picture = svg("svg", {
      viewBox: `0 0 ${layout.width} ${layout.height}`,
      width: layout.width,
      height: layout.height,
    });
    const colours = this.looks.colours();
    const { width, height } = fieldSize(layout);
    const paths = new Map<string, string[]>();
    for (const isVisible of [0, 1])
      for (const rule of this.drawOrder) {
        if (this.app.shown.visible[rule] !== isVisible) continue;
        const { x, y } = this.pointOf(rule);
        const isInside =
          x >= layout.left &&
          y >= layout.top &&
          x <= layout.left + width &&
          y <= layout.top + height;
        if (!isInside) continue;
        const key = `${isVisible} ${this.looks.radius[rule]!} ${isVisible ? this.looks.colour[rule]! : 0}`;
        const path = paths.get(key) ?? [];
        path.push(`M${x.toFixed(1)} ${y.toFixed(1)}h0`);
        paths.set(key, path);
      }
    picture.append(drawFrame(this.x, this.y, this.window, layout));
    for (const [key, path] of paths) {
      const [isVisible, radius, colour] = key.split(" ").map(Number);
      picture.append(
        svg("path", {
          d: path.join(""),
          fill: "none",
          "stroke-linecap": "round",
          "stroke-width": (2 * this.looks.radii[radius!]!).toFixed(1),
          stroke: isVisible ? colours[colour!]! : theme().muted,
          "stroke-opacity": isVisible ? SEEN : HIDDEN,
        }),
      );
    }
    picture.append(...this.rings());
    return picture;
  }

  draw(): void {
    const { layout } = this;
    if (layout.width === 0) return;
    const { width, height } = fieldSize(layout);
    const ratio = window.devicePixelRatio || 1;
    this.canvas.width = Math.round(width * ratio);
    this.canvas.height = Math.round(height * ratio);
    Object.assign(this.canvas.style, {
      left: `${layout.left}px`,
      top: `${layout.top}px`,
      width: `${width}px`,
      height: `${height}px`,
    });
    this.drawCanvas(width, height, ratio);
    for (const layer of [this.frame, this.overlay])
      layer.setAttribute("viewBox", `0 0 ${layout.width} ${layout.height}`);
    this.frame.replaceChildren(drawFrame(this.x, this.y, this.window, layout));
    this.overlay.replaceChildren(...this.rings());
    this.drawBrush(this.app.store.state.brush);
  }

  private follow(state: Readonly<State>, changed: ReadonlySet<keyof State>): void {
    if (changed.has("x")) this.x = this.axisOf(state.x);
    if (changed.has("y")) this.y = this.axisOf(state.y);
    if (changed.has("x") || changed.has("y")) this.place();
    if (changed.has("colour")) this.looks = this.looksOf(state);
    this.redraw();
  }

  private axisOf({ measure, log }: State["x"]): Axis {
    return new Axis(this.app.measures.get(measure), log, this.app.page.time);
  }

  private looksOf(state: Readonly<State>): Looks {
    const counts = this.app.measures.get(this.app.page.ordered ? "count" : "unionCount").values;
    return new Looks(this.app.measures.get(state.colour), counts, this.app.page.time);
  }

  private place(): void {
    this.placeX = Float32Array.from(this.x.measure.values, (value) => this.x.place(value));
    this.placeY = Float32Array.from(this.y.measure.values, (value) => this.y.place(value));
    this.index = null;
  }

  private makeIndex(): KDBush {
    const index = new KDBush(this.app.rules.size, 64, Float32Array);
    const far = 1e9; // the position of rules without a place, out of reach of the pointer
    for (let rule = 0; rule < this.app.rules.size; ++rule) {
      const x = this.placeX[rule]!;
      const y = this.placeY[rule]!;
      index.add(Number.isNaN(x) ? far : x, Number.isNaN(y) ? far : y);
    }
    return index.finish();
  }

  private pointAt(x: number, y: number): { x: number; y: number } {
    const { left, top } = this.layout;
    const { width, height } = fieldSize(this.layout);
    const view = this.window;
    return {
      x: left + ((x - view.left) / (view.right - view.left)) * width,
      y: top + ((view.top - y) / (view.top - view.bottom)) * height,
    };
  }

  private drawCanvas(width: number, height: number, ratio: number): void {
    const context = this.canvas.getContext("2d");
    if (!context || this.app.rules.size === 0) return;
    const view = this.window;
    const image = context.createImageData(this.canvas.width, this.canvas.height);
    const scaleX = (width * ratio) / (view.right - view.left);
    const scaleY = (height * ratio) / (view.top - view.bottom);
    const dots: Dots = {
      x: this.placeX.map((place) => (place - view.left) * scaleX),
      y: this.placeY.map((place) => (view.top - place) * scaleY),
      radius: this.looks.radius,
      radii: this.looks.radii.map((radius) => radius * ratio),
      colour: this.looks.colour,
      colours: this.looks.colours().map(channels),
      opacity: SEEN,
    };
    const { visible } = this.app.shown;
    const isVisible = (rule: RuleId): boolean => visible[rule] === 1;
    const muted = dots.colours.map(() => channels(theme().muted));
    const hidden = this.drawOrder.filter((rule) => !isVisible(rule));
    drawDots(image, { ...dots, colours: muted, opacity: HIDDEN }, hidden);
    drawDots(image, dots, this.drawOrder.filter(isVisible));
    context.putImageData(image, 0, 0);
  }

  /** Circles around the chosen and the ticked rules, unless there are too many. */
  private rings(): SVGCircleElement[] {
    const { chosen, ticked } = this.app.store.state;
    const colours = theme();
    const ring = (rule: RuleId, more: number, width: number): SVGCircleElement[] => {
      const { x, y } = this.pointOf(rule);
      const layout = this.layout;
      const isInside =
        x >= layout.left - 1 &&
        x <= layout.width - layout.right + 1 &&
        y >= layout.top - 1 &&
        y <= layout.height - layout.bottom + 1;
      if (!isInside) return [];
      const r = this.looks.radii[this.looks.radius[rule]!]! + more;
      return [
        svg("circle", {
          cx: x,
          cy: y,
          r,
          fill: "none",
          stroke: colours.text,
          "stroke-width": width,
        }),
      ];
    };
    const some = ticked.length <= 2_000 ? ticked : [];
    return [
      ...some.flatMap((rule) => ring(rule, 1.5, 1.5)),
      ...(chosen === null ? [] : [...ring(chosen, 3, 2.5), ...ring(chosen, 7, 1)]),
    ];
  }
}

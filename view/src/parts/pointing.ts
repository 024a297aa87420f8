import type { App } from "../app";
import type { RuleId } from "../data/rules";
import { announce } from "../dom";
import type { Rectangle } from "../state/state";
import { ruleText } from "./rule_text";
import type { Scatter } from "./scatter";

const CLICK = 4; // the most pixels that a pointer moves in a click
const FACTOR = 1.4; // the factor of one zoom step
const SHARE = 0.05; // the share of the view by which a key moves a side of the brush

interface Point {
  x: number;
  y: number;
}

/** Handles pointers and keys in the scatter plot. */
export class Pointing {
  /** Whether dragging moves the view instead of drawing a brush. */
  isMoving = false;

  private readonly pointers = new Map<number, Point>();
  private begin: Point | null = null;
  private last: Point | null = null;
  private isDragging = false;

  constructor(
    private readonly app: App,
    private readonly scatter: Scatter,
    private readonly hover: (rules: RuleId[], at: Point) => void,
  ) {
    const { plot } = scatter;
    plot.addEventListener("pointerdown", (event) => this.down(event));
    plot.addEventListener("pointermove", (event) => this.move(event));
    plot.addEventListener("pointerup", (event) => this.up(event));
    plot.addEventListener("pointercancel", (event) => this.up(event));
    plot.addEventListener("pointerleave", () => this.hover([], { x: 0, y: 0 }));
    plot.addEventListener("wheel", (event) => this.wheel(event), { passive: false });
    plot.addEventListener("keydown", (event) => this.key(event));
  }

  /** Zooms about a point, by default the middle. A factor above 1 zooms in. */
  zoom(factor: number, about?: Point): void {
    const view = this.scatter.window;
    const at = about
      ? this.scatter.placeAt(about.x, about.y)
      : { x: (view.left + view.right) / 2, y: (view.bottom + view.top) / 2 };
    const part = (from: number, center: number): number => center + (from - center) / factor;
    this.show(
      { x: part(view.left, at.x), y: part(view.bottom, at.y) },
      { x: part(view.right, at.x), y: part(view.top, at.y) },
    );
  }

  /** Shows everything again. */
  reset(): void {
    this.app.store.update({ zoom: null });
  }

  private show(one: Point, other: Point): void {
    const { x, y } = this.scatter;
    const isAll = one.x <= x.begin && other.x >= x.end && one.y <= y.begin && other.y >= y.end;
    if (isAll) return this.reset();
    const inside = (axis: typeof x, place: number): number =>
      Math.min(axis.end, Math.max(axis.begin, place));
    // Places near infinity do not map to finite values, so the view ends before them.
    const range = (axis: typeof x, from: number, to: number): [number, number] => {
      const values = [inside(axis, from), inside(axis, to)].map((place) =>
        axis.value(Math.min(1.03, Math.max(-0.03, place))),
      );
      return [values[0]!, values[1]!];
    };
    const zoom: Rectangle = { x: range(x, one.x, other.x), y: range(y, one.y, other.y) };
    if (zoom.x[0] < zoom.x[1] && zoom.y[0] < zoom.y[1]) this.app.store.update({ zoom });
  }

  private pointOf(event: MouseEvent): Point {
    const box = this.scatter.plot.getBoundingClientRect();
    return { x: event.clientX - box.left, y: event.clientY - box.top };
  }

  private down(event: PointerEvent): void {
    if (event.button !== 0) return;
    const at = this.pointOf(event);
    this.pointers.set(event.pointerId, at);
    this.scatter.plot.setPointerCapture(event.pointerId);
    this.begin = this.pointers.size === 1 ? at : null;
    this.last = at;
    this.isDragging = false;
  }

  private move(event: PointerEvent): void {
    const at = this.pointOf(event);
    const before = this.pointers.get(event.pointerId);
    if (!before) {
      this.hover(this.scatter.near(at.x, at.y), at);
      return;
    }
    if (this.pointers.size === 2) this.pinch(event.pointerId, at);
    this.pointers.set(event.pointerId, at);
    if (!this.begin || !this.last) return;
    if (Math.hypot(at.x - this.begin.x, at.y - this.begin.y) > CLICK) this.isDragging = true;
    if (!this.isDragging) return;
    this.hover([], at);
    if (this.isMoving) this.drag(this.last, at);
    else this.scatter.drawBrush(this.between(this.begin, at));
    this.last = at;
  }

  private up(event: PointerEvent): void {
    const at = this.pointOf(event);
    const begin = this.begin;
    const isClick = !this.isDragging;
    this.pointers.delete(event.pointerId);
    this.begin = null;
    this.isDragging = false;
    if (!begin || event.type === "pointercancel") return;
    if (isClick) this.click(at);
    else if (!this.isMoving) this.app.store.update({ brush: this.between(begin, at) });
  }

  private click(at: Point): void {
    const rule = this.scatter.near(at.x, at.y)[0];
    if (rule !== undefined) this.app.choose(rule);
    else if (this.app.store.state.brush) this.app.store.update({ brush: null });
  }

  private between(one: Point, other: Point): Rectangle {
    return this.scatter.rectangle(
      this.scatter.placeAt(one.x, one.y),
      this.scatter.placeAt(other.x, other.y),
    );
  }

  private drag(from: Point, to: Point): void {
    const view = this.scatter.window;
    const one = this.scatter.placeAt(from.x, from.y);
    const other = this.scatter.placeAt(to.x, to.y);
    const x = one.x - other.x;
    const y = one.y - other.y;
    this.show({ x: view.left + x, y: view.bottom + y }, { x: view.right + x, y: view.top + y });
  }

  private pinch(moved: number, at: Point): void {
    const other = [...this.pointers].find(([pointer]) => pointer !== moved)?.[1];
    const before = this.pointers.get(moved);
    if (!other || !before) return;
    const from = Math.hypot(before.x - other.x, before.y - other.y);
    const to = Math.hypot(at.x - other.x, at.y - other.y);
    if (from > 0 && to > 0)
      this.zoom(to / from, { x: (at.x + other.x) / 2, y: (at.y + other.y) / 2 });
  }

  /** The wheel scrolls the page unless the scatter plot has the focus or Ctrl is pressed. */
  private wheel(event: WheelEvent): void {
    if (!event.ctrlKey && document.activeElement !== this.scatter.plot) return;
    event.preventDefault();
    this.zoom(Math.exp(-event.deltaY * 0.002), this.pointOf(event));
  }

  private key(event: KeyboardEvent): void {
    const arrows: Record<string, ["x" | "y", 1 | -1]> = {
      ArrowRight: ["x", 1],
      ArrowLeft: ["x", -1],
      ArrowUp: ["y", 1],
      ArrowDown: ["y", -1],
    };
    const arrow = arrows[event.key];
    if (arrow && event.shiftKey) this.growBrush(...arrow);
    else if (arrow) this.step(...arrow);
    else if (event.key === "+" || event.key === "=") this.zoom(FACTOR, this.chosenPoint());
    else if (event.key === "-") this.zoom(1 / FACTOR, this.chosenPoint());
    else if (event.key === "0") this.reset();
    else if (event.key === "Escape") this.app.store.update({ brush: null });
    else return;
    event.preventDefault();
  }

  private chosenPoint(): Point | undefined {
    const { chosen } = this.app.store.state;
    return chosen === null ? undefined : this.scatter.pointOf(chosen);
  }

  private step(axis: "x" | "y", step: 1 | -1): void {
    const rule = this.scatter.next(this.app.store.state.chosen, axis, step);
    if (rule === null) return;
    this.app.choose(rule);
    announce(ruleText(this.app, rule));
  }

  /** Makes the brush wider or narrower on both sides of an axis. Starts at the chosen rule. */
  private growBrush(axis: "x" | "y", step: 1 | -1): void {
    const { brush } = this.app.store.state;
    const view = this.scatter.window;
    const at = this.chosenPoint();
    const center = at
      ? this.scatter.placeAt(at.x, at.y)
      : { x: (view.left + view.right) / 2, y: (view.bottom + view.top) / 2 };
    const { x, y } = this.scatter;
    const half = { x: (view.right - view.left) * SHARE, y: (view.top - view.bottom) * SHARE };
    const one = brush
      ? { x: x.place(brush.x[0]), y: y.place(brush.y[0]) }
      : { x: center.x - half.x, y: center.y - half.y };
    const other = brush
      ? { x: x.place(brush.x[1]), y: y.place(brush.y[1]) }
      : { x: center.x + half.x, y: center.y + half.y };
    if (brush) {
      one[axis] -= half[axis] * step;
      other[axis] += half[axis] * step;
    }
    this.app.store.update({
      brush: one[axis] < other[axis] ? this.scatter.rectangle(one, other) : null,
    });
    announce(`${this.app.shown.order.length} rules in the brush`);
  }
}

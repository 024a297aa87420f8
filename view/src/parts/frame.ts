import { svg } from "../dom";
import { theme } from "../theme";
import type { Axis } from "./axis";

/** The visible part of a scatter plot, in places of its axes. */
export interface Window {
  left: number;
  right: number;
  bottom: number;
  top: number;
}

/** The size of a scatter plot in pixels, and the margins for its axes. */
export interface Layout {
  width: number;
  height: number;
  left: number;
  right: number;
  top: number;
  bottom: number;
}

/** The size of the area inside the axes. */
export function fieldSize(layout: Layout): { width: number; height: number } {
  return {
    width: Math.max(10, layout.width - layout.left - layout.right),
    height: Math.max(10, layout.height - layout.top - layout.bottom),
  };
}

/** Draws two axes with grid lines, labels and titles. */
export function drawFrame(x: Axis, y: Axis, view: Window, layout: Layout): SVGGElement {
  const colours = theme();
  const { width, height } = fieldSize(layout);
  const group = svg("g", { "font-size": 12, fill: colours.muted });
  const line = (x1: number, y1: number, x2: number, y2: number): void => {
    group.append(svg("line", { x1, y1, x2, y2, stroke: colours.line }));
  };
  const text = (at: [number, number], anchor: string, label: string): void => {
    group.append(svg("text", { x: at[0], y: at[1], "text-anchor": anchor }, label));
  };
  for (const { place, label } of x.ticks(view.left, view.right, Math.max(2, width / 80))) {
    const at = layout.left + ((place - view.left) / (view.right - view.left)) * width;
    line(at, layout.top, at, layout.top + height);
    text([at, layout.top + height + 18], "middle", label);
  }
  for (const { place, label } of y.ticks(view.bottom, view.top, Math.max(2, height / 48))) {
    const at = layout.top + height - ((place - view.bottom) / (view.top - view.bottom)) * height;
    line(layout.left, at, layout.left + width, at);
    text([layout.left - 8, at + 4], "end", label);
  }
  const middle = layout.top + height / 2;
  group.append(
    svg(
      "text",
      { x: layout.left + width, y: layout.height - 6, "text-anchor": "end", fill: colours.text },
      `${titleOf(x)} →`,
    ),
    svg(
      "text",
      {
        transform: `translate(14 ${middle}) rotate(-90)`,
        "text-anchor": "middle",
        fill: colours.text,
      },
      `${titleOf(y)} →`,
    ),
  );
  return group;
}

function titleOf(axis: Axis): string {
  return axis.log ? `${axis.measure.label} (log)` : axis.measure.label;
}

import { scaleLinear } from "d3-scale";
import type { TimeScale } from "../data/format";
import { svg } from "../dom";
import { lengthText, wholeNumber } from "../text";
import { theme } from "../theme";

const WIDTH = 420;
const HEIGHT = 150;
const LEFT = 34;
const BOTTOM = 38;
const BARS = 24;

/** The number of lags in each of `bars` equal parts of [0, end]; `end` belongs to the last one. */
export function lagBars(lags: readonly number[], end: number, bars = BARS): number[] {
  const counts = new Array<number>(bars).fill(0);
  for (const lag of lags) {
    const bar = Math.min(bars - 1, Math.floor((lag / end) * bars));
    counts[bar]! += 1;
  }
  return counts;
}

/** Draws the histogram of a rule's lags, up to the window or, without one, the greatest lag. */
export function drawLags(
  lags: readonly number[],
  window: number,
  time: TimeScale,
  entities: string,
): SVGSVGElement {
  const colours = theme();
  const last = lags[lags.length - 1] ?? 1;
  const end = window > 0 && last <= window ? window : Math.max(1, last);
  // If the unit is coarse, each unit has a bar, so that no bar covers fewer units than another.
  const bars = end <= 2 * BARS ? Math.max(1, end) : BARS;
  const counts = lagBars(lags, end, bars);
  const most = Math.max(...counts, 1);
  const x = scaleLinear()
    .domain([0, end])
    .range([LEFT, WIDTH - 12]);
  const y = scaleLinear()
    .domain([0, most])
    .range([HEIGHT - BOTTOM, 8]);
  const picture = svg("svg", {
    viewBox: `0 0 ${WIDTH} ${HEIGHT}`,
    width: WIDTH,
    height: HEIGHT,
    class: "lags",
    role: "img",
    "aria-label": `Histogram of ${lags.length} lags up to ${lengthText(end, time)}`,
    "font-size": 11,
    fill: colours.muted,
  });
  for (const tick of y.ticks(3).filter(Number.isInteger)) {
    picture.append(
      svg("line", { x1: LEFT, x2: WIDTH - 12, y1: y(tick), y2: y(tick), stroke: colours.line }),
      svg("text", { x: LEFT - 6, y: y(tick) + 4, "text-anchor": "end" }, String(tick)),
    );
  }
  counts.forEach((count, bar) => {
    const from = x((bar * end) / bars);
    const to = x(((bar + 1) * end) / bars);
    const range = `${lengthText((bar * end) / bars, time)} to ${lengthText(((bar + 1) * end) / bars, time)}`;
    picture.append(
      svg(
        "rect",
        {
          x: from + 1,
          y: y(count),
          width: Math.max(1, to - from - 2),
          height: HEIGHT - BOTTOM - y(count),
          rx: 2,
          fill: colours.consequent,
        },
        svg("title", {}, `${count} ${entities}: ${range}`),
      ),
    );
  });
  const base = HEIGHT - BOTTOM;
  picture.append(
    svg("line", { x1: LEFT, x2: WIDTH - 12, y1: base, y2: base, stroke: colours.muted }),
  );
  for (const tick of ticks(end, time))
    picture.append(
      svg(
        "text",
        { x: x(tick), y: base + 15, "text-anchor": tick === 0 ? "start" : "middle" },
        time.seconds === null ? wholeNumber(tick) : lengthText(tick, time),
      ),
    );
  picture.append(
    svg(
      "text",
      { x: WIDTH - 12, y: HEIGHT - 4, "text-anchor": "end", fill: colours.text },
      time.seconds === null ? `Lag, ${time.unit} →` : "Lag →",
    ),
  );
  return picture;
}

/** Four or five ticks at round numbers of the unit in which lengths of this size are shown. */
function ticks(end: number, time: TimeScale): number[] {
  if (time.seconds === null)
    return scaleLinear().domain([0, end]).ticks(4).filter(Number.isInteger);
  const seconds = end * time.seconds;
  const unit = [86400, 3600, 60].find((size) => seconds >= 2 * size) ?? 1;
  return scaleLinear()
    .domain([0, seconds / unit])
    .ticks(5)
    .map((tick) => (tick * unit) / time.seconds!);
}

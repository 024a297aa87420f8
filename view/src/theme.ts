import { interpolateViridis } from "d3-scale-chromatic";

/**
 * The colours of pictures, for the light or the dark preference. Antecedents are blue and
 * consequents orange, which people with any colour vision can distinguish. The scale of a measure
 * is viridis without the end that would blend into the background.
 */
export interface Theme {
  isDark: boolean;
  background: string;
  text: string;
  muted: string;
  line: string;
  antecedent: string;
  consequent: string;
  accent: string;
  /** The colour of a value between 0 and 1. Greater values stand out more. */
  scale(value: number): string;
}

const LIGHT: Theme = {
  isDark: false,
  background: "#ffffff",
  text: "#1a2230",
  muted: "#596475",
  line: "#dbe0e8",
  antecedent: "#0b5cad",
  consequent: "#b3440b",
  accent: "#0b5cad",
  scale: (value) => interpolateViridis(0.86 * (1 - value)),
};

const DARK: Theme = {
  isDark: true,
  background: "#1a1f28",
  text: "#e8ebf1",
  muted: "#a5afbd",
  line: "#343c49",
  antecedent: "#7fb8ff",
  consequent: "#ffab70",
  accent: "#7fb8ff",
  scale: (value) => interpolateViridis(0.22 + 0.78 * value),
};

let isPrinting = false;

function preference(): MediaQueryList {
  return window.matchMedia("(prefers-color-scheme: dark)");
}

/** The current colours; printing uses the light ones. */
export function theme(): Theme {
  return preference().matches && !isPrinting ? DARK : LIGHT;
}

/** Calls back when the colours change. */
export function onThemeChange(act: () => void): void {
  preference().addEventListener("change", act);
  window.addEventListener("beforeprint", () => {
    isPrinting = true;
    act();
  });
  window.addEventListener("afterprint", () => {
    isPrinting = false;
    act();
  });
}

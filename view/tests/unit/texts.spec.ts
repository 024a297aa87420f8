import { expect, test } from "@playwright/test";
import { Axis } from "../../src/parts/axis";
import { lagBars } from "../../src/parts/bars";
import { lengthText, shortened, significant, timeText } from "../../src/text";

const DAYS = { seconds: 86400, origin: 0, first: 0, unit: "" };
const SECONDS = { seconds: 1, origin: 0, first: 0, unit: "" };
const NUMBERS = { seconds: null, origin: null, first: 5, unit: "units" };

test("numbers have three significant digits", () => {
  const rows: [number, string][] = [
    [0, "0"],
    [2, "2"],
    [2.2777, "2.28"],
    [0.0123456, "0.0123"],
    [0.00001234, "1.23e−5"],
    [12345, "12,345"],
    [12345.6, "12,300"],
    [123456789, "1.23e8"],
    [-0.5, "−0.500"],
    [Infinity, "∞"],
    [NaN, "–"],
  ];
  for (const [value, text] of rows) expect(significant(value), String(value)).toBe(text);
});

test("lengths are told in the greatest unit of the clock", () => {
  const rows: [number, object, string][] = [
    [0, SECONDS, "0"],
    [1, SECONDS, "1 second"],
    [90, SECONDS, "1.5 minutes"],
    [7776000, SECONDS, "90 days"],
    [1, DAYS, "1 day"],
    [400, DAYS, "400 days"],
    [1234, NUMBERS, "1,234 units"],
  ];
  for (const [length, scale, text] of rows)
    expect(lengthText(length, scale as never), text).toBe(text);
});

test("times are dates, finer ones with hour and minute", () => {
  expect(timeText(15000, DAYS)).toBe("2011-01-26");
  expect(timeText(1_300_000_000, SECONDS)).toBe("2011-03-13 07:06");
  expect(timeText(7, NUMBERS)).toBe("time 12");
});

test("names are cut between characters", () => {
  expect(shortened("😀😀😀😀", 3)).toBe("😀😀…");
  expect(shortened("abc", 3)).toBe("abc");
});

test("lags at the end of the window are in the last bar", () => {
  expect(lagBars([0, 1, 9, 10, 10], 10, 5)).toEqual([2, 0, 0, 0, 3]);
});

test.describe("axis", () => {
  const axis = (values: number[], log = false): Axis =>
    new Axis(
      {
        key: "k",
        label: "K",
        short: "K",
        kind: "ratio",
        formula: "",
        worked: () => "",
        values: Float64Array.from(values),
      },
      log,
      NUMBERS,
    );

  test("finite values go from 0 to 1, infinite ones beyond", () => {
    const made = axis([2, 4, Infinity]);
    expect([2, 3, 4].map((value) => made.place(value))).toEqual([0, 0.5, 1]);
    expect(made.place(Infinity)).toBeGreaterThan(1);
    expect(made.place(Infinity)).toBeLessThan(made.end);
  });

  test("a logarithmic scale is even in ratios, and has a place for what is not positive", () => {
    const made = axis([0, 1, 100], true);
    expect(made.place(10)).toBeCloseTo(0.5, 12);
    expect(made.place(0)).toBeLessThan(0);
    expect(made.place(0)).toBeGreaterThan(made.begin);
  });

  test("values come back from their places", () => {
    for (const log of [false, true]) {
      const made = axis([0.25, 8, Infinity], log);
      for (const value of [0.25, 1, 8]) expect(made.value(made.place(value))).toBeCloseTo(value, 9);
      expect(made.value(made.place(Infinity))).toBe(Infinity);
    }
  });

  test("one value only has room on both sides", () => {
    for (const values of [[5], [0], [NaN], []])
      for (const log of [false, true]) {
        const made = axis(values, log);
        expect(made.ticks(made.begin, made.end, 5).length).toBeGreaterThan(0);
        if (values[0] === 5) expect(made.place(5)).toBeCloseTo(0.5, 9);
      }
  });
});

import type { RuleId, Rules } from "./rules";

/** The counts of one rule, named as in the formulas. */
export interface Counts {
  /** The number of histories that the rule counts in. */
  count: number;
  /** n(A u S), n(A), n(S) and N. */
  union: number;
  a: number;
  s: number;
  n: number;
}

/** A number of a rule that can be shown, sorted by, filtered by and put on an axis. */
export interface Measure {
  key: string;
  /** The name for an axis or a menu. */
  label: string;
  /** The short name for the head of a column. */
  short: string;
  kind: "count" | "ratio" | "length";
  /** The formula in the names of `Counts`; empty for a number that is counted. */
  formula: string;
  /** The formula with the numbers of a rule inserted. */
  worked(counts: Counts): string;
  /** The values by rule. Computed once. */
  values: Float64Array;
}

interface Definition {
  key: string;
  label: string;
  short: string;
  formula?: string;
  worked?: (counts: Counts) => string;
  value: (counts: Counts) => number;
  ordered?: boolean;
}

// A zero divisor is handled as in the tool's measures.
const ratio = (part: number, whole: number): number => (whole === 0 ? 0 : part / whole);

const DEFINITIONS: Definition[] = [
  { key: "count", label: "Count", short: "Count", value: (c) => c.count, ordered: true },
  {
    key: "unionCount",
    label: "Histories with all items",
    short: "n(A∪S)",
    formula: "n(A∪S)",
    value: (c) => c.union,
  },
  {
    key: "orderedConfidence",
    label: "Ordered confidence",
    short: "Ord. conf.",
    formula: "Count / n(A)",
    worked: (c) => `${c.count} / ${c.a}`,
    value: (c) => ratio(c.count, c.a),
    ordered: true,
  },
  {
    key: "confidence",
    label: "Confidence",
    short: "Confidence",
    formula: "n(A∪S) / n(A)",
    worked: (c) => `${c.union} / ${c.a}`,
    value: (c) => ratio(c.union, c.a),
  },
  {
    key: "lift",
    label: "Lift",
    short: "Lift",
    formula: "N · n(A∪S) / (n(A) · n(S))",
    worked: (c) => `${c.n} · ${c.union} / (${c.a} · ${c.s})`,
    value: (c) => ratio(c.union * c.n, c.a * c.s),
  },
  {
    key: "orderedLift",
    label: "Ordered lift",
    short: "Ord. lift",
    formula: "N · Count / (n(A) · n(S))",
    worked: (c) => `${c.n} · ${c.count} / (${c.a} · ${c.s})`,
    value: (c) => ratio(c.count * c.n, c.a * c.s),
    ordered: true,
  },
  {
    key: "orderedSupport",
    label: "Ordered support",
    short: "Ord. supp.",
    formula: "Count / N",
    worked: (c) => `${c.count} / ${c.n}`,
    value: (c) => c.count / c.n,
    ordered: true,
  },
  {
    key: "support",
    label: "Support of all items",
    short: "Support",
    formula: "n(A∪S) / N",
    worked: (c) => `${c.union} / ${c.n}`,
    value: (c) => c.union / c.n,
  },
  {
    key: "conviction",
    label: "Conviction",
    short: "Conviction",
    formula: "(1 − n(S)/N) / (1 − Confidence)",
    worked: (c) => `(1 − ${c.s}/${c.n}) / (1 − ${c.union}/${c.a})`,
    value: (c) => (c.union === c.a ? Infinity : (1 - c.s / c.n) / (1 - ratio(c.union, c.a))),
  },
  {
    key: "reverseConfidence",
    label: "Reverse confidence (Probability)",
    short: "Reverse conf.",
    formula: "n(A∪S) / n(S)",
    worked: (c) => `${c.union} / ${c.s}`,
    value: (c) => ratio(c.union, c.s),
  },
  {
    key: "certaintyOdds",
    label: "Certainty odds",
    short: "Certainty",
    formula: "n(A∪S) / (n(S) − n(A∪S))",
    worked: (c) => `${c.union} / (${c.s} − ${c.union})`,
    value: (c) => (c.union === c.s ? Infinity : c.union / (c.s - c.union)),
  },
  {
    key: "leverage",
    label: "Leverage",
    short: "Leverage",
    formula: "n(A∪S)/N − n(A)/N · n(S)/N",
    worked: (c) => `${c.union}/${c.n} − ${c.a}/${c.n} · ${c.s}/${c.n}`,
    value: (c) => c.union / c.n - (c.a / c.n) * (c.s / c.n),
  },
  {
    key: "antecedentCount",
    label: "Histories with the antecedent",
    short: "n(A)",
    formula: "n(A)",
    value: (c) => c.a,
  },
  {
    key: "consequentCount",
    label: "Histories with the consequent",
    short: "n(S)",
    formula: "n(S)",
    value: (c) => c.s,
  },
];

const COUNTED = new Set(["count", "unionCount", "antecedentCount", "consequentCount"]);

const EXTRA: { key: string; label: string; short: string; kind: Measure["kind"] }[] = [
  { key: "lagMedian", label: "Median lag", short: "Median lag", kind: "length" },
  { key: "lagLeast", label: "Least lag", short: "Least lag", kind: "length" },
  { key: "lag90", label: "90th percentile of lags", short: "Lag, 90 %", kind: "length" },
  { key: "lagGreatest", label: "Greatest lag", short: "Greatest lag", kind: "length" },
  { key: "reverseCount", label: "Count of the reverse rule", short: "Reverse", kind: "count" },
];

/** The counts of one rule. */
export function countsOf(rules: Rules, rule: RuleId): Counts {
  return {
    count: rules.count[rule]!,
    union: rules.unionCount[rule]!,
    a: rules.antecedentCount(rule),
    s: rules.consequentCount(rule),
    n: rules.total,
  };
}

/** The measures of the rules of a page, in the order of the menus. */
export class Measures {
  readonly all: readonly Measure[];
  private readonly byKey: Map<string, Measure>;

  /** If the rules are not `ordered`, the measures that need a count in order are left out. */
  constructor(rules: Rules, ordered: boolean) {
    const defined = DEFINITIONS.filter((definition) => ordered || !definition.ordered).map(
      (definition) => fromDefinition(definition, rules),
    );
    const size: Measure = {
      key: "items",
      label: "Number of items",
      short: "Items",
      kind: "count",
      formula: "",
      worked: () => "",
      get values() {
        return kept(this, sizes(rules));
      },
    };
    const extra = EXTRA.flatMap(({ key, label, short, kind }): Measure[] => {
      const column = rules.extra.get(key);
      return column
        ? [
            {
              key,
              label,
              short,
              kind,
              formula: "",
              worked: () => "",
              values: Float64Array.from(column),
            },
          ]
        : [];
    });
    this.all = [...defined, ...extra, size];
    this.byKey = new Map(this.all.map((measure) => [measure.key, measure]));
  }

  /** The measure with this key, or undefined. */
  find(key: string): Measure | undefined {
    return this.byKey.get(key);
  }

  /** The measure with this key, which must exist. */
  get(key: string): Measure {
    const measure = this.byKey.get(key);
    if (!measure) throw new Error(`There is no measure ${key}.`);
    return measure;
  }
}

function fromDefinition(definition: Definition, rules: Rules): Measure {
  const isCount = COUNTED.has(definition.key);
  return {
    key: definition.key,
    label: definition.label,
    short: definition.short,
    kind: isCount ? "count" : "ratio",
    formula: definition.formula ?? "",
    worked: definition.worked ?? ((): string => ""),
    get values() {
      const found = new Float64Array(rules.size);
      for (let rule = 0; rule < found.length; ++rule)
        found[rule] = definition.value(countsOf(rules, rule));
      return kept(this, found);
    },
  };
}

/** Replaces the getter of a measure's values by the values that it has just computed. */
function kept(measure: Measure, values: Float64Array): Float64Array {
  Object.defineProperty(measure, "values", { value: values });
  return values;
}

function sizes(rules: Rules): Float64Array {
  const found = new Float64Array(rules.size);
  for (let rule = 0; rule < found.length; ++rule)
    found[rule] = rules.antecedentItems(rule).length + rules.consequentItems(rule).length;
  return found;
}
